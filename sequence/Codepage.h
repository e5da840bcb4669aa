// Polish code pages: the Windows-1250 <-> Mazovia letter table used for the
// printer, and the full Windows-1250 <-> Unicode mapping used at the edges
// (window texts, terminal output).
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace tavena {

// Columns of the letter table.
enum PolishColumn {
  kLatin = 0,
  kCp1250 = 1,
  kMazovia = 2,
  kCp852 = 3,
  kIso8859_2 = 4,
  kSerial = 5
};

// Eighteen rows of six bytes (Ą Ć Ę Ł Ń Ó Ś Ź Ż ą ć ę ł ń ó ś ź ż) and a closing
// row of zeros.
extern const uint8_t kPolishLetters[19][6];

// Converts bytes in place from one table column to another. Bytes below 0x80
// and bytes no row holds are left as they are.
void ConvertColumns(uint8_t* bytes, size_t length, int from_column, int to_column);

void ToMazovia(uint8_t* bytes, size_t length);
void FromMazovia(uint8_t* bytes, size_t length);
std::string ToMazovia(std::string text);
std::string FromMazovia(std::string text);

// Unicode code point of a Windows-1250 byte. The five unassigned bytes map to
// the C1 control of the same value, so no byte is ever lost.
char32_t Cp1250ToUnicode(uint8_t byte);
// Windows-1250 byte of a code point, or -1 when it has none.
int UnicodeToCp1250(char32_t code_point);

// Whole-text conversions. Characters with no Windows-1250 code become '?';
// invalid UTF-8 bytes become '?' as well.
std::string Cp1250ToUtf8(std::string_view cp1250);
std::string Utf8ToCp1250(std::string_view utf8);

}  // namespace tavena

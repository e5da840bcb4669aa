#include "sequence/Codepage.h"

#include <gtest/gtest.h>

#include "TestSupport.h"

namespace tavena {
namespace {

using test::Hex;

TEST(CodepageTest, MazoviaLettersBothWaysOtherBytesUnchanged) {
  // The 18 letters ĄĆĘŁŃÓŚŹŻąćęłńóśźż, one byte each, in both code pages.
  const std::string letters(
      "\xA5\xC6\xCA\xA3\xD1\xD3\x8C\x8F\xAF\xB9\xE6\xEA\xB3\xF1\xF3\x9C\x9F\xBF");
  EXPECT_EQ(Hex(ToMazovia(letters)), "8F 95 90 9C A5 A3 98 A0 A1 86 8D 91 92 A4 A2 9E A6 A7");
  EXPECT_EQ(
      Hex(FromMazovia("\x8F\x95\x90\x9C\xA5\xA3\x98\xA0\xA1\x86\x8D\x91\x92\xA4\xA2\x9E\xA6\xA7")),
      "A5 C6 CA A3 D1 D3 8C 8F AF B9 E6 EA B3 F1 F3 9C 9F BF");

  const std::string mixed("A\x80\x00\xFF z", 6);
  EXPECT_EQ(ToMazovia(mixed), mixed);
  EXPECT_EQ(FromMazovia(mixed), mixed);
  // Not idempotent: Mazovia Ń (A5) is CP1250 Ą.
  EXPECT_EQ(Hex(ToMazovia(ToMazovia("\xD1"))), "8F");
}

TEST(CodepageTest, Cp1250AndUtf8) {
  EXPECT_EQ(Cp1250ToUtf8("\x7A\x61\xBF\xF3\xB3\xE6"), "zażółć");
  // No Windows-1250 code, or broken UTF-8: '?'.
  EXPECT_EQ(Utf8ToCp1250("€ – „x” 日 \xC5"), "\x80 \x96 \x84x\x94 ? ?");
  // Every byte survives the trip through Unicode, unassigned ones included.
  for (int b = 1; b < 256; ++b) {
    const std::string one(1, static_cast<char>(b));
    EXPECT_EQ(Utf8ToCp1250(Cp1250ToUtf8(one)), one) << b;
    EXPECT_EQ(UnicodeToCp1250(Cp1250ToUnicode(static_cast<uint8_t>(b))), b);
  }
}

}  // namespace
}  // namespace tavena

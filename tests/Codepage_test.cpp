#include "sequence/Codepage.h"

#include <gtest/gtest.h>

#include "TestSupport.h"

namespace tavena {
namespace {

using test::Hex;

TEST(CodepageTest, PolishLettersConvertBothWays) {
  // zażółć
  const std::string cp1250("\x7A\x61\xBF\xF3\xB3\xE6");
  const std::string mazovia = ToMazovia(cp1250);
  EXPECT_EQ(Hex(mazovia), "7A 61 A7 A2 92 8D");
  EXPECT_EQ(FromMazovia(mazovia), cp1250);

  // Every row round-trips, and the table ends with a zero row.
  for (int i = 0; i < 18; ++i) {
    std::string one(1, static_cast<char>(kPolishLetters[i][kCp1250]));
    EXPECT_EQ(static_cast<uint8_t>(ToMazovia(one)[0]), kPolishLetters[i][kMazovia]) << i;
    EXPECT_EQ(FromMazovia(ToMazovia(one)), one) << i;
    EXPECT_EQ(kPolishLetters[i][kSerial], 0x0E + i);
  }
  EXPECT_EQ(kPolishLetters[18][kCp1250], 0);
}

TEST(CodepageTest, OtherBytesPassUnchanged) {
  const std::string mixed("A\x80\x00\xFF z", 6);
  EXPECT_EQ(ToMazovia(mixed), mixed);
  EXPECT_EQ(FromMazovia(mixed), mixed);
  EXPECT_EQ(ToMazovia(std::string()), "");
  // Converting twice is not idempotent: Mazovia Ń (A5) is CP1250 Ą.
  EXPECT_EQ(Hex(ToMazovia(ToMazovia("\xD1"))), "8F");
}

TEST(CodepageTest, Cp1250AndUtf8) {
  EXPECT_EQ(Cp1250ToUtf8("\x7A\x61\xBF\xF3\xB3\xE6"), "zażółć");
  EXPECT_EQ(Utf8ToCp1250("ZAŻÓŁĆ gęślą jaźń"), "ZA\xAF\xD3\xA3\xC6 g\xEA\x9Cl\xB9 ja\x9F\xF1");
  EXPECT_EQ(Cp1250ToUtf8("\x80"), "€");
  EXPECT_EQ(Utf8ToCp1250("€ – „x”"), "\x80 \x96 \x84x\x94");
  // No Windows-1250 code: '?'. Broken UTF-8: '?'.
  EXPECT_EQ(Utf8ToCp1250("a日b"), "a?b");
  EXPECT_EQ(Utf8ToCp1250("a\xC5"), "a?");
  // Every byte survives the trip through Unicode, unassigned ones included.
  for (int b = 1; b < 256; ++b) {
    const std::string one(1, static_cast<char>(b));
    EXPECT_EQ(Utf8ToCp1250(Cp1250ToUtf8(one)), one) << b;
    EXPECT_EQ(UnicodeToCp1250(Cp1250ToUnicode(static_cast<uint8_t>(b))), b);
  }
}

}  // namespace
}  // namespace tavena

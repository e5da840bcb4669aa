#include "sequence/Ibuffer.h"

#include <gtest/gtest.h>

#include "TestSupport.h"

namespace tavena {
namespace {

using test::Hex;

TEST(IbufferTest, CapacityFollowsTheGrowthRule) {
  iBuffer empty;
  EXPECT_EQ(empty.Capacity(), 100);
  EXPECT_EQ(empty.Length(), 0);
  EXPECT_EQ(iBuffer("abc").Capacity(), 100);
  EXPECT_EQ(iBuffer(std::string(80, 'x')).Capacity(), 160);

  // 89 bytes fit (89 + 1 + 10 = 100); the 91st byte triggers growth.
  iBuffer b;
  for (int i = 0; i < 90; ++i) b.AppendByte('a');
  EXPECT_EQ(b.Capacity(), 100);
  b.AppendByte('b');
  EXPECT_EQ(b.Capacity(), (100 + 1) * 2 + 10);
  EXPECT_EQ(b.Length(), 91);
  EXPECT_EQ(b[90], 'b');
  EXPECT_EQ(b.Data()[91], 0);

  // A large append grows by its own size.
  iBuffer c;
  c.AppendBytes(std::string(500, 'z').data(), 500);
  EXPECT_EQ(c.Capacity(), (100 + 500) * 2 + 10);
}

TEST(IbufferTest, TheThreeAppendsTreatZeroBytesDifferently) {
  iBuffer b;
  b.AppendText("ab\0cd");
  EXPECT_EQ(b.Length(), 2);
  iBuffer with_zero;
  with_zero.AppendByte('x');
  with_zero.AppendByte(0);
  with_zero.AppendByte('y');
  b.AppendBuffer(with_zero);
  EXPECT_EQ(Hex(b.ToString()), "61 62 78 00 79");
  EXPECT_EQ(b.Data()[b.Length()], 0);
  b.AppendBuffer(b);  // appending itself doubles the contents
  EXPECT_EQ(b.Length(), 10);
  EXPECT_EQ(Hex(b.ToString()), "61 62 78 00 79 61 62 78 00 79");
}

TEST(IbufferTest, ClearKeepsCapacityAndZeroesEverything) {
  iBuffer b;
  for (int i = 0; i < 150; ++i) b.AppendByte(0xAA);
  const int32_t cap = b.Capacity();
  b.Clear();
  EXPECT_EQ(b.Length(), 0);
  EXPECT_EQ(b.Capacity(), cap);
  for (int32_t i = 0; i <= cap; ++i) ASSERT_EQ(b.Data()[i], 0) << i;
}

TEST(IbufferTest, CopyAndMoveKeepContentsAndLeaveSourcesUsable) {
  iBuffer a("hello");
  iBuffer copy = a;
  copy.AppendByte('!');
  EXPECT_EQ(a.ToString(), "hello");
  EXPECT_EQ(copy.ToString(), "hello!");
  iBuffer moved = std::move(copy);
  EXPECT_EQ(moved.ToString(), "hello!");
  EXPECT_EQ(copy.Length(), 0);  // NOLINT(bugprone-use-after-move): a moved-from buffer is empty
  EXPECT_EQ(copy.Capacity(), 100);
  copy.AppendText("again");
  EXPECT_EQ(copy.ToString(), "again");
  a = moved;
  EXPECT_EQ(a.ToString(), "hello!");
}

TEST(IbufferTest, LoadAndSaveFiles) {
  test::TempDir dir;
  const std::string bytes("\x1bP0#e89\x1b\\\0tail", 13);
  iBuffer out(bytes);
  ASSERT_TRUE(out.SaveToFile(dir.file("a.bin")));
  EXPECT_EQ(test::ReadFile(dir.file("a.bin")), bytes);

  iBuffer in;
  ASSERT_TRUE(in.LoadFromFile(dir.file("a.bin")));
  EXPECT_EQ(in.ToString(), bytes);
  EXPECT_EQ(in.Capacity(), 13 + 13 / 5);
  EXPECT_EQ(in.Data()[in.Length()], 0);

  test::WriteFile(dir.file("empty.bin"), "");
  EXPECT_FALSE(in.LoadFromFile(dir.file("empty.bin")));
  EXPECT_EQ(in.Length(), 0);
  in.AppendText("x");
  EXPECT_FALSE(in.LoadFromFile(dir.file("missing.bin")));
  EXPECT_EQ(in.Length(), 0);
  EXPECT_FALSE(out.SaveToFile(dir.file("no/such/folder/a.bin")));
}

TEST(IbufferTest, XorFoldAndNumberTexts) {
  iBuffer b("AB");
  EXPECT_EQ(b.XorFold(0xFF), 0xFC);
  EXPECT_EQ(b.XorFold(0xFF, 1), 0xFF ^ 0x41);
  EXPECT_EQ(iBuffer().XorFold(0x5A), 0x5A);

  EXPECT_EQ(iBuffer::HexText(0xFC, 1), "FC");
  EXPECT_EQ(iBuffer::HexText(0x3A, 1), "3A");
  EXPECT_EQ(iBuffer::HexText(0x1234, 1), "34");
  EXPECT_EQ(iBuffer::HexText(0xABC, 2), "0ABC");
  EXPECT_EQ(iBuffer::HexText(0x1122334455667788ULL, 8), "1122334455667788");

  EXPECT_EQ(iBuffer::ParseDecimal("  -0042x"), -42);
  EXPECT_EQ(iBuffer::ParseDecimal("+12a"), 12);
  EXPECT_EQ(iBuffer::ParseDecimal("300"), 300);
  EXPECT_EQ(iBuffer::ParseDecimal("abc"), 0);
  EXPECT_EQ(iBuffer::ParseDecimal(""), 0);

  EXPECT_EQ(iBuffer::ParseHex("4c"), 0x4C);
  EXPECT_EQ(iBuffer::ParseHex("4\r"), 4);
  EXPECT_EQ(iBuffer::ParseHex("FF"), 255);
  EXPECT_EQ(iBuffer::ParseHex("zz"), 0);
}

TEST(IbufferTest, ConversionKeepsZeroBytesAndLength) {
  iBuffer b(std::string("\xB9\0\xEA\x80", 4));
  b.ToMazovia();
  EXPECT_EQ(Hex(b.ToString()), "86 00 91 80");
  b.FromMazovia();
  EXPECT_EQ(Hex(b.ToString()), "B9 00 EA 80");
  iBuffer empty;
  empty.ToMazovia();
  EXPECT_EQ(empty.Length(), 0);
}

}  // namespace
}  // namespace tavena

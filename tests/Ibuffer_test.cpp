#include "sequence/Ibuffer.h"

#include <gtest/gtest.h>

#include "TestSupport.h"

namespace tavena {
namespace {

using test::Hex;

TEST(IbufferTest, CapacityAppendsZeroBytesAndMazovia) {
  EXPECT_EQ(iBuffer("abc").Capacity(), 100);
  EXPECT_EQ(iBuffer(std::string(80, 'x')).Capacity(), 160);
  // 90 bytes fit; the 91st (90 + 1 + 10 > 100) grows it to (100 + 1) * 2 + 10.
  iBuffer b;
  for (int i = 0; i < 90; ++i) b.AppendByte(0xAA);
  EXPECT_EQ(b.Capacity(), 100);
  b.AppendByte('b');
  EXPECT_EQ(b.Capacity(), 212);
  iBuffer big;
  big.AppendBytes(std::string(500, 'z').data(), 500);
  EXPECT_EQ(big.Capacity(), 1210);
  b.Clear();
  EXPECT_EQ(b.Capacity(), 212);
  for (int32_t i = 0; i <= 212; ++i) ASSERT_EQ(b.Data()[i], 0) << i;

  b.AppendText("ab\0cd");  // stops at the zero byte
  iBuffer with_zero(std::string("x\0y", 3));
  b.AppendBuffer(with_zero);  // keeps it
  b.AppendBuffer(b);          // itself: the contents twice
  EXPECT_EQ(Hex(b.ToString()), "61 62 78 00 79 61 62 78 00 79");
  iBuffer copy = with_zero;
  copy.AppendByte('!');
  EXPECT_EQ(with_zero.Length(), 3);
  // In place, zero bytes kept: ą, zero, ę, euro.
  iBuffer polish(std::string("\xB9\0\xEA\x80", 4));
  polish.ToMazovia();
  EXPECT_EQ(Hex(polish.ToString()), "86 00 91 80");
  polish.FromMazovia();
  EXPECT_EQ(Hex(polish.ToString()), "B9 00 EA 80");
}

TEST(IbufferTest, LoadAndSaveFiles) {
  test::TempDir dir;
  const std::string bytes("\x1bP0#e89\x1b\\\0tail", 13);
  ASSERT_TRUE(iBuffer(bytes).SaveToFile(dir.file("a.bin")));
  iBuffer in;
  ASSERT_TRUE(in.LoadFromFile(dir.file("a.bin")));
  EXPECT_EQ(in.ToString(), bytes);
  EXPECT_EQ(in.Capacity(), 15);  // size + size / 5

  test::WriteFile(dir.file("empty.bin"), "");
  EXPECT_FALSE(in.LoadFromFile(dir.file("empty.bin")));
  EXPECT_EQ(in.Length(), 0);
  in.AppendText("x");
  EXPECT_FALSE(in.LoadFromFile(dir.file("missing.bin")));
  EXPECT_EQ(in.Length(), 0);
  EXPECT_FALSE(in.SaveToFile(dir.file("no/such/folder/a.bin")));
}

}  // namespace
}  // namespace tavena

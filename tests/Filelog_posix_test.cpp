#include "transport/Filelog.h"

#include <gtest/gtest.h>

#include "TestSupport.h"
#include "sequence/Clock.h"
#include "transport/Createdirectory.h"

namespace tavena {
namespace {

TEST(FilelogTest, StampedLinesUpToAZeroByteFoldersAndLostLines) {
  test::TempDir dir;
  const std::string folder = dir.file("logs");
  test::ScopedEnv env("TAVENA_LOG_DIR", folder);
  VirtualClock clock(LocalTime{2012, 5, 14, 9, 3, 7, 250});
  ScopedClock use(&clock);
  LogToPortFile("Serial port is opened.", "ttyUSB0");
  clock.Advance(1005);
  LogToPortFile("Send: \x1bP0#e89\x1b\\", "ttyUSB0");
  LogError("bad");
  EXPECT_EQ(test::ReadFile(folder + "/ttyUSB0_log.txt"),
            "2012.05.14 09:03:07.250> Serial port is opened.\r\n"
            "2012.05.14 09:03:08.255> Send: \x1bP0#e89\x1b\\\r\n");
  EXPECT_EQ(test::ReadFile(folder + "/error_log.txt"), "2012.05.14 09:03:08.255> bad\r\n");
  // Missing parents are created; a zero byte ends the text.
  const std::string nested = dir.file("a/b/c");
  LogToFolder(std::string("Wys\xB3\x61no: AB\0CD", 14).c_str(), "com3", nested.c_str());
  EXPECT_EQ(test::ReadFile(nested + "/com3_log.txt"),
            "2012.05.14 09:03:08.255> Wys\xB3\x61no: AB\r\n");
  EXPECT_TRUE(ForceDirectories(dir.file("x") + "/y/"));
  EXPECT_TRUE(DirectoryExists(dir.file("x/y")));
  EXPECT_TRUE(ForceDirectories(dir.file("x/y")));  // existing
  EXPECT_FALSE(ForceDirectories(""));
  // A file where the log folder should be: the line is lost without a word.
  test::WriteFile(dir.file("blocker"), "x");
  test::ScopedEnv blocked("TAVENA_LOG_DIR", dir.file("blocker") + "/logs");
  LogToPortFile("lost", "com1");
  EXPECT_EQ(test::ReadFile(dir.file("blocker")), "x");

  test::ScopedEnv unset("TAVENA_LOG_DIR", "");
  test::ScopedEnv home("HOME", "/home/tech");
  EXPECT_EQ(LogFolder(), "/home/tech/tavena_log");
}

}  // namespace
}  // namespace tavena

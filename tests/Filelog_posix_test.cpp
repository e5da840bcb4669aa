#include "transport/Filelog.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "TestSupport.h"
#include "sequence/Clock.h"
#include "transport/Createdirectory.h"

namespace tavena {
namespace {

TEST(FilelogTest, LinesHaveTheStampAndCrLf) {
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
}

TEST(FilelogTest, ZeroByteEndsTheTextAndOtherFoldersWork) {
  test::TempDir dir;
  VirtualClock clock(LocalTime{2026, 1, 2, 3, 4, 5, 6});
  ScopedClock use(&clock);
  const std::string folder = dir.file("a/b/c");
  LogToFolder(std::string("Wys\xB3\x61no: AB\0CD", 14).c_str(), "com3", folder.c_str());
  EXPECT_EQ(test::ReadFile(folder + "/com3_log.txt"),
            "2026.01.02 03:04:05.006> Wys\xB3\x61no: AB\r\n");
}

TEST(FilelogTest, ForceDirectoriesCreatesNestedFolders) {
  test::TempDir dir;
  const std::string nested = dir.file("a") + "/b/c/";
  EXPECT_FALSE(DirectoryExists(dir.file("a")));
  EXPECT_TRUE(ForceDirectories(nested));
  EXPECT_TRUE(DirectoryExists(dir.file("a/b/c")));
  EXPECT_TRUE(ForceDirectories(nested));  // existing: still true
  EXPECT_FALSE(ForceDirectories(""));
}

TEST(FilelogTest, UnwritableFolderLosesTheLineSilently) {
  test::TempDir dir;
  // A file where the folder should be: the folder cannot be created.
  test::WriteFile(dir.file("blocker"), "x");
  const std::string folder = dir.file("blocker") + "/logs";
  test::ScopedEnv env("TAVENA_LOG_DIR", folder);
  LogToPortFile("lost", "com1");
  EXPECT_FALSE(ForceDirectories(folder));
  EXPECT_FALSE(std::filesystem::exists(folder + "/com1_log.txt"));
  EXPECT_EQ(test::ReadFile(dir.file("blocker")), "x");
}

TEST(FilelogTest, LogFolderFollowsTheEnvironment) {
  {
    test::ScopedEnv env("TAVENA_LOG_DIR", "/tmp/somewhere");
    EXPECT_EQ(LogFolder(), "/tmp/somewhere");
  }
  test::ScopedEnv env("TAVENA_LOG_DIR", "");
  test::ScopedEnv home("HOME", "/home/tech");
  EXPECT_EQ(LogFolder(), "/home/tech/tavena_log");
}

TEST(ClockTest, VirtualClockMovesLocalTimeAcrossMidnight) {
  VirtualClock clock(LocalTime{2024, 2, 28, 23, 59, 59, 990});
  clock.SleepMs(20);
  const LocalTime t = clock.Local();
  EXPECT_EQ(t.year, 2024);
  EXPECT_EQ(t.month, 2);
  EXPECT_EQ(t.day, 29);
  EXPECT_EQ(t.MsOfDay(), 10);
  EXPECT_EQ(clock.NowMs(), 20);
  EXPECT_EQ(clock.TotalSleptMs(), 20);
  clock.Advance(86400000LL);
  EXPECT_EQ(clock.Local().month, 3);
  EXPECT_EQ(clock.Local().day, 1);
}

}  // namespace
}  // namespace tavena

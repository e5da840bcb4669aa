// FastCom on the host backend against a real port whose other end echoes
// every byte (the Windows build under wine uses a pseudo-terminal linked as
// a COM port). Skipped unless TAVENA_TEST_PORT names the port.
// TAVENA_EXPECT_WINE=1 says the process runs under WINE.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <thread>

#include "TestSupport.h"
#include "sequence/Messagelanguage.h"
#include "transport/Createdirectory.h"
#include "transport/Fastcom.h"
#include "transport/Filelog.h"

namespace tavena {
namespace {

bool ExpectWine() {
  const char* v = std::getenv("TAVENA_EXPECT_WINE");
  return v && *v == '1';
}

TEST(FastComHost, WineDetection) {
  SetWineOverride(std::nullopt);
  if (ExpectWine()) {
    EXPECT_TRUE(DetectWineHost());
    EXPECT_TRUE(FastCom().UnderWine());
    return;
  }
#ifdef _WIN32
  GTEST_SKIP() << "Windows without TAVENA_EXPECT_WINE: nothing to compare with";
#else
  EXPECT_FALSE(DetectWineHost());
  EXPECT_FALSE(FastCom().UnderWine());
#endif
}

class FastComLine : public ::testing::Test {
 protected:
  void SetUp() override {
    const char* port = std::getenv("TAVENA_TEST_PORT");
    if (!port || !*port) GTEST_SKIP() << "TAVENA_TEST_PORT is not set";
    port_ = port;
    SetWineOverride(std::nullopt);
    MessageLanguage = 1;
  }
  void TearDown() override { MessageLanguage = 0; }
  // Sends record and reads it back from the echo.
  std::string Echo(FastCom& com, const std::string& record, int timeout_ms = 300) {
    EXPECT_TRUE(com.Send(iBuffer(record)));
    iBuffer reply;
    EXPECT_TRUE(com.ReadUntil(reply, timeout_ms, "#END"));
    return reply.ToString();
  }
  std::string port_;
};

TEST_F(FastComLine, EchoThroughTheHostBackend) {
  FastCom com;
  EXPECT_EQ(com.UnderWine(), ExpectWine());
  com.SetLogging(true);
  ASSERT_TRUE(com.Open(port_.c_str(), 1)) << "error " << com.LastOpenError();
  EXPECT_EQ(com.SetupError(), 0u);

  // 130 bytes: three chunks under WINE, one write elsewhere.
  std::string record;
  for (int i = 0; i < 126; ++i) record += static_cast<char>('a' + i % 26);
  record += "#END";
  EXPECT_EQ(Echo(com, record), record);
  EXPECT_EQ(com.BytesWritten(), 130u);

  // Byte by byte, each byte waiting for the transmit queue to empty.
  com.byte_mode = true;
  EXPECT_EQ(Echo(com, "\x1bP0#s\x1b\\#END"), "\x1bP0#s\x1b\\#END");
  com.byte_mode = false;

  // Queue counts and ReadCount.
  ASSERT_TRUE(com.Send(iBuffer("abc")));
  std::this_thread::sleep_for(std::chrono::milliseconds(200));
  EXPECT_EQ(com.InQueue(), 3u);
  iBuffer counted;
  EXPECT_TRUE(com.ReadCount(counted, 10));
  EXPECT_EQ(counted.ToString(), "abc");
  EXPECT_EQ(com.InQueue(), 0u);
  EXPECT_EQ(com.OutQueue(), 0u);
  EXPECT_FALSE(com.Open(port_.c_str(), 1));
  ASSERT_TRUE(com.Close());
  EXPECT_FALSE(com.Close());

  // The short-time-out open used by the command library.
  ASSERT_TRUE(com.OpenNamed(port_.c_str()));
  EXPECT_EQ(Echo(com, "named#END"), "named#END");
  ASSERT_TRUE(com.Close());

  // Every step went to the port's log (on c: when there is no d:).
  std::string path = LogFolder() + kPathSeparator + com.LogBaseName() + "_log.txt";
#ifdef _WIN32
  if (!std::filesystem::exists(path)) path[0] = static_cast<char>(path[0] - 1);
#endif
  const std::string log = test::ReadFile(path);
  EXPECT_NE(log.find("> Serial port is opened.\r\n"), std::string::npos) << path;
  EXPECT_NE(log.find("> Send: " + record + "\r\n"), std::string::npos);
  EXPECT_NE(log.find("> Receive: " + record.substr(0, 80) + "\r\n"), std::string::npos);
  EXPECT_NE(log.find("> Close closed serial port.\r\n"), std::string::npos);
  com.SetLogging(false);  // the closing in the destructor adds no line
  std::remove(path.c_str());
}

}  // namespace
}  // namespace tavena

// FastCom on the host backend against a real port whose other end echoes
// every byte (under wine: a pseudo-terminal linked as a COM port). Skipped
// unless TAVENA_TEST_PORT names the port; TAVENA_EXPECT_WINE=1: under WINE.
#include <gtest/gtest.h>

#include <cstdlib>

#include "transport/Fastcom.h"

namespace tavena {
namespace {

bool ExpectWine() {
  const char* v = std::getenv("TAVENA_EXPECT_WINE");
  return v && *v == '1';
}

TEST(FastComHost, WineDetection) {
  SetWineOverride(std::nullopt);
#ifdef _WIN32
  if (!ExpectWine()) GTEST_SKIP() << "Windows without TAVENA_EXPECT_WINE: nothing to compare with";
#endif
  EXPECT_EQ(DetectWineHost(), ExpectWine());
  EXPECT_EQ(FastCom().UnderWine(), ExpectWine());
}

// Sends record and reads it back from the echo.
std::string Echo(FastCom& com, const std::string& record) {
  EXPECT_TRUE(com.Send(iBuffer(record)));
  iBuffer reply;
  EXPECT_TRUE(com.ReadUntil(reply, 300, "#END"));
  return reply.ToString();
}

TEST(FastComLine, EchoThroughTheHostBackend) {
  const char* port = std::getenv("TAVENA_TEST_PORT");
  if (!port || !*port) GTEST_SKIP() << "TAVENA_TEST_PORT is not set";
  SetWineOverride(std::nullopt);
  FastCom com;
  ASSERT_TRUE(com.Open(port, 1)) << "error " << com.LastOpenError();
  EXPECT_EQ(com.SetupError(), 0u);

  // 130 bytes: three chunks under WINE, one write elsewhere.
  std::string record;
  for (int i = 0; i < 126; ++i) record += static_cast<char>('a' + i % 26);
  record += "#END";
  EXPECT_EQ(Echo(com, record), record);
  EXPECT_EQ(com.BytesWritten(), 130u);
  com.byte_mode = true;  // each byte waits for the transmit queue to empty
  EXPECT_EQ(Echo(com, "\x1bP0#s\x1b\\#END"), "\x1bP0#s\x1b\\#END");
  EXPECT_EQ(com.OutQueue(), 0u);
  ASSERT_TRUE(com.Close());
  EXPECT_FALSE(com.Close());
  ASSERT_TRUE(com.OpenNamed(port));  // the short time-outs of the command library
  EXPECT_EQ(Echo(com, "named#END"), "named#END");
  ASSERT_TRUE(com.Close());
}

}  // namespace
}  // namespace tavena

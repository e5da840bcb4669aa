// FastCom talking to the simulated printer through the in-process port, on virtual time.
#include "sim/Simport.h"

#include <gtest/gtest.h>

#include <cerrno>

#include "TestSupport.h"
#include "sequence/Clock.h"
#include "transport/Fastcom.h"

namespace tavena {
namespace {

const std::string kEnd = "\x1B\\";

class SimPortTest : public ::testing::Test {
 protected:
  SimPortTest() : printer_(*FindSimModel("LUMEN")), port_("com3", printer_) {}
  bool Open(FastCom& com, const char* name = "COM3") {
    com.baud_rate = 9600;
    return com.Open(name, 1);
  }
  bool Send(FastCom& com, const std::string& bytes) { return com.Send(iBuffer(bytes)); }
  std::string ReadFrame(int timeout_ms) {
    iBuffer reply;
    com_.ReadUntil(reply, timeout_ms, "\x1B\\");
    return reply.ToString();
  }

  VirtualClock clock_;
  ScopedClock scoped_{&clock_};
  SimPrinter printer_;
  SimPort port_;
  FastCom com_;
};

TEST_F(SimPortTest, OnePortAtATimeUntilTheLineCloses) {
  ASSERT_TRUE(Open(com_));
  ASSERT_TRUE(Send(com_, "\x05"));
  clock_.SleepMs(5);
  EXPECT_EQ(com_.InQueue(), 1u);
  ASSERT_TRUE(Send(com_, "\x1BP#v" + kEnd));
  EXPECT_EQ(ReadFrame(2000), "\x65\x1BP0#RTAVENA LUMEN/1.05" + kEnd);
  EXPECT_EQ(printer_.Record().received, "\x05\x1BP#v" + kEnd);
  // One open at a time; names it does not know are refused, not passed on.
  FastCom second;
  EXPECT_FALSE(Open(second));
  EXPECT_EQ(second.LastOpenError(), EBUSY);
  EXPECT_FALSE(Open(second, "com4"));
  EXPECT_EQ(second.LastOpenError(), ENOENT);
  EXPECT_TRUE(com_.Close());
  EXPECT_TRUE(second.OpenNamed("\\\\.\\COM3"));
  // Answers that came while nobody listened are purged by the open.
  printer_.Receive("\x10", clock_.NowMs());
  second.Close();
  ASSERT_TRUE(Open(second));
  clock_.SleepMs(50);
  EXPECT_EQ(second.InQueue(), 0u);
  // The line closes after a frame: nothing goes out, the port cannot open.
  printer_.Faults().close_after_frames = static_cast<int>(printer_.Record().frames.size()) + 1;
  ASSERT_TRUE(Send(second, "\x1BP0$e8E" + kEnd));
  EXPECT_FALSE(Send(second, "\x05"));
  second.Close();
  EXPECT_FALSE(Open(second));
  EXPECT_EQ(second.LastOpenError(), EIO);
}

}  // namespace
}  // namespace tavena

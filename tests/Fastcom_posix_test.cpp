// FastCom over a real pseudo-terminal pair, in real time: the channel opens
// the terminal side, the test plays the printer on the master side.
#include <poll.h>
#include <pty.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>

#include "TestSupport.h"
#include "sequence/Clock.h"
#include "transport/Fastcom.h"

namespace tavena {
namespace {

int64_t SteadyMs() {
  return std::chrono::duration_cast<std::chrono::milliseconds>(
             std::chrono::steady_clock::now().time_since_epoch())
      .count();
}

class FastComPty : public ::testing::Test {
 protected:
  void SetUp() override {
    char name[128] = {};
    ASSERT_EQ(openpty(&master_, &slave_, name, nullptr, nullptr), 0);
    path_ = name;
  }
  void TearDown() override {
    if (master_ >= 0) close(master_);
    close(slave_);
  }
  // What the channel sent, waiting until n bytes came or 2 s passed.
  std::string Read(size_t n) {
    std::string got;
    char buf[4096];
    for (const int64_t end = SteadyMs() + 2000; got.size() < n && SteadyMs() < end;) {
      pollfd p{master_, POLLIN, 0};
      if (poll(&p, 1, 20) <= 0) continue;
      const ssize_t r = read(master_, buf, sizeof buf);
      if (r > 0) got.append(buf, static_cast<size_t>(r));
    }
    return got;
  }
  bool Open(FastCom& com) { return com.Open(path_.c_str(), 1); }

  int master_ = -1;
  int slave_ = -1;
  std::string path_;
};

TEST(FastComLinuxNames, ComNamesMapToTtySAndLogBases) {
  const std::pair<const char*, const char*> paths[] = {
      {"com3", "/dev/ttyS2"}, {"\\\\.\\COM12", "/dev/ttyS11"},
      {"com0", ""},           {"/dev/ttyUSB0", "/dev/ttyUSB0"},
      {"com3x", ""},          {"ttyUSB0", ""}};
  for (const auto& [name, path] : paths) EXPECT_EQ(HostDevicePath(name), path) << name;
  EXPECT_EQ(LogBaseNameOf("\\\\.\\com12"), "ttyS11");
}

TEST_F(FastComPty, ACommandWrittenJustBeforeCloseArrivesWhole) {
  VirtualClock clock;  // the channel's own pauses pass at once
  ScopedClock scoped(&clock);
  std::string sent, got;
  char part[8];
  for (int i = 0; i < 50; ++i) {
    FastCom com;
    ASSERT_TRUE(Open(com));
    const std::string frame =
        "\x1bP7$p" + std::to_string(i) + ".00/8.00/5.00/0.00/101/101/100/\x1b\\";
    ASSERT_TRUE(com.Send(iBuffer(frame)));
    ASSERT_TRUE(com.Close());
    sent += frame;
    // A slow reader: a few bytes per command.
    pollfd p{master_, POLLIN, 0};
    const ssize_t r = poll(&p, 1, 1) > 0 ? read(master_, part, sizeof part) : 0;
    if (r > 0) got.append(part, static_cast<size_t>(r));
  }
  got += Read(sent.size() - got.size());
  EXPECT_EQ(got, sent);
}

TEST_F(FastComPty, OpenFailuresRawBytesAndNothingHangs) {
  test::TempDir dir;
  FastCom com;
  EXPECT_FALSE(com.Open("/dev/no-such-tty", 1));
  EXPECT_EQ(com.LastOpenError(), ENOENT);
  test::WriteFile(dir.file("plain"), "x");
  EXPECT_FALSE(com.Open(dir.file("plain").c_str(), 1));
  EXPECT_EQ(com.LastOpenError(), ENOTTY);

  // A port in use is refused, as on Windows.
  FastCom first;
  ASSERT_TRUE(Open(first));
  EXPECT_EQ(first.LogBaseName(), path_.substr(path_.rfind('/') + 1));
  EXPECT_FALSE(Open(com));
  EXPECT_EQ(com.LastOpenError(), EBUSY);
  EXPECT_TRUE(first.Close());
  ASSERT_TRUE(Open(com));
  const std::string frame("\x1bP0#s\r\x11\x13\n\x1b\\", 11);  // nothing translated
  ASSERT_TRUE(com.Send(iBuffer(frame)));
  EXPECT_EQ(Read(frame.size()), frame);

  // A reply without its terminator ends on silence.
  iBuffer reply;
  ASSERT_EQ(write(master_, "partial", 7), 7);
  int64_t start = SteadyMs();
  ASSERT_TRUE(com.ReadUntil(reply, 100, "\x1b\\"));
  EXPECT_EQ(reply.ToString(), "partial");
  EXPECT_GE(SteadyMs() - start, 100);
  EXPECT_LT(SteadyMs() - start, 600);
  com.Close();

  // Nobody reads: a write gives up at its time-out instead of blocking.
  int error = 0;
  std::unique_ptr<SerialDevice> device = OpenHostSerialDevice(path_, error);
  ASSERT_TRUE(device);
  device->Configure(LineSettings{}, SerialTimeouts{3, 1, 2, 0, 150});
  const std::string lot(1 << 20, 'w');
  uint32_t written = 0;
  start = SteadyMs();
  EXPECT_FALSE(device->Write(reinterpret_cast<const uint8_t*>(lot.data()), lot.size(), written));
  EXPECT_LT(written, lot.size());
  EXPECT_LT(SteadyMs() - start, 1500);
  device.reset();

  // The other side disappears: the read fails at once, the port is gone,
  // writes fail, close works.
  ASSERT_TRUE(Open(com));
  close(master_);
  master_ = -1;
  start = SteadyMs();
  EXPECT_FALSE(com.ReadUntil(reply, 1000, "x"));
  EXPECT_TRUE(com.DeviceGone());
  EXPECT_FALSE(com.Send(iBuffer("gone")));
  EXPECT_TRUE(com.Close());
  EXPECT_LT(SteadyMs() - start, 200);
}

}  // namespace
}  // namespace tavena

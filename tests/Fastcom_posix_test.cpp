// FastCom over a real pseudo-terminal pair, in real time: the channel opens
// the terminal side, the test plays the printer on the master side.
#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <thread>

#include "TestSupport.h"
#include "sequence/Messagelanguage.h"
#include "transport/Fastcom.h"

namespace tavena {
namespace {

using Ms = std::chrono::milliseconds;

int64_t SteadyMs() {
  return std::chrono::duration_cast<Ms>(std::chrono::steady_clock::now().time_since_epoch())
      .count();
}

class Pty {
 public:
  Pty() {
    char name[128] = {};
    if (openpty(&master_, &slave_, name, nullptr, nullptr) == 0) path_ = name;
  }
  ~Pty() {
    CloseMaster();
    if (slave_ >= 0) close(slave_);
  }
  const std::string& path() const { return path_; }
  int master() const { return master_; }
  void CloseMaster() {
    if (master_ >= 0) close(master_);
    master_ = -1;
  }
  void Write(const std::string& bytes) {
    ASSERT_EQ(write(master_, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
  }
  // What the channel sent, waiting until n bytes came or wait_ms passed.
  std::string Read(size_t n, int wait_ms = 2000) {
    std::string got;
    const int64_t end = SteadyMs() + wait_ms;
    char buf[4096];
    while (got.size() < n && SteadyMs() < end) {
      pollfd p{master_, POLLIN, 0};
      if (poll(&p, 1, 20) <= 0) continue;
      const ssize_t r = read(master_, buf, sizeof buf);
      if (r > 0) got.append(buf, static_cast<size_t>(r));
    }
    return got;
  }

 private:
  int master_ = -1;
  int slave_ = -1;
  std::string path_;
};

class FastComPty : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_FALSE(pty_.path().empty());
    MessageLanguage = 1;
  }
  void TearDown() override { MessageLanguage = 0; }
  std::string LogOf(const FastCom& com) {
    return test::ReadFile(logs_.file(com.LogBaseName() + "_log.txt"));
  }
  // Log lines without their time stamps.
  std::vector<std::string> LinesOf(const FastCom& com) {
    std::vector<std::string> lines;
    const std::string text = LogOf(com);
    for (size_t at = 0, end; at < text.size(); at = end + 2) {
      end = text.find("\r\n", at);
      lines.push_back(text.substr(at + 25, end - at - 25));
    }
    return lines;
  }

  Pty pty_;
  test::TempDir logs_;
  test::ScopedEnv env_{"TAVENA_LOG_DIR", logs_.str()};
};

TEST(FastComLinuxNames, ComNamesMapToTtySAndLogBases) {
  EXPECT_EQ(HostDevicePath("com3"), "/dev/ttyS2");
  EXPECT_EQ(HostDevicePath("COM1"), "/dev/ttyS0");
  EXPECT_EQ(HostDevicePath("\\\\.\\COM12"), "/dev/ttyS11");
  EXPECT_EQ(HostDevicePath("/dev/ttyUSB0"), "/dev/ttyUSB0");
  EXPECT_EQ(HostDevicePath("com0"), "");
  EXPECT_EQ(HostDevicePath("com3x"), "");
  EXPECT_EQ(HostDevicePath("ttyUSB0"), "");
  EXPECT_EQ(LogBaseNameOf("com3"), "ttyS2");
  EXPECT_EQ(LogBaseNameOf("\\\\.\\com12"), "ttyS11");
  EXPECT_EQ(LogBaseNameOf("/dev/ttyACM0"), "ttyACM0");
  EXPECT_EQ(LogBaseNameOf("com0"), "com0");
}

TEST_F(FastComPty, OpenCloseTwiceAndTheirLogLines) {
  FastCom com;
  com.SetLogging(true);
  ASSERT_TRUE(com.Open(pty_.path().c_str(), 1));
  EXPECT_EQ(com.port_name, pty_.path());
  EXPECT_EQ(com.LogBaseName(), pty_.path().substr(pty_.path().rfind('/') + 1));
  EXPECT_FALSE(com.Open(pty_.path().c_str(), 1));
  EXPECT_TRUE(com.IsOpen());
  ASSERT_TRUE(com.Close());
  EXPECT_FALSE(com.Close());
  MessageLanguage = 0;
  ASSERT_TRUE(com.Open(pty_.path().c_str(), 1));
  EXPECT_FALSE(com.Open(pty_.path().c_str(), 1));
  ASSERT_TRUE(com.Close());
  EXPECT_FALSE(com.Close());
  EXPECT_EQ(LinesOf(com), std::vector<std::string>({
                              "Serial port is opened.",
                              "Open opened serial port.",
                              "Close serial port.",
                              "Close closed serial port.",
                              "Otwarcie portu.",
                              "Pr\xf3"
                              "ba otwarcia otwartego portu.",
                              "Zamkni\xea"
                              "cie portu.",
                              "Pr\xf3"
                              "ba zamkni\xea"
                              "cia zamkni\xeatego portu.",
                          }));
  // Still usable after all that.
  ASSERT_TRUE(com.Open(pty_.path().c_str(), 1));
  EXPECT_TRUE(com.Send(iBuffer("again")));
  EXPECT_EQ(pty_.Read(5), "again");
}

TEST_F(FastComPty, OpenFailuresKeepTheReason) {
  FastCom com;
  com.SetLogging(true);
  EXPECT_FALSE(com.Open("/dev/no-such-tty", 1));
  EXPECT_EQ(com.LastOpenError(), ENOENT);
  EXPECT_EQ(LinesOf(com),
            std::vector<std::string>{"Can't open this serial port. Header is empty."});
  const std::string file = logs_.file("plain");
  test::WriteFile(file, "x");
  EXPECT_FALSE(com.Open(file.c_str(), 1));
  EXPECT_EQ(com.LastOpenError(), ENOTTY);
  EXPECT_FALSE(com.Open("x5", 1));  // com0: no such port
  EXPECT_EQ(com.port_name, "com0");
  EXPECT_EQ(com.LastOpenError(), ENOENT);

  // A port in use is refused, as on Windows.
  FastCom first;
  ASSERT_TRUE(first.Open(pty_.path().c_str(), 1));
  EXPECT_FALSE(com.Open(pty_.path().c_str(), 1));
  EXPECT_EQ(com.LastOpenError(), EBUSY);
  first.Close();
  EXPECT_TRUE(com.Open(pty_.path().c_str(), 1));
}

TEST_F(FastComPty, SendWholeAndByteByByte) {
  FastCom com;
  com.SetLogging(true);
  ASSERT_TRUE(com.Open(pty_.path().c_str(), 1));
  const std::string frame("\x1bP0#s\r\x11\x13\n\x1b\\", 11);  // raw: nothing translated
  ASSERT_TRUE(com.Send(iBuffer(frame)));
  EXPECT_EQ(pty_.Read(frame.size()), frame);

  com.byte_mode = true;
  std::string record;
  for (int i = 0; i < 40; ++i) record += static_cast<char>('A' + i % 26);
  const int64_t start = SteadyMs();
  ASSERT_TRUE(com.Send(iBuffer(record)));
  EXPECT_GE(SteadyMs() - start, 80);  // at least 2 ms after every byte
  EXPECT_EQ(pty_.Read(record.size()), record);
  EXPECT_EQ(com.BytesWritten(), 1u);

  // With XON/XOFF observed, an XOFF holds the line ~30 ms at most.
  com.honour_xon_xoff = true;
  pty_.Write("\x13");
  const int64_t held = SteadyMs();
  ASSERT_TRUE(com.Send(iBuffer("xyz")));
  EXPECT_GE(SteadyMs() - held, 30);
  EXPECT_LT(SteadyMs() - held, 500);
  EXPECT_EQ(pty_.Read(3), "xyz");
  const std::vector<std::string> lines = LinesOf(com);
  ASSERT_EQ(lines.size(), 4u);
  EXPECT_EQ(lines[1], "Send: " + frame);
  EXPECT_EQ(lines[2], "Send: " + record);
}

TEST_F(FastComPty, ReadUntilTerminatorSilenceAndTrickle) {
  FastCom com;
  com.SetLogging(true);
  ASSERT_TRUE(com.Open(pty_.path().c_str(), 1));
  iBuffer reply;
  pty_.Write("\x1bP1#X\x1b\\");
  int64_t start = SteadyMs();
  ASSERT_TRUE(com.ReadUntil(reply, 1000, "\x1b\\"));
  EXPECT_EQ(reply.ToString(), "\x1bP1#X\x1b\\");
  EXPECT_LT(SteadyMs() - start, 500);  // ended by the terminator, not the time-out

  pty_.Write("partial");
  start = SteadyMs();
  ASSERT_TRUE(com.ReadUntil(reply, 100, "\x1b\\"));
  EXPECT_EQ(reply.ToString(), "partial");
  EXPECT_GE(SteadyMs() - start, 100);
  EXPECT_LT(SteadyMs() - start, 600);

  // One byte every 5 ms for 300 ms never lets a 60 ms silence pass.
  std::thread trickle([&] {
    for (int i = 0; i < 60; ++i) {
      pty_.Write(std::string(1, static_cast<char>('a' + i % 26)));
      std::this_thread::sleep_for(Ms(5));
    }
    pty_.Write("#");
  });
  ASSERT_TRUE(com.ReadUntil(reply, 60, "#"));
  trickle.join();
  EXPECT_EQ(reply.Length(), 61);
  EXPECT_EQ(reply[60], '#');

  // The receive line keeps 80 of 200 bytes; ReadCount logs them all.
  std::string big;
  for (int i = 0; i < 200; ++i) big += static_cast<char>('0' + i % 10);
  pty_.Write(big);
  ASSERT_TRUE(com.ReadUntil(reply, 60, nullptr));
  EXPECT_EQ(reply.ToString(), big);
  pty_.Write(big);
  std::this_thread::sleep_for(Ms(50));
  iBuffer counted;
  ASSERT_TRUE(com.ReadCount(counted, 300));
  EXPECT_EQ(counted.ToString(), big);
  const std::vector<std::string> lines = LinesOf(com);
  ASSERT_EQ(lines.size(), 6u);
  EXPECT_EQ(lines[4], "Receive: " + big.substr(0, 80));
  EXPECT_EQ(lines[5], "Receive: " + big);
}

TEST_F(FastComPty, CaptureAndHoldOpen) {
  iBuffer captured;
  FastCom com;
  com.capture_buffer = &captured;
  ASSERT_TRUE(com.Open(pty_.path().c_str(), 1));
  ASSERT_TRUE(com.Send(iBuffer("to file")));
  EXPECT_EQ(captured.ToString(), "to file");
  EXPECT_EQ(pty_.Read(1, 100), "");  // nothing reached the line
  EXPECT_TRUE(com.Close());

  com.capture_buffer = nullptr;
  com.hold_open = true;
  ASSERT_TRUE(com.Open(pty_.path().c_str(), 1));
  EXPECT_TRUE(com.Close());
  ASSERT_TRUE(com.Send(iBuffer("held")));
  EXPECT_EQ(pty_.Read(4), "held");
  com.hold_open = false;
  EXPECT_TRUE(com.Close());
  EXPECT_FALSE(com.IsOpen());
}

TEST_F(FastComPty, NothingHangsWhenTheOtherSideMisbehaves) {
  // Nobody reads: a write gives up at its time-out instead of blocking.
  int error = 0;
  std::unique_ptr<SerialDevice> device = OpenHostSerialDevice(pty_.path(), error);
  ASSERT_TRUE(device);
  device->Configure(LineSettings{}, SerialTimeouts{3, 1, 2, 0, 150});
  const std::string lot(1 << 20, 'w');
  uint32_t written = 0;
  int64_t start = SteadyMs();
  EXPECT_FALSE(device->Write(reinterpret_cast<const uint8_t*>(lot.data()), lot.size(), written));
  EXPECT_LT(written, lot.size());
  EXPECT_LT(SteadyMs() - start, 1500);
  device.reset();

  // A flood without a terminator ends at the reply limit.
  FastCom com;
  ASSERT_TRUE(com.Open(pty_.path().c_str(), 1));
  fcntl(pty_.master(), F_SETFL, O_NONBLOCK);
  std::atomic<bool> stop{false};
  std::thread flood([&] {
    const std::string chunk(4096, 'f');
    while (!stop) {
      if (write(pty_.master(), chunk.data(), chunk.size()) < 0) {
        pollfd p{pty_.master(), POLLOUT, 0};
        poll(&p, 1, 10);
      }
    }
  });
  iBuffer reply;
  start = SteadyMs();
  EXPECT_TRUE(com.ReadUntil(reply, 50, "never"));
  stop = true;
  flood.join();
  EXPECT_GE(reply.Length(), 1 << 20);
  EXPECT_LT(SteadyMs() - start, 60000);

  // The other side disappears: reads end, writes fail, close works.
  pty_.CloseMaster();
  start = SteadyMs();
  EXPECT_TRUE(com.ReadUntil(reply, 50, "x"));
  EXPECT_FALSE(com.Send(iBuffer("gone")));
  EXPECT_TRUE(com.Close());
  EXPECT_LT(SteadyMs() - start, 2000);
}

}  // namespace
}  // namespace tavena

// FastCom over a scripted device on the virtual clock: naming, open and
// close steps, log lines, byte mode with XON/XOFF, WINE chunking, retries,
// reads. Runs on Linux and (cross-built) on Windows.
#include "transport/Fastcom.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <memory>

#include "Fakeserial.h"
#include "TestSupport.h"
#include "sequence/Messagelanguage.h"
#include "transport/Createdirectory.h"
#include "transport/Filelog.h"

namespace tavena {
namespace {

using test::FakeSerialState;
using test::ScopedFakeSerial;
using test::ScopedWine;

// Lines of one port's log file, without their time stamps.
class PortLog {
 public:
  PortLog() {
#ifndef _WIN32
    env_ = std::make_unique<test::ScopedEnv>("TAVENA_LOG_DIR", dir_.str());
#endif
  }
  ~PortLog() {
    for (const std::string& p : touched_) std::remove(p.c_str());
  }
  std::string Path(const std::string& base) {
    const std::string path = LogFolder() + kPathSeparator + base + "_log.txt";
#ifdef _WIN32
    std::string on_c = path;
    on_c[0] = static_cast<char>(on_c[0] - 1);
    touched_.push_back(on_c);
    if (!std::filesystem::exists(path)) return on_c;
#endif
    touched_.push_back(path);
    return path;
  }
  std::vector<std::string> Lines(const std::string& base) {
    const std::string text = test::ReadFile(Path(base));
    std::vector<std::string> lines;
    for (size_t at = 0; at < text.size();) {
      size_t end = text.find("\r\n", at);
      if (end == std::string::npos) end = text.size();
      lines.push_back(text.substr(at + 25, end - at - 25));  // "yyyy.mm.dd hh:mm:ss.mmm> "
      at = end + 2;
    }
    return lines;
  }
  void Clear(const std::string& base) {
    std::remove(Path(base).c_str());
  }

 private:
  test::TempDir dir_;
  std::unique_ptr<test::ScopedEnv> env_;
  std::vector<std::string> touched_;
};

class FastComFake : public ::testing::Test {
 protected:
  void SetUp() override { MessageLanguage = 1; }
  void TearDown() override { MessageLanguage = 0; }
  FakeSerialState& dev() { return *fake_.state; }
  int64_t Now() { return clock_.NowMs(); }

  VirtualClock clock_;
  ScopedClock scoped_{&clock_};
  ScopedWine windows_{false};  // the Windows write unless a test says otherwise
  ScopedFakeSerial fake_;
  PortLog log_;
};

TEST(FastComNames, PortNumberOfAndMakePortName) {
  EXPECT_EQ(PortNumberOf("COM12"), 12);
  EXPECT_EQ(PortNumberOf("cOm12"), 12);
  EXPECT_EQ(PortNumberOf("com9"), 9);
  EXPECT_EQ(PortNumberOf("x5"), 0);
  EXPECT_EQ(PortNumberOf("12"), 0);
  EXPECT_EQ(PortNumberOf("\\\\.\\com12"), 0);  // device-namespace form gives 0
  EXPECT_EQ(PortNumberOf("/dev/ttyS3"), 0);
  EXPECT_EQ(PortNumberOf("/17"), 17);
  EXPECT_EQ(PortNumberOf("/7"), 0);  // shorter than 3
  EXPECT_EQ(PortNumberOf(".15x"), 15);
  EXPECT_EQ(PortNumberOf("COM"), 0);
  EXPECT_EQ(PortNumberOf("co"), 0);
  EXPECT_EQ(PortNumberOf(""), 0);

  EXPECT_STREQ(MakePortName("com", 5), "com5");
  EXPECT_STREQ(MakePortName("com12", 3), "com3");
  EXPECT_STREQ(MakePortName("COM1x", 7), "COM1x7");
  EXPECT_STREQ(MakePortName("7", 4), "74");  // the first character is never stripped
  const char* first = MakePortName("com", 1);
  MakePortName("com", 2);
  EXPECT_STREQ(first, "com2");  // one static buffer
}

TEST_F(FastComFake, OpenByNumberNamesTheDeviceAndProgramsIt) {
  FastCom com;
  com.baud_rate = 9600;
  ASSERT_TRUE(com.Open("COM12", 1));
  EXPECT_EQ(com.port_name, "\\\\.\\com12");
  EXPECT_EQ(com.read_timeout_constant, 2);
  EXPECT_EQ(dev().queue_size, 30000u);
  EXPECT_EQ(dev().escapes, std::vector<uint32_t>{15});
  EXPECT_EQ(dev().purges, std::vector<uint32_t>{15});
  EXPECT_EQ(dev().line.baud_rate, 9600);
  EXPECT_FALSE(dev().line.abort_on_error);
  EXPECT_FALSE(dev().line.tx_continue_on_xoff);
  const SerialTimeouts& t = dev().timeouts;
  EXPECT_EQ(std::vector<uint32_t>({t.read_interval, t.read_multiplier, t.read_constant,
                                   t.write_multiplier, t.write_constant}),
            std::vector<uint32_t>({3, 1, 2, 1, 20000}));
  EXPECT_EQ(Now(), 10);  // settles 10 ms after opening

  EXPECT_FALSE(com.Open("com3", 50));  // already open: refused, first open kept
  EXPECT_EQ(com.port_name, "\\\\.\\com12");
  ASSERT_TRUE(com.Close());
  EXPECT_EQ(dev().escapes, std::vector<uint32_t>({15, 15}));
  EXPECT_TRUE(dev().closed);
  EXPECT_EQ(Now(), 110);  // 100 ms pause before closing

  ASSERT_TRUE(com.Open("com9", 50));
  EXPECT_EQ(com.port_name, "com9");
  EXPECT_EQ(dev().timeouts.read_constant, 50u);
  com.Close();
  com.Open("x5", 1);
  com.Close();
  com.Open("Com10", 1);
  com.Close();
  com.Open("12", 1);
  com.Close();
  EXPECT_EQ(dev().opened_names,
            std::vector<std::string>({"\\\\.\\com12", "com9", "com0", "\\\\.\\com10", "com0"}));
}

TEST_F(FastComFake, OpenNamedUsesShortTimeoutsAndItsOwnLogLine) {
  MessageLanguage = 0;
  FastCom com;
  com.SetLogging(true);
  ASSERT_TRUE(com.OpenNamed("com3"));
  EXPECT_EQ(com.read_timeout_constant, 10);
  EXPECT_EQ(dev().queue_size, 0u);  // no queue setup, escape or purge
  EXPECT_TRUE(dev().escapes.empty());
  EXPECT_TRUE(dev().purges.empty());
  EXPECT_TRUE(dev().line.abort_on_error);
  EXPECT_TRUE(dev().line.tx_continue_on_xoff);
  const SerialTimeouts& t = dev().timeouts;
  EXPECT_EQ(std::vector<uint32_t>({t.read_interval, t.read_multiplier, t.read_constant,
                                   t.write_multiplier, t.write_constant}),
            std::vector<uint32_t>({1, 1, 10, 1, 200}));
  EXPECT_EQ(log_.Lines(com.LogBaseName()), std::vector<std::string>{"Otwarcie portu 115200"});
  com.Close();

  FastCom high;
  ASSERT_TRUE(high.OpenNamed("com10"));
  EXPECT_EQ(high.port_name, "\\\\.\\com10");
  high.Close();
  ASSERT_TRUE(high.OpenNamed("COM9"));
  EXPECT_EQ(high.port_name, "COM9");  // kept as given
  high.Close();

  dev().open_error = 5;
  FastCom failing;
  failing.SetLogging(true);
  log_.Clear(com.LogBaseName());
  EXPECT_FALSE(failing.OpenNamed("com3"));  // fails silently
  EXPECT_EQ(failing.LastOpenError(), 5);
  EXPECT_TRUE(log_.Lines(failing.LogBaseName()).empty());
}

TEST_F(FastComFake, OpenFailureKeepsTheReasonAndLogs) {
  dev().open_error = EACCES;
  FastCom com;
  com.SetLogging(true);
  EXPECT_FALSE(com.Open("com4", 1));
  EXPECT_FALSE(com.IsOpen());
  EXPECT_EQ(com.LastOpenError(), EACCES);
  EXPECT_FALSE(com.Send(iBuffer("x")));
  EXPECT_FALSE(com.Close());
  EXPECT_EQ(
      log_.Lines(com.LogBaseName()),
      std::vector<std::string>({"Can't open this serial port. Header is empty.",
                                "Zapis do nie otwartego portu.", "Close closed serial port."}));
  dev().open_error = 0;
  EXPECT_TRUE(com.Open("com4", 1));
  EXPECT_EQ(com.LastOpenError(), 0);
}

TEST_F(FastComFake, LogLinesFollowTheLanguageAndKeepRecordBytes) {
  FastCom com;
  com.SetLogging(true);
  ASSERT_TRUE(com.Open("com2", 1));
  const std::string record("\x1bP1#s\x1b\\", 7);
  ASSERT_TRUE(com.Send(iBuffer(record)));
  MessageLanguage = 0;
  ASSERT_TRUE(com.Send(iBuffer(std::string("ab\0cd", 5))));  // the line ends at the zero byte
  EXPECT_EQ(dev().written, record + std::string("ab\0cd", 5));
  EXPECT_FALSE(com.Open("com2", 1));
  ASSERT_TRUE(com.Close());
  EXPECT_FALSE(com.Close());
  MessageLanguage = 1;
  EXPECT_FALSE(com.Close());
  const std::string base = com.LogBaseName();
  EXPECT_EQ(log_.Lines(base), std::vector<std::string>({
                                  "Serial port is opened.",
                                  "Send: " + record,
                                  "Wys\xb3"
                                  "ano: ab",
                                  "Pr\xf3"
                                  "ba otwarcia otwartego portu.",
                                  "Zamkni\xea"
                                  "cie portu.",
                                  "Pr\xf3"
                                  "ba zamkni\xea"
                                  "cia zamkni\xeatego portu.",
                                  "Close closed serial port.",
                              }));
  EXPECT_EQ(test::ReadFile(log_.Path(base)).substr(0, 25), "2012.05.14 09:03:07.250> ");
}

TEST_F(FastComFake, CaptureAndHoldOpen) {
  iBuffer captured;
  FastCom com;
  com.SetLogging(true);
  com.capture_buffer = &captured;
  ASSERT_TRUE(com.Open("com7", 1));
  EXPECT_TRUE(dev().opened_names.empty());  // no device behind a capture
  EXPECT_TRUE(com.Send(iBuffer("AB")));
  EXPECT_TRUE(com.SendRetry(iBuffer("CD")));
  EXPECT_EQ(captured.ToString(), "ABCD");
  iBuffer reply;
  EXPECT_FALSE(com.ReadUntil(reply, 10, nullptr));
  EXPECT_FALSE(com.ReadCount(reply, 5));
  EXPECT_TRUE(com.Close());
  EXPECT_TRUE(com.IsOpen());  // closing a capture changes nothing
  EXPECT_EQ(log_.Lines(com.LogBaseName()), std::vector<std::string>{"Zapis do pliku."});

  com.capture_buffer = nullptr;
  com.hold_open = true;
  ASSERT_TRUE(com.Open("com7", 1));
  EXPECT_TRUE(com.Close());
  EXPECT_TRUE(com.IsOpen());
  EXPECT_FALSE(dev().closed);
  EXPECT_TRUE(com.Send(iBuffer("EF")));
  EXPECT_EQ(dev().written, "EF");
  com.hold_open = false;
  EXPECT_TRUE(com.Close());
  EXPECT_TRUE(dev().closed);
}

TEST_F(FastComFake, ByteModeObservesXoffForAtMostThirtyMs) {
  FastCom com;
  ASSERT_TRUE(com.Open("com1", 1));
  com.byte_mode = true;
  com.honour_xon_xoff = true;
  // XOFF right after the first byte, nothing after it.
  dev().on_write = [n = 0](const std::string&) mutable { return ++n == 1 ? "\x13" : ""; };
  ASSERT_TRUE(com.Send(iBuffer("ABCD")));
  EXPECT_EQ(dev().written, "ABCD");
  ASSERT_EQ(dev().write_times.size(), 4u);
  const int64_t pause = dev().write_times[1] - dev().write_times[0];
  EXPECT_GE(pause, 32);  // held for more than 30 ms after the XOFF ...
  EXPECT_LE(pause, 35);  // ... and not much longer
  EXPECT_LE(dev().write_times[2] - dev().write_times[1], 3);
  EXPECT_EQ(dev().transmit_waits, 4);

  // XON 10 ms after the XOFF resumes at once; other bytes are dropped.
  dev().write_times.clear();
  dev().on_write = [&, n = 0](const std::string&) mutable {
    if (++n == 1) dev().arrivals.emplace(Now() + 10, "Z\x11");
    return n == 1 ? "\x13" : "";
  };
  ASSERT_TRUE(com.Send(iBuffer("EFG")));
  EXPECT_EQ(dev().written, "ABCDEFG");
  const int64_t resumed = dev().write_times[1] - dev().write_times[0];
  EXPECT_GE(resumed, 10);
  EXPECT_LE(resumed, 15);

  // Without honouring, an XOFF changes nothing.
  com.honour_xon_xoff = false;
  dev().write_times.clear();
  dev().on_write = [](const std::string&) { return "\x13"; };
  ASSERT_TRUE(com.Send(iBuffer("HI")));
  EXPECT_EQ(dev().write_times[1] - dev().write_times[0], 2);
}

TEST_F(FastComFake, XoffPauseWrapsAtMidnight) {
  VirtualClock late(LocalTime{2012, 5, 14, 23, 59, 59, 980});  // XOFF comes at .992
  ScopedClock scoped(&late);
  // A broken wrap would pause for ever: release it after 5 s so the test ends.
  late.SetOnAdvance([&](int64_t now) {
    if (now > 5000) dev().incoming += "\x11";
  });
  FastCom com;
  ASSERT_TRUE(com.Open("com1", 1));
  com.byte_mode = true;
  com.honour_xon_xoff = true;
  dev().on_write = [n = 0](const std::string&) mutable { return ++n == 1 ? "\x13" : ""; };
  ASSERT_TRUE(com.Send(iBuffer("AB")));
  ASSERT_EQ(dev().write_times.size(), 2u);
  EXPECT_LE(dev().write_times[1] - dev().write_times[0], 35);
  EXPECT_GE(dev().write_times[1] - dev().write_times[0], 32);
}

TEST_F(FastComFake, WineWritesIn64ByteChunksAfterTheQueueDrains) {
  ScopedWine wine(true);
  FastCom com;
  EXPECT_TRUE(com.UnderWine());
  ASSERT_TRUE(com.Open("com5", 1));
  EXPECT_EQ(dev().queue_size, 16384u);
  dev().report_zero_written = true;  // as WINE's driver does
  dev().drain_ms_per_byte = 1;       // 64 bytes take 64 ms to leave
  const std::string record(130, 'x');
  const int64_t start = Now();
  ASSERT_TRUE(com.Send(iBuffer(record)));
  EXPECT_EQ(dev().write_sizes, std::vector<uint32_t>({64, 64, 2}));
  EXPECT_EQ(com.BytesWritten(), 130u);
  EXPECT_EQ(dev().written, record);
  // Each chunk waits for the previous one in 20 ms polls: 64 ms -> 80 ms.
  EXPECT_EQ(dev().write_times[0], start);
  EXPECT_EQ(dev().write_times[1] - dev().write_times[0], 80);
  EXPECT_EQ(dev().write_times[2] - dev().write_times[1], 80);

  // A queue that stops draining: the first chunk goes, 300 ms pass, failure.
  dev().never_drains = true;
  dev().tx_pending = 0;
  dev().write_sizes.clear();
  com.SetLogging(true);
  const int64_t before = Now();
  EXPECT_FALSE(com.Send(iBuffer(record)));
  EXPECT_EQ(Now() - before, 300);
  EXPECT_EQ(dev().write_sizes, std::vector<uint32_t>{64});
  EXPECT_EQ(log_.Lines(com.LogBaseName()),
            std::vector<std::string>{"This record isn't send completelly."});
}

TEST_F(FastComFake, SendRetryGivesUpAfterTwentyMs) {
  FastCom com;
  com.SetLogging(true);
  ASSERT_TRUE(com.Open("com1", 1));
  dev().write_accepts_nothing = true;
  int64_t start = Now();
  EXPECT_FALSE(com.SendRetry(iBuffer("QR")));
  EXPECT_EQ(dev().write_sizes.size(), 4u);
  EXPECT_EQ(Now() - start, 20);

  // Taken on the third attempt.
  dev().write_sizes.clear();
  dev().on_write = [&](const std::string&) {
    dev().write_accepts_nothing = dev().write_sizes.size() < 2;
    return "";
  };
  start = Now();
  EXPECT_TRUE(com.SendRetry(iBuffer("ST")));
  EXPECT_EQ(dev().write_sizes.size(), 3u);
  EXPECT_EQ(Now() - start, 10);
  EXPECT_EQ(dev().written, "ST");
  EXPECT_EQ(log_.Lines(com.LogBaseName()),
            std::vector<std::string>({"Serial port is opened.", "Can't to send itQR", "Send: ST"}));
}

TEST_F(FastComFake, WriteFailingHalfWay) {
  FastCom com;
  com.SetLogging(true);
  ASSERT_TRUE(com.Open("com1", 1));
  MessageLanguage = 0;
  dev().accept_limit = 3;
  EXPECT_FALSE(com.Send(iBuffer("ABCDEF")));
  EXPECT_EQ(com.BytesWritten(), 3u);
  com.byte_mode = true;
  dev().accept_limit = 5;
  EXPECT_FALSE(com.Send(iBuffer("GHIJ")));
  EXPECT_EQ(dev().written, "ABCGH");
  EXPECT_EQ(log_.Lines(com.LogBaseName()), std::vector<std::string>({"Serial port is opened.",
                                                                     "Nie wys\xb3"
                                                                     "ano rekordu w komplecie.",
                                                                     "Nie mo\xbf"
                                                                     "na tego wys\xb3"
                                                                     "a\xe6"
                                                                     "GHIJ"}));
}

TEST_F(FastComFake, ReadUntilEndsOnTerminatorOrSilence) {
  FastCom com;
  com.SetLogging(true);
  ASSERT_TRUE(com.Open("com1", 1));
  iBuffer reply("old");
  // timeout 0 still waits one 20 ms pause
  int64_t start = Now();
  EXPECT_TRUE(com.ReadUntil(reply, 0, "\x1b\\"));
  EXPECT_EQ(Now() - start, 20);
  EXPECT_TRUE(reply.Empty());

  // A byte every 15 ms outlasts a 30 ms time-out; the terminator ends the read.
  start = Now();
  for (int i = 0; i < 10; ++i) dev().arrivals.emplace(start + 15 * i, std::string(1, 'a' + i));
  dev().arrivals.emplace(start + 150, "\x1b\\");
  EXPECT_TRUE(com.ReadUntil(reply, 30, "\x1b\\"));
  EXPECT_EQ(reply.ToString(), "abcdefghij\x1b\\");
  EXPECT_EQ(Now() - start, 160);  // read at the first 20 ms poll after it came

  // No terminator: silence of the time-out ends the read.
  dev().arrivals.emplace(Now(), "xyz");
  start = Now();
  EXPECT_TRUE(com.ReadUntil(reply, 50, "\x03"));
  EXPECT_EQ(reply.ToString(), "xyz");
  EXPECT_EQ(Now() - start, 60);

  // A terminator followed by a zero byte ends the read only with match anywhere.
  const std::string zeroed("ab\x03\0xy", 6);
  dev().arrivals.emplace(Now(), zeroed);
  start = Now();
  EXPECT_TRUE(com.ReadUntil(reply, 40, "\x03"));
  EXPECT_EQ(reply.ToString(), zeroed);
  EXPECT_EQ(Now() - start, 40);
  com.match_anywhere = true;
  dev().arrivals.emplace(Now(), zeroed);
  start = Now();
  EXPECT_TRUE(com.ReadUntil(reply, 40, "\x03"));
  EXPECT_EQ(reply.ToString(), zeroed);
  EXPECT_EQ(Now() - start, 0);
  com.match_anywhere = false;

  // The receive line holds the first 80 bytes; ReadCount logs everything.
  std::string big;
  for (int i = 0; i < 200; ++i) big += static_cast<char>('0' + i % 10);
  dev().arrivals.emplace(Now(), big);
  EXPECT_TRUE(com.ReadUntil(reply, 20, nullptr));
  EXPECT_EQ(reply.ToString(), big);
  dev().incoming = big;
  iBuffer counted("pre");
  EXPECT_TRUE(com.ReadCount(counted, 500));
  EXPECT_EQ(counted.ToString(), "pre" + big);
  const std::vector<std::string> lines = log_.Lines(com.LogBaseName());
  ASSERT_GE(lines.size(), 2u);
  EXPECT_EQ(lines[lines.size() - 2], "Receive: " + big.substr(0, 80));
  EXPECT_EQ(lines.back(), "Receive: pre" + big);
}

TEST_F(FastComFake, ReadCountAndQueues) {
  FastCom com;
  iBuffer reply;
  EXPECT_FALSE(com.ReadCount(reply, 3));
  EXPECT_EQ(com.InQueue(), 0u);
  ASSERT_TRUE(com.Open("com1", 1));
  dev().incoming = "12345";
  EXPECT_EQ(com.InQueue(), 5u);
  EXPECT_TRUE(com.ReadCount(reply, 3));
  EXPECT_EQ(reply.ToString(), "123");
  EXPECT_TRUE(com.ReadCount(reply, 0));  // count < 1: as much as fits
  EXPECT_EQ(reply.ToString(), "12345");
  EXPECT_TRUE(com.ReadCount(reply, 4));  // nothing waits: nothing appended
  EXPECT_EQ(reply.ToString(), "12345");
  uint8_t byte = 0;
  uint32_t got = 7;
  EXPECT_FALSE(com.ReadAvailable(&byte, 1, got));
  EXPECT_EQ(got, 0u);
  dev().drain_ms_per_byte = 10;
  com.Send(iBuffer("abc"));
  EXPECT_EQ(com.OutQueue(), 3u);
  clock_.Advance(15);
  EXPECT_EQ(com.OutQueue(), 2u);
  com.Close();
  EXPECT_EQ(com.OutQueue(), 0u);
}

}  // namespace
}  // namespace tavena

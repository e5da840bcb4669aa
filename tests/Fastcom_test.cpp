// FastCom over a scripted device on the virtual clock; also cross-built for Windows.
#include "transport/Fastcom.h"

#include <gtest/gtest.h>

#include <cerrno>

#include "Fakeserial.h"
#include "TestSupport.h"
#include "sequence/Messagelanguage.h"
#include "transport/Createdirectory.h"
#include "transport/Filelog.h"

namespace tavena {
namespace {

using Lines = std::vector<std::string>;

// A port's log lines without their "yyyy.mm.dd hh:mm:ss.mmm> " stamps; the file is removed.
Lines TakeLog(const std::string& base) {
  std::string path = LogFolder() + kPathSeparator + base + "_log.txt";
#ifdef _WIN32
  if (!std::filesystem::exists(path)) path[0] = static_cast<char>(path[0] - 1);
#endif
  const std::string text = test::ReadFile(path);
  std::remove(path.c_str());
  Lines lines;
  for (size_t at = 0, end; at < text.size(); at = end + 2) {
    end = std::min(text.find("\r\n", at), text.size());
    lines.push_back(text.substr(at + 25, end - at - 25));
  }
  return lines;
}

std::vector<uint32_t> TimeoutsOf(const SerialTimeouts& t) {
  return {t.read_interval, t.read_multiplier, t.read_constant, t.write_multiplier,
          t.write_constant};
}

class FastComFake : public ::testing::Test {
 protected:
  void SetUp() override { MessageLanguage = 1; }
  void TearDown() override {
    com_.SetLogging(false);  // no closing line after the test took its log
    MessageLanguage = 0;
  }
  test::FakeSerialState& dev() { return *fake_.state; }
  int64_t Now() { return clock_.NowMs(); }
  Lines Log() { return TakeLog(com_.LogBaseName()); }
  // Gaps between the device's writes since the last call.
  std::vector<int64_t> WriteGaps() {
    std::vector<int64_t> gaps;
    for (size_t i = 1; i < dev().write_times.size(); ++i)
      gaps.push_back(dev().write_times[i] - dev().write_times[i - 1]);
    dev().write_times.clear();
    return gaps;
  }

  VirtualClock clock_;
  ScopedClock scoped_{&clock_};
  test::ScopedWine windows_{false};  // the Windows write unless a test says otherwise
  test::ScopedFakeSerial fake_;
  test::TempDir logs_;
#ifndef _WIN32
  test::ScopedEnv log_dir_{"TAVENA_LOG_DIR", logs_.str()};
#endif
  FastCom com_;
};

TEST(FastComNames, PortNumberOfAndMakePortName) {
  const std::pair<const char*, int> numbers[] = {
      {"COM12", 12},     {"cOm12", 12}, {"com9", 9}, {"x5", 0},    {"12", 0},  {"\\\\.\\com12", 0},
      {"/dev/ttyS3", 0}, {"/17", 17},   {"/7", 0},   {".15x", 15}, {"COM", 0}, {"", 0}};
  for (const auto& [text, number] : numbers) EXPECT_EQ(PortNumberOf(text), number) << text;

  EXPECT_STREQ(MakePortName("com12", 3), "com3");
  EXPECT_STREQ(MakePortName("COM1x", 7), "COM1x7");
  EXPECT_STREQ(MakePortName("7", 4), "74");  // the first character is never stripped
}

TEST_F(FastComFake, OpenByNumberOrByNameProgramsTheDevice) {
  com_.baud_rate = 9600;
  ASSERT_TRUE(com_.Open("COM12", 1));
  EXPECT_EQ(dev().queue_size, 30000u);
  EXPECT_EQ(dev().escapes, std::vector<uint32_t>{15});
  EXPECT_EQ(dev().purges, std::vector<uint32_t>{15});
  EXPECT_EQ(dev().line.baud_rate, 9600);
  EXPECT_FALSE(dev().line.abort_on_error || dev().line.tx_continue_on_xoff);
  EXPECT_EQ(TimeoutsOf(dev().timeouts), std::vector<uint32_t>({3, 1, 2, 1, 20000}));
  EXPECT_EQ(Now(), 10);  // settles 10 ms after opening
  ASSERT_TRUE(com_.Close());
  EXPECT_EQ(dev().escapes, std::vector<uint32_t>({15, 15}));
  EXPECT_TRUE(dev().closed);
  EXPECT_EQ(Now(), 110);  // 100 ms pause before closing
  ASSERT_TRUE(com_.Open("com9", 50));
  EXPECT_EQ(dev().timeouts.read_constant, 50u);
  EXPECT_EQ(dev().opened_names, Lines({"\\\\.\\com12", "com9"}));
  com_.Close();

  // By name: short time-outs, no queue set-up, escape or purge, silent failure.
  dev() = {};
  dev().open_error = 5;
  com_.SetLogging(true);
  MessageLanguage = 0;
  EXPECT_FALSE(com_.OpenNamed("COM9"));
  EXPECT_EQ(com_.LastOpenError(), 5);
  dev().open_error = 0;
  ASSERT_TRUE(com_.OpenNamed("COM9"));
  EXPECT_EQ(dev().queue_size, 0u);
  EXPECT_TRUE(dev().escapes.empty() && dev().purges.empty());
  EXPECT_TRUE(dev().line.abort_on_error && dev().line.tx_continue_on_xoff);
  EXPECT_EQ(TimeoutsOf(dev().timeouts), std::vector<uint32_t>({1, 1, 10, 1, 200}));
  EXPECT_EQ(Log(), Lines{"Otwarcie portu 9600"});  // the baud rate, not the port
  com_.SetLogging(false);
  com_.Close();
  ASSERT_TRUE(com_.OpenNamed("com10"));
  EXPECT_EQ(dev().opened_names, Lines({"COM9", "COM9", "\\\\.\\com10"}));  // as given below 10
}

TEST_F(FastComFake, LogLinesAndCapture) {
  dev().open_error = EACCES;
  com_.SetLogging(true);
  EXPECT_FALSE(com_.Open("com2", 1));
  EXPECT_EQ(com_.LastOpenError(), EACCES);
  EXPECT_FALSE(com_.Send(iBuffer("x")));
  EXPECT_FALSE(com_.Close());
  dev().open_error = 0;
  ASSERT_TRUE(com_.Open("com2", 1));
  const std::string record("\x1bP1#s\x1b\\", 7);
  ASSERT_TRUE(com_.Send(iBuffer(record)));
  MessageLanguage = 0;
  ASSERT_TRUE(com_.Send(iBuffer(std::string("ab\0cd", 5))));  // the line ends at the zero byte
  EXPECT_EQ(dev().written, record + std::string("ab\0cd", 5));
  EXPECT_FALSE(com_.Open("com2", 1));
  ASSERT_TRUE(com_.Close());
  EXPECT_FALSE(com_.Close());
  EXPECT_EQ(Log(),
            Lines({"Can't open this serial port. Header is empty.", "Zapis do nie otwartego portu.",
                   "Close closed serial port.", "Serial port is opened.", "Send: " + record,
                   "Wys\263ano: ab", "Pr\363ba otwarcia otwartego portu.", "Zamkni\352cie portu.",
                   "Pr\363ba zamkni\352cia zamkni\xeatego portu."}));

  // A capture: sends go to the buffer, reads fail, Close changes nothing.
  iBuffer captured;
  com_.capture_buffer = &captured;
  ASSERT_TRUE(com_.Open("com7", 1));
  EXPECT_EQ(dev().opened_names.size(), 2u);  // no device behind a capture
  EXPECT_TRUE(com_.Send(iBuffer("AB")));
  EXPECT_TRUE(com_.SendRetry(iBuffer("CD")));
  iBuffer reply;
  EXPECT_FALSE(com_.ReadUntil(reply, 10, nullptr));
  EXPECT_FALSE(com_.ReadCount(reply, 5));
  EXPECT_TRUE(com_.Close());
  EXPECT_TRUE(com_.Send(iBuffer("E")));
  EXPECT_EQ(captured.ToString(), "ABCDE");
  EXPECT_EQ(Log(), Lines({"Zapis do pliku.", "Zapis do pliku."}));
}

TEST_F(FastComFake, ByteModeObservesXoffForAtMostThirtyMs) {
  ASSERT_TRUE(com_.Open("com1", 1));
  com_.byte_mode = true;
  com_.honour_xon_xoff = true;
  // XOFF after the first byte and no XON: held just over 30 ms, then 2 ms a byte.
  const auto xoff_once = [n = 0](const std::string&) mutable { return ++n == 1 ? "\x13" : ""; };
  dev().on_write = xoff_once;
  ASSERT_TRUE(com_.Send(iBuffer("ABCD")));
  std::vector<int64_t> gaps = WriteGaps();
  ASSERT_EQ(gaps.size(), 3u);
  EXPECT_TRUE(gaps[0] > 30 && gaps[0] <= 35) << gaps[0];
  EXPECT_EQ(gaps[1] + gaps[2], 4);
  EXPECT_EQ(dev().transmit_waits, 4);
  // XON 10 ms after the XOFF resumes at once; other bytes are dropped.
  dev().on_write = [&, n = 0](const std::string&) mutable {
    if (++n == 1) dev().arrivals.emplace(Now() + 10, "Z\x11");
    return n == 1 ? "\x13" : "";
  };
  ASSERT_TRUE(com_.Send(iBuffer("EFG")));
  EXPECT_EQ(dev().written, "ABCDEFG");
  gaps = WriteGaps();
  EXPECT_TRUE(gaps.at(0) >= 10 && gaps.at(0) <= 15) << gaps[0];
  // An XOFF at 23:59:59.992 still ends after 30 ms (a broken wrap: the XON at 5 s).
  VirtualClock late(LocalTime{2012, 5, 14, 23, 59, 59, 980});
  ScopedClock scoped(&late);
  late.SetOnAdvance([&](int64_t now) {
    if (now > 5000) dev().incoming += "\x11";
  });
  dev().on_write = xoff_once;
  ASSERT_TRUE(com_.Send(iBuffer("JK")));
  gaps = WriteGaps();
  EXPECT_TRUE(gaps.at(0) > 30 && gaps.at(0) <= 35) << gaps[0];
}

TEST_F(FastComFake, WineWritesIn64ByteChunksAfterTheQueueDrains) {
  test::ScopedWine wine(true);
  FastCom com;
  ASSERT_TRUE(com.Open("com5", 1));
  EXPECT_EQ(dev().queue_size, 16384u);
  dev().report_zero_written = true;  // as WINE's driver does
  dev().drain_ms_per_byte = 1;       // 64 bytes take 64 ms to leave
  const std::string record(130, 'x');
  ASSERT_TRUE(com.Send(iBuffer(record)));
  EXPECT_EQ(dev().write_sizes, std::vector<uint32_t>({64, 64, 2}));
  EXPECT_EQ(com.BytesWritten(), 130u);
  // Each chunk waits for the previous one in 20 ms polls: 64 ms -> 80 ms.
  EXPECT_EQ(WriteGaps(), std::vector<int64_t>({80, 80}));
  // A queue that stops draining: the first chunk goes, 300 ms pass, failure.
  dev().drain_ms_per_byte = 1 << 30;
  dev().tx_pending = 0;
  dev().write_sizes.clear();
  com.SetLogging(true);
  const int64_t before = Now();
  EXPECT_FALSE(com.Send(iBuffer(record)));
  EXPECT_EQ(Now() - before, 300);
  EXPECT_EQ(dev().write_sizes, std::vector<uint32_t>{64});
  EXPECT_EQ(TakeLog(com.LogBaseName()), Lines{"This record isn't send completelly."});
  com.SetLogging(false);
}

TEST_F(FastComFake, RetriesAndWritesFailingHalfWay) {
  com_.SetLogging(true);
  ASSERT_TRUE(com_.Open("com1", 1));
  // SendRetry tries every 5 ms for 20 ms.
  dev().accept_limit = 0;
  const int64_t start = Now();
  EXPECT_FALSE(com_.SendRetry(iBuffer("QR")));
  EXPECT_EQ(dev().write_sizes.size(), 4u);
  EXPECT_EQ(Now() - start, 20);
  // Taken on the third attempt.
  dev().write_sizes.clear();
  dev().on_write = [&](const std::string&) {
    dev().accept_limit = dev().write_sizes.size() < 2 ? 0 : -1;
    return "";
  };
  EXPECT_TRUE(com_.SendRetry(iBuffer("ST")));
  EXPECT_EQ(dev().write_sizes.size(), 3u);
  dev().on_write = nullptr;
  // Whole and byte-by-byte writes that stop half way.
  MessageLanguage = 0;
  dev().accept_limit = 5;
  EXPECT_FALSE(com_.Send(iBuffer("ABCDEF")));
  EXPECT_EQ(com_.BytesWritten(), 3u);
  com_.byte_mode = true;
  dev().accept_limit = 7;
  EXPECT_FALSE(com_.Send(iBuffer("GHIJ")));
  EXPECT_EQ(dev().written, "STABCGH");
  EXPECT_EQ(Log(),
            Lines({"Serial port is opened.", "Can't to send itQR", "Send: ST",
                   "Nie wys\263ano rekordu w komplecie.", "Nie mo\277na tego wys\263a\346GHIJ"}));
}

TEST_F(FastComFake, ReadsAndQueues) {
  iBuffer reply("old");
  EXPECT_FALSE(com_.ReadUntil(reply, 0, nullptr));
  EXPECT_FALSE(com_.ReadCount(reply, 3));
  ASSERT_TRUE(com_.Open("com1", 1));
  // A time-out of 0 still waits one 20 ms pause.
  int64_t start = Now();
  EXPECT_TRUE(com_.ReadUntil(reply, 0, "\x1b\\"));
  EXPECT_EQ(Now() - start, 20);
  EXPECT_TRUE(reply.Empty());

  // A byte every 15 ms outlasts a 30 ms time-out; the terminator ends the read.
  start = Now();
  for (int i = 0; i < 10; ++i) dev().arrivals.emplace(start + 15 * i, std::string(1, 'a' + i));
  dev().arrivals.emplace(start + 150, "\x1b\\");
  EXPECT_TRUE(com_.ReadUntil(reply, 30, "\x1b\\"));
  EXPECT_EQ(reply.ToString(), "abcdefghij\x1b\\");

  // A line that never falls silent: cut at the time-out plus max(2 s, time-out).
  for (const auto& [timeout, limit] : {std::pair{30, 2030}, {3000, 6000}}) {
    start = Now();
    for (int t = 0; t < 7000; t += 15) dev().arrivals.emplace(start + t, "~");
    EXPECT_TRUE(com_.ReadUntil(reply, timeout, "\x1b\\") && com_.ReadCut());
    EXPECT_TRUE(Now() - start >= limit && Now() - start < limit + 20) << Now() - start;
    dev().arrivals.clear();
  }

  // The receive line holds the first 80 bytes.
  com_.SetLogging(true);
  std::string big;
  for (int i = 0; i < 200; ++i) big += static_cast<char>('0' + i % 10);
  dev().arrivals.emplace(Now(), big);
  EXPECT_TRUE(com_.ReadUntil(reply, 20, nullptr));
  EXPECT_EQ(reply.ToString(), big);
  EXPECT_EQ(Log(), Lines{"Receive: " + big.substr(0, 80)});

  // ReadCount appends up to count waiting bytes and logs the whole reply.
  dev().incoming = "12345";
  EXPECT_EQ(com_.InQueue(), 5u);
  iBuffer counted("pre");
  EXPECT_TRUE(com_.ReadCount(counted, 3));
  EXPECT_EQ(counted.ToString(), "pre123");
  EXPECT_TRUE(com_.ReadCount(counted, 0));  // count < 1: as much as fits
  EXPECT_TRUE(com_.ReadCount(counted, 4));  // nothing waits: nothing appended
  dev().incoming = big;
  EXPECT_TRUE(com_.ReadCount(counted, 500));
  EXPECT_EQ(counted.ToString(), "pre12345" + big);
  EXPECT_EQ(Log(), Lines({"Receive: pre123", "Receive: pre12345", "Receive: pre12345",
                          "Receive: pre12345" + big}));
  com_.SetLogging(false);
  com_.Close();
  dev().incoming = "x";
  EXPECT_EQ(com_.InQueue(), 0u);
}

}  // namespace
}  // namespace tavena

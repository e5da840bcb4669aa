// Frames, control bytes and confirmed streams of the printer object over a
// scripted device on virtual time: bytes on the wire, waits and exchange lines.
#include <gtest/gtest.h>

#include <deque>
#include <filesystem>
#include <tuple>

#include "Fakeserial.h"
#include "TestSupport.h"
#include "protocol/Drukarka.h"
#include "sequence/Clock.h"
#include "sequence/Messagelanguage.h"
#include "transport/Createdirectory.h"
#include "transport/Filelog.h"
#include "transport/Serialdevice.h"

namespace tavena {
namespace {

using Strings = std::vector<std::string>;

// The fixture is the monitor too.
class DrukarkaFramesTest : public ::testing::Test, public MonitorSink {
 protected:
  void AppendLine(const std::string& line) override { lines_.push_back(line); }
  // Each write takes the next reply (if any), which arrives delay_ms_ later.
  void SetUp() override {
    serial_.state->on_write = [this](const std::string&) {
      if (replies_.empty()) return std::string();
      serial_.state->arrivals.emplace(NowMs() + delay_ms_, replies_.front());
      replies_.pop_front();
      return std::string();
    };
    printer_.SetPort("com3", 9600);
    printer_.SetLabels("L1", "L2");
    printer_.monitor = this;
    ASSERT_TRUE(printer_.Open());
    start_ = NowMs();
  }
  void TearDown() override {
    printer_.Close();
    MessageLanguage = 0;
  }
  // Time since the last lap (or the set-up); starts the next lap.
  int64_t Lap() {
    const int64_t lap = NowMs() - start_;
    start_ = NowMs();
    return lap;
  }
  void Reply(const std::string& bytes) { replies_.push_back(bytes); }
  // Each write since the last call.
  Strings TakeWrites() {
    Strings out;
    size_t at = 0;
    for (const uint32_t size : serial_.state->write_sizes) {
      out.push_back(serial_.state->written.substr(at, size));
      at += size;
    }
    serial_.state->written.clear();
    serial_.state->write_sizes.clear();
    return out;
  }
  const std::string& LastLine() const { return lines_.back(); }

  VirtualClock clock_;
  ScopedClock scoped_{&clock_};
  test::ScopedFakeSerial serial_;
  std::deque<std::string> replies_;
  int delay_ms_ = 20;
  Strings lines_;
  test::ScopedWine wine_{false};  // one write per record, also in the Windows suite
  Drukarka printer_;
  int64_t start_ = 0;
};

TEST_F(DrukarkaFramesTest, FramesAndControlBytesOnTheWire) {
  ASSERT_TRUE(printer_.SendFramed("0#e"));
  ASSERT_TRUE(printer_.SendFramedNoSum("#v"));
  ASSERT_TRUE(printer_.SendFramed("\xB9"));  // 'ą' in Windows-1250
  EXPECT_TRUE(printer_.SendBEL());
  EXPECT_EQ(TakeWrites(), (Strings{"\x1bP0#e89\x1b\\", "\x1bP#v\x1b\\",
                                   "\x1bP\x86"
                                   "79\x1b\\",
                                   "\x07"}));
  // The monitor shows the frames in Windows-1250, in Polish by default.
  EXPECT_EQ(lines_[0], "<com3><L1,L2> Zapytanie: \x1bP0#e89\x1b\\");
  EXPECT_EQ(lines_[2],
            "<com3><L1,L2> Zapytanie: \x1bP\xB9"
            "79\x1b\\");

  Reply("\x6C");
  EXPECT_EQ(printer_.QueryENQ(), 0x6C);
  Reply("\x61\x62\x68");
  EXPECT_EQ(printer_.QueryENQ(), 0x68);  // several bytes: the last counts
  Lap();
  EXPECT_EQ(printer_.QueryENQ(), -1);  // no answer: 300 polls of 5 ms
  EXPECT_EQ(Lap(), 1500);
  Reply("\x74");
  EXPECT_EQ(printer_.QueryDLE(), 0x74);
  Lap();
  EXPECT_EQ(printer_.QueryDLE(), -1);  // 80 polls of 10 ms
  EXPECT_EQ(Lap(), 800);
  Reply("\x80");  // read as a signed byte: no communication
  EXPECT_EQ(printer_.QueryENQ(), -128);
  EXPECT_EQ(TakeWrites(), (Strings{"\x05", "\x05", "\x05", "\x10", "\x10", "\x05"}));

  printer_.Close();  // nothing goes out on a closed channel
  EXPECT_FALSE(printer_.SendFramed("0#e"));
  EXPECT_EQ(TakeWrites(), Strings{});
}

// The log file of a port (on Windows the folder may have fallen back from d: to c:).
std::string LogPath(const std::string& port) {
  std::string path = LogFolder() + kPathSeparator + LogBaseNameOf(port) + "_log.txt";
#ifdef _WIN32
  if (!std::filesystem::exists(path)) path[0] = static_cast<char>(path[0] - 1);
#endif
  return path;
}

TEST_F(DrukarkaFramesTest, ExchangeLinesInLogAndMonitorBothLanguages) {
  test::TempDir dir;
  test::ScopedEnv env("TAVENA_LOG_DIR", dir.str());
  const size_t before = test::ReadFile(LogPath("com3")).size();
  // Logging off: the monitor gets the lines, the log nothing.
  Reply("\x6C");
  EXPECT_EQ(printer_.QueryENQ(), 0x6C);
  EXPECT_EQ(test::ReadFile(LogPath("com3")).size(), before);
  EXPECT_EQ(lines_, (Strings{"<com3><L1,L2> Zapytanie: \x05", "<com3><L1,L2> Odpowied\x9F: 0x6C"}));

  printer_.SetLogging(true);
  MessageLanguage = 1;
  Reply("\x6C");
  printer_.QueryENQ();
  printer_.QueryDLE();
  MessageLanguage = 0;
  printer_.QueryDLE();
  const std::string text = test::ReadFile(LogPath("com3")).substr(before);
  for (const char* line : {"Question: \x05", "Answer: 0x6C", "No answer.", "Brak odpowiedzi."})
    EXPECT_NE(text.find("> <com3><L1,L2> " + std::string(line) + "\r\n"), std::string::npos)
        << line << text;
  EXPECT_EQ(LastLine(), "<com3><L1,L2> Brak odpowiedzi.");

  printer_.SetLabels(std::string(25, 'a'), "b");  // labels are cut to 19 characters
  printer_.SendBEL();
  EXPECT_EQ(LastLine(), "<com3><" + std::string(19, 'a') + ",b> Zapytanie: \x07");
}

TEST_F(DrukarkaFramesTest, FramedAnswersAndQueryTimeOuts) {
  // Mazovia 'ą' (86) in the answer reads back as Windows-1250 B9.
  Reply("\x1bP1#C12;05;31;23;59;00;\x86\x1b\\");
  printer_.SendFramedNoSum("0#c");
  ASSERT_TRUE(printer_.ReadAnswer(200));
  EXPECT_EQ(printer_.answer, "\x1bP1#C12;05;31;23;59;00;\xB9\x1b\\");
  EXPECT_EQ(LastLine(), "<com3><L1,L2> Odpowied\x9F: " + printer_.answer);

  EXPECT_FALSE(printer_.ReadAnswer(200));  // silence
  EXPECT_EQ(printer_.answer, "");
  Reply("\x1bP1#C12;05");  // cut short: kept, but not an answer
  printer_.SendFramedNoSum("0#c");
  EXPECT_FALSE(printer_.ReadAnswer(200));
  EXPECT_EQ(printer_.answer, "\x1bP1#C12;05");
  EXPECT_EQ(LastLine(), "<com3><L1,L2> Brak odpowiedzi.");

  // Bytes that never stop: the read is cut after 200 + 2000 ms and reported.
  Lap();
  for (int t = 0; t < 5000; t += 15) serial_.state->arrivals.emplace(NowMs() + t, "~");
  EXPECT_FALSE(printer_.ReadAnswer(200));
  EXPECT_TRUE(printer_.LineNotQuiet());
  EXPECT_LT(Lap(), 2200 + 20);
  EXPECT_EQ(lines_.end()[-2], "<com3><L1,L2> Port nie ucich\xb3 w ci\xb9gu 2200 ms.");
  serial_.state->arrivals.clear();

  // Silence: each query waits its own time and gives its default.
  Lap();
  TakeWrites();
  EXPECT_EQ(printer_.ReadClock(), "1980-01-01 00:00");
  EXPECT_FALSE(printer_.LastReadOk());
  EXPECT_EQ(Lap(), 200);
  EXPECT_EQ(printer_.ReadStatus(0, 1), "");
  EXPECT_EQ(Lap(), 1000);
  EXPECT_EQ(printer_.ReadIdentity(1), "");
  EXPECT_EQ(Lap(), 2000);
  EXPECT_EQ(TakeWrites(), (Strings{"\x1bP0#c\x1b\\", "\x1bP0#s\x1b\\", "\x1bP#v\x1b\\"}));

  // A status answer cut off before its end mark is no answer, also raw.
  for (const int parameter : {0, 22}) {
    Reply("\x1bP1#X0;1;0;0;0;5;12;5;31;");
    EXPECT_EQ(printer_.ReadStatus(parameter, 1), "");
    EXPECT_FALSE(printer_.LastReadOk());
  }
  // Parameter 22 gives the whole answer as it came, end mark included.
  Reply("\x1bP1#X0;1;0;0;0;5;12;5;31;\x1b\\");
  EXPECT_EQ(printer_.ReadStatus(22, 1), "\x1bP1#X0;1;0;0;0;5;12;5;31;\x1b\\");
  EXPECT_EQ(TakeWrites().back(), "\x1bP22#s\x1b\\");
}

TEST_F(DrukarkaFramesTest, RatesFollowTheSubtypeOfTheQx1Families) {
  const std::array<double, 7> rates = {23, 8, 5, 0, kVatInactive, kVatInactive, kVatExempt};
  const std::string flags = "\x1bP7;0;0;0;0;1;1;2$p23.00/8.00/5.00/0.00/0.00/0.00/0.00/98\x1b\\";
  const std::string two_digit = "\x1bP7$p23.00/8.00/5.00/0.00/101/101/100/BE\x1b\\";
  // Only type codes 4 and 6 set the subtype: a LUMEN after a QX-1 keeps it.
  for (const auto& [identity, type, subtype, frame] :
       {std::tuple{"\x1bP1#RTAVENA LUMEN/1.05\x1b\\", 1, 0, flags},
        {"\x1bP3#RTAVENA QX-1/4.10\x1b\\", 4, 3, two_digit},
        {"\x1bP1#RTAVENA LUMEN/1.05\x1b\\", 1, 3, two_digit},
        {"\x1bP?\x1b\\", 1, 3, two_digit}}) {  // no "#R": nothing changes
    Reply(identity);
    printer_.ReadIdentity(1);
    EXPECT_EQ(printer_.type_code, type) << identity;
    EXPECT_EQ(printer_.subtype, subtype) << identity;
    ASSERT_TRUE(printer_.SetVatRates(rates));
    EXPECT_EQ(TakeWrites().back(), frame) << identity;
  }
}

TEST_F(DrukarkaFramesTest, StreamBlocksAndConfirmations) {
  const std::string f1 = "\x1bPAAAAAA\x1b\\", f2 = "\x1bPBBBBBB\x1b\\", f3 = "\x1bPCCCCCC\x1b\\";
  Reply("\x6C");  // below the limit: one block and one ENQ
  EXPECT_TRUE(printer_.SendStreamConfirmed(iBuffer(f1 + f2), 100));
  EXPECT_EQ(TakeWrites(), Strings{f1 + f2 + "\x05"});
  // Limit 15: the frame end that takes the count over 15 ends the block.
  Reply("\x6C");
  Reply("\x6C");
  std::vector<std::pair<size_t, size_t>> progress;
  printer_.stream_progress = [&](size_t done, size_t total) { progress.emplace_back(done, total); };
  EXPECT_TRUE(printer_.SendStreamConfirmed(iBuffer(f1 + f2 + f3), 15));
  printer_.stream_progress = nullptr;
  EXPECT_EQ(progress, (std::vector<std::pair<size_t, size_t>>{{20, 30}, {30, 30}}));
  EXPECT_EQ(TakeWrites(), (Strings{f1 + f2 + "\x05", f3 + "\x05"}));
  // No frame end: the stream goes whole; one byte left over after the last
  // cut is not sent; a one-byte stream sends nothing.
  Reply("\x6C");
  EXPECT_TRUE(printer_.SendStreamConfirmed(iBuffer(std::string("ABC")), 2));
  Reply("\x6C");
  EXPECT_TRUE(printer_.SendStreamConfirmed(iBuffer(f1 + "Z"), 5));
  EXPECT_TRUE(printer_.SendStreamConfirmed(iBuffer(std::string("Q")), 5));
  EXPECT_TRUE(printer_.SendStreamConfirmed(iBuffer(), 5));
  EXPECT_EQ(TakeWrites(), (Strings{"ABC\x05", f1 + "\x05"}));

  // 0x4C is not a status byte: ENQ goes again, then 0x6C confirms.
  Reply("\x4C");
  Reply("\x6C");
  EXPECT_TRUE(printer_.SendStreamConfirmed(iBuffer(f1), 5));
  EXPECT_EQ(TakeWrites(), (Strings{f1 + "\x05", "\x05"}));
  Reply("\x68");  // bit 2 clear: the stream stops at the first block
  EXPECT_FALSE(printer_.SendStreamConfirmed(iBuffer(f1 + f2), 5));
  EXPECT_EQ(TakeWrites().size(), 1u);
  // Silence: the waits double from 10 ms until the 5000 ms are used up.
  Lap();
  EXPECT_FALSE(printer_.SendStreamConfirmed(iBuffer(f1 + f2), 5));
  EXPECT_EQ(Lap(), 10 + 20 + 40 + 80 + 160 + 320 + 640 + 1280 + 2560);
  EXPECT_EQ(TakeWrites().size(), 1u);
  // An answer after 1 s still confirms.
  delay_ms_ = 1000;
  Reply("\x6C");
  EXPECT_TRUE(printer_.SendStreamConfirmed(iBuffer(f1), 5));
}

}  // namespace
}  // namespace tavena

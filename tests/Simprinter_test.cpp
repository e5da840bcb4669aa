// The simulated printer against hand-built frames on a caller-given time line: the
// refusals (error numbers of docs/protocol.md) and faults. The accepted commands'
// effects are checked through the printer object in DrukarkaSim_test.
#include "sim/Simprinter.h"

#include <gtest/gtest.h>

#include "TestSupport.h"
#include "sequence/Codepage.h"

namespace tavena {
namespace {

using test::Hex;

const std::string kEnd = "\x1B\\";
const std::string kLumenIdentity = "\x1BP0#RTAVENA LUMEN/1.05" + kEnd;

std::string Framed(const std::string& body) {
  return "\x1BP" + body + ControlSumHex(body) + kEnd;
}
std::string Bare(const std::string& body) {
  return "\x1BP" + body + kEnd;
}

// A printer whose host clock stands at 2012-05-14 09:03:07 unless moved.
class SimPrinterTest : public ::testing::Test {
 protected:
  std::unique_ptr<SimPrinter> Make(const std::string& model) {
    auto found = FindSimModel(model);
    EXPECT_TRUE(found.has_value()) << model;
    return std::make_unique<SimPrinter>(*found, [this] { return host_; });
  }
  // Sends bytes at time t and takes everything that has arrived 1 s later.
  std::string Talk(SimPrinter& p, const std::string& bytes) {
    p.Receive(bytes, t_);
    t_ += 1000;
    return p.Take(t_);
  }
  std::string Enq(SimPrinter& p) { return Hex(Talk(p, "\x05")); }
  std::string ErrorOf(SimPrinter& p) { return Talk(p, Framed("0#e")); }
  int LastError(SimPrinter& p) { return p.Record().frames.back().error; }
  // Sends each body with its sum; the printer makes error of each (-1: none).
  void Run(SimPrinter& p, int error, const std::vector<std::string>& bodies) {
    for (const std::string& body : bodies) {
      Talk(p, Framed(body));
      EXPECT_EQ(LastError(p), error) << Hex(body);
    }
  }
  LocalTime host_{2012, 5, 14, 9, 3, 7, 0};
  int64_t t_ = 0;
};

TEST_F(SimPrinterTest, ControlBytesSumsAndUnknownCommands) {
  auto p = Make("LUMEN");
  EXPECT_EQ(Enq(*p), "65");
  EXPECT_EQ(Hex(Talk(*p, "\x10")), "74");
  p->State().paper_out = p->State().mechanism_error = true;
  p->State().online = false;
  EXPECT_EQ(Hex(Talk(*p, "\x10")), "73");
  // One answer per control byte, the status of its moment.
  p->State().in_transaction = p->State().fiscal = true;
  EXPECT_EQ(Hex(Talk(*p, "\x05\x0A\x07\x05")), "6F 6F");
  p = Make("LUMEN");
  EXPECT_EQ(Talk(*p, "\x1BP0#e89" + kEnd), "\x1BP1#E-1;8F" + kEnd);
  // A wrong sum, or a command without its sum: no answer, ENQ bit 2 clear, error 2.
  for (const std::string& frame : {"\x1BP0#e88" + kEnd, Bare("0$e")}) {
    EXPECT_EQ(Talk(*p, frame), "");
    EXPECT_EQ(Enq(*p), "61");
    EXPECT_EQ(ErrorOf(*p), "\x1BP1#E2;A1" + kEnd);
  }
  // Right sum, unknown command: error 0. Lower-case sum digits are read too.
  Talk(*p, Framed("0#q"));
  EXPECT_EQ(Enq(*p), "61");
  EXPECT_EQ(ErrorOf(*p), "\x1BP1#E0;A3" + kEnd);
  Talk(*p, "\x1BP0$e8e" + kEnd);
  EXPECT_EQ(LastError(*p), -1);
}

TEST_F(SimPrinterTest, ClockFollowsTheHostAndItsFiscalRules) {
  auto p = Make("LUMEN");
  EXPECT_EQ(Talk(*p, Bare("0#c")), "\x1BP1#C12;05;14;09;03;07;A0" + kEnd);
  Run(*p, -1, {"12;5;31;23;59;0$c"});
  EXPECT_EQ(Talk(*p, Bare("0#c")), "\x1BP1#C12;05;31;23;59;00;A7" + kEnd);
  // The offset stays while the host clock moves on: a minute later it is midnight.
  host_.minute = 4;
  EXPECT_EQ(p->Commands().ClockText(), "1#C12;06;01;00;00;00;");
  // Month 13, 31 April, minute 60; a missing field.
  Run(*p, 4, {"12;13;1;0;0;0$c", "12;4;31;0;0;0$c", "12;5;31;23;60;0$c"});
  Run(*p, 3, {"12;5;31;23;0$c"});
  EXPECT_EQ(p->Commands().ClockText(), "1#C12;06;01;00;00;00;");

  // Fiscal: not before the last record; more than an hour once per report.
  auto fiscal = Make("LUMEN");
  fiscal->State().fiscal = true;
  fiscal->State().last_record = SimDate{2012, 5, 10};
  Run(*fiscal, 7, {"12;5;9;10;0;0$c"});
  Run(*fiscal, -1, {"12;5;14;12;0;0$c", "12;5;14;12;30;0$c"});
  Run(*fiscal, 10, {"12;5;14;14;0;0$c"});
  EXPECT_EQ(Enq(*fiscal), "69");
}

TEST_F(SimPrinterTest, VatRatesHeaderAndFiscalisation) {
  const std::string flags = "7;0;0;0;0;1;1;2$p23.00/8.00/5.00/0.00/0.00/0.00/0.00/";
  const std::string two_digit = "7$p23.00/8.00/5.00/0.00/101/101/100/";
  const std::array<double, 7> wanted = {
      23, 8, 5, 0, kSimRateInactive, kSimRateInactive, kSimRateExempt};
  auto p = Make("SOLIDA");
  auto qx = Make("QX-1");
  qx->State().rates = {};
  Run(*p, 3, {two_digit});  // each printer takes its own form only
  Run(*qx, 3, {flags});
  Run(*qx, -1, {two_digit});
  EXPECT_EQ(qx->State().rates, wanted);
  // Two exempt rates; new rates with money in the totals.
  Run(*qx, 11, {"7$p100/100/1/2/3/4/5/"});
  qx->State().totals[0] = 1;
  Run(*qx, 8, {"7$p22.00/8.00/5.00/0.00/101/101/100/"});
  Run(*qx, -1, {two_digit});  // the same rates again change nothing
  EXPECT_EQ(qx->State().rate_changes, 1);

  // A Polish letter arrives in Mazovia and is kept in Windows-1250.
  Run(*p, -1, {ToMazovia("0$f\xA3\363d\xBC\r\xFF")});
  EXPECT_EQ(p->State().header, std::vector<std::string>{"\xA3\363d\xBC"});
  // Refused: no 0xFF, nine lines, 41 characters, a control byte, blanks only.
  Run(*p, 12,
      {"0$fA\r", "0$fA\rA\rA\rA\rA\rA\rA\rA\rA\r\xFF", "0$f" + std::string(41, 'x') + "\r\xFF",
       "0$fA\007B\r\xFF", "0$f   \r\xFF"});
  EXPECT_EQ(p->State().header_changes, 1);
  EXPECT_EQ(Enq(*p), "61");

  Run(*p, 14, {"0$fNIP 123/45/67/890\xFF"});
  Talk(*p, "\x1BP0$fNIP 123-45-67-890\37729" + kEnd);
  EXPECT_EQ(LastError(*p), -1);
  EXPECT_EQ(p->State().nip, "123-45-67-890");
  EXPECT_EQ(p->State().last_record, (SimDate{2012, 5, 14}));
  EXPECT_EQ(p->Commands().StatusText().substr(0, 25), "1#X0;1;0;1;0;1;12;05;14;2");
}

TEST_F(SimPrinterTest, ReceiptsReportsAndOtherCommands) {
  auto p = Make("LUMEN");
  Run(*p, 21, {"1$lTowar testowy 1gr\r1\rA/0.01/0.01/"});  // sale outside a receipt
  Run(*p, 29, {"1;0;3;0$eNRS5555\rStopka 1\rStopka 2\rStopka 3\r0.01/0.01/"});
  // Refusals inside a receipt clear bit 0 and leave the receipt open.
  Run(*p, -1, {"0$h"});
  Run(*p, 99, {"0$h"});
  Run(*p, 34, {"1;2$lX\r1\rA/0.10/0.10/"});
  EXPECT_EQ(Enq(*p), "62");
  Run(*p, -1, {"1;2$lX\r3\rB/0.10/0.30/5/"});
  Run(*p, 27, {"1;0;0;0$eK\r0.31/1.00/"});
  Run(*p, 26, {"1;0;0;0$eK\r0.30/0.20/"});
  Run(*p, -1, {"1;0;0;0;1$eK\r0.30/1.00/0.70"});
  // A cancelled receipt leaves the totals alone.
  Run(*p, -1, {"0$h", "1$lX\r1\rA/5.00/5.00/", "0$e"});
  EXPECT_FALSE(p->State().in_transaction);
  EXPECT_EQ(p->State().totals, (std::array<double, 7>{0, 0.30}));
  EXPECT_DOUBLE_EQ(p->State().further_amount, 0.30);
  EXPECT_EQ(p->State().receipts, 1);
  Run(*p, -1, {"0$h"});
  Run(*p, 95, {"1;12;05;14#r"});  // no report during a receipt
  Run(*p, -1, {"0;3$eb\rc\ra\r"});
  // No daily report yet: the first-report answer holds no date.
  EXPECT_EQ(Talk(*p, "\x1BP2;0;0;1#r96" + kEnd), "\x1BP2#RBC" + kEnd);
  p->State().fiscal = true;
  Run(*p, 4, {"1;12;05;13#r"});  // not the printer's date
  Talk(*p, "\x1BP1;12;05;14#rA7" + kEnd);
  EXPECT_EQ(LastError(*p), -1);
  EXPECT_EQ(p->State().receipts, 0);
  EXPECT_EQ(p->State().totals, (std::array<double, 7>{}));
  EXPECT_EQ(Talk(*p, "\x1BP2;0;0;1#r96" + kEnd), "\x1BP2#R2012-05-14;86" + kEnd);
  // Periodic reports: the second date not before the first; cash commands 0..3; "&c".
  Run(*p, 4, {"12;5;14;12;5;1;0#o", "12;2;30;12;5;1;0#o", "4#b"});
  Run(*p, 0, {"x&c"});
}

TEST_F(SimPrinterTest, FramingAndFaults) {
  auto p = Make("LUMEN");
  // CAN drops a frame in progress; ESC P restarts one; stray bytes are ignored.
  EXPECT_EQ(Talk(*p, "\x1BP0#\030ab\r\n \x1BPxx\x1BP0#e89" + kEnd), "\x1BP1#E-1;8F" + kEnd);
  EXPECT_EQ(p->Record().frames.size(), 1u);
  for (const char c : Bare("#v")) p->Receive(std::string(1, c), t_);  // one byte a write
  EXPECT_EQ(p->Take(t_), kLumenIdentity);

  p = Make("LUMEN");
  SimFaults& f = p->Faults();
  f.enq_answers = "\x4C\x68";  // scripted ENQ answers, then the status again
  EXPECT_EQ(Hex(Talk(*p, "\x05\x05\x05")), "4C 68 65");
  f.garbage = std::string("\x00\xFFzz", 4);
  f.bad_answer_sum = true;
  EXPECT_EQ(Hex(Talk(*p, "\x10")), "00 FF 7A 7A 74");
  EXPECT_EQ(Talk(*p, Framed("0#e")), f.garbage + "\x1BP1#E-1;00" + kEnd);
  f.garbage.clear();
  f.bad_answer_sum = false;
  f.xoff = true;  // XOFF at the start of every frame, never an XON
  EXPECT_EQ(Talk(*p, Bare("#v")), "\x13" + kLumenIdentity);
}

}  // namespace
}  // namespace tavena

// The simulated printer model against hand-built frames: exact answer
// bytes, state changes, faults and the line rate on a caller-given time line.
#include "sim/Simprinter.h"

#include <gtest/gtest.h>

#include "TestSupport.h"
#include "sequence/Codepage.h"

namespace tavena {
namespace {

using test::Hex;

const std::string kEnd = "\x1B\\";

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
  // Sends each body with its sum; the printer makes error of each.
  void Run(SimPrinter& p, int error, const std::vector<std::string>& bodies) {
    for (const std::string& body : bodies) {
      Talk(p, Framed(body));
      EXPECT_EQ(LastError(p), error) << Hex(body);
    }
  }
  LocalTime host_{2012, 5, 14, 9, 3, 7, 0};
  int64_t t_ = 0;
};

TEST_F(SimPrinterTest, ControlBytesAnswerTheStatusBits) {
  auto p = Make("LUMEN");
  EXPECT_EQ(Enq(*p), "65");                // command ok, last transaction ok
  EXPECT_EQ(Hex(Talk(*p, "\x10")), "74");  // on-line
  EXPECT_EQ(Talk(*p, "\x07\x07"), "");
  EXPECT_EQ(p->State().bells, 2);
  p->State().paper_out = p->State().mechanism_error = true;
  p->State().online = false;
  EXPECT_EQ(Hex(Talk(*p, "\x10")), "73");
  // Several control bytes give several answers, the status of each moment.
  p->State().in_transaction = p->State().fiscal = true;
  EXPECT_EQ(Hex(Talk(*p, "\x05\x0A\x05")), "6F 6F");
  EXPECT_EQ(p->Record().enq, 3);
  EXPECT_EQ(p->Record().dle, 2);
  EXPECT_EQ(p->Record().bel, 2);
}

TEST_F(SimPrinterTest, ControlSumsAndUnknownCommands) {
  EXPECT_EQ(ControlSumHex("0#e"), "89");
  EXPECT_EQ(ControlSumHex("0$e"), "8E");
  auto p = Make("LUMEN");
  // The error query: last error -1 (none yet), answered with a sum.
  EXPECT_EQ(Talk(*p, "\x1BP0#e89" + kEnd), "\x1BP1#E-1;8F" + kEnd);
  // A wrong sum, or a command without its sum: no answer, ENQ bit 2
  // cleared, error 2.
  for (const std::string& frame : {"\x1BP0#e88" + kEnd, Bare("0$e")}) {
    EXPECT_EQ(Talk(*p, frame), "");
    EXPECT_EQ(Enq(*p), "61");
    EXPECT_EQ(ErrorOf(*p), "\x1BP1#E2;A1" + kEnd);
    EXPECT_EQ(Enq(*p), "65");  // the error query itself went well
  }
  EXPECT_EQ(p->Record().frames[1].body, "0#e88");
  EXPECT_FALSE(p->Record().frames[1].sum_ok);
  // Right sum, unknown command: error 0. Lower-case sum digits are read too.
  Talk(*p, Framed("0#q"));
  EXPECT_EQ(p->Record().frames.back().command, "#q");
  EXPECT_EQ(Enq(*p), "61");
  EXPECT_EQ(ErrorOf(*p), "\x1BP1#E0;A3" + kEnd);
  Talk(*p, "\x1BP0$e8e" + kEnd);
  EXPECT_EQ(LastError(*p), kErrNone);

  // "ą" goes out as Mazovia 0x86; the sum is over that byte, not Windows-1250.
  const std::string cp1250 = "1$lMi\271d\r2\rA/1.50/3.00/";
  const std::string body = ToMazovia(cp1250);
  ASSERT_NE(body.find('\x86'), std::string::npos);
  Run(*p, kErrNone, {"0$h", body});
  EXPECT_EQ(p->Record().frames.back().text, cp1250 + ControlSumHex(body));
  Talk(*p, "\x1BP" + body + ControlSumHex(cp1250) + kEnd);
  EXPECT_EQ(LastError(*p), kErrControlSum);
}

TEST_F(SimPrinterTest, ModelsAndSearchProbes) {
  for (const char* unknown : {"QX-1:x", "LUMEN:3", "KASA"}) EXPECT_FALSE(FindSimModel(unknown));
  EXPECT_EQ(FindSimModel("qx-1tr:2")->subtype, 2);
  EXPECT_FALSE(FindSimModel("SOLIDA")->TwoDigitRates());
  EXPECT_TRUE(FindSimModel("QX-1")->TwoDigitRates());
  EXPECT_FALSE(FindSimModel("QX-1:2")->TwoDigitRates());

  // DLE and the identity frame together: 1 + 24 bytes.
  auto lumen = Make("LUMEN");
  EXPECT_EQ(Talk(*lumen, "\x10" + Bare("#v")), "\x74\x1BP0#RTAVENA LUMEN/1.05" + kEnd);
  // The KORVUS probe: only the QX-1TR answers, 39 bytes.
  EXPECT_EQ(Talk(*lumen, "\x1BP0^91" + kEnd), "");
  EXPECT_EQ(LastError(*lumen), kErrUnknownCommand);
  EXPECT_EQ(Talk(*Make("QX-1TR"), "\x1BP0^91" + kEnd),
            "\x1BP1^KORVUS QX-1TR;6.01;BQT06000678;CF" + kEnd);
  // SUB ESC S: journal printers answer the unique number, ending with SUB.
  EXPECT_EQ(Talk(*lumen, "\x1A\x1BS"), "");
  auto tm = Make("TM410");
  EXPECT_EQ(Talk(*tm, "\x10\x1A\x1BS"), "\x74NUMER_UNIKATOWY BTM07000802\r\n\x1A");
  // The journal copy device answers nothing but the unique-number request.
  auto copy = Make("EJ-COPY");
  EXPECT_EQ(Talk(*copy, "\x05\x10" + Bare("#v") + "\x18" + Framed("0#e")), "");
  EXPECT_EQ(Talk(*copy, "\x10\x1A\x1BS"), "NUMER_UNIKATOWY BEC05000126\r\n\x1A");
}

TEST_F(SimPrinterTest, StatusAnswerCarriesTheStateInTheReadForms) {
  auto p = Make("LUMEN");
  const std::string fresh =
      "1#X0;0;0;0;0;1;11;01;03;23.00/8.00/5.00/0.00/101.00/101.00/100.00/0;"
      "0.00/0.00/0.00/0.00/0.00/0.00/BLM01000017";
  EXPECT_EQ(Talk(*p, Bare("0#s")), "\x1BP" + fresh + ControlSumHex(fresh) + kEnd);
  SimState& s = p->State();
  s.fiscal = true;
  s.ram_resets = 12;
  s.resets_mark = '<';
  s.last_record = SimDate{1999, 12, 31};
  s.rates = {22, kSimRateExempt, 7.5, 3, 0, kSimRateInactive, 0};
  s.totals = {1.5, 2, 3, 4, 5, 6, 7.25};  // none for B (exempt) and F (inactive)
  s.receipts = 42;
  s.further_amount = 28.75;
  s.daily_reports = 3;
  s.header_changes = 2;
  s.rate_changes = 1;
  s.unique_number = "ABC123";  // padded to 11 characters
  const std::string text =
      "1#X0;1;3;2;1;<12;99;12;31;22.00/100.00/7.50/3.00/0.00/101.00/0.00/42;"
      "1.50/3.00/4.00/5.00/7.25/28.75/ABC123     ";
  // Any parameter gets the same answer, 22 and 23 included.
  for (const char* query : {"0#s", "22#s", "23#s"})
    EXPECT_EQ(Talk(*p, Bare(query)), "\x1BP" + text + ControlSumHex(text) + kEnd) << query;
}

TEST_F(SimPrinterTest, ClockFollowsTheHostOrStandsFixedAndItsFiscalRules) {
  auto p = Make("LUMEN");
  EXPECT_EQ(Talk(*p, Bare("0#c")), "\x1BP1#C12;05;14;09;03;07;A0" + kEnd);
  Talk(*p, "\x1BP12;5;31;23;59;0$c8A" + kEnd);
  EXPECT_EQ(LastError(*p), kErrNone);
  EXPECT_EQ(Talk(*p, Bare("0#c")), "\x1BP1#C12;05;31;23;59;00;A7" + kEnd);
  // The offset stays while the host clock moves on: a minute later it is midnight.
  host_.minute = 4;
  EXPECT_EQ(p->Commands().ClockText(), "1#C12;06;01;00;00;00;");
  // Month 13, 31 April, minute 60, second 60, hour 24, a missing field.
  Run(*p, kErrData,
      {"12;13;1;0;0;0$c", "12;4;31;0;0;0$c", "12;5;31;23;60;0$c", "12;5;31;23;0;60$c",
       "12;5;31;24;0;0$c"});
  Run(*p, kErrParameterCount, {"12;5;31;23;0$c"});
  EXPECT_EQ(p->Commands().ClockText(), "1#C12;06;01;00;00;00;");
  Talk(*p, Framed("50;1;2;3;4;5$c"));  // year 50 is 1950
  EXPECT_EQ(p->PrinterClock().Now().year, 1950);
  // A fixed clock does not move with the host, and a setting moves it.
  p->PrinterClock().Fix(LocalTime{2020, 2, 29, 12, 0, 0, 0});
  host_.hour = 20;
  EXPECT_EQ(p->Commands().ClockText(), "1#C20;02;29;12;00;00;");
  Talk(*p, Framed("21;3;1;8;30;0$c"));
  host_.hour = 21;
  EXPECT_EQ(p->Commands().ClockText(), "1#C21;03;01;08;30;00;");

  // Fiscal: not before the last record; more than an hour once per report.
  auto fiscal = Make("LUMEN");
  fiscal->State().fiscal = true;
  fiscal->State().last_record = SimDate{2012, 5, 10};
  Run(*fiscal, kErrDateBeforeRecord, {"12;5;9;10;0;0$c"});
  Run(*fiscal, kErrNone, {"12;5;14;12;0;0$c", "12;5;14;12;30;0$c"});
  Run(*fiscal, kErrClockTwice, {"12;5;14;14;0;0$c"});
  EXPECT_EQ(Enq(*fiscal), "69");
}

TEST_F(SimPrinterTest, VatRatesInBothWireForms) {
  const std::string flags = "7;0;0;0;0;1;1;2$p23.00/8.00/5.00/0.00/0.00/0.00/0.00/";
  const std::string two_digit = "7$p23.00/8.00/5.00/0.00/101/101/100/";
  const std::array<double, 7> wanted = {
      23, 8, 5, 0, kSimRateInactive, kSimRateInactive, kSimRateExempt};
  auto lumen = Make("LUMEN");
  auto qx = Make("QX-1");
  qx->State().rates = {};
  // Each printer takes its own form only.
  Run(*lumen, kErrParameterCount, {two_digit});
  Run(*qx, kErrParameterCount, {flags});
  Run(*qx, kErrNone, {two_digit});
  EXPECT_EQ(qx->State().rates, wanted);
  // Six values, a rate of 100.5, two exempt rates, a flag of 3; different
  // rates with money in the totals; the same rates again change nothing.
  Run(*lumen, kErrRates, {"7;0;0;0;0;0;0;3$p1.00/2.00/3.00/4.00/5.00/6.00/7.00/"});
  qx->State().totals[0] = 1;
  Run(*qx, kErrRates,
      {"7$p1.00/2.00/3.00/4.00/5.00/6.00/", "7$p100.50/1/2/3/4/5/6/", "7$p100/100/1/2/3/4/5/"});
  Run(*qx, kErrNonZeroTotals, {"7$p22.00/8.00/5.00/0.00/101/101/100/"});
  Run(*qx, kErrNone, {two_digit});
  EXPECT_EQ(qx->State().rate_changes, 1);
  EXPECT_EQ(qx->State().rates, wanted);
}

TEST_F(SimPrinterTest, HeaderAndFiscalisation) {
  auto p = Make("SOLIDA");
  // A Polish letter arrives in Mazovia and is kept in Windows-1250.
  Run(*p, kErrNone, {ToMazovia("0$f\xA3\363d\xBC\r\xFF")});
  EXPECT_EQ(p->State().header, std::vector<std::string>{"\xA3\363d\xBC"});
  // Refused: no 0xFF, nine lines, 41 characters, a control byte, blanks only.
  Run(*p, kErrHeader,
      {"0$fA\r", "0$fA\rA\rA\rA\rA\rA\rA\rA\rA\r\xFF", "0$f" + std::string(41, 'x') + "\r\xFF",
       "0$fA\007B\r\xFF", "0$f   \r\xFF"});
  EXPECT_EQ(p->State().header_changes, 1);
  EXPECT_EQ(Enq(*p), "61");

  Run(*p, kErrNip, {"0$fNIP 123/45/67/890\xFF"});
  Talk(*p, "\x1BP0$fNIP 123-45-67-890\37729" + kEnd);
  EXPECT_EQ(LastError(*p), kErrNone);
  EXPECT_TRUE(p->State().fiscal);
  EXPECT_EQ(p->State().nip, "123-45-67-890");
  EXPECT_EQ(p->State().last_record, (SimDate{2012, 5, 14}));
  EXPECT_EQ(Enq(*p), "6D");
  Run(*p, kErrAlreadyFiscal, {"0$fNIP 123-45-67-890\xFF"});
  EXPECT_EQ(ErrorOf(*p), "\x1BP1#E13;91" + kEnd);
  EXPECT_EQ(Enq(*p), "6D");
  EXPECT_EQ(p->Commands().StatusText().substr(0, 25), "1#X0;1;0;1;0;1;12;05;14;2");
}

TEST_F(SimPrinterTest, ReceiptsReportsAndOtherCommands) {
  auto p = Make("LUMEN");
  // A sale line outside a transaction, an end without a start.
  Run(*p, kErrNoTransaction, {"1$lTowar testowy 1gr\r1\rA/0.01/0.01/"});
  Run(*p, kErrEndWithoutStart, {"1;0;3;0$eNRS5555\rStopka 1\rStopka 2\rStopka 3\r0.01/0.01/"});
  // Refusals inside a receipt clear bit 0 and leave the receipt open.
  Run(*p, kErrNone, {"0$h"});
  Run(*p, kErrSequence, {"0$h"});
  Run(*p, kErrName, {"1$l\r1\rA/0.01/0.01/"});
  Run(*p, kErrQuantity, {"1$lX\r\rA/0.01/0.01/"});
  Run(*p, kErrRateLetter, {"1$lX\r1\rE/0.01/0.01/", "1$lX\r1\rH/0.01/0.01/"});
  Run(*p, kErrPrice, {"1$lX\r1\rA/0,0x/0.01/"});
  Run(*p, kErrValue, {"1$lX\r3\rA/0.10/0.31/"});
  Run(*p, kErrAmounts, {"1;2$lX\r1\rA/0.10/0.10/"});
  EXPECT_EQ(Enq(*p), "62");
  Run(*p, kErrNone, {"1;2$lX\r3\rB/0.10/0.30/5/"});
  Run(*p, kErrTotal, {"1;0;0;0$eK\r0.31/1.00/"});
  Run(*p, kErrPayment, {"1;0;0;0$eK\r0.30/0.20/"});
  Run(*p, kErrNone, {"1;0;0;0;1$eK\r0.30/1.00/0.70"});
  // A cancelled receipt leaves the totals alone.
  Run(*p, kErrNone, {"0$h", "1$lX\r1\rA/5.00/5.00/", "0$e"});
  EXPECT_FALSE(p->State().in_transaction);
  EXPECT_EQ(p->State().totals, (std::array<double, 7>{0, 0.30}));
  EXPECT_DOUBLE_EQ(p->State().further_amount, 0.30);
  EXPECT_EQ(p->State().receipts, 1);
  // A report during a receipt is refused.
  Run(*p, kErrNone, {"0$h"});
  Run(*p, kErrInTransaction, {"1;12;05;14#r"});
  Run(*p, kErrNone, {"0;3$eb\rc\ra\r"});
  // No daily report yet: the first-report answer holds no date.
  EXPECT_EQ(Talk(*p, "\x1BP2;0;0;1#r96" + kEnd), "\x1BP2#RBC" + kEnd);
  p->State().fiscal = true;
  Run(*p, kErrData, {"1;12;05;13#r"});  // not the printer's date
  Talk(*p, "\x1BP1;12;05;14#rA7" + kEnd);
  EXPECT_EQ(LastError(*p), kErrNone);
  EXPECT_EQ(p->State().daily_reports, 1);
  EXPECT_EQ(p->State().receipts, 0);
  EXPECT_EQ(p->State().totals, (std::array<double, 7>{}));
  EXPECT_EQ(Talk(*p, "\x1BP2;0;0;1#r96" + kEnd), "\x1BP2#R2012-05-14;86" + kEnd);
  // Periodic reports check the dates, the second not before the first;
  // cash commands 0..3; the "&c" parameter.
  Run(*p, kErrNone, {"12;5;1;12;5;14;0#o"});
  Run(*p, kErrData, {"12;5;14;12;5;1;0#o", "12;2;30;12;5;1;0#o"});
  Run(*p, kErrNone, {"1#bZAMKNIJ\r\x03/", "0#b", "3#b"});
  Run(*p, kErrData, {"4#b"});
  Run(*p, kErrNone, {"7&c"});
  Run(*p, kErrUnknownCommand, {"x&c"});
  EXPECT_EQ(p->State().periodic_reports, 1);
  EXPECT_EQ(p->State().cash_commands, 3);
  EXPECT_EQ(p->State().display_text, "ZAMKNIJ");
  EXPECT_EQ(p->State().last_ampc, 7);
}

TEST_F(SimPrinterTest, FramingOdditiesAndFaults) {
  auto p = Make("LUMEN");
  // CAN drops a frame in progress; ESC P restarts one; stray bytes are ignored.
  EXPECT_EQ(Talk(*p, "\x1BP0#\030ab\r\n \x1BPxx\x1BP0#e89" + kEnd), "\x1BP1#E-1;8F" + kEnd);
  EXPECT_EQ(p->Record().frames.size(), 1u);
  EXPECT_EQ(p->Record().can, 1);
  // A frame split over many writes.
  const std::string identity = "\x1BP0#RTAVENA LUMEN/1.05" + kEnd;
  for (const char c : Bare("#v")) p->Receive(std::string(1, c), t_);
  EXPECT_EQ(p->Take(t_), identity);

  p = Make("LUMEN");
  p->Faults().silent = true;
  EXPECT_EQ(Talk(*p, "\x05\x10" + Bare("#v")), "");
  EXPECT_EQ(p->Record().enq, 1);
  p->Faults().silent = false;
  // Two answers, then silence.
  p->Faults().answers_before_silence = 2;
  EXPECT_EQ(Hex(Talk(*p, "\x05\x05\x05")), "65 65");
  p->Faults().answers_before_silence = -1;
  // Scripted ENQ answers, then the status again.
  p->Faults().enq_answers = "\x4C\x68";
  EXPECT_EQ(Hex(Talk(*p, "\x05\x05\x05")), "4C 68 65");
  // Garbage before every answer, and a wrong sum in framed answers.
  p->Faults().garbage = std::string("\x00\xFFzz", 4);
  p->Faults().bad_answer_sum = true;
  EXPECT_EQ(Hex(Talk(*p, "\x10")), "00 FF 7A 7A 74");
  EXPECT_EQ(Talk(*p, Framed("0#e")), std::string("\x00\xFFzz", 4) + "\x1BP1#E-1;00" + kEnd);
  p->Faults().garbage.clear();
  p->Faults().bad_answer_sum = false;
  // XOFF at the start of every frame, never an XON.
  p->Faults().xoff = true;
  EXPECT_EQ(Talk(*p, Bare("#v")), "\x13" + identity);
  p->Faults().xoff = false;
  // A late answer: not there after 299 ms, there after 300 ms.
  p->Faults().answer_delay_ms = 300;
  p->Receive("\x05", 10000);
  EXPECT_EQ(p->Available(10299), 0u);
  EXPECT_EQ(p->NextReadyMs(), 10300);
  EXPECT_EQ(Hex(p->Take(10300)), "65");
  p->Faults().answer_delay_ms = 0;
  // The line closes after the next two frames; nothing comes in or out then.
  p->Faults().close_after_frames = static_cast<int>(p->Record().frames.size()) + 2;
  Talk(*p, Framed("0$e"));
  EXPECT_FALSE(p->LineClosed());
  p->Receive(Framed("0$e") + "\x05", t_);
  EXPECT_TRUE(p->LineClosed());
  EXPECT_EQ(p->Take(t_ + 1000), "");
  const size_t received = p->Record().received.size();
  p->Receive("\x05", t_);
  EXPECT_EQ(p->Record().received.size(), received);
}

TEST_F(SimPrinterTest, LineRateAndSpeed) {
  auto p = Make("LUMEN");
  p->Faults().line_rate = true;          // 9600 bd: one byte every 1041 us
  const std::string query = Bare("#v");  // 6 bytes, all in by 6.25 ms
  p->Receive(query, 1000);
  EXPECT_EQ(p->PendingInput(1000), 6u);
  EXPECT_EQ(p->PendingInput(1004), 3u);
  EXPECT_EQ(p->InputDoneMs(), 1007);
  // The 24 answer bytes follow, byte k at 6246 + k * 1041 us.
  EXPECT_EQ(p->Available(1006), 0u);
  EXPECT_EQ(p->Take(1011), "\x1BP0#");
  EXPECT_EQ(p->Available(1029), 17u);
  EXPECT_EQ(p->Available(1031), 19u);
  EXPECT_EQ(p->Take(1032), "RTAVENA LUMEN/1.05" + kEnd);
  // At 19200 bd the same takes half the time.
  p->SetBaud(19200);
  p->Receive("\x05", 2000);
  EXPECT_EQ(p->NextReadyMs(), 2002);
  EXPECT_EQ(p->Take(2001), "");
  EXPECT_EQ(Hex(p->Take(2002)), "65");
  // A client at the wrong speed is not understood.
  p->SetClientBaud(9600);
  p->Receive("\x05" + query, 3000);
  EXPECT_EQ(p->Take(4000), "");
  EXPECT_EQ(p->Record().garbled, "\x05" + query);
  p->SetClientBaud(19200);
  t_ = 3000;
  EXPECT_EQ(Enq(*p), "65");
  // Noise every 50 ms, asked or not.
  p->Faults().noise_every_ms = 50;
  p->Available(5000);
  EXPECT_EQ(p->NextReadyMs(), 5050);
  EXPECT_EQ(p->Take(5149), "~~");
  p->DropArrived(5300);
  EXPECT_EQ(p->Available(5300), 0u);
}

TEST_F(SimPrinterTest, HalfFrameFloodAndLongSilenceStayBounded) {
  auto p = Make("LUMEN");
  std::vector<std::string> log;
  p->SetLogSink([&log](const std::string& line) { log.push_back(line); });
  // Half a frame: an ENQ 2 s later still belongs to it, one after more than
  // 2 s of silence is answered and the half frame is gone.
  p->Receive("\x1BP0#", 1000);
  p->Receive("\x05", 3000);
  EXPECT_EQ(p->Take(4000), "");
  p->Receive("\x05", 5001);
  EXPECT_EQ(Hex(p->Take(5001)), "65");
  EXPECT_EQ(p->Record().frames.size(), 0u);
  ASSERT_GE(log.size(), 2u);
  EXPECT_EQ(log[log.size() - 2], "unfinished frame dropped after 2001 ms of silence: 0#<05>");
  EXPECT_EQ(log.back(), "ENQ -> 0x65");
  // The gap counts from the last byte's arrival at the line rate, too.
  p->Faults().line_rate = true;
  p->Receive("\x1BP#v", 6000);  // the 4 bytes are in by 6004.2 ms
  p->Receive("\x1B\\", 8004);
  EXPECT_EQ(p->Take(9000), "\x1BP0#RTAVENA LUMEN/1.05" + kEnd);
  p->Faults().line_rate = false;

  // A client that floods and never reads: the output keeps the oldest
  // 64 KiB, the record the newest bytes, and the printer still answers.
  const std::string enqs(200000, '\x05');
  p->Receive(enqs, 10000);
  EXPECT_EQ(p->Available(10000), kSimMaxOutput);
  EXPECT_EQ(p->Record().dropped_output, enqs.size() - kSimMaxOutput);
  EXPECT_EQ(p->Record().enq, 200001);  // the ENQ inside the half frame was not one
  EXPECT_EQ(log[log.size() - 2], "output full (nobody reads), 1 bytes dropped");
  // 2.5 MiB at another speed: both records keep only the newest bytes.
  p->SetClientBaud(19200);
  p->Receive(std::string(5 * kSimRecordBytes / 2, 'a') + "\x10", 10000);
  for (const std::string* kept : {&p->Record().received, &p->Record().garbled}) {
    EXPECT_GE(kept->size(), kSimRecordBytes);
    EXPECT_LE(kept->size(), 2 * kSimRecordBytes);
    EXPECT_EQ(kept->substr(kept->size() - 2), "a\x10");
  }
  p->SetClientBaud(0);
  p->DropArrived(10000);
  t_ = 11000;
  EXPECT_EQ(Talk(*p, Bare("#v")), "\x1BP0#RTAVENA LUMEN/1.05" + kEnd);
  for (int i = 0; i < 9000; ++i) p->Receive(Framed("0$e"), 20000);
  EXPECT_LE(p->Record().frames.size(), 2 * kSimRecordFrames);
  EXPECT_GE(p->Record().frames.size(), kSimRecordFrames);

  // Noise every ms, unread for a day: only what fits is made, at once.
  auto quiet = Make("LUMEN");
  quiet->Faults().noise_every_ms = 1;
  quiet->Available(0);
  EXPECT_EQ(quiet->Available(86400000), kSimMaxOutput);
  EXPECT_EQ(quiet->Record().dropped_output, size_t{86400000} - kSimMaxOutput);
  EXPECT_EQ(quiet->Take(86400000).size(), kSimMaxOutput);
  EXPECT_EQ(quiet->NextReadyMs(), 86400001);
  EXPECT_EQ(quiet->Take(86400001), "~");
}

TEST_F(SimPrinterTest, RandomInputNeverStopsThePrinter) {
  // Valid bodies of every command, changed, cut or replaced by random text,
  // sent framed (mostly with a right sum), bare or after a control byte.
  const std::vector<std::string> valid = {"#v",
                                          "0#c",
                                          "23#s",
                                          "0#e",
                                          "0^",
                                          "12;5;31;23;59;0$c",
                                          "7;0;0;0;0;1;1;2$p23.00/8.00/5.00/0.00/0.00/0.00/0.00/",
                                          "7$p23.00/8.00/5.00/0.00/101/101/100/",
                                          "0$f\x0E   TAVENA\x14\r  Sklep\r\xFF",
                                          "1$fNIP 123-45-67-890\xFF",
                                          "12;5;1;12;5;14;0#o",
                                          "1;12;05;14#r",
                                          "2;0;0;1#r",
                                          "0$h",
                                          "1$lTowar\r1\rA/0.01/0.01/",
                                          "1;2$lX\r3\rB/0.10/0.30/5/",
                                          "1;0;1;0$eNRS5555\rStopka\r0.01/0.01/",
                                          "1;0;0;0;1$eK\r0.30/1.00/0.70",
                                          "0;3$eb\rc\ra\r",
                                          "0$e",
                                          "1#bTEXT\r\x03/",
                                          "2#b",
                                          "5&c",
                                          "&d"};
  const std::string chars =
      std::string("0123456789;;;;#$&^/.,-\r\x0E\x14\xFF\x86 ", 29) + "vcsepfolhrbdXNIPABCDEFG";
  uint32_t seed = 12345;
  const auto next = [&seed](size_t n) {
    seed = seed * 1103515245 + 12345;
    return (seed >> 8) % n;
  };
  for (const std::string& name : SimModelNames()) {
    auto p = Make(name);
    std::string input;
    for (int i = 0; i < 3000; ++i) {
      std::string body = valid[next(valid.size())];
      const uint32_t change = next(4);
      if (change == 0) body[next(body.size())] = chars[next(chars.size())];
      if (change == 1) body.resize(next(body.size()));
      if (change == 2) {
        body.clear();
        for (uint32_t k = next(40); k > 0; --k) body += chars[next(chars.size())];
      }
      const uint32_t kind = next(10);
      input += kind < 6   ? Framed(body)
               : kind < 8 ? Bare(body)
                          : std::string(1, "\x05\x10\x07\x18\x1A\x1B"[next(6)]) + body;
    }
    Talk(*p, input);
    // Two CANs leave any frame; then the printer answers as before.
    const std::string identity = "\x1BP" + p->Commands().IdentityText() + kEnd;
    EXPECT_EQ(Talk(*p, "\x18\x18" + Bare("#v")), p->Model().answers_identity ? identity : "")
        << name;
    EXPECT_GT(p->Record().frames.size(), 2000u) << name;
    int done = 0;
    for (const SimRecordedFrame& f : p->Record().frames)
      done += f.error == kErrNone && (f.command[0] == '$' || f.command == "#r");
    EXPECT_TRUE(!p->Model().answers_identity || done > 100) << name << " " << done;
  }
}

}  // namespace
}  // namespace tavena

// The simulated printer model against hand-built frames: exact answer
// bytes, state changes, faults and the line rate on a caller-given time line.
#include "sim/Simprinter.h"

#include <gtest/gtest.h>

#include "TestSupport.h"
#include "sequence/Codepage.h"

namespace tavena {
namespace {

using test::Hex;

const std::string kEsc = "\x1B";
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
  std::string ErrorOf(SimPrinter& p) { return Talk(p, Framed("0#e")); }
  LocalTime host_{2012, 5, 14, 9, 3, 7, 0};
  int64_t t_ = 0;
};

TEST_F(SimPrinterTest, ControlBytesAnswerTheStatusBits) {
  auto p = Make("LUMEN");
  EXPECT_EQ(Hex(Talk(*p, "\x05")), "65");  // command ok, last transaction ok
  EXPECT_EQ(Hex(Talk(*p, "\x10")), "74");  // on-line
  EXPECT_EQ(Talk(*p, "\x07\x07"), "");
  EXPECT_EQ(p->State().bells, 2);
  p->State().paper_out = true;
  p->State().mechanism_error = true;
  p->State().online = false;
  EXPECT_EQ(Hex(Talk(*p, "\x10")), "73");
  // Several control bytes give several answers, the status of each moment.
  p->State().in_transaction = true;
  p->State().fiscal = true;
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
  // A wrong sum: no answer, ENQ bit 2 cleared, error 2.
  EXPECT_EQ(Talk(*p, "\x1BP0#e88" + kEnd), "");
  EXPECT_EQ(Hex(Talk(*p, "\x05")), "61");
  EXPECT_EQ(ErrorOf(*p), "\x1BP1#E2;A1" + kEnd);
  EXPECT_EQ(Hex(Talk(*p, "\x05")), "65");  // the error query itself went well
  // A command without its sum is refused as a wrong sum, too.
  Talk(*p, Bare("0$e"));
  EXPECT_EQ(ErrorOf(*p), "\x1BP1#E2;A1" + kEnd);
  // Right sum, unknown command: error 0.
  Talk(*p, Framed("0#q"));
  EXPECT_EQ(Hex(Talk(*p, "\x05")), "61");
  EXPECT_EQ(ErrorOf(*p), "\x1BP1#E0;A3" + kEnd);
  // Lower-case sum digits are read as well.
  Talk(*p, "\x1BP0$e8e" + kEnd);
  EXPECT_EQ(p->Record().frames.back().error, kErrNone);
  ASSERT_EQ(p->Record().frames.size(), 8u);
  EXPECT_EQ(p->Record().frames[1].body, "0#e88");
  EXPECT_FALSE(p->Record().frames[1].sum_ok);
  EXPECT_EQ(p->Record().frames[1].error, kErrControlSum);
  EXPECT_EQ(p->Record().frames[3].error, kErrControlSum);
  EXPECT_EQ(p->Record().frames[5].command, "#q");
}

TEST_F(SimPrinterTest, SumCoversTheMazoviaBytesOfPolishLetters) {
  auto p = Make("LUMEN");
  Talk(*p, Framed("0$h"));
  // "ą" goes out as Mazovia 0x86; the sum is over that byte.
  const std::string body =
      ToMazovia(std::string("1$lMi\xB9"
                            "d\r2\rA/1.50/3.00/"));
  ASSERT_NE(body.find('\x86'), std::string::npos);
  Talk(*p, Framed(body));
  EXPECT_EQ(p->Record().frames.back().error, kErrNone);
  EXPECT_EQ(p->Record().frames.back().text,
            "1$lMi\xB9"
            "d\r2\rA/1.50/3.00/" +
                ControlSumHex(body));
  // The same body summed in Windows-1250 is a wrong sum.
  const std::string cp1250 =
      "1$lMi\xB9"
      "d\r2\rA/1.50/3.00/";
  Talk(*p, "\x1BP" + body + ControlSumHex(cp1250) + kEnd);
  EXPECT_EQ(p->Record().frames.back().error, kErrControlSum);
}

TEST_F(SimPrinterTest, IdentityOfEachModel) {
  const std::pair<const char*, const char*> cases[] = {
      {"LUMEN", "0#RTAVENA LUMEN/1.05"},         {"SOLIDA", "0#RTAVENA SOLIDA/2.13"},
      {"solida ej", "0#RTAVENA SOLIDA EJ/3.02"}, {"QX-1", "3#RTAVENA QX-1/4.10"},
      {"QX-1:4", "4#RTAVENA QX-1/4.10"},         {"QX-1TR", "4#RTAVENA QX-1TR/6.01"},
      {"TM410", "0#RTAVENA TM410/7.00"},         {"MERIDO", "0#RTAVEWA MERIDO/1.00"},
  };
  for (const auto& [model, text] : cases) {
    auto p = Make(model);
    EXPECT_EQ(Talk(*p, Bare("#v")), "\x1BP" + std::string(text) + kEnd) << model;
  }
  EXPECT_FALSE(FindSimModel("QX-1:x"));
  EXPECT_FALSE(FindSimModel("LUMEN:3"));
  EXPECT_FALSE(FindSimModel("KASA"));
  EXPECT_EQ(FindSimModel("qx-1tr:2")->subtype, 2);
  EXPECT_FALSE(FindSimModel("SOLIDA")->TwoDigitRates());
  EXPECT_TRUE(FindSimModel("QX-1")->TwoDigitRates());
  EXPECT_FALSE(FindSimModel("QX-1:2")->TwoDigitRates());
}

TEST_F(SimPrinterTest, SearchProbes) {
  // DLE and the identity frame together: 1 + 24 bytes, within 16..49.
  auto lumen = Make("LUMEN");
  EXPECT_EQ(Talk(*lumen, "\x10" + Bare("#v")), "\x74\x1BP0#RTAVENA LUMEN/1.05" + kEnd);
  // The KORVUS probe: only the QX-1TR answers, 39 bytes.
  EXPECT_EQ(Talk(*lumen, "\x1BP0^91" + kEnd), "");
  EXPECT_EQ(lumen->Record().frames.back().error, kErrUnknownCommand);
  auto tr = Make("QX-1TR");
  const std::string korvus = Talk(*tr, "\x1BP0^91" + kEnd);
  EXPECT_EQ(korvus, "\x1BP1^KORVUS QX-1TR;6.01;BQT06000678;CF" + kEnd);
  EXPECT_EQ(korvus.size(), 39u);
  // SUB ESC S: journal printers answer the unique number, ending with SUB.
  EXPECT_EQ(Talk(*lumen, "\x1A\x1BS"), "");
  auto tm = Make("TM410");
  EXPECT_EQ(Talk(*tm, "\x10\x1A\x1BS"), "\x74NUMER_UNIKATOWY BTM07000802\r\n\x1A");
  // The normal composite on a journal printer: error, identity, unique number.
  const std::string composite =
      "\x18\x1BP0#e89" + kEnd + " \x1BP0$e8E" + kEnd + " " + Bare("#v") + " \x1BS";
  EXPECT_EQ(Talk(*tm, composite), "\x1BP1#E-1;8F" + kEnd + "\x1BP0#RTAVENA TM410/7.00" + kEnd +
                                      "NUMER_UNIKATOWY BTM07000802\r\n\x1A");
  EXPECT_EQ(tm->Record().can, 1);
  // The long mode's first frame is taken without complaint.
  Talk(*tm, "\x1BP&dBD" + kEnd);
  EXPECT_EQ(tm->Record().frames.back().error, kErrNone);
  // The journal copy device answers nothing but the unique-number request.
  auto copy = Make("EJ-COPY");
  EXPECT_EQ(Talk(*copy, "\x05\x10" + Bare("#v") + composite.substr(0, composite.size() - 3)), "");
  EXPECT_EQ(Talk(*copy, "\x10\x1A\x1BS"), "NUMER_UNIKATOWY BEC05000126\r\n\x1A");
}

TEST_F(SimPrinterTest, StatusAnswerCarriesTheStateInTheReadForms) {
  auto p = Make("LUMEN");
  SimState& s = p->State();
  EXPECT_EQ(Talk(*p, Bare("0#s")),
            "\x1BP1#X0;0;0;0;0;1;11;01;03;23.00/8.00/5.00/0.00/101.00/101.00/100.00/0;"
            "0.00/0.00/0.00/0.00/0.00/0.00/BLM01000017" +
                ControlSumHex("1#X0;0;0;0;0;1;11;01;03;23.00/8.00/5.00/0.00/101.00/101.00/"
                              "100.00/0;0.00/0.00/0.00/0.00/0.00/0.00/BLM01000017") +
                kEnd);
  s.fiscal = true;
  s.ram_resets = 12;
  s.resets_mark = '<';
  s.last_record = SimDate{1999, 12, 31};
  s.rates = {22, kSimRateExempt, 7.5, 3, 0, kSimRateInactive, 0};
  s.totals = {1.5, 2, 3, 4, 5, 6, 7.25};
  s.receipts = 42;
  s.further_amount = 28.75;
  s.daily_reports = 3;
  s.header_changes = 2;
  s.rate_changes = 1;
  s.unique_number = "ABC123";  // padded to 11 characters
  const std::string text =
      "1#X0;1;3;2;1;<12;99;12;31;22.00/100.00/7.50/3.00/0.00/101.00/0.00/42;"
      "1.50/3.00/4.00/5.00/7.25/28.75/ABC123     ";
  EXPECT_EQ(p->Commands().StatusText(), text);
  // Any parameter gets the same answer, 22 and 23 included.
  EXPECT_EQ(Talk(*p, Bare("23#s")), "\x1BP" + text + ControlSumHex(text) + kEnd);
  EXPECT_EQ(Talk(*p, Bare("22#s")), "\x1BP" + text + ControlSumHex(text) + kEnd);
}

TEST_F(SimPrinterTest, ClockFollowsTheHostOrStandsFixed) {
  auto p = Make("LUMEN");
  EXPECT_EQ(Talk(*p, Bare("0#c")), "\x1BP1#C12;05;14;09;03;07;A0" + kEnd);
  Talk(*p, "\x1BP12;5;31;23;59;0$c8A" + kEnd);
  EXPECT_EQ(p->Record().frames.back().error, kErrNone);
  EXPECT_EQ(Talk(*p, Bare("0#c")), "\x1BP1#C12;05;31;23;59;00;A7" + kEnd);
  // The offset stays while the host clock moves on: one minute later it is
  // midnight.
  host_.minute = 4;
  EXPECT_EQ(p->Commands().ClockText(), "1#C12;06;01;00;00;00;");
  // Range checks: month 13, day 31 in April, minute 60, second 60, wrong count.
  for (const char* body : {"12;13;1;0;0;0$c", "12;4;31;0;0;0$c", "12;5;31;23;60;0$c",
                           "12;5;31;23;0;60$c", "12;5;31;24;0;0$c"}) {
    Talk(*p, Framed(body));
    EXPECT_EQ(p->Record().frames.back().error, kErrData) << body;
  }
  Talk(*p, Framed("12;5;31;23;0$c"));
  EXPECT_EQ(p->Record().frames.back().error, kErrParameterCount);
  EXPECT_EQ(p->Commands().ClockText(), "1#C12;06;01;00;00;00;");
  // Year 99 is 1999; year 50 is 1950.
  Talk(*p, Framed("50;1;2;3;4;5$c"));
  EXPECT_EQ(p->PrinterClock().Now().year, 1950);
  // A fixed clock does not move with the host, and a setting moves it.
  p->PrinterClock().Fix(LocalTime{2020, 2, 29, 12, 0, 0, 0});
  host_.hour = 20;
  EXPECT_EQ(p->Commands().ClockText(), "1#C20;02;29;12;00;00;");
  Talk(*p, Framed("21;3;1;8;30;0$c"));
  host_.hour = 21;
  EXPECT_EQ(p->Commands().ClockText(), "1#C21;03;01;08;30;00;");
}

TEST_F(SimPrinterTest, ClockRulesInFiscalMode) {
  auto p = Make("LUMEN");
  p->State().fiscal = true;
  p->State().last_record = SimDate{2012, 5, 10};
  Talk(*p, Framed("12;5;9;10;0;0$c"));  // before the last record
  EXPECT_EQ(p->Record().frames.back().error, kErrDateBeforeRecord);
  Talk(*p, Framed("12;5;14;12;0;0$c"));  // three hours: once per report
  EXPECT_EQ(p->Record().frames.back().error, kErrNone);
  Talk(*p, Framed("12;5;14;12;30;0$c"));  // within an hour: allowed
  EXPECT_EQ(p->Record().frames.back().error, kErrNone);
  Talk(*p, Framed("12;5;14;15;0;0$c"));  // more than an hour, second time
  EXPECT_EQ(p->Record().frames.back().error, kErrClockTwice);
  EXPECT_EQ(Talk(*p, "\x05"), "\x69");
}

TEST_F(SimPrinterTest, VatRatesInBothWireForms) {
  const std::string flags = "7;0;0;0;0;1;1;2$p23.00/8.00/5.00/0.00/0.00/0.00/0.00/";
  const std::string two_digit = "7$p23.00/8.00/5.00/0.00/101/101/100/";
  EXPECT_EQ(ControlSumHex(flags), "98");
  EXPECT_EQ(ControlSumHex(two_digit), "BE");
  const std::array<double, 7> wanted = {
      23, 8, 5, 0, kSimRateInactive, kSimRateInactive, kSimRateExempt};

  auto lumen = Make("LUMEN");
  lumen->State().rates = {};
  Talk(*lumen, "\x1BP" + two_digit + "BE" + kEnd);  // wrong form for this printer
  EXPECT_EQ(lumen->Record().frames.back().error, kErrParameterCount);
  Talk(*lumen, "\x1BP" + flags + "98" + kEnd);
  EXPECT_EQ(lumen->Record().frames.back().error, kErrNone);
  EXPECT_EQ(lumen->State().rates, wanted);
  EXPECT_EQ(lumen->State().rate_changes, 1);

  auto qx = Make("QX-1");
  qx->State().rates = {};
  Talk(*qx, "\x1BP" + flags + "98" + kEnd);
  EXPECT_EQ(qx->Record().frames.back().error, kErrParameterCount);
  Talk(*qx, "\x1BP" + two_digit + "BE" + kEnd);
  EXPECT_EQ(qx->Record().frames.back().error, kErrNone);
  EXPECT_EQ(qx->State().rates, wanted);
  EXPECT_NE(qx->Commands().StatusText().find("23.00/8.00/5.00/0.00/101.00/101.00/100.00/"),
            std::string::npos);

  // Refusals: six values, a rate of 100.5, two exempt rates, a flag of 3.
  for (const char* body :
       {"7$p1.00/2.00/3.00/4.00/5.00/6.00/", "7$p100.50/1/2/3/4/5/6/", "7$p100/100/1/2/3/4/5/"}) {
    Talk(*qx, Framed(body));
    EXPECT_EQ(qx->Record().frames.back().error, kErrRates) << body;
  }
  Talk(*lumen, Framed("7;0;0;0;0;0;0;3$p1.00/2.00/3.00/4.00/5.00/6.00/7.00/"));
  EXPECT_EQ(lumen->Record().frames.back().error, kErrRates);
  // Different rates with money in the totals: a daily report first.
  qx->State().totals[0] = 1;
  Talk(*qx, Framed("7$p22.00/8.00/5.00/0.00/101/101/100/"));
  EXPECT_EQ(qx->Record().frames.back().error, kErrNonZeroTotals);
  // The same rates again change nothing and are not an error.
  Talk(*qx, "\x1BP" + two_digit + "BE" + kEnd);
  EXPECT_EQ(qx->Record().frames.back().error, kErrNone);
  EXPECT_EQ(qx->State().rate_changes, 1);
}

TEST_F(SimPrinterTest, HeaderAndFiscalisation) {
  auto p = Make("SOLIDA");
  const std::string header = "0$f\x0E   TAVENA\x14\r  Sklep\r\xFF";
  Talk(*p, "\x1BP" + header + "00" + kEnd);
  EXPECT_EQ(p->Record().frames.back().error, kErrNone);
  EXPECT_EQ(p->State().header, (std::vector<std::string>{"\x0E   TAVENA\x14", "  Sklep"}));
  // A Polish letter arrives in Mazovia and is kept in Windows-1250.
  Talk(*p, Framed(ToMazovia(std::string("0$f\xA3\xF3"
                                        "d\xBC\r\xFF"))));
  EXPECT_EQ(p->State().header, (std::vector<std::string>{"\xA3\xF3"
                                                         "d\xBC"}));
  // Refused: no 0xFF, nine lines, 41 characters, a control byte, blanks only.
  for (const std::string& body :
       {std::string("0$fA\r"), std::string("0$fA\rA\rA\rA\rA\rA\rA\rA\rA\r\xFF"),
        "0$f" + std::string(41, 'x') + "\r\xFF",
        std::string("0$fA\x07"
                    "B\r\xFF"),
        std::string("0$f   \r\xFF")}) {
    Talk(*p, Framed(body));
    EXPECT_EQ(p->Record().frames.back().error, kErrHeader) << Hex(body);
  }
  EXPECT_EQ(p->State().header_changes, 2);

  EXPECT_EQ(Hex(Talk(*p, "\x05")), "61");
  Talk(*p, Framed("0$fNIP 123/45/67/890\xFF"));
  EXPECT_EQ(p->Record().frames.back().error, kErrNip);
  Talk(*p,
       "\x1BP0$fNIP 123-45-67-890\xFF"
       "29" +
           kEnd);
  EXPECT_EQ(p->Record().frames.back().error, kErrNone);
  EXPECT_TRUE(p->State().fiscal);
  EXPECT_EQ(p->State().nip, "123-45-67-890");
  EXPECT_EQ(p->State().last_record, (SimDate{2012, 5, 14}));
  EXPECT_EQ(Hex(Talk(*p, "\x05")), "6D");
  Talk(*p,
       "\x1BP0$fNIP 123-45-67-890\xFF"
       "29" +
           kEnd);
  EXPECT_EQ(ErrorOf(*p), "\x1BP1#E13;91" + kEnd);
  EXPECT_EQ(Hex(Talk(*p, "\x05")), "6D");
  EXPECT_EQ(p->Commands().StatusText().substr(0, 25), "1#X0;1;0;2;0;1;12;05;14;2");
}

TEST_F(SimPrinterTest, TestReceiptAndReports) {
  auto p = Make("LUMEN");
  // A sale line outside a transaction, and an end without a start.
  Talk(*p, Framed("1$lTowar testowy 1gr\r1\rA/0.01/0.01/"));
  EXPECT_EQ(ErrorOf(*p), "\x1BP1#E21;90" + kEnd);
  Talk(*p, Framed("1;0;3;0$eNRS5555\rStopka 1\rStopka 2\rStopka 3\r0.01/0.01/"));
  EXPECT_EQ(p->Record().frames.back().error, kErrEndWithoutStart);
  // The test receipt for 1 grosz.
  Talk(*p, "\x1BP0$h83" + kEnd);
  EXPECT_EQ(Hex(Talk(*p, "\x05")), "67");
  Talk(*p, "\x1BP1$lTowar testowy 1gr\r1\rA/0.01/0.01/D5" + kEnd);
  Talk(*p, "\x1BP1;0;3;0$eNRS5555\rStopka 1\rStopka 2\rStopka 3\r0.01/0.01/EA" + kEnd);
  EXPECT_EQ(p->Record().frames.back().error, kErrNone);
  EXPECT_EQ(Hex(Talk(*p, "\x05")), "65");
  EXPECT_EQ(p->State().receipts, 1);
  EXPECT_DOUBLE_EQ(p->State().totals[0], 0.01);
  EXPECT_DOUBLE_EQ(p->State().further_amount, 0.01);
  // Refusals inside a receipt clear bit 0 and leave the receipt open.
  Talk(*p, Framed("0$h"));
  Talk(*p, Framed("0$h"));
  EXPECT_EQ(p->Record().frames.back().error, kErrSequence);
  const std::pair<const char*, int> bad_lines[] = {
      {"1$l\r1\rA/0.01/0.01/", kErrName},        {"1$lX\r\rA/0.01/0.01/", kErrQuantity},
      {"1$lX\r1\rE/0.01/0.01/", kErrRateLetter}, {"1$lX\r1\rH/0.01/0.01/", kErrRateLetter},
      {"1$lX\r1\rA/0,0x/0.01/", kErrPrice},      {"1$lX\r3\rA/0.10/0.31/", kErrValue},
      {"1;2$lX\r1\rA/0.10/0.10/", kErrAmounts},
  };
  for (const auto& [body, error] : bad_lines) {
    Talk(*p, Framed(body));
    EXPECT_EQ(p->Record().frames.back().error, error) << body;
  }
  EXPECT_EQ(Hex(Talk(*p, "\x05")), "62");
  Talk(*p, Framed("1;2$lX\r3\rB/0.10/0.30/5/"));
  Talk(*p, Framed("1;0;0;0$eK\r0.31/1.00/"));
  EXPECT_EQ(p->Record().frames.back().error, kErrTotal);
  Talk(*p, Framed("1;0;0;0$eK\r0.30/0.20/"));
  EXPECT_EQ(p->Record().frames.back().error, kErrPayment);
  Talk(*p, Framed("1;0;0;0;1$eK\r0.30/1.00/0.70"));
  EXPECT_EQ(p->Record().frames.back().error, kErrNone);
  EXPECT_DOUBLE_EQ(p->State().totals[1], 0.30);
  // A cancelled receipt leaves the totals alone.
  Talk(*p, Framed("0$h"));
  Talk(*p, Framed("1$lX\r1\rA/5.00/5.00/"));
  Talk(*p, "\x1BP0$e8E" + kEnd);
  EXPECT_FALSE(p->State().in_transaction);
  EXPECT_DOUBLE_EQ(p->State().totals[0], 0.01);
  // Reports: a report during a receipt is refused.
  Talk(*p, Framed("0$h"));
  Talk(*p, "\x1BP1;12;05;14#rA7" + kEnd);
  EXPECT_EQ(ErrorOf(*p), "\x1BP1#E95;9F" + kEnd);
  Talk(*p, Framed("0;3$eb\rc\ra\r"));
  // No daily report yet: the first-report answer holds no date.
  EXPECT_EQ(Talk(*p, "\x1BP2;0;0;1#r96" + kEnd), "\x1BP2#RBC" + kEnd);
  p->State().fiscal = true;
  Talk(*p, Framed("1;12;05;13#r"));  // not the printer's date
  EXPECT_EQ(p->Record().frames.back().error, kErrData);
  Talk(*p, "\x1BP1;12;05;14#rA7" + kEnd);
  EXPECT_EQ(p->Record().frames.back().error, kErrNone);
  EXPECT_EQ(p->State().daily_reports, 1);
  EXPECT_EQ(p->State().receipts, 0);
  EXPECT_EQ(p->State().totals, (std::array<double, 7>{}));
  EXPECT_EQ(Talk(*p, "\x1BP2;0;0;1#r96" + kEnd), "\x1BP2#R2012-05-14;86" + kEnd);
  // Periodic report: dates checked, second not before the first.
  Talk(*p, Framed("12;5;1;12;5;14;0#o"));
  Talk(*p, Framed("12;5;14;12;5;1;0#o"));
  EXPECT_EQ(p->Record().frames.back().error, kErrData);
  Talk(*p, Framed("12;2;30;12;5;1;0#o"));
  EXPECT_EQ(p->Record().frames.back().error, kErrData);
  EXPECT_EQ(p->State().periodic_reports, 1);
}

TEST_F(SimPrinterTest, CashAndParameterCommands) {
  auto p = Make("LUMEN");
  Talk(*p, Framed("1#bZAMKNIJ\r\x03/"));
  Talk(*p, Framed("0#b"));
  Talk(*p, Framed("3#b"));
  EXPECT_EQ(p->State().cash_commands, 3);
  EXPECT_EQ(p->State().display_text, "ZAMKNIJ");
  Talk(*p, Framed("4#b"));
  EXPECT_EQ(p->Record().frames.back().error, kErrData);
  Talk(*p, Framed("7&c"));
  EXPECT_EQ(p->State().last_ampc, 7);
  Talk(*p, Framed("x&c"));
  EXPECT_EQ(p->Record().frames.back().error, kErrUnknownCommand);
}

TEST_F(SimPrinterTest, FramingOddities) {
  auto p = Make("LUMEN");
  // CAN drops a frame in progress; ESC P restarts one; stray bytes are ignored.
  EXPECT_EQ(Talk(*p,
                 "\x1BP0#\x18"
                 "ab\r\n \x1BPxx\x1BP"
                 "0#e89" +
                     kEnd),
            "\x1BP1#E-1;8F" + kEnd);
  EXPECT_EQ(p->Record().frames.size(), 1u);
  EXPECT_EQ(p->Record().can, 1);
  // A frame split over many writes.
  const std::string frame = Bare("#v");
  for (const char c : frame) p->Receive(std::string(1, c), t_);
  EXPECT_EQ(p->Take(t_), "\x1BP0#RTAVENA LUMEN/1.05" + kEnd);
  EXPECT_EQ(p->Record().received.substr(p->Record().received.size() - 6), frame);
}

TEST_F(SimPrinterTest, Faults) {
  auto p = Make("LUMEN");
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
  EXPECT_EQ(Talk(*p, Bare("#v")), "\x13\x1BP0#RTAVENA LUMEN/1.05" + kEnd);
  p->Faults().xoff = false;
  // A late answer: not there after 299 ms, there after 300 ms.
  p->Faults().answer_delay_ms = 300;
  p->Receive("\x05", 10000);
  EXPECT_EQ(p->Available(10299), 0u);
  EXPECT_EQ(p->NextReadyMs(), 10300);
  EXPECT_EQ(Hex(p->Take(10300)), "65");
  p->Faults().answer_delay_ms = 0;
  // The line closes after the next two frames.
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
  EXPECT_EQ(Hex(Talk(*p, "\x05")), "65");
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
  ASSERT_FALSE(log.empty());
  EXPECT_EQ(log.back(), "ENQ -> 0x65");
  EXPECT_EQ(log[log.size() - 2], "unfinished frame dropped after 2001 ms of silence: 0#<05>");
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
  const std::string text(5 * kSimRecordBytes / 2, 'a');
  p->Receive(text + "\x10", 10000);
  EXPECT_GE(p->Record().received.size(), kSimRecordBytes);
  EXPECT_LE(p->Record().received.size(), 2 * kSimRecordBytes);
  EXPECT_EQ(p->Record().received.back(), '\x10');
  EXPECT_EQ(p->Record().received[p->Record().received.size() - 2], 'a');
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

const char* const kValidBodies[] = {
    "#v",
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
    "&d",
};

TEST_F(SimPrinterTest, RandomInputNeverStopsThePrinter) {
  // Frames of random bodies (often with a right sum), control bytes and
  // stray bytes, so that every command meets odd parameters and fields.
  const std::string chars =
      std::string("0123456789;;;;#$&^/.,-\r\x0E\x14\xFF\x86 ", 29) + "vcsepfolhrbdXNIPABCDEFG";
  uint32_t seed = 12345;
  const auto next = [&seed](uint32_t n) {
    seed = seed * 1103515245 + 12345;
    return (seed >> 8) % n;
  };
  for (const std::string& name : SimModelNames()) {
    auto p = Make(name);
    std::string input;
    for (int i = 0; i < 3000; ++i) {
      // A valid body with one character changed, or cut, or random text.
      std::string body = kValidBodies[next(std::size(kValidBodies))];
      const uint32_t change = next(4);
      if (change == 0) body[next(body.size())] = chars[next(chars.size())];
      if (change == 1) body.resize(next(body.size()));
      if (change == 2) {
        body.clear();
        for (uint32_t k = next(40); k > 0; --k) body += chars[next(chars.size())];
      }
      const uint32_t kind = next(10);
      if (kind < 6)
        input += Framed(body);
      else if (kind < 8)
        input += Bare(body);
      else
        input += std::string(1, "\x05\x10\x07\x18\x1A\x1B"[next(6)]) + body;
    }
    Talk(*p, input);
    // Two CANs leave any frame; then the printer answers as before.
    const std::string answer = Talk(*p, "\x18\x18" + Bare("#v"));
    const std::string identity = "\x1BP" + p->Commands().IdentityText() + kEnd;
    EXPECT_EQ(answer, p->Model().answers_identity ? identity : "") << name;
    EXPECT_GT(p->Record().frames.size(), 2000u) << name;
    int done = 0;
    for (const SimRecordedFrame& f : p->Record().frames)
      done += f.error == kErrNone && (f.command[0] == '$' || f.command == "#r");
    if (p->Model().answers_identity) {
      EXPECT_GT(done, 100) << name;
    }
  }
}

}  // namespace
}  // namespace tavena

#include "protocol/Fiscalbiblio.h"

#include <gtest/gtest.h>

#include "TestSupport.h"
#include "protocol/Answerparse.h"
#include "protocol/Drukarka.h"

namespace tavena {
namespace {

using test::Hex;

TEST(FiscalbiblioTest, FramesWithAndWithoutSum) {
  EXPECT_EQ(BuildFrame("0#e", true), "\x1bP0#e89\x1b\\");
  EXPECT_EQ(BuildFrame("0$e", true), "\x1bP0$e8E\x1b\\");
  EXPECT_EQ(BuildFrame("#v", false), "\x1bP#v\x1b\\");
  EXPECT_EQ(BuildFrame("2;0;0;1#r", true), "\x1bP2;0;0;1#r96\x1b\\");
  // Windows-1250 'ą' (B9) goes out and is summed as Mazovia 86: FF ^ 86 = 79.
  EXPECT_EQ(Hex(BuildFrame("\xB9", true)), "1B 50 86 37 39 1B 5C");
  // A byte without a row in the letter table passes and is summed as it is.
  EXPECT_EQ(Hex(BuildFrame("\xFF", true)), "1B 50 FF 30 30 1B 5C");
  EXPECT_EQ(Hex(BuildFrame("", true)), "1B 50 46 46 1B 5C");
}

TEST(FiscalbiblioTest, ClockBodiesAndRangeRefusals) {
  EXPECT_EQ(ClockBody(2012, 5, 31, 23, 59, 0).value(), "12;5;31;23;59;0$c");
  EXPECT_EQ(ClockBody(1999, 1, 1, 0, 0, 0).value(), "99;1;1;0;0;0$c");
  EXPECT_EQ(ClockBody(2000, 12, 31, 0, 60, 60).value(), "0;12;31;0;60;60$c");
  EXPECT_EQ(ClockBody(7, 1, 1, 0, 0, 0).value(),
            "7;1;1;0;0;0$c");  // already two digits
  const int refused[][6] = {{2100, 1, 1, 0, 0, 0},  {1899, 1, 1, 0, 0, 0},  {2012, 0, 1, 0, 0, 0},
                            {2012, 13, 1, 0, 0, 0}, {2012, 1, 0, 0, 0, 0},  {2012, 1, 32, 0, 0, 0},
                            {2012, 1, 1, 24, 0, 0}, {2012, 1, 1, -1, 0, 0}, {2012, 1, 1, 0, 61, 0},
                            {2012, 1, 1, 0, 0, 61}};
  for (const auto& r : refused)
    EXPECT_FALSE(ClockBody(r[0], r[1], r[2], r[3], r[4], r[5])) << r[0] << " " << r[1];

  EXPECT_EQ(ClockBodyFromText("2012-05-31 23:59:07").value(), "12;5;31;23;59;7$c");
  EXPECT_EQ(ClockBodyFromText("2012.05.31 23:59").value(), "12;5;31;23;59;0$c");
  for (const char* bad : {"2012-05-31", "2012-13-31 10:00", ""})
    EXPECT_FALSE(ClockBodyFromText(bad)) << bad;
}

TEST(FiscalbiblioTest, VatRatesInBothWireForms) {
  const std::array<double, 7> rates = {23, 8, 5, 0, -1, -1, -2};
  for (const int subtype : {3, 4})
    EXPECT_EQ(VatRatesBody(rates, subtype), "7$p23.00/8.00/5.00/0.00/101/101/100/");
  for (const int subtype : {0, 5})
    EXPECT_EQ(VatRatesBody(rates, subtype),
              "7;0;0;0;0;1;1;2$p23.00/8.00/5.00/0.00/0.00/0.00/0.00/");
  EXPECT_EQ(VatRatesBody({22.5, 7.25, 3, 0, 0, 0, 0}, 0),
            "7;0;0;0;0;0;0;0$p22.50/7.25/3.00/0.00/0.00/0.00/0.00/");
}

TEST(FiscalbiblioTest, HeaderCentringWrapAndCut) {
  const std::string line41(41, 'X');
  EXPECT_EQ(HeaderBody({{line41, kHeaderCentre}}), "0$f" + line41 + "\r\xFF");
  EXPECT_EQ(HeaderBody({{"ABCDEFGHIJ", kHeaderCentre}}),
            "0$f" + std::string(15, ' ') + "ABCDEFGHIJ\r\xFF");
  EXPECT_EQ(HeaderBody({{"ABCDEFGHIJ", 0}}), "0$fABCDEFGHIJ\r\xFF");
  // Double width: (20 - 10) / 2 blanks inside SO ... DC4.
  EXPECT_EQ(HeaderBody({{"ABCDEFGHIJ", kHeaderCentre | kHeaderDoubleWidth}}),
            "0$f\x0E     ABCDEFGHIJ\x14\r\xFF");
  EXPECT_EQ(HeaderBody({{"ABCDEFGHIJKLMNOPQRSTU", kHeaderCentre | kHeaderDoubleWidth}}),
            "0$f\x0E"
            "ABCDEFGHIJKLMNOPQRSTU\x14\r\xFF");
  // Odd difference truncates: (40 - 9) / 2 = 15.
  EXPECT_EQ(HeaderBody({{"123456789", kHeaderCentre}}).substr(3, 16), std::string(15, ' ') + "1");
  // Empty lines are left out; at most eight lines.
  EXPECT_EQ(HeaderBody({{"A", 0}, {"", kHeaderCentre}, {"B", 0}}), "0$fA\rB\r\xFF");
  EXPECT_EQ(HeaderBody(std::vector<HeaderLine>(9, HeaderLine{"L", 0})),
            "0$fL\rL\rL\rL\rL\rL\rL\rL\r\xFF");
  // Eight full lines are cut to 220 bytes before the closing 0xFF.
  std::string expected = "0$f";
  for (int i = 0; i < 6; ++i) expected += std::string(40, 'W') + "\r";
  EXPECT_EQ(HeaderBody(std::vector<HeaderLine>(8, {std::string(40, 'W'), kHeaderCentre})),
            expected.substr(0, 220) + "\xFF");
}

TEST(FiscalbiblioTest, FiscalisationReportsAndParameterCommands) {
  EXPECT_EQ(FiscaliseBody(0, "123-45-67-890"), "0$fNIP 123-45-67-890\xFF");
  EXPECT_EQ(FiscaliseBody(9, "1"), "9$fNIP 1\xFF");
  EXPECT_EQ(FiscaliseBody(12, "1"), "\x0C$fNIP 1\xFF");

  EXPECT_EQ(PeriodicReportBody({2012, 5, 1}, {2012, 5, 31}, 0), "12;05;01;12;05;31;0#o");
  EXPECT_EQ(PeriodicReportBody({1999, 12, 31}, {2000, 1, 2}, 3), "99;12;31;00;01;02;3#o");
  EXPECT_EQ(ReportByNumberBody(1, {2012, 5, 14}), "1;12;05;14#r");

  EXPECT_EQ(CashCommandBody(1, "Kasjer", 'A').value(), "1#bKasjer\rA/");
  for (const int kind : {0, 2, 3})
    EXPECT_EQ(CashCommandBody(kind, "x", 'A').value(), std::to_string(kind) + "#b");
  EXPECT_FALSE(CashCommandBody(4, "x", 'A'));
  EXPECT_FALSE(CashCommandBody(-1, "x", 'A'));

  EXPECT_EQ(ParamCommandAmpCBody(3), "3&c");
  EXPECT_EQ(ParamCommandDollarHBody(0), "0$h");
}

TEST(FiscalbiblioTest, SaleAndTransactionBodies) {
  SaleLineRecord test_line;
  test_line.name = "Towar testowy 1gr";
  test_line.price = 0.01;
  EXPECT_EQ(SaleLineBody(test_line), "1$lTowar testowy 1gr\r1\rA/0.01/0.01/");
  // Value rounded to two decimals; P2 and the fourth amount together.
  EXPECT_EQ(SaleLineBody({1, 2, "X", 3, 'B', 0.333, 5}), "1;2$lX\r3\rB/0.33/1.00/5/");
  EXPECT_EQ(SaleLineBody({4, 0, "Y", 2, 'C', 1.125, 9}), "4$lY\r2\rC/1.12/2.25/");

  EndTransactionRecord receipt;
  receipt.code = "NRS5555";
  receipt.lines = {"Stopka 1", "Stopka 2", "Stopka 3", ""};
  receipt.amount1 = receipt.amount2 = 0.01;
  EXPECT_EQ(EndTransactionBody(receipt),
            "1;0;3;0$eNRS5555\rStopka 1\rStopka 2\rStopka 3\r0.01/0.01/");
  EXPECT_EQ(EndTransactionBody({2, 7, "C", {"L1", "", "L3", "L4"}, 1.5, 2, 3.25}),
            "2;0;3;0;7$eC\rL1\rL3\rL4\r1.50/2.00/3.25");
  EXPECT_EQ(EndTransactionBody({0, 7, "C", {"L1", "", "", ""}, 1, 2, 3}), "0$e");

  EXPECT_EQ(CancelTransactionBody("a", "b", "c"), "0;3$eb\rc\ra\r");
  EXPECT_EQ(CancelTransactionBody("", "b", "c"), "0$e");
}

}  // namespace
}  // namespace tavena

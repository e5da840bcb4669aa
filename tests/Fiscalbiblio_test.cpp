#include "protocol/Fiscalbiblio.h"

#include <gtest/gtest.h>

#include "TestSupport.h"
#include "protocol/Answerparse.h"
#include "protocol/Drukarka.h"

// Bodies and frames checked as sent (DrukarkaSim, DrukarkaFrames, Cli) are not repeated here.
namespace tavena {
namespace {

using test::Hex;

void ExpectBodies(const std::vector<std::pair<std::string, std::string>>& cases) {
  for (const auto& [built, expected] : cases) EXPECT_EQ(Hex(built), Hex(expected)) << expected;
}

TEST(FiscalbiblioTest, FramesClockBodiesAndRangeRefusals) {
  ExpectBodies({
      // 0xFF has no letter row in Mazovia: sent as it is.
      {BuildFrame("\xFF", true), "\x1bP\xFF" + std::string("00\x1b\\")},
      {BuildFrame("", true), "\x1bPFF\x1b\\"},
      {ClockBody(1999, 1, 1, 0, 0, 0).value(), "99;1;1;0;0;0$c"},
      {ClockBody(2000, 12, 31, 0, 60, 60).value(), "0;12;31;0;60;60$c"},
      {ClockBody(7, 1, 1, 0, 0, 0).value(), "7;1;1;0;0;0$c"},
      {ClockBodyFromText("2012-05-31 23:59:07").value(), "12;5;31;23;59;7$c"},
      {ClockBodyFromText("2012.05.31 23:59").value(), "12;5;31;23;59;0$c"},
  });
  const int refused[][6] = {{2100, 1, 1, 0, 0, 0},  {1899, 1, 1, 0, 0, 0},  {2012, 0, 1, 0, 0, 0},
                            {2012, 13, 1, 0, 0, 0}, {2012, 1, 0, 0, 0, 0},  {2012, 1, 32, 0, 0, 0},
                            {2012, 1, 1, 24, 0, 0}, {2012, 1, 1, -1, 0, 0}, {2012, 1, 1, 0, 61, 0},
                            {2012, 1, 1, 0, 0, 61}};
  for (const auto& r : refused)
    EXPECT_FALSE(ClockBody(r[0], r[1], r[2], r[3], r[4], r[5])) << r[0] << " " << r[1];
  for (const char* bad : {"2012-05-31", "2012-13-31 10:00", ""})
    EXPECT_FALSE(ClockBodyFromText(bad)) << bad;
}

TEST(FiscalbiblioTest, RatesHeaderAndOtherCommandBodies) {
  const std::string line41(41, 'X'), ten = "ABCDEFGHIJ";
  const int both = kHeaderCentre | kHeaderDoubleWidth;
  std::string cut = "0$f";
  for (int i = 0; i < 6; ++i) cut += std::string(40, 'W') + "\r";
  ExpectBodies({
      {VatRatesBody({22.5, 7.25, 3, 0, 0, 0, 0}, 0),
       "7;0;0;0;0;0;0;0$p22.50/7.25/3.00/0.00/0.00/0.00/0.00/"},
      // Centring pads (40 - n) / 2, or (20 - n) / 2 inside SO .. DC4, when above 0.
      {HeaderBody({{line41, kHeaderCentre}}), "0$f" + line41 + "\r\xFF"},
      {HeaderBody({{"123456789", kHeaderCentre}}),
       "0$f" + std::string(15, ' ') + "123456789\r\xFF"},
      {HeaderBody({{ten, 0}}), "0$fABCDEFGHIJ\r\xFF"},
      {HeaderBody({{ten, both}}), "0$f\x0E     ABCDEFGHIJ\x14\r\xFF"},
      {HeaderBody({{ten + ten + "K", both}}), "0$f\x0E" + ten + ten + "K\x14\r\xFF"},
      // Empty lines left out; at most eight; cut at 220 bytes before the 0xFF.
      {HeaderBody({{"A", 0}, {"", kHeaderCentre}, {"B", 0}}), "0$fA\rB\r\xFF"},
      {HeaderBody(std::vector<HeaderLine>(9, HeaderLine{"L", 0})),
       "0$fL\rL\rL\rL\rL\rL\rL\rL\r\xFF"},
      {HeaderBody(std::vector<HeaderLine>(8, {std::string(40, 'W'), kHeaderCentre})),
       cut.substr(0, 220) + "\xFF"},
      {FiscaliseBody(9, "1"), "9$fNIP 1\xFF"},
      {FiscaliseBody(12, "1"), "\x0C$fNIP 1\xFF"},  // not a digit: the raw byte
      {PeriodicReportBody({1999, 12, 31}, {2000, 1, 2}, 3), "99;12;31;00;01;02;3#o"},
      {CashCommandBody(1, "Kasjer", 'A').value(), "1#bKasjer\rA/"},
      {CashCommandBody(3, "x", 'A').value(), "3#b"},
      {ParamCommandAmpCBody(3), "3&c"},
      // Value rounded to two decimals; P2 and the fourth amount come together.
      {SaleLineBody({1, 2, "X", 3, 'B', 0.333, 5}), "1;2$lX\r3\rB/0.33/1.00/5/"},
      {SaleLineBody({4, 0, "Y", 2, 'C', 1.125, 9}), "4$lY\r2\rC/1.12/2.25/"},
      {EndTransactionBody({2, 7, "C", {"L1", "", "L3", "L4"}, 1.5, 2, 3.25}),
       "2;0;3;0;7$eC\rL1\rL3\rL4\r1.50/2.00/3.25"},
      {EndTransactionBody({0, 7, "C", {"L1", "", "", ""}, 1, 2, 3}), "0$e"},
      {CancelTransactionBody("a", "b", "c"), "0;3$eb\rc\ra\r"},
  });
  EXPECT_FALSE(CashCommandBody(4, "x", 'A'));
}

}  // namespace
}  // namespace tavena

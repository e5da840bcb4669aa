// The simulated printer's answers read back through the tool's own answer
// readers: what the printer holds is what the tool reads.
#include <gtest/gtest.h>

#include "protocol/Answerparse.h"
#include "sequence/Codepage.h"
#include "sim/Simprinter.h"

namespace tavena {
namespace {

std::string Ask(SimPrinter& p, const std::string& body) {
  static int64_t t = 0;
  p.Receive("\x1BP" + body + "\x1B\\", t);
  t += 1000;
  return FromMazovia(p.Take(t));
}

TEST(SimReadbackTest, StatusReadsBackTheState) {
  SimPrinter p(*FindSimModel("LUMEN"));
  struct Case {
    std::array<double, 7> rates;
    std::array<double, 7> totals;
    char mark;
  };
  const Case cases[] = {
      {{23, 8, 5, 0, kSimRateInactive, kSimRateInactive, kSimRateExempt},
       {10.5, 2, 3, 4, 0, 0, 99.99},
       0},
      {{kSimRateExempt, 7, kSimRateInactive, 22, 3, 0, 5}, {0, 1.1, 0, 3.3, 4.4, 5.5, 6.6}, '>'},
      {{kSimRateInactive, kSimRateInactive, kSimRateInactive, kSimRateInactive, kSimRateInactive,
        kSimRateInactive, kSimRateInactive},
       {0, 0, 0, 0, 0, 0, 123456.78},
       '<'},
  };
  for (const Case& c : cases) {
    SimState& s = p.State();
    s.rates = c.rates;
    s.totals = c.totals;
    s.resets_mark = c.mark;
    s.ram_resets = 7;
    s.fiscal = c.mark != 0;
    s.receipts = 17;
    s.further_amount = 765.43;
    s.last_record = SimDate{2049, 2, 28};
    StatusRecord r;
    ASSERT_TRUE(ParseStatus(Ask(p, "0#s"), r));
    EXPECT_EQ(r.f1, s.fiscal ? 1 : 0);
    EXPECT_EQ(r.resets, c.mark ? -1 : 7);
    EXPECT_EQ(r.year, 2049);
    EXPECT_EQ(r.month, 2);
    EXPECT_EQ(r.day, 28);
    EXPECT_EQ(r.rates, c.rates);
    EXPECT_EQ(r.receipts, 17);
    for (int i = 0; i < 7; ++i) {
      if (i == 6 || c.rates[i] >= 0) {
        EXPECT_NEAR(r.totals[i], c.totals[i], 1e-9) << i;
      }
    }
    EXPECT_NEAR(r.further, 765.43, 1e-9);
    EXPECT_EQ(r.unique_number, "BLM01000017");
  }
}

TEST(SimReadbackTest, IdentityClockAndFirstReport) {
  for (const std::string& name : SimModelNames()) {
    SimPrinter p(*FindSimModel(name));
    if (!p.Model().answers_identity) continue;
    const IdentityAnswer id = ParseIdentity(Ask(p, "#v"));
    EXPECT_EQ(id.type_code, p.Model().type_code) << name;
    if (id.type_code == 4 || id.type_code == 6) {
      EXPECT_EQ(id.subtype, p.Model().subtype) << name;
    }
    EXPECT_EQ(id.version, p.Model().version);
  }
  SimPrinter p(*FindSimModel("SOLIDA"));
  p.PrinterClock().Fix(LocalTime{2050, 1, 2, 3, 4, 5, 0});
  EXPECT_EQ(ParseClock(Ask(p, "0#c")), "1950-01-02 03:04");  // the clock's own year rule
  p.PrinterClock().Fix(LocalTime{2012, 5, 31, 23, 59, 0, 0});
  EXPECT_EQ(ParseClock(Ask(p, "0#c")), "2012-05-31 23:59");
  int y = 0, m = 0, d = 0;
  EXPECT_FALSE(FindReportDate(Ask(p, "2;0;0;1#r96"), y, m, d));
  p.State().first_daily_report = SimDate{2012, 5, 14};
  ASSERT_TRUE(FindReportDate(Ask(p, "2;0;0;1#r96"), y, m, d));
  EXPECT_EQ(y * 10000 + m * 100 + d, 20120514);
}

}  // namespace
}  // namespace tavena

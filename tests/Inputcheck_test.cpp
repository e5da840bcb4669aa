#include "protocol/Inputcheck.h"

#include <gtest/gtest.h>

#include "sequence/Codepage.h"
#include "sequence/Messagelanguage.h"

namespace tavena {
namespace {

// The messages in Polish are checked through the tool (Cli_test) and the windows.
class InputcheckTest : public ::testing::Test {
 protected:
  void TearDown() override { MessageLanguage = 0; }
  std::string message_;
};

TEST_F(InputcheckTest, NipLayouts) {
  const std::pair<const char*, int> cases[] = {{"123-45-67-890", 1},  {"123-456-78-90", 1},
                                               {"1234567890", 1},     {"123/45/67/890", -1},
                                               {"123-45-67-89O", -1}, {" 1234567890", -1},
                                               {"123-4567-890", -2},  {"123456789", -2},
                                               {"12-345-67-890", -2}, {"", -2}};
  for (const auto& [nip, result] : cases) EXPECT_EQ(CheckNip(nip), result) << nip;
}

TEST_F(InputcheckTest, VatRatesAndTheSecondExempt) {
  VatRates rates{};
  ASSERT_TRUE(CheckVatRates({"23", "8,00", "5.5", "0", "nakt", "NAKT", "zw"}, rates, message_));
  EXPECT_EQ(rates, (VatRates{23, 8, 5.5, 0, -1, -1, -2}));
  EXPECT_FALSE(CheckVatRates({"zw", "8", "5", "0", "zw", "nakt", "zw"}, rates, message_));
  EXPECT_EQ(rates[0], 23);  // untouched on failure
  for (const char* bad : {"100", "-1", "23%", "8,,0", "5.123", ".5", "5.", "", "abc", "1e1"}) {
    double rate = 0;
    EXPECT_FALSE(ParseVatRate(bad, rate)) << bad;
  }
  EXPECT_FALSE(CheckVatRates({"23", "8", "x", "0", "0", "0", "0"}, rates, message_));
  EXPECT_EQ(Cp1250ToUtf8(message_).rfind("Nieprawidłowa stawka VAT C: \"x\". ", 0), 0u);
  EXPECT_FALSE(CheckVatRates({"23", "8"}, rates, message_));
  MessageLanguage = 1;
  EXPECT_FALSE(CheckVatRates({"zw", "zw", "0", "0", "0", "0", "0"}, rates, message_));
  EXPECT_EQ(message_,
            "Invalid VAT rates given\nOnly one exempt rate is allowed.\nThe error is in rate B");
}

TEST_F(InputcheckTest, DatesTimesAndReportDates) {
  DateTimeValue d;
  auto fields = [&d] {
    return std::vector<int>{d.year, d.month, d.day, d.hour, d.minute, d.second};
  };
  ASSERT_TRUE(ParseDateTime("2026-11-21 10:05:09", true, d, message_));
  EXPECT_EQ(fields(), (std::vector<int>{2026, 11, 21, 10, 5, 9}));
  ASSERT_TRUE(ParseDateTime("21.11.2026 23:59", true, d, message_));  // day first, no seconds
  EXPECT_EQ(fields(), (std::vector<int>{2026, 11, 21, 23, 59, 0}));
  EXPECT_TRUE(ParseDateTime("2024-02-29", false, d, message_));
  for (const char* bad : {"2023-02-29", "2026-13-01", "2026-04-31", "2100-01-01", "2026-11"})
    EXPECT_FALSE(ParseDateTime(bad, false, d, message_)) << bad;
  for (const char* bad :
       {"2026-11-21 24:00", "2026-11-21 10:60", "2026-11-21 10:00:60", "2026-11-21"})
    EXPECT_FALSE(ParseDateTime(bad, true, d, message_)) << bad;

  const DateTimeValue first{2026, 3, 5};
  EXPECT_TRUE(CheckPeriodDates(first, {2026, 3, 5, 23}, message_));
  EXPECT_FALSE(CheckPeriodDates(first, {2026, 3, 4}, message_));

  const LocalTime now{2026, 3, 5, 9, 0, 0, 0};
  EXPECT_FALSE(CheckDailyReportDate("", now, d, message_));
  EXPECT_FALSE(CheckDailyReportDate("2026-03-04 23:59", now, d, message_));
  EXPECT_FALSE(CheckDailyReportDate("1980-01-01 00:00", now, d, message_));
  ASSERT_TRUE(CheckDailyReportDate("2026.03.05 08:15", now, d, message_));
  EXPECT_EQ(CompareDays(d, first), 0);
}

TEST_F(InputcheckTest, HeaderCharactersAndByteCount) {
  HeaderText h;
  EXPECT_EQ(CheckHeader(h), 1);  // empty header
  EXPECT_EQ(HeaderByteCount(h), 0);
  h.lines[0] = Utf8ToCp1250("Sklep Żółć ąęś");
  h.lines[2] = "ul. Polna 1/2 (#3)";
  EXPECT_EQ(CheckHeader(h), 0);
  for (const std::string& bad :
       {Utf8ToCp1250("Café"), std::string("tab\there"), std::string("\x7F")}) {
    h.lines[4] = bad;
    EXPECT_EQ(CheckHeader(h), 5) << bad;
  }
  EXPECT_FALSE(HeaderCharAccepted(0xFF));
  EXPECT_EQ(Cp1250ToUtf8(HeaderErrorMessage(5)),
            "Sprawdź nagłówek w linii numer: 5Zawiera niedopuszczalne znaki,\nalbo jest pusty\n"
            "Nie można nagłówka zapisać.");

  // Characters, the centring pad of the width (40, or 22 large), plus one.
  HeaderText c;
  const std::tuple<int, bool, int> counts[] = {{40, false, 41}, {10, true, 17}, {25, true, 25}};
  for (const auto& [length, large, count] : counts) {
    c.lines[0] = std::string(length, 'x');
    c.large[0] = large;
    EXPECT_EQ(HeaderByteCount(c), count) << length;
  }

  EXPECT_EQ(FiscalDeviceKind("Solida ej"), '2');
  EXPECT_EQ(FiscalDeviceKind("TAVENA LUMEN"), '1');
}

}  // namespace
}  // namespace tavena

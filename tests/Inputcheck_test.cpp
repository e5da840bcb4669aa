#include "protocol/Inputcheck.h"

#include <gtest/gtest.h>

#include "sequence/Codepage.h"
#include "sequence/Messagelanguage.h"

namespace tavena {
namespace {

struct Polish {
  Polish() { MessageLanguage = 0; }
  ~Polish() { MessageLanguage = 0; }
};

TEST(Inputcheck, NipLayouts) {
  EXPECT_EQ(CheckNip("123-45-67-890"), 1);
  EXPECT_EQ(CheckNip("123-456-78-90"), 1);
  EXPECT_EQ(CheckNip("1234567890"), 1);
  EXPECT_EQ(CheckNip("123/45/67/890"), -1);
  EXPECT_EQ(CheckNip("123-45-67-89O"), -1);  // letter O
  EXPECT_EQ(CheckNip(" 1234567890"), -1);
  EXPECT_EQ(CheckNip("123-4567-890"), -2);
  EXPECT_EQ(CheckNip("123456789"), -2);
  EXPECT_EQ(CheckNip("12-345-67-890"), -2);
  EXPECT_EQ(CheckNip(""), -2);
  Polish pl;
  EXPECT_EQ(Cp1250ToUtf8(NipFormatMessage()),
            "Sprawdź numer NIP.\nFormat jest nieprawidłowy.\nPrawidłowe formaty:\nXXX-XX-XX-XXX\n"
            "XXX-XXX-XX-XX\nXXXXXXXXXX\ngdzie X jest dowolną cyfrą.");
}

TEST(Inputcheck, VatRatesParseAndTheSecondExemptIsRefused) {
  Polish pl;
  VatRates rates{};
  std::string message;
  ASSERT_TRUE(CheckVatRates({"23", "8,00", "5.5", "0", "nakt", "NAKT", "zw"}, rates, message));
  EXPECT_EQ(rates, (VatRates{23, 8, 5.5, 0, kVatInactive, kVatInactive, kVatExempt}));

  EXPECT_FALSE(CheckVatRates({"zw", "8", "5", "0", "zw", "nakt", "zw"}, rates, message));
  EXPECT_EQ(Cp1250ToUtf8(message),
            "Podano nieprawidłowe stawki VAT\nMoże wystapić tylko jedna stawka zwolniona.\n"
            "Błąd wystąpił w stawce E");
  EXPECT_EQ(rates[0], 23);  // untouched on failure

  for (const char* bad : {"100", "-1", "23%", "8,,0", "5.123", ".5", "5.", "", "abc", "1e1"}) {
    double rate = 0;
    EXPECT_FALSE(ParseVatRate(bad, rate)) << bad;
  }
  EXPECT_FALSE(CheckVatRates({"23", "8", "x", "0", "0", "0", "0"}, rates, message));
  EXPECT_EQ(Cp1250ToUtf8(message).rfind("Nieprawidłowa stawka VAT C: \"x\". ", 0), 0u);
  EXPECT_FALSE(CheckVatRates({"23", "8"}, rates, message));
  MessageLanguage = 1;
  EXPECT_FALSE(CheckVatRates({"zw", "zw", "0", "0", "0", "0", "0"}, rates, message));
  EXPECT_EQ(message,
            "Invalid VAT rates given\nOnly one exempt rate is allowed.\nThe error is in rate B");
}

TEST(Inputcheck, DatesTimesAndReportDates) {
  Polish pl;
  DateTimeValue d;
  std::string message;
  ASSERT_TRUE(ParseDateTime("2026-11-21 10:05:09", true, d, message));
  EXPECT_EQ((std::vector<int>{d.year, d.month, d.day, d.hour, d.minute, d.second}),
            (std::vector<int>{2026, 11, 21, 10, 5, 9}));
  ASSERT_TRUE(ParseDateTime("21.11.2026 23:59", true, d, message));  // day first, no seconds
  EXPECT_EQ((std::vector<int>{d.year, d.month, d.day, d.hour, d.minute, d.second}),
            (std::vector<int>{2026, 11, 21, 23, 59, 0}));
  ASSERT_TRUE(ParseDateTime("2024-02-29", false, d, message));
  for (const char* bad : {"2023-02-29", "2026-13-01", "2026-04-31", "2100-01-01", "2026-11"})
    EXPECT_FALSE(ParseDateTime(bad, false, d, message)) << bad;
  for (const char* bad : {"2026-11-21 24:00", "2026-11-21 10:60", "2026-11-21 10:00:60"})
    EXPECT_FALSE(ParseDateTime(bad, true, d, message)) << bad;
  EXPECT_FALSE(ParseDateTime("2026-11-21", true, d, message));
  EXPECT_EQ(Cp1250ToUtf8(message),
            "Nieprawidłowa data i czas: \"2026-11-21\". Oczekiwano RRRR-MM-DD GG:MM[:SS].");

  DateTimeValue first{2026, 3, 5}, same{2026, 3, 5, 23}, earlier{2026, 3, 4};
  EXPECT_TRUE(CheckPeriodDates(first, same, message));
  EXPECT_FALSE(CheckPeriodDates(first, earlier, message));
  EXPECT_EQ(Cp1250ToUtf8(message), "Druga data jest wcześniejsza od pierwszej.");

  const LocalTime now{2026, 3, 5, 9, 0, 0, 0};
  EXPECT_FALSE(CheckDailyReportDate("", now, d, message));
  EXPECT_EQ(Cp1250ToUtf8(message), "Brak odczytanej daty z drukarki.");
  EXPECT_FALSE(CheckDailyReportDate("2026-03-04 23:59", now, d, message));
  EXPECT_EQ(Cp1250ToUtf8(message), "Data systemowa różna od daty w drukarce.");
  EXPECT_FALSE(CheckDailyReportDate("1980-01-01 00:00", now, d, message));
  ASSERT_TRUE(CheckDailyReportDate("2026.03.05 08:15", now, d, message));
  EXPECT_EQ(CompareDays(d, first), 0);
}

TEST(Inputcheck, HeaderCharactersAndByteCount) {
  Polish pl;
  HeaderText h;
  EXPECT_EQ(CheckHeader(h), 1);  // empty header
  EXPECT_EQ(HeaderByteCount(h), 0);
  h.lines[0] = Utf8ToCp1250("Sklep Żółć ąęś");
  h.lines[2] = "ul. Polna 1/2 (#3)";
  EXPECT_EQ(CheckHeader(h), 0);
  h.lines[4] = Utf8ToCp1250("Café");  // é is not a Polish letter
  EXPECT_EQ(CheckHeader(h), 5);
  h.lines[4] = "tab\there";
  EXPECT_EQ(CheckHeader(h), 5);
  EXPECT_FALSE(HeaderCharAccepted(0xFF));
  EXPECT_FALSE(HeaderCharAccepted(0x7F));
  EXPECT_EQ(Cp1250ToUtf8(HeaderErrorMessage(5)),
            "Sprawdź nagłówek w linii numer: 5\nZawiera niedopuszczalne znaki,\nalbo jest pusty\n"
            "Nie można nagłówka zapisać.");

  HeaderText c;
  c.lines[0] = std::string(40, 'x');
  EXPECT_EQ(HeaderByteCount(c), 41);
  c.lines[0] = std::string(10, 'x');
  c.large[0] = true;
  EXPECT_EQ(HeaderByteCount(c), 17);
  c.lines[0] = std::string(25, 'x');
  EXPECT_EQ(HeaderByteCount(c), 25);  // pad -3/2 truncates to -1
  c.centre.fill(false);
  EXPECT_EQ(HeaderByteCount(c), 25);  // centring does not change the count

  EXPECT_EQ(FiscalDeviceKind("TAVENA QX-1 EJ"), '2');
  EXPECT_EQ(FiscalDeviceKind("Solida ej"), '2');
  EXPECT_EQ(FiscalDeviceKind("TAVENA LUMEN"), '1');
}

}  // namespace
}  // namespace tavena

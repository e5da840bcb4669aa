// Checks of what the user types before anything goes to the printer: dates
// and times, VAT rates, the taxpayer number (NIP) and the header lines. The
// main window and the command-line tool share them. Texts in and out are
// 8-bit Windows-1250; messages follow MessageLanguage.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "sequence/Clock.h"

namespace tavena {

struct DateTimeValue {
  int year = 0;
  int month = 0;
  int day = 0;
  int hour = 0;
  int minute = 0;
  int second = 0;
};

// Reads year, month, day and, with the time, hour, minute and an optional
// second, as numbers between any separators. A day-first date is accepted:
// when the third number is above 31 the first and third are swapped. A
// two-digit year means 20xx. The year must give the printer 0..99 (1900 to
// 2099) and the date must exist. False with a message otherwise.
bool ParseDateTime(const std::string& text, bool with_time, DateTimeValue& out,
                   std::string& message);

// -1, 0 or 1 as a's day is before, the same as or after b's.
int CompareDays(const DateTimeValue& a, const DateTimeValue& b);

// The periodic report's two dates: the second may not be earlier.
bool CheckPeriodDates(const DateTimeValue& first, const DateTimeValue& second,
                      std::string& message);

// The daily report needs the printer's clock as read ("YYYY-MM-DD hh:mm",
// "." allowed in the date) and that date must be today's. Fills date.
bool CheckDailyReportDate(const std::string& printer_clock, const LocalTime& now,
                          DateTimeValue& date, std::string& message);

// VAT rate values: a percentage, or one of these.
inline constexpr double kVatInactive = -1.0;
inline constexpr double kVatExempt = -2.0;
inline constexpr int kVatRateCount = 7;
using VatRates = std::array<double, kVatRateCount>;

// "nakt" (inactive), "zw" (exempt) or a number 0 to 99.99 with "." or ",".
bool ParseVatRate(const std::string& text, double& rate);

// Seven texts for A to G. Refuses a text that is no rate, and a second
// exempt rate with the window's message naming its letter.
bool CheckVatRates(const std::vector<std::string>& texts, VatRates& rates, std::string& message);

// 1 valid, -1 a character that is neither a digit nor "-", -2 no layout fits.
int CheckNip(const std::string& nip);
std::string NipFormatMessage();

// Header lines as the window holds them.
inline constexpr int kHeaderLines = 8;
inline constexpr int kHeaderByteLimit = 218;
struct HeaderText {
  std::array<std::string, kHeaderLines> lines;
  std::array<bool, kHeaderLines> large{};   // double width
  std::array<bool, kHeaderLines> centre{};  // centred
};

// Printable ASCII and the Polish letters of Windows-1250.
bool HeaderCharAccepted(unsigned char c);
// 0 when the header can be written, else the number (1..8) of the first
// line with a refused character; 1 for an empty header.
int CheckHeader(const HeaderText& header);
// The refusal of a header: the line number directly followed by the reason
// in the window's text; after_number goes between them (the tool's " ").
std::string HeaderErrorMessage(int line, const char* after_number = "");
// The header byte counter: each non-empty line counts its characters plus
// the centring pad for its width (22 large, 40 normal) plus one.
int HeaderByteCount(const HeaderText& header);

// The fiscalisation procedure of a printer type text: '2' for a printer with
// an electronic journal or a QX-1, else '1'.
char FiscalDeviceKind(const std::string& printer_type);

}  // namespace tavena

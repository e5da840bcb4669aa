// Command bodies for the printer (the text between ESC P and the control
// sum), built from the operation's arguments. Pure functions: the printer
// object's operations of the same names frame and send them. Bodies are
// Windows-1250; the frame converts them to the printer's character set.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tavena {

// printf into a std::string (any length).
std::string TextF(const char* format, ...)
#if defined(__GNUC__) || defined(__clang__)
    __attribute__((format(printf, 1, 2)))
#endif
    ;

inline constexpr char kSO = 0x0E;                          // opens a double-width header line
inline constexpr char kDC4 = 0x14;                         // closes it
inline constexpr char kTextEnd = static_cast<char>(0xFF);  // ends header and NIP texts
inline constexpr size_t kHeaderBodyLimit = 220;
inline constexpr int kHeaderMaxLines = 8;

// Header line flags.
inline constexpr int kHeaderDoubleWidth = 1;
inline constexpr int kHeaderCentre = 2;

struct HeaderLine {
  std::string text;  // Windows-1250
  int flags = 0;     // kHeaderDoubleWidth | kHeaderCentre
};

// A calendar date for report commands; the year may have two or four digits.
struct PrinterDate {
  int year = 0;
  int month = 0;
  int day = 0;
};

struct SaleLineRecord {
  int number = 1;   // P
  int number2 = 0;  // P2; with P2 above 0 the fourth amount is sent too
  std::string name;
  double quantity = 1;
  char vat_letter = 'A';
  double price = 0;
  double fourth = 0;
};

struct EndTransactionRecord {
  int number = 1;  // P; 0 cancels the transaction instead
  int d = 0;       // optional number D; not 0 adds ";D" and the third amount
  std::string code;
  std::array<std::string, 4> lines;  // extra lines; empty ones are skipped
  double amount1 = 0;
  double amount2 = 0;
  double amount3 = 0;
};

// Two-digit year of a date: four-digit years lose 1900 below 2000, else 2000.
int TwoDigitYear(int year);
// "%02d;%02d;%02d" of year, month, day.
std::string DateField(const PrinterDate& date);

// "y;m;d;h;min;s$c"; nullopt when a value is out of range.
std::optional<std::string> ClockBody(int year, int month, int day, int hour, int minute,
                                     int second);
// The clock body from a text holding year, month, day, hour, minute and
// optionally second as numbers; nullopt when fewer than five numbers.
std::optional<std::string> ClockBodyFromText(const std::string& text);
// Seven rates (percentage, kVatInactive, kVatExempt) in the wire form of
// the subtype: 3 and 4 write 101/100 for inactive/exempt, others use flags.
std::string VatRatesBody(const std::array<double, 7>& rates, int32_t subtype);
// "0$f", the lines (at most 8, empty ones left out), 0xFF; cut at 220 bytes.
std::string HeaderBody(const std::vector<HeaderLine>& lines);
std::string FiscaliseBody(int p, const std::string& nip);
std::string PeriodicReportBody(const PrinterDate& from, const PrinterDate& to, int p);
std::string ReportByNumberBody(int p, const PrinterDate& date);
// nullopt when p is outside 0..3.
std::optional<std::string> CashCommandBody(int p, const std::string& text, uint8_t code);
std::string ParamCommandAmpCBody(int p);
std::string ParamCommandDollarHBody(int p);
std::string SaleLineBody(const SaleLineRecord& line);
std::string EndTransactionBody(const EndTransactionRecord& record);
// With a first text: "0;3$e" b CR c CR a CR; without: "0$e".
std::string CancelTransactionBody(const std::string& a, const std::string& b, const std::string& c);

}  // namespace tavena

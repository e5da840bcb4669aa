#include "Inputcheck.h"

#include <cctype>
#include <cstdlib>

#include "sequence/Codepage.h"
#include "sequence/Messagelanguage.h"

namespace tavena {

namespace {

std::vector<int> NumbersIn(const std::string& text) {
  std::vector<int> numbers;
  for (size_t i = 0; i < text.size();) {
    if (!std::isdigit(static_cast<unsigned char>(text[i]))) {
      ++i;
      continue;
    }
    long value = 0;
    for (; i < text.size() && std::isdigit(static_cast<unsigned char>(text[i])); ++i)
      value = value < 100000 ? value * 10 + (text[i] - '0') : value;
    numbers.push_back(static_cast<int>(value));
  }
  return numbers;
}

bool LeapYear(int year) {
  return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

int DaysInMonth(int year, int month) {
  static const int days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return month == 2 && LeapYear(year) ? 29 : days[month - 1];
}

bool ValidDate(const DateTimeValue& d) {
  return d.year >= 1900 && d.year <= 2099 && d.month >= 1 && d.month <= 12 && d.day >= 1 &&
         d.day <= DaysInMonth(d.year, d.month);
}

bool ValidTime(const DateTimeValue& d) {
  return d.hour >= 0 && d.hour <= 23 && d.minute >= 0 && d.minute <= 59 && d.second >= 0 &&
         d.second <= 59;
}

std::string BadDateMessage(const std::string& text, bool with_time) {
  return (with_time ? Msg("Nieprawidłowa data i czas: \"", "Invalid date and time: \"")
                    : Msg("Nieprawidłowa data: \"", "Invalid date: \"")) +
         text + "\". " +
         (with_time ? Msg("Oczekiwano RRRR-MM-DD GG:MM[:SS].", "Expected YYYY-MM-DD hh:mm[:ss].")
                    : Msg("Oczekiwano RRRR-MM-DD.", "Expected YYYY-MM-DD."));
}

bool IsPolishCp1250(unsigned char c) {
  for (const auto& row : kPolishLetters)
    if (row[kCp1250] != 0 && row[kCp1250] == c) return true;
  return false;
}

std::string Lower(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

}  // namespace

bool ParseDateTime(const std::string& text, bool with_time, DateTimeValue& out,
                   std::string& message) {
  std::vector<int> n = NumbersIn(text);
  const bool count_ok = with_time ? (n.size() == 5 || n.size() == 6) : n.size() == 3;
  DateTimeValue d;
  if (count_ok) {
    if (n[2] > 31) std::swap(n[0], n[2]);
    d.year = n[0] < 100 ? 2000 + n[0] : n[0];
    d.month = n[1];
    d.day = n[2];
    if (with_time) {
      d.hour = n[3];
      d.minute = n[4];
      d.second = n.size() == 6 ? n[5] : 0;
    }
  }
  if (!count_ok || !ValidDate(d) || !ValidTime(d)) {
    message = BadDateMessage(text, with_time);
    return false;
  }
  out = d;
  return true;
}

int CompareDays(const DateTimeValue& a, const DateTimeValue& b) {
  const long ka = (a.year * 100L + a.month) * 100L + a.day;
  const long kb = (b.year * 100L + b.month) * 100L + b.day;
  return ka < kb ? -1 : (ka > kb ? 1 : 0);
}

bool CheckPeriodDates(const DateTimeValue& first, const DateTimeValue& second,
                      std::string& message) {
  if (CompareDays(second, first) >= 0) return true;
  message = Msg("Druga data jest wcześniejsza od pierwszej.",
                "The second date is earlier than the first one.");
  return false;
}

bool CheckDailyReportDate(const std::string& printer_clock, const LocalTime& now,
                          DateTimeValue& date, std::string& message) {
  if (printer_clock.size() < 11) {
    message = Msg("Brak odczytanej daty z drukarki.", "No date has been read from the printer.");
    return false;
  }
  std::string ignored;
  const DateTimeValue today{now.year, now.month, now.day, 0, 0, 0};
  if (!ParseDateTime(printer_clock.substr(0, 10), false, date, ignored) ||
      CompareDays(date, today) != 0) {
    message = Msg("Data systemowa różna od daty w drukarce.",
                  "The system date differs from the printer's date.");
    return false;
  }
  return true;
}

bool ParseVatRate(const std::string& text, double& rate) {
  const std::string t = Lower(text);
  if (t == "nakt") return rate = kVatInactive, true;
  if (t == "zw") return rate = kVatExempt, true;
  if (t.empty() || t.size() > 6) return false;
  std::string number;
  int points = 0;
  for (char c : t) {
    if (c == ',' || c == '.') {
      ++points;
      number += '.';
    } else if (std::isdigit(static_cast<unsigned char>(c))) {
      number += c;
    } else {
      return false;
    }
  }
  if (points > 1 || number.front() == '.' || number.back() == '.') return false;
  const size_t point = number.find('.');
  if (point != std::string::npos && number.size() - point - 1 > 2) return false;
  const double value = std::strtod(number.c_str(), nullptr);
  if (value >= 100.0) return false;
  rate = value;
  return true;
}

bool CheckVatRates(const std::vector<std::string>& texts, VatRates& rates, std::string& message) {
  if (texts.size() != kVatRateCount) {
    message = Msg("Podaj siedem stawek VAT, od A do G.", "Give seven VAT rates, A to G.");
    return false;
  }
  VatRates read{};
  int exempt = 0;
  for (int i = 0; i < kVatRateCount; ++i) {
    const std::string letter(1, static_cast<char>('A' + i));
    if (!ParseVatRate(texts[i], read[i])) {
      message = Msg("Nieprawidłowa stawka VAT ", "Invalid VAT rate ") + letter + ": \"" + texts[i] +
                "\". " +
                Msg("Podaj liczbę od 0 do 99,99, \"nakt\" (nieaktywna) albo \"zw\" (zwolniona).",
                    "Give a number from 0 to 99.99, \"nakt\" (inactive) or \"zw\" (exempt).");
      return false;
    }
    if (read[i] == kVatExempt && ++exempt > 1) {
      message = Msg("Podano nieprawidłowe stawki VAT\nMoże wystapić tylko jedna stawka "
                    "zwolniona.\nBłąd wystąpił w stawce ",
                    "Invalid VAT rates given\nOnly one exempt rate is allowed.\nThe error is in "
                    "rate ") +
                letter;
      return false;
    }
  }
  rates = read;
  return true;
}

int CheckNip(const std::string& nip) {
  // A leading blank, then the layout filled to 13 positions; a digit blanks
  // an "X", a "-" blanks a "-". A pattern left all blank is a match.
  std::string patterns[3] = {" XXX-XX-XX-XXX", " XXX-XXX-XX-XX", " XXXXXXXXXX   "};
  for (size_t i = 1; i <= 13 && i <= nip.size(); ++i) {
    const char c = nip[i - 1];
    const bool digit = c >= '0' && c <= '9';
    if (!digit && c != '-') return -1;
    for (std::string& p : patterns)
      if ((digit && p[i] == 'X') || (c == '-' && p[i] == '-')) p[i] = ' ';
  }
  for (const std::string& p : patterns)
    if (p.find_first_not_of(' ') == std::string::npos) return 1;
  return -2;
}

std::string NipFormatMessage() {
  return Msg(
      "Sprawdź numer NIP.\nFormat jest nieprawidłowy.\nPrawidłowe formaty:\nXXX-XX-XX-XXX\n"
      "XXX-XXX-XX-XX\nXXXXXXXXXX\ngdzie X jest dowolną cyfrą.",
      "Check the NIP number.\nThe format is wrong.\nValid formats:\nXXX-XX-XX-XXX\n"
      "XXX-XXX-XX-XX\nXXXXXXXXXX\nwhere X is any digit.");
}

bool HeaderCharAccepted(unsigned char c) {
  return (c >= 0x20 && c <= 0x7E) || IsPolishCp1250(c);
}

int CheckHeader(const HeaderText& header) {
  bool empty = true;
  for (int i = 0; i < kHeaderLines; ++i) {
    for (const char c : header.lines[i])
      if (!HeaderCharAccepted(static_cast<unsigned char>(c))) return i + 1;
    if (!header.lines[i].empty()) empty = false;
  }
  return empty ? 1 : 0;
}

std::string HeaderErrorMessage(int line, const char* after_number) {
  return Msg("Sprawdź nagłówek w linii numer: ", "Check the header in line number: ") +
         std::to_string(line) + after_number +
         Msg("Zawiera niedopuszczalne znaki,\nalbo jest pusty\n",
             "It contains characters that are not allowed,\nor it is empty\n") +
         Msg("Nie można nagłówka zapisać.", "The header cannot be written.");
}

int HeaderByteCount(const HeaderText& header) {
  int total = 0;
  for (int i = 0; i < kHeaderLines; ++i) {
    const int length = static_cast<int>(header.lines[i].size());
    total += length;
    if (length == 0) continue;
    const int width = header.large[i] ? 22 : 40;
    total += (width - length) / 2 + 1;
  }
  return total;
}

char FiscalDeviceKind(const std::string& printer_type) {
  std::string upper = printer_type;
  for (char& c : upper) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return upper.find("QX-1") != std::string::npos || upper.find(" EJ") != std::string::npos ? '2'
                                                                                           : '1';
}

}  // namespace tavena

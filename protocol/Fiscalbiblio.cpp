#include "Fiscalbiblio.h"

#include <cctype>
#include <cmath>
#include <cstdarg>
#include <cstdio>

#include "Answerparse.h"

namespace tavena {

namespace {

constexpr char kCR = '\r';

bool InRange(int value, int low, int high) {
  return value >= low && value <= high;
}

// Decimal numbers found in a text, in order.
std::vector<int> NumbersIn(const std::string& text) {
  std::vector<int> numbers;
  size_t i = 0;
  while (i < text.size()) {
    if (!std::isdigit(static_cast<unsigned char>(text[i]))) {
      ++i;
      continue;
    }
    int value = 0;
    for (; i < text.size() && std::isdigit(static_cast<unsigned char>(text[i])); ++i) {
      if (value < 100000) value = value * 10 + (text[i] - '0');
    }
    numbers.push_back(value);
  }
  return numbers;
}

bool IsExempt(double rate) {
  return rate == kVatExempt;
}

// Two-digit family: 101 and 100 stand for inactive and exempt.
std::string RatesWithMarkers(const std::array<double, 7>& rates) {
  std::string body = "7$p";
  for (double rate : rates) {
    if (rate >= 0)
      body += TextF("%.2f/", rate);
    else
      body += IsExempt(rate) ? "100/" : "101/";
  }
  return body;
}

// Other printers: a flag per rate, then the values (0.00 when not active).
std::string RatesWithFlags(const std::array<double, 7>& rates) {
  std::string flags = "7";
  std::string values;
  for (double rate : rates) {
    flags += rate >= 0 ? ";0" : (IsExempt(rate) ? ";2" : ";1");
    values += TextF("%.2f/", rate >= 0 ? rate : 0.0);
  }
  return flags + "$p" + values;
}

std::string HeaderLineText(const HeaderLine& line) {
  const bool double_width = line.flags & kHeaderDoubleWidth;
  const int width = double_width ? 20 : 40;
  const int pad = (width - static_cast<int>(line.text.size())) / 2;
  std::string text;
  if ((line.flags & kHeaderCentre) && pad > 0) text.assign(static_cast<size_t>(pad), ' ');
  text += line.text;
  if (double_width) text = kSO + text + kDC4;
  return text + kCR;
}

double RoundToCents(double value) {
  return std::round(value * 100.0) / 100.0;
}

}  // namespace

std::string TextF(const char* format, ...) {
  va_list args;
  va_start(args, format);
  va_list copy;
  va_copy(copy, args);
  const int n = std::vsnprintf(nullptr, 0, format, copy);
  va_end(copy);
  std::string out(n > 0 ? static_cast<size_t>(n) : 0, '\0');
  if (n > 0) std::vsnprintf(out.data(), out.size() + 1, format, args);
  va_end(args);
  return out;
}

int TwoDigitYear(int year) {
  if (year < 100) return year;
  return year < 2000 ? year - 1900 : year - 2000;
}

std::string DateField(const PrinterDate& date) {
  return TextF("%02d;%02d;%02d", TwoDigitYear(date.year), date.month, date.day);
}

std::optional<std::string> ClockBody(int year, int month, int day, int hour, int minute,
                                     int second) {
  const int y = TwoDigitYear(year);
  if (!InRange(y, 0, 99) || !InRange(month, 1, 12) || !InRange(day, 1, 31) ||
      !InRange(hour, 0, 23) || !InRange(minute, 0, 60) || !InRange(second, 0, 60)) {
    return std::nullopt;
  }
  return TextF("%d;%d;%d;%d;%d;%d$c", y, month, day, hour, minute, second);
}

std::optional<std::string> ClockBodyFromText(const std::string& text) {
  const std::vector<int> n = NumbersIn(text);
  if (n.size() < 5) return std::nullopt;
  return ClockBody(n[0], n[1], n[2], n[3], n[4], n.size() > 5 ? n[5] : 0);
}

std::string VatRatesBody(const std::array<double, 7>& rates, int32_t subtype) {
  return (subtype == 3 || subtype == 4) ? RatesWithMarkers(rates) : RatesWithFlags(rates);
}

std::string HeaderBody(const std::vector<HeaderLine>& lines) {
  std::string body = "0$f";
  int count = 0;
  for (const HeaderLine& line : lines) {
    if (count++ == kHeaderMaxLines) break;
    if (!line.text.empty()) body += HeaderLineText(line);
  }
  if (body.size() > kHeaderBodyLimit) body.resize(kHeaderBodyLimit);
  return body + kTextEnd;
}

std::string FiscaliseBody(int p, const std::string& nip) {
  const char digit = InRange(p, 0, 9) ? static_cast<char>('0' + p) : static_cast<char>(p);
  return std::string(1, digit) + "$fNIP " + nip + kTextEnd;
}

std::string PeriodicReportBody(const PrinterDate& from, const PrinterDate& to, int p) {
  return DateField(from) + ";" + DateField(to) + ";" + std::to_string(p) + "#o";
}

std::string ReportByNumberBody(int p, const PrinterDate& date) {
  return std::to_string(p) + ";" + DateField(date) + "#r";
}

std::optional<std::string> CashCommandBody(int p, const std::string& text, uint8_t code) {
  if (!InRange(p, 0, 3)) return std::nullopt;
  if (p != 1) return std::to_string(p) + "#b";
  return "1#b" + text + kCR + static_cast<char>(code) + "/";
}

std::string ParamCommandAmpCBody(int p) {
  return std::to_string(p) + "&c";
}

std::string ParamCommandDollarHBody(int p) {
  return std::to_string(p) + "$h";
}

std::string SaleLineBody(const SaleLineRecord& line) {
  const bool second = line.number2 > 0;
  std::string body = std::to_string(line.number);
  if (second) body += ";" + std::to_string(line.number2);
  body += "$l" + line.name + kCR + TextF("%.f", line.quantity) + kCR + line.vat_letter + "/";
  body += TextF("%.2f/%.2f/", line.price, RoundToCents(line.quantity * line.price));
  if (second) body += TextF("%.f/", line.fourth);
  return body;
}

std::string EndTransactionBody(const EndTransactionRecord& r) {
  if (r.number == 0) return CancelTransactionBody({}, {}, {});
  std::string extra;
  int count = 0;
  for (const std::string& line : r.lines) {
    if (line.empty()) continue;
    extra += line + kCR;
    ++count;
  }
  std::string body = TextF("%d;0;%d;0", r.number, count);
  if (r.d != 0) body += ";" + std::to_string(r.d);
  body += "$e" + r.code + kCR + extra + TextF("%.2f/%.2f/", r.amount1, r.amount2);
  if (r.d != 0) body += TextF("%.2f", r.amount3);
  return body;
}

std::string CancelTransactionBody(const std::string& a, const std::string& b,
                                  const std::string& c) {
  if (a.empty()) return "0$e";
  return "0;3$e" + b + kCR + c + kCR + a + kCR;
}

}  // namespace tavena

#include "Answerparse.h"

#include <algorithm>
#include <cstring>

#include "Fiscalbiblio.h"

namespace tavena {

namespace {

constexpr size_t kIdentityLimit = 39;
constexpr int64_t kNumberCap = 10000000000LL;  // keeps sums far from overflow

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

int32_t ClampInt(int64_t value) {
  return static_cast<int32_t>(std::clamp<int64_t>(value, INT32_MIN, INT32_MAX));
}

// Reads numbers from an answer the way the printer writes them: a number
// ends at the first character that is not part of it, and that character is
// skipped. Never reads past the end.
class Cursor {
 public:
  explicit Cursor(std::string_view text, size_t pos = 0) : text_(text), pos_(pos) {}

  bool AtEnd() const { return pos_ >= text_.size(); }
  char Peek() const { return AtEnd() ? '\0' : text_[pos_]; }
  void Skip() {
    if (!AtEnd()) ++pos_;
  }

  // Optional sign and decimal digits.
  int32_t ReadInt() {
    const bool negative = ReadSign();
    const int32_t value = ClampInt(ReadDigits() * (negative ? -1 : 1));
    Skip();
    return value;
  }

  // Digits only (the clock's fields).
  int32_t ReadUnsigned() {
    const int32_t value = ClampInt(ReadDigits());
    Skip();
    return value;
  }

  // Optional sign, digits, and a fraction after "." or ",".
  double ReadDouble() {
    const bool negative = ReadSign();
    double value = 0.0;
    while (IsDigit(Peek())) value = value * 10.0 + (text_[pos_++] - '0');
    if (Peek() == '.' || Peek() == ',') {
      Skip();
      double scale = 0.1;
      while (IsDigit(Peek())) {
        value += (text_[pos_++] - '0') * scale;
        scale /= 10.0;
      }
    }
    Skip();
    return negative ? -value : value;
  }

  // Whether the field starting here holds a decimal point ("." or ",")
  // before its end ("/", ";", blank or the end of the text).
  bool FieldHasDecimalPoint() const {
    for (size_t i = pos_; i < text_.size(); ++i) {
      const char c = text_[i];
      if (c == '.' || c == ',') return true;
      if (c == '/' || c == ';' || c == ' ') return false;
    }
    return false;
  }

  std::string Take(size_t n) {
    const size_t count = std::min(n, text_.size() - std::min(pos_, text_.size()));
    std::string out(text_.substr(std::min(pos_, text_.size()), count));
    pos_ += count;
    return out;
  }

 private:
  bool ReadSign() {
    if (Peek() == '-') {
      Skip();
      return true;
    }
    if (Peek() == '+') Skip();
    return false;
  }

  int64_t ReadDigits() {
    int64_t value = 0;
    while (IsDigit(Peek())) {
      value = std::min(value * 10 + (text_[pos_++] - '0'), kNumberCap);
    }
    return value;
  }

  std::string_view text_;
  size_t pos_;
};

bool Contains(std::string_view text, std::string_view word) {
  return text.find(word) != std::string_view::npos;
}

std::string Limit(std::string_view text) {
  return std::string(text.substr(0, kIdentityLimit));
}

std::string_view StripTrailingBlanks(std::string_view text) {
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  return text;
}

void ReadIdentityText(std::string_view text, IdentityAnswer& out) {
  const size_t slash = text.find('/');
  if (slash == std::string_view::npos || slash == 0) return;
  std::string name(StripTrailingBlanks(text.substr(0, slash)));
  if (Contains(name, "TAVEWA MERIDO")) name = "TAVENA MERIDO QP51KZ";
  out.name = Limit(name);
  out.version = Limit(text.substr(slash + 1));
}

int32_t ClockYear(int32_t year) {
  if (year >= 100) return year;
  return year <= 49 ? 2000 + year : 1900 + year;
}

int32_t StatusYear(int32_t year) {
  if (year >= 100) return year;
  return year > 50 ? 1900 + year : 2000 + year;
}

// -2 for 100.00, -1 for 101.00, the value otherwise; marks a special rate.
double ClassifyRate(double value, bool& special) {
  if (value >= 99.99 && value < 100.01) {
    special = true;
    return kVatExempt;
  }
  if (value >= 100.99 && value < 101.01) {
    special = true;
    return kVatInactive;
  }
  return value;
}

void ReadRates(Cursor& in, StatusRecord& record) {
  bool special = false;
  for (double& rate : record.rates) {
    rate = in.FieldHasDecimalPoint() ? ClassifyRate(in.ReadDouble(), special) : kVatInactive;
  }
  if (!special) record.rates[6] = kVatExempt;
}

void ReadTotals(Cursor& in, StatusRecord& record) {
  for (int i = 0; i < 6; ++i) {
    if (record.rates[i] >= 0) record.totals[i] = in.ReadDouble();
  }
  record.totals[6] = in.ReadDouble();
  record.further = in.ReadDouble();
}

std::string Money(double value) {
  return TextF("%.2f", value);
}

std::string RateText(double rate) {
  if (rate >= 0) return Money(rate);
  return rate == kVatExempt ? "zw" : "-1";
}

std::string FormatTotals(const std::array<double, 7>& totals) {
  std::string out;
  for (double t : totals) out += Money(t) + ";";
  return out;
}

template <typename T>
void Put(std::string& out, size_t& at, const T& value) {
  std::memcpy(out.data() + at, &value, sizeof value);
  at += sizeof value;
}

std::string RawRecord(const StatusRecord& r) {
  std::string out(kStatusRawSize, '\0');
  size_t at = 0;
  for (int32_t v : {r.f0, r.f1, r.f2, r.f3, r.f4, r.resets, r.year, r.month, r.day})
    Put(out, at, v);
  at += 4;
  for (double v : r.rates) Put(out, at, v);
  Put(out, at, r.receipts);
  at += 4;
  for (double v : r.totals) Put(out, at, v);
  Put(out, at, r.further);
  std::memcpy(out.data() + at, r.unique_number.data(),
              std::min<size_t>(r.unique_number.size(), 11));
  return out;
}

// A run of digits at pos: its value (capped) and length.
size_t DigitRun(std::string_view text, size_t pos, int& value) {
  size_t n = 0;
  value = 0;
  while (pos + n < text.size() && IsDigit(text[pos + n])) {
    if (n < 6) value = value * 10 + (text[pos + n] - '0');
    ++n;
  }
  return n;
}

bool IsDateSeparator(char c) {
  return c == '-' || c == '.' || c == '/';
}

// Three digit runs a s b s c starting at pos, with the same separator twice.
bool ThreeParts(std::string_view text, size_t pos, int part[3], size_t len[3]) {
  char separator = 0;
  for (int i = 0; i < 3; ++i) {
    len[i] = DigitRun(text, pos, part[i]);
    if (len[i] == 0) return false;
    pos += len[i];
    if (i == 2) break;
    if (pos >= text.size() || !IsDateSeparator(text[pos])) return false;
    if (separator != 0 && text[pos] != separator) return false;
    separator = text[pos++];
  }
  return true;
}

bool ValidDate(int year, int month, int day) {
  return year >= 1900 && year <= 2099 && month >= 1 && month <= 12 && day >= 1 && day <= 31;
}

}  // namespace

int32_t TypeCodeOf(std::string_view answer) {
  if (Contains(answer, "QX-1TR")) return 6;
  if (Contains(answer, "QX-1")) return 4;
  if (Contains(answer, "SOLIDA")) return Contains(answer, "EJ") ? 3 : 2;
  if (Contains(answer, "LUMEN")) return 1;
  if (Contains(answer, "TM410")) return 7;
  return 0;
}

IdentityAnswer ParseIdentity(std::string_view answer) {
  IdentityAnswer out;
  const size_t command = answer.find("#R");
  if (command == std::string_view::npos || command == 0) return out;
  out.has_command = true;
  out.type_code = TypeCodeOf(answer);
  if (out.type_code == 6 || out.type_code == 4) {
    out.subtype = static_cast<unsigned char>(answer[command - 1]) - '0';
  }
  std::string_view text = answer.substr(command + 2);
  const size_t end = text.find("\x1b\\");
  if (end != std::string_view::npos) text = text.substr(0, end);
  ReadIdentityText(text, out);
  return out;
}

std::string ParseClock(std::string_view answer) {
  const size_t mark = answer.find("#C");
  if (mark == std::string_view::npos) return kClockDefault;
  Cursor in(answer, mark + 2);
  const int32_t year = ClockYear(in.ReadUnsigned());
  const int32_t month = in.ReadUnsigned();
  const int32_t day = in.ReadUnsigned();
  const int32_t hour = in.ReadUnsigned();
  const int32_t minute = in.ReadUnsigned();
  return TextF("%04d-%02d-%02d %02d:%02d", year, month, day, hour, minute);
}

bool ParseStatus(std::string_view answer, StatusRecord& record) {
  record = StatusRecord{};
  if (!answer.empty() && answer.back() == '\\') answer.remove_suffix(1);
  if (!answer.empty() && answer.back() == '\x1b') answer.remove_suffix(1);
  const size_t mark = answer.find("#X");
  if (mark == std::string_view::npos) return false;
  Cursor in(answer, mark + 2);
  for (int32_t* f : {&record.f0, &record.f1, &record.f2, &record.f3, &record.f4}) *f = in.ReadInt();
  if (in.Peek() == '<' || in.Peek() == '>') {
    in.Skip();
    record.resets = -1;
    in.ReadInt();
  } else {
    record.resets = in.ReadInt();
  }
  record.year = StatusYear(in.ReadInt());
  record.month = in.ReadInt();
  record.day = in.ReadInt();
  ReadRates(in, record);
  record.receipts = in.ReadInt();
  ReadTotals(in, record);
  record.unique_number = in.Take(11);
  return true;
}

std::string FormatRates(const std::array<double, 7>& rates) {
  std::string out;
  for (double r : rates) out += RateText(r) + ";";
  return out;
}

std::string FormatStatusField(const StatusRecord& r, int selector) {
  switch (selector) {
    case kStatusF0:
      return std::to_string(r.f0);
    case kStatusFiscal:
      return std::to_string(r.f1);
    case kStatusF2:
      return std::to_string(r.f2);
    case kStatusF3:
      return std::to_string(r.f3);
    case kStatusResets:
      return std::to_string(r.resets);
    case kStatusLastRecord:
      return TextF("%02d-%02d-%02d", r.year, r.month, r.day);
    case kStatusRates:
      return FormatRates(r.rates);
    case kStatusReceipts:
      return std::to_string(r.receipts);
    case kStatusTotals:
      return FormatTotals(r.totals);
    case kStatusFurther:
      return Money(r.further);
    case kStatusUniqueNumber:
      return r.unique_number;
    case kStatusRaw:
      return RawRecord(r);
    default:
      return std::string();
  }
}

bool FindReportDate(std::string_view text, int& year, int& month, int& day) {
  const size_t mark = text.find("#R");
  if (mark != std::string_view::npos && mark + 2 < text.size() && IsDigit(text[mark + 2])) {
    Cursor in(text, mark + 2);
    const int32_t y = ClockYear(in.ReadUnsigned());
    const int32_t m = in.ReadUnsigned();
    const int32_t d = in.ReadUnsigned();
    if (ValidDate(y, m, d)) {
      year = y, month = m, day = d;
      return true;
    }
  }
  for (size_t pos = 0; pos < text.size(); ++pos) {
    if (!IsDigit(text[pos]) || (pos > 0 && IsDigit(text[pos - 1]))) continue;
    int part[3];
    size_t len[3];
    if (!ThreeParts(text, pos, part, len)) continue;
    const bool year_first = len[0] == 4 && len[1] <= 2 && len[2] <= 2;
    const bool year_last = len[0] <= 2 && len[1] <= 2 && len[2] == 4;
    if (year_first && ValidDate(part[0], part[1], part[2])) {
      year = part[0], month = part[1], day = part[2];
      return true;
    }
    if (year_last && ValidDate(part[2], part[1], part[0])) {
      year = part[2], month = part[1], day = part[0];
      return true;
    }
  }
  return false;
}

}  // namespace tavena

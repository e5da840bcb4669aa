#include "Simcommands.h"

#include <charconv>
#include <cmath>
#include <cstdio>

#include "sequence/Codepage.h"

namespace tavena {

namespace {

constexpr char kCr = '\r';
constexpr char kSo = 0x0E;
constexpr char kDc4 = 0x14;
constexpr char kHeaderEnd = static_cast<char>(0xFF);

bool IsQuery(const std::string& command) {
  return command == "#v" || command == "#c" || command == "#s" || command == "#e" || command == "^";
}

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

// Checks the two sum characters at the end of text against the bytes before them.
bool SumMatches(std::string_view text) {
  if (text.size() < 2) return false;
  const int hi = HexDigit(text[text.size() - 2]);
  const int lo = HexDigit(text[text.size() - 1]);
  if (hi < 0 || lo < 0) return false;
  const std::string expected = ControlSumHex(text.substr(0, text.size() - 2));
  return HexDigit(expected[0]) == hi && HexDigit(expected[1]) == lo;
}

std::vector<int> ParseParams(std::string_view text, bool& ok) {
  std::vector<int> out;
  ok = true;
  if (text.empty()) return out;
  size_t start = 0;
  while (start <= text.size()) {
    size_t end = text.find(';', start);
    if (end == std::string_view::npos) end = text.size();
    const std::string_view piece = text.substr(start, end - start);
    int value = 0;
    const auto r = std::from_chars(piece.data(), piece.data() + piece.size(), value);
    if (piece.empty() || r.ec != std::errc() || r.ptr != piece.data() + piece.size()) ok = false;
    out.push_back(value);
    start = end + 1;
  }
  return out;
}

// Splits text at every separator; the piece after the last one is kept as
// the final element (empty when text ends with the separator).
std::vector<std::string> Split(std::string_view text, char separator) {
  std::vector<std::string> out;
  size_t start = 0;
  for (;;) {
    const size_t end = text.find(separator, start);
    if (end == std::string_view::npos) {
      out.emplace_back(text.substr(start));
      return out;
    }
    out.emplace_back(text.substr(start, end - start));
    start = end + 1;
  }
}

// A plain decimal number: digits, at most one point (or comma), at most two
// decimals.
bool ParseAmount(std::string_view text, double& value) {
  if (text.empty() || text.size() > 12) return false;
  std::string plain(text);
  int points = 0;
  size_t decimals = 0;
  for (char& c : plain) {
    if (c == ',') c = '.';
    if (c == '.') {
      ++points;
    } else if (c < '0' || c > '9') {
      return false;
    } else if (points) {
      ++decimals;
    }
  }
  if (points > 1 || decimals > 2 || plain.front() == '.') return false;
  const auto r = std::from_chars(plain.data(), plain.data() + plain.size(), value);
  return r.ec == std::errc() && r.ptr == plain.data() + plain.size();
}

bool SameAmount(double a, double b) {
  return std::fabs(a - b) < 0.005;
}

std::string Format(const char* format, double v) {
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, format, v);
  return buffer;
}

std::string TwoDigits(int v) {
  char buffer[16];
  std::snprintf(buffer, sizeof buffer, "%02d", v);
  return buffer;
}

std::string RateWire(double rate) {
  if (rate == kSimRateExempt) return "100.00";
  if (rate == kSimRateInactive) return "101.00";
  return Format("%.2f", rate);
}

int FullYear(int two_digit) {
  return two_digit < 50 ? 2000 + two_digit : 1900 + two_digit;
}

bool ValidDate(int yy, int mm, int dd, SimDate& out) {
  if (yy < 0 || yy > 99) return false;
  LocalTime t;
  t.year = FullYear(yy);
  t.month = mm;
  t.day = dd;
  if (!ValidLocalTime(t)) return false;
  out = SimDate{t.year, mm, dd};
  return true;
}

bool ValidNip(const std::string& nip) {
  static const char* layouts[] = {"ddd-dd-dd-ddd", "ddd-ddd-dd-dd", "dddddddddd"};
  for (const char* layout : layouts) {
    const std::string_view l(layout);
    if (nip.size() != l.size()) continue;
    bool match = true;
    for (size_t i = 0; i < l.size() && match; ++i)
      match = l[i] == 'd' ? (nip[i] >= '0' && nip[i] <= '9') : nip[i] == l[i];
    if (match) return true;
  }
  return false;
}

int RateIndex(const std::string& letter) {
  if (letter.size() != 1 || letter[0] < 'A' || letter[0] > 'G') return -1;
  return letter[0] - 'A';
}

}  // namespace

std::string ControlSumHex(std::string_view bytes) {
  uint8_t sum = 0xFF;
  for (const char c : bytes) sum ^= static_cast<uint8_t>(c);
  static const char* digits = "0123456789ABCDEF";
  return std::string{digits[sum >> 4], digits[sum & 15]};
}

SimFrame DecodeFrame(std::string_view body) {
  SimFrame f;
  f.body = std::string(body);
  size_t i = 0;
  while (i < body.size() && ((body[i] >= '0' && body[i] <= '9') || body[i] == ';')) ++i;
  f.params = ParseParams(body.substr(0, i), f.params_ok);
  if (i < body.size()) f.command = std::string(body.substr(i, body[i] == '^' ? 1 : 2));
  std::string_view rest = body.substr(std::min(body.size(), i + f.command.size()));
  if (IsQuery(f.command) && rest.empty()) {
    f.has_sum = false;
    return f;
  }
  f.has_sum = true;
  f.sum_ok = SumMatches(body);
  if (rest.size() >= 2) rest.remove_suffix(2);
  f.fields = std::string(rest);
  return f;
}

SimDate SimCommands::Today() const {
  const LocalTime t = clock_.Now();
  return SimDate{t.year, t.month, t.day};
}

SimAnswer SimCommands::Execute(const SimFrame& f) {
  SimAnswer a;
  if (f.has_sum && !f.sum_ok) {
    a.error = kErrControlSum;
    return a;
  }
  const std::string& c = f.command;
  if (!f.params_ok) {
    a.error = c.empty() ? kErrUnknownCommand : kErrParameterCount;
  } else if (c == "#v") {
    a.has_answer = true, a.text = IdentityText(), a.with_sum = false;
  } else if (c == "#c") {
    a.has_answer = true, a.text = ClockText();
  } else if (c == "#s") {
    a.has_answer = true, a.text = StatusText();
  } else if (c == "#e") {
    a.has_answer = true, a.text = ErrorText();
  } else if (c == "^" && model_.korvus) {
    a.has_answer = true, a.text = KorvusText();
  } else if (c == "$c") {
    a.error = SetClock(f);
  } else if (c == "$p") {
    a.error = SetRates(f);
  } else if (c == "$f") {
    a.error = f.fields.rfind("NIP ", 0) == 0 ? Fiscalise(f) : SetHeader(f);
  } else if (c == "#o") {
    a.error = PeriodicReport(f);
  } else if (c == "#r") {
    a = Report(f);
  } else if (c == "$h") {
    a.error = BeginTransaction(f);
  } else if (c == "$l") {
    a.error = SaleLine(f);
  } else if (c == "$e") {
    a.error = EndOrCancel(f);
  } else if (c == "#b") {
    a.error = CashCommand(f);
  } else if (c == "&c") {
    s_.last_ampc = f.params.empty() ? 0 : f.params[0];
  } else if (c == "&d") {
    // Wakes the journal before a search in long mode; nothing to do here.
  } else {
    a.error = kErrUnknownCommand;
  }
  return a;
}

std::string SimCommands::IdentityText() const {
  return std::to_string(model_.subtype % 10) + "#R" + model_.identity_name + "/" + model_.version;
}

std::string SimCommands::ClockText() const {
  const LocalTime t = clock_.Now();
  return "1#C" + TwoDigits(t.year % 100) + ";" + TwoDigits(t.month) + ";" + TwoDigits(t.day) + ";" +
         TwoDigits(t.hour) + ";" + TwoDigits(t.minute) + ";" + TwoDigits(t.second) + ";";
}

std::string SimCommands::StatusText() const {
  std::string t = "1#X";
  for (const int v : {s_.in_transaction ? 1 : 0, s_.fiscal ? 1 : 0, s_.daily_reports,
                      s_.header_changes, s_.rate_changes})
    t += std::to_string(v) + ";";
  if (s_.resets_mark) t += s_.resets_mark;
  t += std::to_string(s_.ram_resets) + ";";
  t += TwoDigits(s_.last_record.year % 100) + ";" + TwoDigits(s_.last_record.month) + ";" +
       TwoDigits(s_.last_record.day) + ";";
  for (const double r : s_.rates) t += RateWire(r) + "/";
  t += std::to_string(s_.receipts) + ";";
  for (int i = 0; i < 6; ++i)
    if (s_.rates[i] >= 0) t += Format("%.2f", s_.totals[i]) + "/";
  t += Format("%.2f", s_.totals[6]) + "/";
  t += Format("%.2f", s_.further_amount) + "/";
  std::string unique = s_.unique_number;
  unique.resize(11, ' ');
  return t + unique;
}

std::string SimCommands::ErrorText() const {
  return "1#E" + std::to_string(s_.last_error) + ";";
}

std::string SimCommands::FirstReportText() const {
  std::string t = "2#R";
  const SimDate& d = s_.first_daily_report;
  if (d.Valid())
    t += std::to_string(d.year) + "-" + TwoDigits(d.month) + "-" + TwoDigits(d.day) + ";";
  return t;
}

std::string SimCommands::KorvusText() const {
  return "1^KORVUS " + model_.identity_name.substr(model_.identity_name.find(' ') + 1) + ";" +
         model_.version + ";" + s_.unique_number + ";";
}

int SimCommands::SetClock(const SimFrame& f) {
  if (f.params.size() != 6) return kErrParameterCount;
  const std::vector<int>& p = f.params;
  LocalTime t;
  t.year = FullYear(p[0]);
  t.month = p[1], t.day = p[2], t.hour = p[3], t.minute = p[4], t.second = p[5];
  if (p[0] < 0 || p[0] > 99 || !ValidLocalTime(t)) return kErrData;
  if (s_.fiscal) {
    const SimDate day{t.year, t.month, t.day};
    if (day.DayNumber() < s_.last_record.DayNumber()) return kErrDateBeforeRecord;
    const int64_t delta = EpochMsOf(t) - EpochMsOf(clock_.Now());
    if (std::llabs(delta) > 3600000 && s_.clock_set_since_report) return kErrClockTwice;
    s_.clock_set_since_report = true;
  }
  clock_.Set(t);
  return kErrNone;
}

int SimCommands::SetRates(const SimFrame& f) {
  const bool two_digit = model_.TwoDigitRates();
  const size_t wanted_params = two_digit ? 1 : 8;
  if (f.params.size() != wanted_params || f.params[0] != 7) return kErrParameterCount;
  const std::vector<std::string> values = Split(f.fields, '/');
  if (values.size() != 8 || !values[7].empty()) return kErrRates;
  std::array<double, 7> rates{};
  int exempt = 0;
  for (int i = 0; i < 7; ++i) {
    double v = 0;
    if (!ParseAmount(values[i], v)) return kErrRates;
    const int flag = two_digit ? 0 : f.params[i + 1];
    if (flag < 0 || flag > 2) return kErrRates;
    if (two_digit && values[i] == "101") {
      v = kSimRateInactive;
    } else if (two_digit && values[i] == "100") {
      v = kSimRateExempt;
    } else if (v > 99.99) {
      return kErrRates;
    }
    if (flag == 1) v = kSimRateInactive;
    if (flag == 2) v = kSimRateExempt;
    exempt += v == kSimRateExempt;
    rates[i] = v;
  }
  if (exempt > 1) return kErrRates;
  if (s_.in_transaction) return kErrInTransaction;
  if (rates == s_.rates) return kErrNone;
  for (const double t : s_.totals)
    if (t != 0) return kErrNonZeroTotals;
  if (s_.fiscal && s_.rate_changes >= 30) return kErrRateChanges;
  s_.rates = rates;
  ++s_.rate_changes;
  if (s_.fiscal) s_.last_record = Today();
  return kErrNone;
}

int SimCommands::SetHeader(const SimFrame& f) {
  if (s_.in_transaction) return kErrInTransaction;
  const size_t end = f.fields.find(kHeaderEnd);
  if (end == std::string::npos || end + 1 != f.fields.size()) return kErrHeader;
  std::vector<std::string> lines = Split(std::string_view(f.fields).substr(0, end), kCr);
  if (!lines.empty() && lines.back().empty()) lines.pop_back();
  if (lines.empty() || lines.size() > 8) return kErrHeader;
  bool any_text = false;
  for (const std::string& line : lines) {
    size_t visible = 0;
    for (const char c : line) {
      const auto b = static_cast<uint8_t>(c);
      if (c == kSo || c == kDc4) continue;
      if (b < 0x20 || b == 0x7F || b == 0xFF) return kErrHeader;
      ++visible;
      any_text = any_text || c != ' ';
    }
    if (visible > 40) return kErrHeader;
  }
  if (!any_text) return kErrHeader;
  s_.header.clear();
  for (const std::string& line : lines) s_.header.push_back(FromMazovia(line));
  ++s_.header_changes;
  return kErrNone;
}

int SimCommands::Fiscalise(const SimFrame& f) {
  if (s_.fiscal) return kErrAlreadyFiscal;
  if (s_.in_transaction) return kErrInTransaction;
  const size_t end = f.fields.find(kHeaderEnd);
  if (end == std::string::npos) return kErrNip;
  const std::string nip = f.fields.substr(4, end - 4);
  if (!ValidNip(nip)) return kErrNip;
  s_.fiscal = true;
  s_.nip = nip;
  s_.last_record = Today();
  return kErrNone;
}

int SimCommands::PeriodicReport(const SimFrame& f) {
  if (f.params.size() != 7) return kErrParameterCount;
  const std::vector<int>& p = f.params;
  SimDate from, to;
  if (!ValidDate(p[0], p[1], p[2], from) || !ValidDate(p[3], p[4], p[5], to)) return kErrData;
  if (to.DayNumber() < from.DayNumber()) return kErrData;
  if (s_.in_transaction) return kErrInTransaction;
  ++s_.periodic_reports;
  return kErrNone;
}

SimAnswer SimCommands::Report(const SimFrame& f) {
  SimAnswer a;
  if (f.params.size() != 4) {
    a.error = kErrParameterCount;
  } else if (f.params[0] == 1) {
    a.error = DailyReport(f);
  } else if (f.params[0] == 2) {
    a.has_answer = true;
    a.text = FirstReportText();
  }
  return a;
}

int SimCommands::DailyReport(const SimFrame& f) {
  SimDate date;
  if (!ValidDate(f.params[1], f.params[2], f.params[3], date)) return kErrData;
  if (!(date == Today())) return kErrData;
  if (s_.in_transaction) return kErrInTransaction;
  ++s_.daily_reports;
  if (s_.fiscal) {
    s_.last_record = date;
    if (!s_.first_daily_report.Valid()) s_.first_daily_report = date;
  }
  s_.totals = {};
  s_.receipts = 0;
  s_.further_amount = 0;
  s_.clock_set_since_report = false;
  return kErrNone;
}

int SimCommands::BeginTransaction(const SimFrame& f) {
  if (f.params.size() != 1) return kErrParameterCount;
  if (s_.in_transaction) return kErrSequence;
  s_.in_transaction = true;
  s_.expected_lines = f.params[0];
  s_.sale_lines = 0;
  s_.receipt_values = {};
  s_.transaction_ok = true;
  return kErrNone;
}

int SimCommands::SaleLine(const SimFrame& f) {
  if (!s_.in_transaction) return kErrNoTransaction;
  const int error = [&]() -> int {
    if (f.params.empty() || f.params.size() > 2) return kErrParameterCount;
    const bool fourth = f.params.size() == 2 && f.params[1] > 0;
    const std::vector<std::string> text = Split(f.fields, kCr);
    if (text.size() != 3) return kErrName;
    if (text[0].empty() || text[0].size() > 40) return kErrName;
    double quantity = 0;
    if (text[1].empty() || text[1].size() > 8 || !ParseAmount(text[1], quantity))
      return kErrQuantity;
    const std::vector<std::string> amounts = Split(text[2], '/');
    const size_t wanted = fourth ? 5 : 4;
    if (amounts.size() != wanted || !amounts.back().empty()) return kErrAmounts;
    const int rate = RateIndex(amounts[0]);
    if (rate < 0 || s_.rates[rate] == kSimRateInactive) return kErrRateLetter;
    double price = 0, value = 0, extra = 0;
    if (!ParseAmount(amounts[1], price) || price <= 0) return kErrPrice;
    if (!ParseAmount(amounts[2], value) ||
        !SameAmount(value, std::round(quantity * price * 100) / 100))
      return kErrValue;
    if (fourth && !ParseAmount(amounts[3], extra)) return kErrAmounts;
    s_.receipt_values[rate] += value;
    ++s_.sale_lines;
    return kErrNone;
  }();
  if (error != kErrNone) s_.transaction_ok = false;
  return error;
}

int SimCommands::EndOrCancel(const SimFrame& f) {
  if (f.params.empty()) return kErrParameterCount;
  if (f.params[0] != 0) return EndTransaction(f);
  if (f.params.size() > 2) return kErrParameterCount;
  s_.in_transaction = false;
  s_.receipt_values = {};
  return kErrNone;
}

int SimCommands::EndTransaction(const SimFrame& f) {
  const std::vector<int>& p = f.params;
  if (p.size() != 4 && p.size() != 5) return kErrParameterCount;
  if (!s_.in_transaction) return kErrEndWithoutStart;
  const int error = [&]() -> int {
    const bool third = p.size() == 5 && p[4] != 0;
    const std::vector<std::string> text = Split(f.fields, kCr);
    if (p[2] < 0 || p[2] > 4 || text.size() != static_cast<size_t>(p[2]) + 2)
      return kErrCodeOrLines;
    if (text[0].empty() || text[0].size() > 20) return kErrCodeOrLines;
    const std::vector<std::string> amounts = Split(text.back(), '/');
    if (amounts.size() != 3 || (third ? amounts[2].empty() : !amounts[2].empty()))
      return kErrAmounts;
    double total = 0, paid = 0, extra = 0;
    if (!ParseAmount(amounts[0], total)) return kErrTotal;
    if (!ParseAmount(amounts[1], paid)) return kErrPayment;
    if (third && !ParseAmount(amounts[2], extra)) return kErrAmounts;
    double sum = 0;
    for (const double v : s_.receipt_values) sum += v;
    if (!SameAmount(total, sum)) return kErrTotal;
    if (paid + 0.005 < total) return kErrPayment;
    if (s_.expected_lines > 0 && s_.expected_lines != s_.sale_lines) return kErrLineCount;
    for (int i = 0; i < 7; ++i) s_.totals[i] += s_.receipt_values[i];
    s_.further_amount += sum;
    ++s_.receipts;
    s_.in_transaction = false;
    s_.receipt_values = {};
    return kErrNone;
  }();
  s_.transaction_ok = error == kErrNone;
  return error;
}

int SimCommands::CashCommand(const SimFrame& f) {
  if (f.params.size() != 1) return kErrParameterCount;
  const int p = f.params[0];
  if (p < 0 || p > 3) return kErrData;
  if (p == 1) {
    const size_t cr = f.fields.find(kCr);
    if (cr == std::string::npos || f.fields.size() != cr + 3 || f.fields.back() != '/')
      return kErrAmounts;
    s_.display_text = FromMazovia(f.fields.substr(0, cr));
  }
  ++s_.cash_commands;
  return kErrNone;
}

}  // namespace tavena

// Identity, clock and status queries, and the filling of the status form.
#include <functional>

#include "Drukarka.h"
#include "sequence/Clock.h"
#include "sequence/Codepage.h"
#include "sequence/Messagelanguage.h"

namespace tavena {

namespace {

constexpr int kClockWaitMs = 200;
constexpr int kStatusWaitMs = 1000;
constexpr int kFieldPauseMs = 100;
constexpr int kReportWaitMs = 3000;
constexpr int kReportTries = 3;
constexpr int kStatusRawParameter = 22;
constexpr const char* kLetters = "ABCDEFG";

std::string Unspecified() {
  return Msg("Nieokreślony", "Unspecified");
}

std::string NoRead() {
  return Msg("Brak", "No read");
}

std::string ModeText(const std::string& f1) {
  if (!f1.empty() && f1[0] == '0') return Msg("Tryb szkoleniowy.", "No fiscal mode.");
  if (!f1.empty() && f1[0] == '1') return Msg("Tryb fiskalny.", "Fiscal mode.");
  return Msg("Błąd komunikacji.", "Communication error.");
}

std::vector<std::string> SplitAt(const std::string& text, char separator) {
  std::vector<std::string> pieces;
  size_t start = 0;
  for (size_t end; (end = text.find(separator, start)) != std::string::npos; start = end + 1) {
    pieces.push_back(text.substr(start, end - start));
  }
  if (start < text.size()) pieces.push_back(text.substr(start));
  return pieces;
}

// One fill: reads only while nothing has failed; every field the form has
// gets a text, the read one or its default.
class StatusFill {
 public:
  // quiet: the line was found quiet, which took the first read's pause.
  StatusFill(Drukarka& printer, FormFields& form, bool quiet)
      : printer_(printer), form_(form), ok_(quiet), paused_(quiet) {}

  // read() returns the text; an unanswered read makes every later field
  // take its default.
  void Field(const std::string& name, const std::function<std::string()>& read,
             const std::string& fallback) {
    if (!form_.HasControl(name)) return;
    form_.SetText(name, Read(read, fallback));
  }

  // The seven pieces of a rates or totals text into <prefix>A..G.
  void Row(const std::string& prefix, int selector, bool rates) {
    if (!HasRow(prefix)) return;
    const std::string text = Read([&] { return printer_.ReadStatus(23, selector); }, "");
    const std::string error = Msg("Błąd;", "Error;");
    const std::vector<std::string> pieces = SplitAt(text.size() < 5 ? Repeat(error, 8) : text, ';');
    for (int i = 0; i < 7; ++i) {
      const std::string name = prefix + kLetters[i];
      if (!form_.HasControl(name)) continue;
      const std::string piece = i < static_cast<int>(pieces.size()) ? pieces[i] : "";
      form_.SetText(name, rates && piece == "-1" ? "nakt" : piece);
    }
  }

  // Whether the printer may be asked; if so, after the pause before a read.
  bool Ask() {
    if (!ok_) return false;
    if (!paused_) SleepMs(kFieldPauseMs);
    paused_ = false;
    return true;
  }

 private:
  std::string Read(const std::function<std::string()>& read, const std::string& fallback) {
    if (!Ask()) return fallback;
    const std::string text = read();
    if (!printer_.LastReadOk()) ok_ = false;
    return text.empty() ? fallback : text;
  }

  bool HasRow(const std::string& prefix) const {
    for (int i = 0; i < 7; ++i) {
      if (form_.HasControl(prefix + kLetters[i])) return true;
    }
    return false;
  }

  static std::string Repeat(const std::string& piece, int times) {
    std::string out;
    for (int i = 0; i < times; ++i) out += piece;
    return out;
  }

  Drukarka& printer_;
  FormFields& form_;
  bool ok_;
  bool paused_;
};

}  // namespace

const std::string& Drukarka::ReadIdentity(int part) {
  last_read_ok_ = SendFramedNoSum("#v") && ReadAnswer(default_wait_ms);
  if (!last_read_ok_) {
    answer.clear();
    return answer;
  }
  const IdentityAnswer id = ParseIdentity(answer);
  TakeIdentity(id);
  answer = part == 1 ? id.name : (part == 2 ? id.version : std::string());
  return answer;
}

// The type code from every answer with "#R"; the subtype only for the two
// families that carry one (type codes 4 and 6).
void Drukarka::TakeIdentity(const IdentityAnswer& id) {
  if (!id.has_command) return;
  model_name_ = id.name;
  software_version_ = id.version;
  type_code = id.type_code;
  if (type_code == 4 || type_code == 6) subtype = id.subtype;
}

const std::string& Drukarka::ReadClock() {
  last_read_ok_ = SendFramedNoSum("0#c") && ReadAnswer(kClockWaitMs);
  answer = last_read_ok_ ? ParseClock(answer) : std::string(kClockDefault);
  return answer;
}

const std::string& Drukarka::ReadStatus(int parameter, int selector) {
  last_read_ok_ = SendFramedNoSum(std::to_string(parameter) + "#s") && ReadAnswer(kStatusWaitMs);
  if (!last_read_ok_) {
    answer.clear();
    return answer;
  }
  if (parameter == kStatusRawParameter || selector < kStatusF0 || selector > kStatusRaw) {
    return answer;
  }
  if (!ParseStatus(answer, status_)) {
    last_read_ok_ = false;
    answer.clear();
    return answer;
  }
  WriteIdentityHeader();
  answer = FormatStatusField(status_, selector);
  return answer;
}

bool Drukarka::ReadFirstReportDate(std::string& text) {
  for (int attempt = 0; attempt < kReportTries; ++attempt) {
    if (!SendFramed("2;0;0;1#r")) return false;
    SleepMs(kReportWaitMs);
    const std::string raw = ReadWaiting();
    // Taken after a fixed wait: when its last byte came is not known.
    FinishExchange(raw, raw.empty() ? ExchangeResult::kNoAnswer : ExchangeResult::kConfirmed,
                   false);
    const std::string got = FromMazovia(raw);
    LogAnswerText(got);
    int year = 0, month = 0, day = 0;
    if (FindReportDate(got, year, month, day)) {
      text = TextF("%04d-%02d-%02d", year, month, day);
      return true;
    }
  }
  return false;
}

void Drukarka::FillStatusFields(FormFields& form, const std::string& port,
                                int32_t bits_per_second) {
  SetPort(port, bits_per_second);
  // The pause before the first read is the search's quiet check: a line
  // that never falls silent is reported and nothing is sent.
  StatusFill fill(*this, form, Open() && Drain());
  fill.Field(
      "ETypDrukarki", [&] { return ReadIdentity(1); }, Unspecified());
  fill.Field(
      "EWersjaSoftu", [&] { return ReadIdentity(2); }, Unspecified());
  fill.Field(
      "EFiskalny", [&] { return ModeText(ReadStatus(0, kStatusFiscal)); }, ModeText(""));
  fill.Field(
      "EIloscZerowan", [&] { return ReadStatus(0, kStatusResets); }, NoRead());
  fill.Field(
      "EOstatniZapis", [&] { return ReadStatus(0, kStatusLastRecord); }, NoRead());
  fill.Row("EVat", kStatusRates, true);
  fill.Row("ETot", kStatusTotals, false);
  fill.Field(
      "ENumerPF", [&] { return ReadStatus(0, kStatusUniqueNumber); }, NoRead());
  // A clock that does not answer reads "1980-01-01 00:00", which is what the field shows.
  fill.Field(
      "ECzasDrukarki", [&] { return ReadClock(); }, NoRead());
  if (form.HasControl("EDataPierwszegoRD")) {
    form.SetText("EDataPierwszegoRD", Utf8ToCp1250("Początek"));
    std::string date;
    const bool found = fill.Ask() && ReadFirstReportDate(date);
    form.SetText("EDataPierwszegoRD", found ? date : NoRead());
  }
  if (com.IsOpen()) Close();
}

}  // namespace tavena

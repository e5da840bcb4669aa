#include "Exchange.h"

#include <cctype>
#include <cstdlib>
#include <vector>

#include "Answerparse.h"
#include "Drukarka.h"
#include "Fiscalbiblio.h"
#include "Printererrors.h"
#include "sequence/Codepage.h"
#include "sequence/Messagelanguage.h"

namespace tavena {

namespace {

constexpr const char* kControlNames[32] = {"NUL", "SOH", "STX", "ETX", "EOT", "ENQ", "ACK", "BEL",
                                           "BS",  "HT",  "LF",  "VT",  "FF",  "CR",  "SO",  "SI",
                                           "DLE", "DC1", "DC2", "DC3", "DC4", "NAK", "SYN", "ETB",
                                           "CAN", "EM",  "SUB", "ESC", "FS",  "GS",  "RS",  "US"};

// Non-empty lines joined by " ".
std::string JoinLines(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) {
    if (line.empty()) continue;
    if (!text.empty()) text += ' ';
    text += line;
  }
  return text;
}

// The command of a question frame ("#v", "#s", ...): what follows the
// numeric parameters after ESC P; empty for anything else.
std::string QuestionCommand(std::string_view question) {
  if (question.size() < 4 || question.substr(0, 2) != "\x1bP") return {};
  size_t pos = 2;
  while (pos < question.size() &&
         (std::isdigit(static_cast<unsigned char>(question[pos])) || question[pos] == ';'))
    ++pos;
  return std::string(question.substr(pos, 2));
}

std::string IdentityMeaning(const std::string& answer) {
  const IdentityAnswer id = ParseIdentity(answer);
  if (!id.has_command) return {};
  return Msg("Model: ", "Model: ") + id.name + Msg(", wersja: ", ", version: ") + id.version;
}

std::string StatusMeaning(const std::string& answer) {
  StatusRecord r;
  if (!ParseStatus(answer, r)) return {};
  return (r.f1 == 1 ? Msg("Tryb fiskalny.", "Fiscal mode.")
                    : Msg("Tryb szkoleniowy.", "Training mode.")) +
         Msg(" Zerowania: ", " Resets: ") + std::to_string(r.resets) +
         Msg(", ostatni zapis: ", ", last record: ") + FormatStatusField(r, kStatusLastRecord) +
         Msg(", stawki: ", ", rates: ") + FormatRates(r.rates) +
         Msg(" numer unikatowy: ", " unique number: ") + r.unique_number;
}

std::string ErrorMeaning(const std::string& answer) {
  const size_t at = answer.find("#E");
  if (at == std::string::npos) return {};
  const int number = std::atoi(answer.c_str() + at + 2);
  std::string text = PrinterErrorText(number);
  for (char& c : text)
    if (c == '\n') c = ' ';
  return Msg("Błąd ", "Error ") + std::to_string(number) + (text.empty() ? "" : ": " + text);
}

}  // namespace

std::string HexPairs(std::string_view bytes) {
  static const char* digits = "0123456789ABCDEF";
  std::string out;
  for (const unsigned char c : bytes) {
    if (!out.empty()) out += ' ';
    out += digits[c >> 4];
    out += digits[c & 15];
  }
  return out;
}

std::string NamedControlBytes(std::string_view bytes) {
  std::string out;
  for (const char c : FromMazovia(std::string(bytes))) {
    const auto b = static_cast<unsigned char>(c);
    if (b < 0x20)
      out += std::string("<") + kControlNames[b] + ">";
    else if (b == 0x7F)
      out += "<DEL>";
    else
      out += c;
  }
  return out;
}

std::string ExchangeResultText(ExchangeResult result) {
  switch (result) {
    case ExchangeResult::kSent:
      return Msg("wysłane", "sent");
    case ExchangeResult::kNotSent:
      return Msg("niewysłane", "not sent");
    case ExchangeResult::kConfirmed:
      return Msg("potwierdzone", "confirmed");
    case ExchangeResult::kRefused:
      return Msg("odrzucone", "refused");
    case ExchangeResult::kNoAnswer:
      break;
  }
  return Msg("brak odpowiedzi", "no answer");
}

bool IsFailure(ExchangeResult result) {
  return result == ExchangeResult::kNotSent || result == ExchangeResult::kRefused ||
         result == ExchangeResult::kNoAnswer;
}

std::string ExchangeMeaning(std::string_view question, std::string_view answer) {
  if (question.empty()) return {};
  const auto last = static_cast<uint8_t>(question.back());
  if (last == kENQ || last == kDLE) {
    const int status = answer.empty() ? -1 : static_cast<int8_t>(answer.back());
    return JoinLines(last == kENQ ? EnqLines(status) : DleLines(status));
  }
  if (answer.empty()) return {};
  const std::string text = FromMazovia(std::string(answer));
  const std::string command = QuestionCommand(question);
  if (command == "#v") return IdentityMeaning(text);
  if (command == "#s") return StatusMeaning(text);
  if (command == "#c") return Msg("Zegar drukarki: ", "Printer clock: ") + ParseClock(text);
  if (command == "#e") return ErrorMeaning(text);
  return {};
}

}  // namespace tavena

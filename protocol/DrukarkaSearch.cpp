// The printer search: which port and speed a printer answers on, and what
// kind of device it is.
#include <algorithm>

#include "Drukarka.h"
#include "sequence/Clock.h"
#include "sequence/Codepage.h"

namespace tavena {

namespace {

constexpr int32_t kLowestSpeed = 9600;
constexpr int kDrainReadMs = 100;
constexpr int kDrainPauseMs = 200;
constexpr int kDrainLimitMs = 2000;
constexpr int kProbeAllowanceMs = 2000;
constexpr int kLongProbeAllowanceMs = 15000;
constexpr int kProbeAnswerMs = 300;
constexpr int kProbePauseMs = 1000;
constexpr int kUntypedProbeMs = 500;
constexpr int kCollectMs = 1500;
constexpr int kLongCollectMs = 15000;
constexpr int kLongPauseMs = 5000;
constexpr size_t kUniqueReadLimit = 120;

const std::string kIdentityProbe = "\x10\x1bP#v\x1b\\";
const std::string kKorvusProbe = "\x1bP0^91\x1b\\";
const std::string kUniqueProbe = "\x1a\x1bS";
const char* const kUniqueWord = "NUMER_UNIKATOWY";

bool Has(const std::string& text, const char* word) {
  return text.find(word) != std::string::npos;
}

bool NamesPrinter(const std::string& text) {
  return Has(text, "TAVENA") || Has(text, "TAVEWA");
}

bool IsStatusByte(char c) {
  const int nibble = static_cast<uint8_t>(c) >> 4;
  return nibble == 6 || nibble == 7;
}

// A status byte first, or a printer's name: a printer answered the probe.
bool AnsweredAsPrinter(const std::string& reply) {
  return !reply.empty() && (IsStatusByte(reply[0]) || NamesPrinter(reply) || Has(reply, "KORVUS"));
}

bool UniqueReadDone(const std::string& got) {
  return got.find(static_cast<char>(kSUB)) != std::string::npos || got.size() > kUniqueReadLimit;
}

bool IsUniqueNumberAnswer(const std::string& reply) {
  return reply.size() > 8 && reply.back() == static_cast<char>(kSUB) && Has(reply, kUniqueWord);
}

// The identity frame inside a longer answer (from its ESC P to its ESC \).
std::string IdentityFrameIn(const std::string& reply) {
  const size_t command = reply.find("#R");
  if (command == std::string::npos) return std::string();
  const size_t start = reply.rfind("\x1bP", command);
  const size_t end = reply.find("\x1b\\", command);
  const size_t from = start == std::string::npos ? 0 : start;
  return reply.substr(from, end == std::string::npos ? std::string::npos : end + 2 - from);
}

bool TypedIdentity(int type) {
  return type == 1 || type == 2 || type == 4;
}

bool TypedUniqueNumber(int type) {
  return type == 3 || type == 5 || type == 7;
}

// Types with a probe of their own; others are searched untyped.
bool HasTypedProbe(int type) {
  return TypedIdentity(type) || TypedUniqueNumber(type) || type == 6;
}

}  // namespace

std::string Drukarka::Collect(int total_ms, int poll_ms) {
  std::string got;
  for (int waited = 0; waited < total_ms && !com.DeviceGone(); waited += poll_ms) {
    SleepMs(poll_ms);
    got += ReadWaiting();
  }
  return got;
}

bool Drukarka::Drain() {
  const int64_t start = NowMs();
  for (;;) {
    if (Collect(kDrainReadMs, kDrainReadMs).empty()) return true;
    if (NowMs() - start >= kDrainLimitMs) {
      ReportNotQuiet(kDrainLimitMs);
      return false;
    }
    SleepMs(kDrainPauseMs);
  }
}

// The answer to the composite: 100 ms polls; once 10 bytes have come, at
// most 500 ms more in 50 ms polls.
std::string Drukarka::CollectAnswer(int total_ms) {
  const int64_t start = NowMs();
  int64_t deadline = start + total_ms;
  std::string got;
  bool cut = false;
  while (NowMs() < deadline && !com.DeviceGone()) {
    PumpMessages();
    SleepMs(cut ? 50 : 100);
    got += ReadWaiting();
    if (!cut && got.size() >= 10) {
      cut = true;
      deadline = std::min(deadline, NowMs() + 500);
    }
  }
  return got;
}

// The unique-number probe's answer: until SUB or more than 120 bytes, or
// (when once) until a pause brings nothing.
std::string Drukarka::CollectUntilSub(int total_ms, bool once) {
  const int64_t deadline = NowMs() + total_ms;
  std::string got;
  while (NowMs() < deadline && !com.DeviceGone()) {
    PumpMessages();
    SleepMs(got.size() < 2 ? 500 : 300);
    const std::string fresh = ReadWaiting();
    got += fresh;
    if (UniqueReadDone(got) || (once && fresh.empty())) break;
  }
  return got;
}

// The typed probe, again and again until an answer of the right length
// comes or the allowance runs out.
std::string Drukarka::TypedProbe(int expected_type, int& result) {
  result = kFindNothing;
  const bool unique = TypedUniqueNumber(expected_type);
  const bool korvus = expected_type == 6;
  const std::string& probe = unique ? kUniqueProbe : (korvus ? kKorvusProbe : kIdentityProbe);
  const size_t low = korvus ? 31 : 16, high = korvus ? 99 : 49;
  const int allowance = unique && expected_type != 3 ? kLongProbeAllowanceMs : kProbeAllowanceMs;
  const int64_t deadline = NowMs() + allowance;
  while (NowMs() < deadline) {
    LogQuestion(probe);
    if (!SendBytes(probe)) return std::string();
    std::string got;
    if (unique) {
      got = CollectUntilSub(static_cast<int>(deadline - NowMs()), true);
    } else {
      SleepMs(kProbeAnswerMs);
      got = ReadWaiting();
    }
    LogAnswerText(FromMazovia(got));
    if (unique && UniqueReadDone(got)) return Has(got, kUniqueWord) ? got : std::string();
    if (!unique && got.size() >= low && got.size() <= high)
      return (korvus ? Has(got, "KORVUS") : NamesPrinter(got)) ? got : std::string();
    SleepMs(kProbePauseMs);
  }
  return std::string();
}

std::string Drukarka::UntypedProbes(int& result) {
  result = kFindNothing;
  std::vector<std::string> probes = {"\n\x05"};
  if (speed == kLowestSpeed) probes.push_back(kKorvusProbe);
  probes.insert(probes.end(), {kIdentityProbe, "\x10\x05", "\x10" + kUniqueProbe});
  for (const std::string& probe : probes) {
    LogQuestion(probe);
    if (!SendBytes(probe)) return std::string();
    const bool unique = probe.back() == 'S';
    const std::string got = unique ? CollectUntilSub(kProbeAllowanceMs, false)
                                   : Collect(kUntypedProbeMs, kUntypedProbeMs / 10);
    LogAnswerText(FromMazovia(got));
    if (got.empty()) continue;
    if (IsUniqueNumberAnswer(got)) {
      result = kFindUniqueNumber;
      return got;
    }
    if (AnsweredAsPrinter(got)) return got;
  }
  return std::string();
}

void Drukarka::SendComposite(bool long_mode) {
  if (long_mode) {
    const std::string report = BuildFrame("&d", true);
    LogQuestion(report);
    SendBytes(report);
    SleepMs(kLongPauseMs);
    LogQuestion("\x1bS");
    SendBytes("\x1bS");
    return;
  }
  const std::string composite = std::string(1, static_cast<char>(kCAN)) + BuildFrame("0#e", true) +
                                " " + BuildFrame("0$e", true) + " " + BuildFrame("#v", false) +
                                " \x1bS";
  LogQuestion(composite);
  SendBytes(composite);
}

int Drukarka::Identify(const std::string& reply) {
  if (reply.size() < 11) return kFindUnidentified;
  if (NamesPrinter(reply)) {
    TakeIdentity(ParseIdentity(IdentityFrameIn(reply)));
    return kFindPrinter;
  }
  return Has(reply, kUniqueWord) ? kFindUniqueNumber : kFindUnidentified;
}

int Drukarka::FindPrinter(int port_number, int32_t& bits_per_second, int expected_type,
                          bool long_mode) {
  std::string port = "com" + std::to_string(port_number);
  return FindPrinter(port, bits_per_second, expected_type, long_mode);
}

int Drukarka::FindPrinter(std::string& port, int32_t& bits_per_second, int expected_type,
                          bool long_mode) {
  bits_per_second = std::max(bits_per_second, kLowestSpeed);
  SetPort(port, bits_per_second);
  if (!Open()) return kFindCannotOpen;
  if (!Drain()) {
    Close();
    return kFindNotQuiet;
  }
  int result = kFindNothing;
  const bool typed = HasTypedProbe(expected_type) && !long_mode;
  const std::string first = typed ? TypedProbe(expected_type, result) : UntypedProbes(result);
  if (!first.empty()) {
    Progress(Utf8ToCp1250(TextF("Wybrano port %s i prędkość %d. Znak 0x%X.", port_name.c_str(),
                                speed, static_cast<uint8_t>(first[0]))));
    Progress(Utf8ToCp1250(TextF("Główne przetwarzanie %s %d.", port_name.c_str(), speed)));
    Progress(Utf8ToCp1250("Przed wysłaniem."));
    SendComposite(long_mode);
    Progress(Utf8ToCp1250("Po wysłaniu."));
    const std::string reply = CollectAnswer(long_mode ? kLongCollectMs : kCollectMs);
    answer = FromMazovia(reply);
    LogAnswerText(answer);
    // A unique-number answer to the probe stands when the composite tells nothing.
    const int identified = Identify(reply);
    if (identified != kFindUnidentified || result != kFindUniqueNumber) result = identified;
  }
  Close();
  if (result == kFindPrinter || result == kFindUniqueNumber) port = port_name;
  return result;
}

}  // namespace tavena

#include "Simstate.h"

namespace tavena {

int64_t EpochMsOf(const LocalTime& t) {
  return DaysFromCivil(t.year, t.month, t.day) * 86400000 + t.MsOfDay();
}

bool ValidLocalTime(const LocalTime& t) {
  if (t.month < 1 || t.month > 12 || t.day < 1 || t.hour < 0 || t.hour > 23 || t.minute < 0 ||
      t.minute > 59 || t.second < 0 || t.second > 59)
    return false;
  const LocalTime back = CivilFromEpochMs(DaysFromCivil(t.year, t.month, t.day) * 86400000);
  return back.day == t.day && back.month == t.month;
}

SimPrinterClock::SimPrinterClock(std::function<LocalTime()> host) : host_(std::move(host)) {}

LocalTime SimPrinterClock::Host() const {
  return host_ ? host_() : CurrentClock().Local();
}

LocalTime SimPrinterClock::Now() const {
  if (fixed_) return fixed_time_;
  return CivilFromEpochMs(EpochMsOf(Host()) + offset_ms_);
}

void SimPrinterClock::Set(const LocalTime& t) {
  LocalTime whole = t;
  whole.millisecond = 0;
  if (fixed_) {
    fixed_time_ = whole;
    return;
  }
  LocalTime host = Host();
  host.millisecond = 0;
  offset_ms_ = EpochMsOf(whole) - EpochMsOf(host);
}

void SimPrinterClock::Fix(const LocalTime& t) {
  fixed_ = true;
  fixed_time_ = t;
  fixed_time_.millisecond = 0;
}

uint8_t SimState::EnqByte() const {
  return static_cast<uint8_t>(0x60 | (fiscal ? 8 : 0) | (command_ok ? 4 : 0) |
                              (in_transaction ? 2 : 0) | (transaction_ok ? 1 : 0));
}

uint8_t SimState::DleByte() const {
  return static_cast<uint8_t>(0x70 | (online ? 4 : 0) | (paper_out ? 2 : 0) |
                              (mechanism_error ? 1 : 0));
}

}  // namespace tavena

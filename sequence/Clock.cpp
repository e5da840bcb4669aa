#include "Clock.h"

#include <chrono>
#include <ctime>
#include <thread>

namespace tavena {

int64_t SystemClock::NowMs() {
  using namespace std::chrono;
  return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

void SystemClock::SleepMs(int ms) {
  if (ms > 0) std::this_thread::sleep_for(std::chrono::milliseconds(ms));
}

LocalTime SystemClock::Local() {
  using namespace std::chrono;
  const auto now = system_clock::now();
  const std::time_t t = system_clock::to_time_t(now);
  std::tm tm{};
#ifdef _WIN32
  localtime_s(&tm, &t);
#else
  localtime_r(&t, &tm);
#endif
  const int ms =
      static_cast<int>(duration_cast<milliseconds>(now.time_since_epoch()).count() % 1000);
  return LocalTime{tm.tm_year + 1900, tm.tm_mon + 1, tm.tm_mday, tm.tm_hour,
                   tm.tm_min,         tm.tm_sec,     ms};
}

int64_t DaysFromCivil(int year, int month, int day) {
  year -= month <= 2;
  const int64_t era = (year >= 0 ? year : year - 399) / 400;
  const int64_t yoe = year - era * 400;
  const int64_t doy = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
  const int64_t doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + doe - 719468;
}

LocalTime CivilFromEpochMs(int64_t epoch_ms) {
  int64_t days = epoch_ms / 86400000;
  int64_t rest = epoch_ms % 86400000;
  if (rest < 0) {
    rest += 86400000;
    --days;
  }
  const int64_t z = days + 719468;
  const int64_t era = (z >= 0 ? z : z - 146096) / 146097;
  const int64_t doe = z - era * 146097;
  const int64_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const int64_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const int64_t mp = (5 * doy + 2) / 153;
  const int d = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
  const int m = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
  const int y = static_cast<int>(yoe + era * 400 + (m <= 2));
  const int ms = static_cast<int>(rest);
  return LocalTime{y, m, d, ms / 3600000, ms / 60000 % 60, ms / 1000 % 60, ms % 1000};
}

VirtualClock::VirtualClock(LocalTime start)
    : start_epoch_ms_(DaysFromCivil(start.year, start.month, start.day) * 86400000 +
                      start.MsOfDay()) {}

void VirtualClock::SleepMs(int ms) {
  if (ms <= 0) ms = 0;
  slept_ms_ += ms;
  Advance(ms);
}

void VirtualClock::Advance(int64_t ms) {
  now_ms_ += ms;
  if (on_advance_) on_advance_(now_ms_);
}

LocalTime VirtualClock::Local() {
  return CivilFromEpochMs(start_epoch_ms_ + now_ms_);
}

namespace {
SystemClock& HostClock() {
  static SystemClock clock;
  return clock;
}
Clock* g_clock = nullptr;
std::function<void()>& PumpHook() {
  static std::function<void()> hook;
  return hook;
}
}  // namespace

Clock& CurrentClock() {
  return g_clock ? *g_clock : HostClock();
}

void SetCurrentClock(Clock* clock) {
  g_clock = clock == &HostClock() ? nullptr : clock;
}

void PumpMessages() {
  if (PumpHook()) PumpHook()();
}

void SetPumpHook(std::function<void()> hook) {
  PumpHook() = std::move(hook);
}

}  // namespace tavena

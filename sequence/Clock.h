// Injectable time source and message-pump hook. Every wait in the core goes
// through CurrentClock() and every place that would let the window run
// calls PumpMessages(), so tests can run protocol exchanges on virtual time.
#pragma once

#include <cstdint>
#include <functional>

namespace tavena {

struct LocalTime {
  int year = 1980;
  int month = 1;
  int day = 1;
  int hour = 0;
  int minute = 0;
  int second = 0;
  int millisecond = 0;

  // Milliseconds since local midnight.
  int32_t MsOfDay() const { return ((hour * 60 + minute) * 60 + second) * 1000 + millisecond; }
};

class Clock {
 public:
  virtual ~Clock() = default;
  // Monotonic milliseconds; only differences are meaningful.
  virtual int64_t NowMs() = 0;
  // Blocks (or, on a virtual clock, advances time) for ms milliseconds.
  virtual void SleepMs(int ms) = 0;
  // Local calendar time, for log stamps and date texts.
  virtual LocalTime Local() = 0;
};

// The host's clock.
class SystemClock : public Clock {
 public:
  int64_t NowMs() override;
  void SleepMs(int ms) override;
  LocalTime Local() override;
};

// A clock that only moves when slept on or advanced. Local time starts at
// the given instant and moves with it.
class VirtualClock : public Clock {
 public:
  explicit VirtualClock(LocalTime start = LocalTime{2012, 5, 14, 9, 3, 7, 250});
  int64_t NowMs() override { return now_ms_; }
  void SleepMs(int ms) override;
  LocalTime Local() override;
  void Advance(int64_t ms);
  // Called after every sleep or advance, e.g. to let a simulated device run.
  void SetOnAdvance(std::function<void(int64_t now_ms)> hook) { on_advance_ = std::move(hook); }
  int64_t TotalSleptMs() const { return slept_ms_; }

 private:
  int64_t now_ms_ = 0;
  int64_t slept_ms_ = 0;
  int64_t start_epoch_ms_;  // start instant as milliseconds since 1970 (local)
  std::function<void(int64_t)> on_advance_;
};

// The clock the core uses; the system clock unless a test or tool set another.
Clock& CurrentClock();
// Sets the clock (not owned); nullptr restores the system clock.
void SetCurrentClock(Clock* clock);

// RAII: installs a clock for a scope.
class ScopedClock {
 public:
  explicit ScopedClock(Clock* clock) : previous_(&CurrentClock()) { SetCurrentClock(clock); }
  ~ScopedClock() { SetCurrentClock(previous_); }
  ScopedClock(const ScopedClock&) = delete;
  ScopedClock& operator=(const ScopedClock&) = delete;

 private:
  Clock* previous_;
};

// Lets the user interface process pending events during a wait. A no-op
// unless the GUI installs a hook.
void PumpMessages();
void SetPumpHook(std::function<void()> hook);

// Convenience wrappers over CurrentClock().
inline int64_t NowMs() {
  return CurrentClock().NowMs();
}
inline void SleepMs(int ms) {
  CurrentClock().SleepMs(ms);
}

// Days since 1970-01-01 of a civil date (proleptic Gregorian).
int64_t DaysFromCivil(int year, int month, int day);
// Civil date and time of milliseconds since 1970 (no time zone).
LocalTime CivilFromEpochMs(int64_t epoch_ms);

}  // namespace tavena

// The program's clock: the system clock, with the window's messages pumped
// before every sleep (so the windows paint and take clicks through every
// wait of an exchange), and able to stop waiting: once abandoned its time
// jumps past every deadline and each sleep moves it on without waiting, so
// an exchange under way runs out of time at once. Closing the main window during the
// printer search uses it to end the run without sitting out the waits.
#pragma once

#include "sequence/Clock.h"

namespace tavena {

class WindowClock : public Clock {
 public:
  explicit WindowClock(Clock& base) : base_(base) {}
  int64_t NowMs() override { return base_.NowMs() + skipped_ms_; }
  void SleepMs(int ms) override {
    PumpMessages();
    if (abandoned_)
      skipped_ms_ += ms;
    else
      base_.SleepMs(ms);
  }
  LocalTime Local() override { return base_.Local(); }
  void Abandon() {
    if (!abandoned_) skipped_ms_ += kJumpMs;
    abandoned_ = true;
  }
  // Waits again once the abandoned exchange has ended (time stays ahead).
  void Resume() { abandoned_ = false; }
  bool Abandoned() const { return abandoned_; }

 private:
  static constexpr int64_t kJumpMs = int64_t{1} << 40;  // about 35 years
  Clock& base_;
  bool abandoned_ = false;
  int64_t skipped_ms_ = 0;
};

}  // namespace tavena

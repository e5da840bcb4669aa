// A clock over another that can be told to stop waiting: from then on its
// time stands past every deadline and its sleeps return at once, so an
// exchange under way ends within its next poll. The program installs it so
// that closing the main window during the printer search ends the run
// without sitting out the search's waits.
#pragma once

#include "sequence/Clock.h"

namespace tavena {

class AbandonClock : public Clock {
 public:
  explicit AbandonClock(Clock& base) : base_(base) {}
  int64_t NowMs() override { return base_.NowMs() + (abandoned_ ? kJumpMs : 0); }
  void SleepMs(int ms) override {
    if (!abandoned_) base_.SleepMs(ms);
  }
  LocalTime Local() override { return base_.Local(); }
  void Abandon() { abandoned_ = true; }
  void Resume() { abandoned_ = false; }  // once the abandoned exchange has ended
  bool Abandoned() const { return abandoned_; }

 private:
  static constexpr int64_t kJumpMs = int64_t{1} << 40;  // about 35 years
  Clock& base_;
  bool abandoned_ = false;
};

}  // namespace tavena

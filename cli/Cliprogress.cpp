#include "Cliprogress.h"

#include <string>

namespace tavena {

void SendProgress::Update(int64_t done) {
  if (!terminal_) return;
  constexpr int kWidth = 40;
  const int64_t percent = total_ > 0 ? done * 100 / total_ : 100;
  const int filled = static_cast<int>(percent * kWidth / 100);
  out_ << '\r' << '[' << std::string(filled, '#') << std::string(kWidth - filled, ' ') << "] "
       << percent << "%  " << done << '/' << total_ << std::flush;
  drawn_ = true;
}

void SendProgress::Finish() {
  if (drawn_) out_ << '\n';
  drawn_ = false;
}

}  // namespace tavena

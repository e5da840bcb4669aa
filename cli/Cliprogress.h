// A one-line progress bar for sending, drawn only on a terminal.
#pragma once

#include <cstdint>
#include <ostream>

namespace tavena {

class SendProgress {
 public:
  SendProgress(std::ostream& out, bool terminal, int64_t total)
      : out_(out), terminal_(terminal), total_(total) {}
  // Redraws the bar for done of total bytes.
  void Update(int64_t done);
  // Ends the bar's line (when one was drawn).
  void Finish();

 private:
  std::ostream& out_;
  bool terminal_;
  int64_t total_;
  bool drawn_ = false;
};

}  // namespace tavena

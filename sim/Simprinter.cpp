#include "Simprinter.h"

#include <algorithm>
#include <cstdio>

#include "sequence/Codepage.h"

namespace tavena {

namespace {

constexpr uint8_t kEsc = 0x1B;
constexpr uint8_t kEnq = 0x05;
constexpr uint8_t kDle = 0x10;
constexpr uint8_t kBel = 0x07;
constexpr uint8_t kCan = 0x18;
constexpr uint8_t kSub = 0x1A;
constexpr uint8_t kXoff = 0x13;
constexpr size_t kMaxFrame = 2048;
constexpr size_t kIgnoredLine = 256;  // ignored bytes per log line at most

std::string HexByte(uint8_t b) {
  char text[8];
  std::snprintf(text, sizeof text, "0x%02X", b);
  return text;
}

int64_t CeilMs(int64_t us) {
  return (us + 999) / 1000;
}

// Orders a time before the queued bytes that arrive later.
bool ByTime(int64_t t, const std::pair<int64_t, uint8_t>& item) {
  return t < item.first;
}

// Keeps the newest cap..2*cap elements once there are more than 2*cap.
template <typename Sequence>
void KeepNewest(Sequence& items, size_t cap) {
  if (items.size() > 2 * cap) items.erase(items.begin(), items.end() - static_cast<ptrdiff_t>(cap));
}

}  // namespace

std::string SimReadable(std::string_view bytes) {
  std::string out;
  for (const char c : bytes) {
    const auto b = static_cast<uint8_t>(c);
    if (b >= 0x20 && b != 0x7F) {
      out += c;
    } else {
      char text[8];
      std::snprintf(text, sizeof text, "<%02X>", b);
      out += text;
    }
  }
  return out;
}

std::unique_ptr<SimPrinter> MakeSimPrinter(std::string_view model_name) {
  const std::optional<SimModelInfo> model = FindSimModel(model_name);
  if (!model) return nullptr;
  return std::make_unique<SimPrinter>(*model);
}

SimPrinter::SimPrinter(const SimModelInfo& model, std::function<LocalTime()> host_time)
    : model_(model), clock_(std::move(host_time)), commands_(state_, clock_, model_) {
  state_.unique_number = model_.unique_number;
}

int64_t SimPrinter::ByteUs() const {
  return faults_.line_rate && baud_ > 0 ? 10'000'000 / baud_ : 0;
}

bool SimPrinter::SpeedMatches() const {
  return baud_ == 0 || client_baud_ == 0 || baud_ == client_baud_;
}

void SimPrinter::Receive(std::string_view bytes, int64_t now_ms) {
  if (faults_.line_closed) return;
  const int64_t now_us = now_ms * 1000;
  MakeNoise(now_us);
  for (const char c : bytes) {
    const int64_t start_us = std::max(in_us_, now_us);
    if (start_us - in_us_ > kSimFrameIdleMs * 1000) DropStaleFrame(start_us);
    in_us_ = start_us + ByteUs();
    record_.received += c;
    KeepNewest(record_.received, kSimRecordBytes);
    if (!SpeedMatches()) {
      record_.garbled += c;
      KeepNewest(record_.garbled, kSimRecordBytes);
      continue;
    }
    HandleByte(static_cast<uint8_t>(c), in_us_);
    if (faults_.line_closed) break;
  }
  if (!SpeedMatches() && !bytes.empty())
    Log("at " + std::to_string(client_baud_) + " bd (printer " + std::to_string(baud_) +
        " bd), not understood: " + SimReadable(bytes));
  FlushIgnored();
}

void SimPrinter::DropStaleFrame(int64_t t_us) {
  if (parse_ != Parse::kFrame && parse_ != Parse::kFrameEsc) return;
  Log("unfinished frame dropped after " + std::to_string((t_us - in_us_) / 1000) +
      " ms of silence: " + SimReadable(frame_));
  frame_.clear();
  parse_ = Parse::kIdle;
}

void SimPrinter::HandleByte(uint8_t b, int64_t t_us) {
  switch (parse_) {
    case Parse::kIdle:
      HandleIdle(b, t_us);
      break;
    case Parse::kEsc:
      HandleEscape(b, t_us);
      break;
    case Parse::kFrame:
      if (b == kEsc) {
        parse_ = Parse::kFrameEsc;
      } else if (b == kCan) {
        ++record_.can;
        Log("CAN: frame dropped: " + SimReadable(frame_));
        parse_ = Parse::kIdle;
      } else if (frame_.size() >= kMaxFrame) {
        Log("frame too long, dropped");
        state_.command_ok = false;
        state_.last_error = 24;
        parse_ = Parse::kIdle;
      } else {
        frame_ += static_cast<char>(b);
      }
      break;
    case Parse::kFrameEsc:
      if (b == '\\') {
        parse_ = Parse::kIdle;
        CompleteFrame(t_us);
      } else if (b == 'P') {
        Log("frame restarted, dropped: " + SimReadable(frame_));
        frame_.clear();
        parse_ = Parse::kFrame;
      } else {
        frame_ += static_cast<char>(kEsc);
        frame_ += static_cast<char>(b);
        parse_ = Parse::kFrame;
      }
      break;
  }
}

void SimPrinter::HandleIdle(uint8_t b, int64_t t_us) {
  if (b == kEsc) {
    parse_ = Parse::kEsc;
    return;
  }
  if (!model_.answers_identity) {
    Ignore(b);
    return;
  }
  if (b == kEnq) {
    ++record_.enq;
    std::string answer(1, static_cast<char>(state_.EnqByte()));
    if (!faults_.enq_answers.empty()) {
      answer = faults_.enq_answers.substr(0, 1);
      faults_.enq_answers.erase(0, 1);
    }
    Answer(answer, t_us, "ENQ");
  } else if (b == kDle) {
    ++record_.dle;
    Answer(std::string(1, static_cast<char>(state_.DleByte())), t_us, "DLE");
  } else if (b == kBel) {
    ++record_.bel;
    ++state_.bells;
    FlushIgnored();
    Log("BEL");
  } else if (b == kCan) {
    ++record_.can;
    FlushIgnored();
    Log("CAN");
  } else {
    Ignore(b);
  }
}

void SimPrinter::HandleEscape(uint8_t b, int64_t t_us) {
  parse_ = Parse::kIdle;
  if (b == 'P') {
    parse_ = Parse::kFrame;
    frame_.clear();
    if (faults_.xoff && !faults_.silent) Emit(std::string(1, static_cast<char>(kXoff)), t_us);
  } else if (b == 'S') {
    ++record_.unique_requests;
    if (model_.electronic_journal)
      Answer(UniqueNumberAnswer(), t_us, "ESC S");
    else
      Log("ESC S: not a journal printer");
  } else if (b == kEsc) {
    Ignore(kEsc);
    parse_ = Parse::kEsc;
  } else {
    Ignore(kEsc);
    HandleIdle(b, t_us);
  }
}

void SimPrinter::CompleteFrame(int64_t t_us) {
  FlushIgnored();
  const SimFrame frame = DecodeFrame(frame_);
  SimRecordedFrame rec;
  rec.body = frame_;
  rec.text = FromMazovia(frame_);
  rec.command = frame.command;
  rec.has_sum = frame.has_sum;
  rec.sum_ok = frame.sum_ok;
  const std::string what = "frame " + SimReadable(rec.text);
  if (model_.answers_identity) {
    const SimAnswer a = commands_.Execute(frame);
    rec.error = a.error;
    rec.answered = a.has_answer;
    state_.command_ok = a.error == kErrNone;
    if (a.error != kErrNone) state_.last_error = a.error;
    if (a.has_answer)
      Answer(FrameAnswer(a), t_us, what);
    else
      Log(what + (a.error == kErrNone ? " -> done" : " -> error " + std::to_string(a.error)));
  } else {
    Log(what + " -> ignored");
  }
  Remember(rec);
  ++frames_seen_;
  if (faults_.close_after_frames >= 0 && frames_seen_ >= faults_.close_after_frames) {
    faults_.line_closed = true;
    Log("line closed");
  }
}

std::string SimPrinter::FrameAnswer(const SimAnswer& a) const {
  std::string out = "\x1BP" + a.text;
  if (a.with_sum) {
    std::string sum = ControlSumHex(a.text);
    if (faults_.bad_answer_sum) sum = sum == "00" ? "01" : "00";
    out += sum;
  }
  return out + "\x1B\\";
}

std::string SimPrinter::UniqueNumberAnswer() const {
  return "NUMER_UNIKATOWY " + state_.unique_number + "\r\n" + static_cast<char>(kSub);
}

void SimPrinter::Answer(const std::string& bytes, int64_t t_us, const std::string& what) {
  FlushIgnored();
  const bool limited =
      faults_.answers_before_silence >= 0 && answers_given_ >= faults_.answers_before_silence;
  if (faults_.silent || limited) {
    Log(what + " -> (silent)");
    return;
  }
  ++answers_given_;
  Emit(faults_.garbage + bytes, t_us + int64_t{faults_.answer_delay_ms} * 1000);
  Log(what + " -> " +
      (bytes.size() == 1 ? HexByte(static_cast<uint8_t>(bytes[0]))
                         : SimReadable(FromMazovia(bytes))));
}

void SimPrinter::Emit(std::string_view bytes, int64_t start_us) {
  size_t dropped = 0;
  for (const char c : bytes) {
    if (out_.size() >= kSimMaxOutput) {
      ++dropped;
      continue;
    }
    out_us_ = std::max(out_us_, start_us) + ByteUs();
    Push(out_us_, static_cast<uint8_t>(c));
  }
  if (dropped == 0) return;
  record_.dropped_output += dropped;
  Log("output full (nobody reads), " + std::to_string(dropped) + " bytes dropped");
}

// Queues one byte by its arrival time; false when the output is full.
bool SimPrinter::Push(int64_t at_us, uint8_t b) {
  if (out_.size() >= kSimMaxOutput) {
    ++record_.dropped_output;
    return false;
  }
  out_.insert(std::upper_bound(out_.begin(), out_.end(), at_us, ByTime), {at_us, b});
  return true;
}

void SimPrinter::MakeNoise(int64_t now_us) {
  if (faults_.noise_every_ms <= 0 || faults_.line_closed) {
    next_noise_us_ = -1;
    return;
  }
  const int64_t period = int64_t{faults_.noise_every_ms} * 1000;
  if (next_noise_us_ < 0) next_noise_us_ = now_us + period;
  if (next_noise_us_ > now_us) return;
  // After a long time unasked, only the newest bytes that fit are made.
  const int64_t due = (now_us - next_noise_us_) / period + 1;
  const auto room = static_cast<int64_t>(kSimMaxOutput - std::min(kSimMaxOutput, out_.size()));
  if (due > room) {
    record_.dropped_output += static_cast<size_t>(due - room);
    next_noise_us_ += (due - room) * period;
  }
  for (; next_noise_us_ <= now_us; next_noise_us_ += period) Push(next_noise_us_, kSimNoiseByte);
}

size_t SimPrinter::Available(int64_t now_ms) {
  if (faults_.line_closed) return 0;
  const int64_t now_us = now_ms * 1000;
  MakeNoise(now_us);
  return static_cast<size_t>(std::upper_bound(out_.begin(), out_.end(), now_us, ByTime) -
                             out_.begin());
}

std::string SimPrinter::Take(int64_t now_ms, size_t max) {
  std::string bytes;
  const size_t n = std::min(Available(now_ms), max);
  for (size_t i = 0; i < n; ++i) {
    bytes += static_cast<char>(out_.front().second);
    out_.pop_front();
  }
  return bytes;
}

int64_t SimPrinter::NextReadyMs() {
  if (faults_.line_closed) return -1;
  int64_t next = out_.empty() ? -1 : out_.front().first;
  if (faults_.noise_every_ms > 0 && next_noise_us_ >= 0 && (next < 0 || next_noise_us_ < next))
    next = next_noise_us_;
  return next < 0 ? -1 : CeilMs(next);
}

size_t SimPrinter::PendingInput(int64_t now_ms) const {
  const int64_t now_us = now_ms * 1000;
  const int64_t byte_us = ByteUs();
  if (byte_us == 0 || in_us_ <= now_us) return 0;
  return static_cast<size_t>((in_us_ - now_us + byte_us - 1) / byte_us);
}

int64_t SimPrinter::InputDoneMs() const {
  return CeilMs(in_us_);
}

void SimPrinter::DropArrived(int64_t now_ms) {
  const int64_t now_us = now_ms * 1000;
  MakeNoise(now_us);
  while (!out_.empty() && out_.front().first <= now_us) out_.pop_front();
}

void SimPrinter::Log(const std::string& line) {
  if (log_) log_(line);
}

void SimPrinter::Remember(const SimRecordedFrame& frame) {
  record_.frames.push_back(frame);
  KeepNewest(record_.frames, kSimRecordFrames);
}

void SimPrinter::Ignore(uint8_t b) {
  ignored_ += static_cast<char>(b);
  if (ignored_.size() >= kIgnoredLine) FlushIgnored();
}

void SimPrinter::FlushIgnored() {
  if (ignored_.empty()) return;
  const std::string bytes = std::move(ignored_);
  ignored_.clear();
  Log("other bytes: " + SimReadable(bytes));
}

}  // namespace tavena

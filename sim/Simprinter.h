// The simulated printer as a device: bytes from the client in, answer bytes
// out, on a time line the caller supplies (milliseconds of any monotonic
// clock, virtual in tests). No input or output of its own.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Simcommands.h"
#include "Simmodel.h"
#include "Simstate.h"

namespace tavena {

// Ways to make the printer misbehave; all off by default.
struct SimFaults {
  bool silent = false;              // answers nothing at all
  int answers_before_silence = -1;  // gives this many answers, then falls silent (-1: never)
  int answer_delay_ms = 0;          // every answer starts this late
  bool bad_answer_sum = false;      // control sums of answers are wrong
  std::string garbage;              // bytes sent before every answer
  bool xoff = false;                // sends XOFF (never XON) at the start of every frame
  bool line_closed = false;         // nothing goes in or out; the port cannot be opened
  int close_after_frames = -1;      // the line closes after this many frames (-1: never)
  bool line_rate = false;           // every byte takes 10 bit times at the printer's speed
  int noise_every_ms = 0;           // sends a noise byte this often, asked or not (0: never)
  std::string enq_answers;  // the next ENQs get these bytes, one each, instead of the status
};

inline constexpr uint8_t kSimNoiseByte = 0x7E;
// Answer bytes waiting for a client that does not read; more are dropped.
inline constexpr size_t kSimMaxOutput = 65536;
// The record keeps at most about this many of the newest bytes (received,
// garbled) and frames.
inline constexpr size_t kSimRecordBytes = 1 << 20;
inline constexpr size_t kSimRecordFrames = 4096;
// A frame that has had no byte for this long is dropped when the next byte
// comes: a client that sent half a frame and went away does not keep the
// printer from answering the next one.
inline constexpr int64_t kSimFrameIdleMs = 2000;

// A frame as received, for tests and the log.
struct SimRecordedFrame {
  std::string body;     // bytes between ESC P and ESC backslash, as received (Mazovia)
  std::string text;     // the same in Windows-1250
  std::string command;  // "#v", "$c", ...
  bool has_sum = false;
  bool sum_ok = true;
  int error = kErrNone;  // what the printer made of it
  bool answered = false;
};

struct SimRecord {
  std::string received;  // the bytes that reached the printer, in order (the newest)
  std::vector<SimRecordedFrame> frames;
  int enq = 0;
  int dle = 0;
  int bel = 0;
  int can = 0;
  int unique_requests = 0;    // ESC "S"
  std::string garbled;        // bytes that came at a speed other than the printer's
  size_t dropped_output = 0;  // answer and noise bytes dropped on a full output
};

class SimPrinter {
 public:
  // host_time: the host's local time the printer's clock follows; by
  // default CurrentClock().Local().
  explicit SimPrinter(const SimModelInfo& model, std::function<LocalTime()> host_time = {});
  SimPrinter(const SimPrinter&) = delete;
  SimPrinter& operator=(const SimPrinter&) = delete;

  const SimModelInfo& Model() const { return model_; }
  SimState& State() { return state_; }
  const SimState& State() const { return state_; }
  SimPrinterClock& PrinterClock() { return clock_; }
  SimFaults& Faults() { return faults_; }
  SimCommands& Commands() { return commands_; }

  // The printer's line speed; 0 takes any speed.
  void SetBaud(int baud) { baud_ = baud; }
  int Baud() const { return baud_; }
  // The speed the client's port is set to (0: unknown). At a speed other
  // than the printer's the printer hears only noise and stays quiet.
  void SetClientBaud(int baud) { client_baud_ = baud; }

  // Bytes the client sent at now_ms.
  void Receive(std::string_view bytes, int64_t now_ms);
  // Answer bytes that have arrived at the client's end by now_ms.
  size_t Available(int64_t now_ms);
  std::string Take(int64_t now_ms, size_t max = SIZE_MAX);
  // When the next answer byte arrives (ms, rounded up), or -1 when none is due.
  int64_t NextReadyMs();
  // Bytes the client sent that are still on the line at now_ms, and when
  // the last of them will have arrived.
  size_t PendingInput(int64_t now_ms) const;
  int64_t InputDoneMs() const;
  // Drops the answer bytes that have arrived by now_ms (a receive purge).
  void DropArrived(int64_t now_ms);
  bool LineClosed() const { return faults_.line_closed; }

  const SimRecord& Record() const { return record_; }
  void ClearRecord() { record_ = SimRecord{}; }
  // Receives one readable line per event (Windows-1250, no line end).
  void SetLogSink(std::function<void(const std::string&)> sink) { log_ = std::move(sink); }

 private:
  enum class Parse { kIdle, kEsc, kFrame, kFrameEsc };
  int64_t ByteUs() const;
  bool SpeedMatches() const;
  void DropStaleFrame(int64_t t_us);
  void HandleByte(uint8_t b, int64_t t_us);
  void HandleIdle(uint8_t b, int64_t t_us);
  void HandleEscape(uint8_t b, int64_t t_us);
  void CompleteFrame(int64_t t_us);
  std::string FrameAnswer(const SimAnswer& a) const;
  std::string UniqueNumberAnswer() const;
  void Answer(const std::string& bytes, int64_t t_us, const std::string& what);
  void Emit(std::string_view bytes, int64_t start_us);
  bool Push(int64_t at_us, uint8_t b);
  void MakeNoise(int64_t now_us);
  void Log(const std::string& line);
  void Ignore(uint8_t b);
  void FlushIgnored();
  void Remember(const SimRecordedFrame& frame);

  SimModelInfo model_;
  SimState state_;
  SimPrinterClock clock_;
  SimCommands commands_;
  SimFaults faults_;
  int baud_ = 9600;
  int client_baud_ = 0;

  Parse parse_ = Parse::kIdle;
  std::string frame_;
  int frames_seen_ = 0;
  int answers_given_ = 0;
  int64_t in_us_ = 0;   // when the last received byte has fully arrived
  int64_t out_us_ = 0;  // when the last answer byte has fully left
  int64_t next_noise_us_ = -1;
  std::deque<std::pair<int64_t, uint8_t>> out_;  // (arrival time, byte), in time order
  std::string ignored_;

  SimRecord record_;
  std::function<void(const std::string&)> log_;
};

// Bytes as readable text: printable characters as they are, others as <XX>.
std::string SimReadable(std::string_view bytes);
// A printer of the named model (FindSimModel), or null for an unknown name.
std::unique_ptr<SimPrinter> MakeSimPrinter(std::string_view model_name);

}  // namespace tavena

#include "Fastcom.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstring>

#include "../sequence/Clock.h"
#include "../sequence/Messagelanguage.h"
#include "Filelog.h"

namespace tavena {

namespace {

constexpr uint32_t kWineQueueSize = 16384;
constexpr uint32_t kWindowsQueueSize = 30000;
constexpr uint32_t kWineChunk = 64;
constexpr int kWineDrainBudgetMs = 300;
constexpr int kWineDrainPollMs = 20;
constexpr int kRetryBudgetMs = 20;
constexpr int kRetryPauseMs = 5;
constexpr int kReadPollMs = 20;
constexpr int kXoffLimitMs = 30;
constexpr int32_t kMsPerDay = 86400000;
constexpr int32_t kReceiveLogCut = 80;
constexpr int32_t kReadGrowThreshold = 63;
// A line that never falls silent cannot keep a read going for ever: a read
// ends at its time-out plus the time-out again, at least 2 s (the time a
// port gets to quiet down before a search), or at 1 MiB.
constexpr int32_t kQuietLimitMs = 2000;
constexpr int32_t kMaxReply = 1 << 20;
constexpr uint8_t kXon = 0x11;
constexpr uint8_t kXoff = 0x13;

int32_t MsSinceMidnight() {
  return CurrentClock().Local().MsOfDay();
}

// Digits right after position start; an empty run gives 0.
int DigitsAt(const char* text, size_t start) {
  int n = 0;
  for (size_t i = start; std::isdigit(static_cast<unsigned char>(text[i])) && n < 100000000; ++i)
    n = n * 10 + (text[i] - '0');
  return n;
}

std::string NumberedPortName(int n) {
  char name[32];
  std::snprintf(name, sizeof name, n <= 9 ? "com%d" : "\\\\.\\com%d", n);
  return name;
}

LineSettings OpenLine(int32_t baud_rate) {
  LineSettings line;
  line.baud_rate = baud_rate;
  return line;
}

LineSettings OpenNamedLine(int32_t baud_rate) {
  LineSettings line = OpenLine(baud_rate);
  line.abort_on_error = true;
  line.tx_continue_on_xoff = true;
  return line;
}

}  // namespace

FastCom::FastCom() : under_wine_(RunningUnderWine()) {}

FastCom::~FastCom() {
  Close();
}

bool FastCom::Open(const char* port, int32_t read_timeout) {
  if (HasDevice()) {
    LogMsg("Próba otwarcia otwartego portu.", "Open opened serial port.");
    return false;
  }
  const std::string given = port ? port : "";
  if (HostUsesDevicePaths() && !given.empty() && given[0] == '/')
    port_name = given;
  else
    port_name = NumberedPortName(PortNumberOf(given.c_str()));
  if (capture_buffer) {
    is_open_ = true;
    return true;
  }
  read_timeout_constant = std::max(read_timeout, 2);
  SerialTimeouts timeouts;  // 3, 1, constant, 1, 20000
  timeouts.read_constant = static_cast<uint32_t>(read_timeout_constant);
  if (!OpenDevice(OpenLine(baud_rate), timeouts, true)) {
    LogMsg("Portu nie można otworzyć. Pusty header.",
           "Can't open this serial port. Header is empty.");
    return false;
  }
  return true;
}

bool FastCom::OpenNamed(const char* name) {
  if (HasDevice()) {
    LogMsg("Próba otwarcia otwartego portu.", "Open opened serial port.");
    return false;
  }
  port_name = name ? name : "";
  if (PortNumberOf(port_name.c_str()) > 9) port_name = "\\\\.\\" + port_name;
  read_timeout_constant = 10;
  const SerialTimeouts timeouts{1, 1, 10, 1, 200};
  return OpenDevice(OpenNamedLine(baud_rate), timeouts, false);
}

// Steps shared by both opens; full_setup adds the queue sizes, escape and purge.
bool FastCom::OpenDevice(const LineSettings& line, const SerialTimeouts& timeouts,
                         bool full_setup) {
  try {
    last_open_error_ = 0;
    device_gone_ = false;
    device_ = OpenSerialDevice(port_name, last_open_error_);
    if (!device_) return false;
    is_open_ = true;
    if (full_setup) {
      const uint32_t queue = under_wine_ ? kWineQueueSize : kWindowsQueueSize;
      setup_error_ = device_->SetupQueues(queue, queue);
      device_->Escape(kEscapeOnOpen);
      device_->Purge(kPurgeAll);
      RefreshQueues();
    }
    device_->Configure(line, timeouts);
    if (full_setup)
      LogMsg("Otwarcie portu.", "Serial port is opened.");
    else
      Log(EnglishMessages() ? "Serial port is opened."
                            : "Otwarcie portu " + std::to_string(baud_rate));
    SleepMs(10);
    return true;
  } catch (...) {
    device_.reset();
    is_open_ = false;
    if (full_setup)
      LogMsg("Portu nie można otworzyć. Wyjątek.", "Can't open this serial port. Exeption.");
    return false;
  }
}

bool FastCom::Close() {
  if (capture_buffer || hold_open) return true;
  if (!HasDevice()) {
    is_open_ = false;
    LogMsg("Próba zamknięcia zamkniętego portu.", "Close closed serial port.");
    return false;
  }
  if (!device_gone_) {
    RefreshQueues();
    device_->Purge(kPurgeAll);
    device_->Escape(kEscapeOnOpen);
    RefreshQueues();
    SleepMs(100);
  }
  device_->Close();
  device_.reset();
  is_open_ = false;
  in_queue_ = out_queue_ = 0;
  LogMsg("Zamknięcie portu.", "Close serial port.");
  return true;
}

bool FastCom::Send(const iBuffer& record) {
  if (!is_open_) {
    Log("Zapis do nie otwartego portu.");
    return false;
  }
  if (capture_buffer) {
    capture_buffer->AppendBuffer(record);
    Log("Zapis do pliku.");
    return true;
  }
  return byte_mode ? SendBytes(record) : SendWhole(record);
}

bool FastCom::SendWhole(const iBuffer& record) {
  bytes_written_ = 0;
  const bool ok = WriteRaw(record.Data(), static_cast<uint32_t>(record.Length()), bytes_written_);
  if (bytes_written_ != static_cast<uint32_t>(record.Length())) {
    LogMsg("Nie wysłano rekordu w komplecie.", "This record isn't send completelly.");
    return false;
  }
  LogRecord(Msg("Wysłano: ", "Send: "), record);
  return ok;
}

bool FastCom::SendBytes(const iBuffer& record) {
  const uint32_t length = static_cast<uint32_t>(record.Length());
  uint32_t position = 0;
  bool sending = true;
  bool ok = true;
  int32_t stamp = 0;
  while (position < length) {
    PumpMessages();
    if (!honour_xon_xoff || sending) {
      bytes_written_ = 0;
      ok = WriteRaw(record.Data() + position, 1, bytes_written_);
      if (bytes_written_ == 0) {
        LogRecord(Msg("Nie można tego wysłać", "Can't to send it"), record);
        return false;
      }
      position += bytes_written_;
      if (ok && HasDevice()) device_->WaitTransmitEmpty();
      SleepMs(2);
    } else {
      SleepMs(1);  // paused: let time pass instead of spinning
    }
    if (honour_xon_xoff) WatchFlowControl(sending, stamp);
  }
  LogRecord(Msg("Wysłano: ", "Send: "), record);
  return ok;
}

// One incoming byte checked for XOFF/XON; a pause ends by itself after 30 ms.
void FastCom::WatchFlowControl(bool& sending, int32_t& stamp) {
  uint8_t byte = 0;
  uint32_t got = 0;
  if (ReadAvailable(&byte, 1, got) && got == 1) {
    if (byte == kXoff) sending = false, stamp = MsSinceMidnight();
    if (byte == kXon) sending = true, stamp = MsSinceMidnight();
  }
  if (!sending && (MsSinceMidnight() - stamp + kMsPerDay) % kMsPerDay > kXoffLimitMs)
    sending = true;
}

bool FastCom::SendRetry(const iBuffer& record) {
  if (!is_open_) return false;
  if (capture_buffer) {
    capture_buffer->AppendBuffer(record);
    return true;
  }
  const uint32_t length = static_cast<uint32_t>(record.Length());
  int budget = kRetryBudgetMs;
  bool ok = false;
  while (budget > 0) {
    bytes_written_ = 0;
    ok = WriteRaw(record.Data(), length, bytes_written_);
    if (bytes_written_ > 0) break;
    SleepMs(kRetryPauseMs);
    budget -= kRetryPauseMs;
  }
  if (budget <= 0) {
    LogRecord(Msg("Nie można tego wysłać", "Can't to send it"), record);
    return false;
  }
  LogRecord(Msg("Wysłano: ", "Send: "), record);
  return ok;
}

bool FastCom::WriteRaw(const uint8_t* bytes, uint32_t n, uint32_t& written) {
  written = 0;
  const bool ok = under_wine_ ? WriteChunked(bytes, n, written) : WriteWhole(bytes, n, written);
  NoteGone();
  return ok;
}

bool FastCom::WriteWhole(const uint8_t* bytes, uint32_t n, uint32_t& written) {
  if (!HasDevice()) return false;
  return device_->Write(bytes, n, written);
}

// The emulated port cannot take large writes: 64-byte chunks, each after the
// transmit queue drained (polled every 20 ms for at most 300 ms). A chunk
// counts whole, since the driver may report 0 bytes for a good write.
bool FastCom::WriteChunked(const uint8_t* bytes, uint32_t n, uint32_t& written) {
  if (!is_open_ || !HasDevice()) return false;
  int budget = kWineDrainBudgetMs;
  bool ok = true;
  for (;;) {
    while (budget > 0 && OutQueue() != 0) {
      PumpMessages();
      SleepMs(kWineDrainPollMs);
      budget -= kWineDrainPollMs;
    }
    if (budget <= 0 || written >= n) break;
    const uint32_t chunk = std::min(n - written, kWineChunk);
    uint32_t reported = 0;
    ok = device_->Write(bytes + written, chunk, reported);
    written += chunk;
    budget = kWineDrainBudgetMs;
    if (!ok) break;
  }
  return budget > 0 && ok;
}

bool FastCom::ReadAvailable(uint8_t* dest, uint32_t max, uint32_t& got) {
  got = 0;
  if (!is_open_ || InQueue() == 0 || !HasDevice()) return false;
  const bool ok = device_->Read(dest, std::min(in_queue_, max), got);
  bytes_read_ = got;
  NoteGone();
  return ok;
}

// Appends what is waiting into the reply's free space; true when bytes came.
bool FastCom::ReadSome(iBuffer& reply) {
  const int32_t free_space = reply.FreeSpaceSize();
  if (free_space <= 0) return false;
  uint32_t got = 0;
  ReadAvailable(reply.FreeSpace(), static_cast<uint32_t>(free_space), got);
  if (got == 0) return false;
  reply.CommitAppended(static_cast<int32_t>(got));
  return true;
}

bool FastCom::TerminatorReached(const iBuffer& reply, const char* terminator) const {
  const int32_t size = static_cast<int32_t>(std::strlen(terminator));
  const int32_t length = reply.Length();
  if (length >= size && std::strcmp(reply.Text() + length - size, terminator) == 0) return true;
  if (!match_anywhere) return false;
  for (int32_t at = 0; at < length; ++at)
    if (std::strcmp(reply.Text() + at, terminator) == 0) return true;
  return false;
}

bool FastCom::ReadUntil(iBuffer& reply, int32_t timeout_ms, const char* terminator) {
  read_cut_ = false;
  if (!is_open_ || capture_buffer) return false;
  reply.Clear();
  const int32_t timeout = std::max(timeout_ms, 1);
  const int64_t deadline = NowMs() + ReadLimitMs(timeout);
  const bool has_terminator = terminator && *terminator;
  int32_t remaining = timeout;
  while (remaining > 0) {
    bool arrived = false;
    while (ReadSome(reply)) arrived = true;
    if (device_gone_) break;
    if (arrived) {
      remaining = timeout;
      const int32_t length = reply.Length();
      if (length > kReadGrowThreshold && reply.FreeSpaceSize() < kReadGrowThreshold)
        reply.Reallocate(reply.Capacity() + 2 * length + length / 5);
      if (length > kReadGrowThreshold) SleepMs(3);
      if (has_terminator && TerminatorReached(reply, terminator)) break;
    } else {
      SleepMs(kReadPollMs);
      remaining -= kReadPollMs;
    }
    if (remaining > 0 && (NowMs() >= deadline || reply.Length() >= kMaxReply)) {
      read_cut_ = true;
      break;
    }
  }
  iBuffer shown(reply.View().substr(0, kReceiveLogCut));
  LogRecord(Msg("Odebrano: ", "Receive: "), shown);
  return !device_gone_;
}

int32_t ReadLimitMs(int32_t timeout_ms) {
  const int32_t timeout = std::max(timeout_ms, 1);
  return timeout + std::max(timeout, kQuietLimitMs);
}

bool FastCom::ReadCount(iBuffer& reply, int32_t count) {
  PumpMessages();
  if (count < 1) count = reply.FreeSpaceSize() - 1;
  if (!is_open_ || capture_buffer) return false;
  if (count > 0) {
    reply.EnsureRoom(count);
    uint32_t got = 0;
    ReadAvailable(reply.FreeSpace(), static_cast<uint32_t>(count), got);
    reply.CommitAppended(static_cast<int32_t>(got));
  }
  LogRecord(Msg("Odebrano: ", "Receive: "), reply);
  return !device_gone_;
}

uint32_t FastCom::InQueue() {
  RefreshQueues();
  return in_queue_;
}

uint32_t FastCom::OutQueue() {
  RefreshQueues();
  return out_queue_;
}

void FastCom::RefreshQueues() {
  if (!is_open_ || !HasDevice() || !device_->ClearErrors(in_queue_, out_queue_))
    in_queue_ = out_queue_ = 0;
  NoteGone();
}

// Whether the device has vanished; the first time it is seen, says so in the log.
bool FastCom::NoteGone() {
  if (device_gone_ || !HasDevice() || !device_->Gone()) return device_gone_;
  device_gone_ = true;
  LogMsg("Port zniknął.", "The port has vanished.");
  return true;
}

void FastCom::Log(const std::string& text) const {
  if (logging_on_) LogToPortFile(text.c_str(), LogBaseName().c_str());
}

void FastCom::LogMsg(const char* polish_utf8, const char* english) const {
  if (logging_on_) Log(Msg(polish_utf8, english));
}

// prefix + the record's bytes as they are; the line ends at a zero byte.
void FastCom::LogRecord(const std::string& prefix, const iBuffer& record) const {
  if (logging_on_) Log(prefix + record.Text());
}

int PortNumberOf(const char* text) {
  if (!text || std::strlen(text) < 3) return 0;
  if (std::toupper(static_cast<unsigned char>(text[0])) == 'C' &&
      std::toupper(static_cast<unsigned char>(text[1])) == 'O' &&
      std::toupper(static_cast<unsigned char>(text[2])) == 'M')
    return DigitsAt(text, 3);
  if (text[0] == '\\' || text[0] == '.' || text[0] == '/') return DigitsAt(text, 1);
  return 0;
}

const char* MakePortName(const char* base, int number) {
  static char name[256];
  std::string copy = base ? base : "";
  while (copy.size() > 1 && std::isdigit(static_cast<unsigned char>(copy.back()))) copy.pop_back();
  std::snprintf(name, sizeof name, "%s%d", copy.c_str(), number);
  return name;
}

}  // namespace tavena

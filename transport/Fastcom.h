// FastCom: the serial channel through which every byte reaches the printer.
// Opens a port, programs the line, writes records (whole or byte by byte
// with optional XON/XOFF observance), reads replies, and logs one line per
// open, close, send and receive when logging is on. Never throws: every
// operation answers with a bool, reasons go to the communication log.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "../sequence/Ibuffer.h"
#include "Serialdevice.h"

namespace tavena {

class FastCom {
 public:
  // Closed, logging off, host detection done (under_wine).
  FastCom();
  // Calls Close.
  ~FastCom();
  FastCom(const FastCom&) = delete;
  FastCom& operator=(const FastCom&) = delete;

  void SetLogging(bool on) { logging_on_ = on; }
  bool LoggingOn() const { return logging_on_; }

  // Opens by number ("COM12", "com3"; on Linux also a device path, used as
  // is). The read time-out constant is raised to 2 when below.
  bool Open(const char* port, int32_t read_timeout);
  // Opens by name with the short fixed time-outs; no log line on failure.
  bool OpenNamed(const char* name);
  // True when a device was closed, or while capturing or held open.
  bool Close();

  // Writes a record (whole, or byte by byte in byte mode); logged.
  bool Send(const iBuffer& record);
  // Whole-record write retried for up to 20 ms; logged.
  bool SendRetry(const iBuffer& record);
  // Clears reply, then reads until the terminator (null or empty: none) or
  // until timeout_ms of silence, but never longer than ReadLimitMs(timeout_ms).
  // True also when the time ran out.
  bool ReadUntil(iBuffer& reply, int32_t timeout_ms, const char* terminator);
  // The last ReadUntil was cut at its limit: bytes never stopped coming.
  bool ReadCut() const { return read_cut_; }
  // Appends up to count bytes already waiting (count < 1: the free space - 1).
  bool ReadCount(iBuffer& reply, int32_t count);
  // One read of what is waiting, at most max bytes.
  bool ReadAvailable(uint8_t* dest, uint32_t max, uint32_t& got);
  // One record to the device; chunked by 64 bytes under WINE.
  bool WriteRaw(const uint8_t* bytes, uint32_t n, uint32_t& written);
  // Bytes waiting to be read / not yet transmitted; 0 when closed.
  uint32_t InQueue();
  uint32_t OutQueue();

  bool IsOpen() const { return is_open_; }
  bool UnderWine() const { return under_wine_; }
  // System error code of a failed queue setup at open, else 0.
  uint32_t SetupError() const { return setup_error_; }
  // errno (Linux) or GetLastError() (Windows) of the last failed open, else 0;
  // lets callers explain e.g. EACCES (the dialout group).
  int LastOpenError() const { return last_open_error_; }
  // The device vanished since the last open (unplugged, line hung up): every
  // later read and write fails at once instead of running out its time.
  bool DeviceGone() const { return device_gone_; }
  uint32_t BytesRead() const { return bytes_read_; }
  uint32_t BytesWritten() const { return bytes_written_; }
  // Base name of this port's log file.
  std::string LogBaseName() const { return LogBaseNameOf(port_name); }

  // Set by the owner before opening or sending.
  int32_t baud_rate = 115200;
  int32_t read_timeout_constant = 1;  // ms; becomes the read total constant at open
  bool byte_mode = false;             // Send writes one byte at a time
  bool honour_xon_xoff = false;       // in byte mode, XOFF pauses and XON resumes
  bool match_anywhere = false;        // ReadUntil accepts the terminator anywhere
  iBuffer* capture_buffer = nullptr;  // not owned; set: sends append here
  bool hold_open = false;             // while set, Close does nothing
  std::string port_name;              // the device name actually opened

 private:
  bool HasDevice() const { return device_ != nullptr; }
  bool OpenDevice(const LineSettings& line, const SerialTimeouts& timeouts, bool full_setup);
  bool WriteWhole(const uint8_t* bytes, uint32_t n, uint32_t& written);
  bool WriteChunked(const uint8_t* bytes, uint32_t n, uint32_t& written);
  bool SendWhole(const iBuffer& record);
  bool SendBytes(const iBuffer& record);
  void WatchFlowControl(bool& sending, int32_t& stamp);
  bool ReadSome(iBuffer& reply);
  bool TerminatorReached(const iBuffer& reply, const char* terminator) const;
  void RefreshQueues();
  bool NoteGone();
  void Log(const std::string& text) const;
  void LogMsg(const char* polish_utf8, const char* english) const;
  void LogRecord(const std::string& prefix, const iBuffer& record) const;

  std::unique_ptr<SerialDevice> device_;
  uint32_t in_queue_ = 0;
  uint32_t out_queue_ = 0;
  bool under_wine_ = false;
  uint32_t setup_error_ = 0;
  int last_open_error_ = 0;
  bool logging_on_ = false;
  bool is_open_ = false;
  bool read_cut_ = false;
  bool device_gone_ = false;
  uint32_t bytes_read_ = 0;
  uint32_t bytes_written_ = 0;
};

// The longest a ReadUntil with this time-out lasts: the answer has the
// time-out to begin and the time-out again, at least 2 s, to end.
int32_t ReadLimitMs(int32_t timeout_ms);

// The port number in a name: digits after "COM" (any case) or after a
// leading \ . or /; 0 for anything else.
int PortNumberOf(const char* text);
// base without its trailing digits, followed by number, in one static buffer
// that the next call overwrites.
const char* MakePortName(const char* base, int number);

}  // namespace tavena

// The device beneath FastCom: one open serial port with the few operations
// the channel needs. The host backend (Win32 or termios) implements it; tests
// and the simulator install their own through SetSerialOpener.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace tavena {

// Line settings the channel programs; the rest is fixed at 8N1, binary, no
// hardware or driver flow control, DTR and RTS off.
struct LineSettings {
  int32_t baud_rate = 115200;
  bool abort_on_error = false;       // stop reads and writes after a line error
  bool tx_continue_on_xoff = false;  // keep sending after the driver sent XOFF
};

// Time-outs in milliseconds, with the meaning of the Win32 COMMTIMEOUTS.
struct SerialTimeouts {
  uint32_t read_interval = 3;       // longest gap between two bytes of one read
  uint32_t read_multiplier = 1;     // per byte asked, added to the read total
  uint32_t read_constant = 2;       // fixed part of the read total
  uint32_t write_multiplier = 1;    // per byte written, added to the write total
  uint32_t write_constant = 20000;  // fixed part of the write total
};

// Purge flags, as PurgeComm takes them.
inline constexpr uint32_t kPurgeTxAbort = 1;
inline constexpr uint32_t kPurgeRxAbort = 2;
inline constexpr uint32_t kPurgeTxClear = 4;
inline constexpr uint32_t kPurgeRxClear = 8;
// Purge everything in both directions (abort and clear reads and writes).
inline constexpr uint32_t kPurgeAll = 15;
// The escape code sent on open and close.
inline constexpr uint32_t kEscapeOnOpen = 15;

class SerialDevice {
 public:
  virtual ~SerialDevice() = default;
  // Driver queue sizes; returns 0 or the system error code.
  virtual uint32_t SetupQueues(uint32_t in_size, uint32_t out_size) {
    (void)in_size, (void)out_size;
    return 0;
  }
  // Escape function (line signal control) with the given code.
  virtual bool Escape(uint32_t code) {
    (void)code;
    return true;
  }
  // Drops what waits in the queues selected by flags (kPurgeAll: both). A
  // write has finished only once its bytes have left, so the transmit flags
  // never discard bytes that were written.
  virtual bool Purge(uint32_t flags) = 0;
  // Clears the line's error state and reports the queue counts.
  virtual bool ClearErrors(uint32_t& in_queue, uint32_t& out_queue) = 0;
  // Programs the line and the time-outs (also arms the transmit-empty event).
  virtual bool Configure(const LineSettings& line, const SerialTimeouts& timeouts) {
    (void)line, (void)timeouts;
    return true;
  }
  // Reads up to max bytes, waiting no longer than the read time-outs allow.
  virtual bool Read(uint8_t* dest, uint32_t max, uint32_t& got) = 0;
  // Writes n bytes and returns once they have left (the meaning of a
  // blocking WriteFile), failing when the write time-out passes; written =
  // bytes that went out.
  virtual bool Write(const uint8_t* bytes, uint32_t n, uint32_t& written) = 0;
  // Waits until the transmit queue is empty (bounded by the write time-out).
  virtual bool WaitTransmitEmpty() { return true; }
  // Releases the device; further calls fail.
  virtual void Close() {}
  // True once the device has gone from under the open handle (unplugged, or
  // the other end of a pseudo-terminal closed); nothing on it can succeed.
  virtual bool Gone() const { return false; }
};

// Makes a device for a port name; on failure returns null and sets error
// (errno on Linux, GetLastError() on Windows).
using SerialOpener =
    std::function<std::unique_ptr<SerialDevice>(const std::string& port_name, int& error)>;

// Installs a process-wide opener; an empty function restores the host backend.
void SetSerialOpener(SerialOpener opener);
// Opens through the installed opener, or the host backend when none is set.
std::unique_ptr<SerialDevice> OpenSerialDevice(const std::string& port_name, int& error);
// The host backend alone (termios on Linux, Win32 on Windows).
std::unique_ptr<SerialDevice> OpenHostSerialDevice(const std::string& port_name, int& error);

// Whether the process runs under WINE (always false in the Linux build).
bool RunningUnderWine();
// Forces the answer of RunningUnderWine (tests); nullopt restores detection.
void SetWineOverride(std::optional<bool> under_wine);
// The host backend's own detection, without the override.
bool DetectWineHost();

// True where port names may be device paths (Linux): such a name is opened
// as given and comN stands for /dev/ttyS(N-1).
bool HostUsesDevicePaths();
// The device a port name opens on this host: on Linux comN and \\.\comN give
// /dev/ttyS(N-1), a path is used as is, anything else gives ""; on Windows
// the name itself.
std::string HostDevicePath(const std::string& port_name);
// Base name of a port's log file: the port name on Windows, the last part of
// the device path on Linux (com3 -> ttyS2, /dev/ttyUSB0 -> ttyUSB0).
std::string LogBaseNameOf(const std::string& port_name);

}  // namespace tavena

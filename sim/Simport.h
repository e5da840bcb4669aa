// The simulated printer behind a serial port name, in the same process:
// FastCom opens it like any port, and the bytes go to and from a SimPrinter
// on the current clock (CurrentClock(), virtual in tests).
#pragma once

#include <memory>
#include <string>

#include "Simprinter.h"
#include "transport/Serialdevice.h"

namespace tavena {

struct SimPortEntry;

// A serial device whose other end is a SimPrinter.
class SimSerialDevice : public SerialDevice {
 public:
  explicit SimSerialDevice(std::shared_ptr<SimPortEntry> entry);
  ~SimSerialDevice() override;
  bool Purge(uint32_t flags) override;
  bool ClearErrors(uint32_t& in_queue, uint32_t& out_queue) override;
  bool Configure(const LineSettings& line, const SerialTimeouts& timeouts) override;
  bool Read(uint8_t* dest, uint32_t max, uint32_t& got) override;
  bool Write(const uint8_t* bytes, uint32_t n, uint32_t& written) override;
  bool WaitTransmitEmpty() override;
  void Close() override;
  // The printer's line closed while the port was open, or its SimPort ended.
  bool Gone() const override;

 private:
  SimPrinter* Printer() const;
  std::shared_ptr<SimPortEntry> entry_;
  SerialTimeouts timeouts_;
  bool closed_ = false;
};

// Registers a printer under a port name for the life of the object. Use a
// "comN" name (N from 1): FastCom's open by number reaches it on every host. While
// any SimPort exists, FastCom's opener serves the registered names (letter
// case and a leading \\.\ ignored) and refuses every other name (ENOENT), so
// a test never reaches a real port. A port opens once at a time (EBUSY),
// and not at all while the printer's line is closed (EIO).
class SimPort {
 public:
  SimPort(std::string name, SimPrinter& printer);
  ~SimPort();
  SimPort(const SimPort&) = delete;
  SimPort& operator=(const SimPort&) = delete;

  const std::string& Name() const { return name_; }
  bool IsOpen() const;
  int OpenCount() const;  // successful opens so far
  int LastBaud() const;   // speed the client last configured (0: never)

 private:
  std::string name_;
  std::shared_ptr<SimPortEntry> entry_;
};

}  // namespace tavena

// What the main window needs of the printer side: the printer search and
// identity read, the choice of port and speed, port discovery and the host
// checks. The program uses the core's printer object; tests may supply
// their own.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "protocol/Drukarka.h"
#include "protocol/Formsink.h"

namespace tavena {

// One entry of the port list: a description and the name the channel opens
// (com3 on Windows, a device path on Linux), both 8-bit Windows-1250.
struct PortEntry {
  std::string description;
  std::string name;
};

class PrinterLink {
 public:
  virtual ~PrinterLink() = default;
  // The printer object every operation talks through.
  virtual Drukarka& Printer() = 0;
  // Shows the printer object's last answer in the attached form.
  virtual void ShowAnswer() = 0;
  // Looks for a printer starting from port and baud, which it may change.
  // 1 = found, 2 = an electronic-journal copy device instead, other = none.
  virtual int FindPrinter(std::string& port, int32_t& baud) = 0;
  // Reads the printer's identity and state into the form's fields.
  virtual void FillStatusFields(FormFields& form, const std::string& port, int32_t baud) = 0;
  // The port and speed every later operation talks on. The port itself is
  // left closed: each operation opens and closes it, so that the tool or
  // another program can use the printer in between.
  virtual void SelectPort(const std::string& port, int32_t baud) = 0;
  // Where the printer object writes its exchange lines and its last answer
  // (the form's "Answer" field); either may be null.
  virtual void Attach(MonitorSink* monitor, FormFields* answer_form) = 0;
  // The communication log switch.
  virtual void SetLogging(bool on) = 0;
  // True when the program runs under the WINE emulator.
  virtual bool UnderWine() = 0;
  // Rebuilds the USB device list and answers the serial ports found.
  virtual std::vector<PortEntry> ListPorts() = 0;
  // Does the USB device list hold an entry for this port?
  virtual bool IsUsbPort(const std::string& port) = 0;
  // Why the last open of the channel failed, for the user (empty when it
  // did not fail or there is nothing to explain).
  virtual std::string OpenFailureAdvice() = 0;
};

}  // namespace tavena

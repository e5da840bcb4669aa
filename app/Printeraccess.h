// How the windows reach the one printer object of the main window: each
// operation opens the channel, makes its exchange and closes it again, with
// the main window marked busy meanwhile (no port change, no port search).
#pragma once

#include "protocol/Drukarka.h"

namespace tavena {

class PrinterAccess {
 public:
  virtual ~PrinterAccess() = default;
  // The printer object, set to the chosen port and speed; closed between
  // operations.
  virtual Drukarka& Printer() = 0;
  // True while an exchange or the printer search runs.
  virtual bool PrinterBusy() const = 0;
  virtual void SetPrinterBusy(bool busy) = 0;
  // After an exchange: the main window shows the last answer.
  virtual void ExchangeDone() = 0;
};

// Open on construction, Close on destruction; the main window is busy in
// between. Check IsOpen() before talking.
class PrinterSession {
 public:
  explicit PrinterSession(PrinterAccess& access)
      : access_(access), was_busy_(access.PrinterBusy()) {
    access_.SetPrinterBusy(true);
    open_ = access_.Printer().Open();
  }
  ~PrinterSession() {
    access_.Printer().Close();
    access_.SetPrinterBusy(was_busy_);
    access_.ExchangeDone();
  }
  PrinterSession(const PrinterSession&) = delete;
  PrinterSession& operator=(const PrinterSession&) = delete;

  bool IsOpen() const { return open_; }
  Drukarka& operator*() const { return access_.Printer(); }
  Drukarka* operator->() const { return &access_.Printer(); }

 private:
  PrinterAccess& access_;
  bool was_busy_;
  bool open_ = false;
};

}  // namespace tavena

// The two small interfaces through which the printer object reaches a user
// interface: a form whose fields are found by control name, and the exchange
// monitor. The GUI, the command-line tool and the tests each supply their own.
#pragma once

#include <string>

namespace tavena {

class FormFields {
 public:
  virtual ~FormFields() = default;
  // Does the form have a control of this name (e.g. "EVatA")?
  virtual bool HasControl(const std::string& name) const = 0;
  // Sets the control's text; text is 8-bit Windows-1250.
  virtual void SetText(const std::string& name, const std::string& text) = 0;
};

class MonitorSink {
 public:
  virtual ~MonitorSink() = default;
  // Appends one line (8-bit Windows-1250, no line end).
  virtual void AppendLine(const std::string& line) = 0;
};

}  // namespace tavena

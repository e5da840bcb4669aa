// The printer object's view of a window: controls found by object name.
#pragma once

#include <QString>

#include "protocol/Formsink.h"

class QWidget;

namespace tavena {

class WidgetFields : public FormFields {
 public:
  explicit WidgetFields(QWidget* form) : form_(form) {}

  bool HasControl(const std::string& name) const override;
  // Line edits, labels, buttons, combo boxes and plain text views.
  void SetText(const std::string& name, const std::string& text) override;
  // The control's text (8-bit), empty when there is no such control.
  std::string Text(const std::string& name) const;

 private:
  QWidget* Find(const std::string& name) const;

  QWidget* form_;
};

// Text of a control of form as a Qt string; empty when missing.
QString ControlText(const QWidget* form, const QString& name);
void SetControlText(QWidget* form, const QString& name, const QString& text);

}  // namespace tavena

#include "Formfields.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QWidget>

#include "app/Texts.h"
#include "windows/Baseform.h"

namespace tavena {

QString ControlText(const QWidget* form, const QString& name) {
  QWidget* control = FindControl(form, name);
  if (auto* edit = qobject_cast<QLineEdit*>(control)) return edit->text();
  if (auto* label = qobject_cast<QLabel*>(control)) return label->text();
  if (auto* button = qobject_cast<QAbstractButton*>(control)) return button->text();
  if (auto* combo = qobject_cast<QComboBox*>(control)) return combo->currentText();
  if (auto* view = qobject_cast<QPlainTextEdit*>(control)) return view->toPlainText();
  return {};
}

void SetControlText(QWidget* form, const QString& name, const QString& text) {
  QWidget* control = FindControl(form, name);
  if (auto* edit = qobject_cast<QLineEdit*>(control)) {
    edit->setText(text);
    edit->setCursorPosition(0);
  } else if (auto* label = qobject_cast<QLabel*>(control)) {
    label->setText(text);
  } else if (auto* button = qobject_cast<QAbstractButton*>(control)) {
    button->setText(text);
  } else if (auto* combo = qobject_cast<QComboBox*>(control)) {
    combo->setCurrentText(text);
  } else if (auto* view = qobject_cast<QPlainTextEdit*>(control)) {
    view->setPlainText(text);
  }
}

QWidget* WidgetFields::Find(const std::string& name) const {
  return FindControl(form_, QString::fromStdString(name));
}

bool WidgetFields::HasControl(const std::string& name) const {
  return Find(name) != nullptr;
}

void WidgetFields::SetText(const std::string& name, const std::string& text) {
  SetControlText(form_, QString::fromStdString(name), FromCp1250(text));
}

std::string WidgetFields::Text(const std::string& name) const {
  return ToCp1250(ControlText(form_, QString::fromStdString(name)));
}

}  // namespace tavena

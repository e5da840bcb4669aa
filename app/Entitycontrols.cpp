#include "Entitycontrols.h"

#include <QAbstractButton>
#include <QDir>
#include <QFile>
#include <algorithm>

#include "app/Formfields.h"
#include "app/Texts.h"
#include "windows/Baseform.h"

namespace tavena {

QWidget* WidgetEntityControls::Find(const std::string& name) const {
  return FindControl(form_, QString::fromStdString(name));
}

bool WidgetEntityControls::Has(const std::string& name) const {
  return Find(name) != nullptr;
}

std::string WidgetEntityControls::Text(const std::string& name) const {
  return ToCp1250(ControlText(form_, QString::fromStdString(name)));
}

void WidgetEntityControls::SetText(const std::string& name, const std::string& text) {
  SetControlText(form_, QString::fromStdString(name), FromCp1250(text));
}

bool WidgetEntityControls::Checked(const std::string& name) const {
  const auto* box = qobject_cast<QAbstractButton*>(Find(name));
  return box && box->isChecked();
}

void WidgetEntityControls::SetChecked(const std::string& name, bool checked) {
  if (auto* box = qobject_cast<QAbstractButton*>(Find(name))) box->setChecked(checked);
}

QString WithPodExtension(const QString& name) {
  return name.toUpper().contains(QStringLiteral(".POD")) ? name : name + QStringLiteral(".pod");
}

namespace {

qsizetype NameStart(const QString& name) {
  const QString native = QDir::toNativeSeparators(name);
  return std::max(native.lastIndexOf(QLatin1Char('/')), native.lastIndexOf(QDir::separator())) + 1;
}

}  // namespace

std::string FolderPart(const QString& name) {
  return ToCp1250(QDir::toNativeSeparators(name.left(NameStart(name))));
}

std::string NamePart(const QString& name) {
  return ToCp1250(name.mid(NameStart(name)));
}

std::string LocalFileName(const QString& name) {
  return QFile::encodeName(name).toStdString();
}

}  // namespace tavena

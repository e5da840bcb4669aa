// The entity controls of a window (app/Entity.h) as Qt widgets found by name
// on the window's own tree, and the file names the entity menus use.
#pragma once

#include <QString>
#include <string>

#include "app/Entity.h"

class QWidget;

namespace tavena {

class WidgetEntityControls : public EntityControls {
 public:
  explicit WidgetEntityControls(QWidget* form) : form_(form) {}

  bool Has(const std::string& name) const override;
  std::string Text(const std::string& name) const override;
  void SetText(const std::string& name, const std::string& text) override;
  bool Checked(const std::string& name) const override;
  void SetChecked(const std::string& name, bool checked) override;

 private:
  QWidget* Find(const std::string& name) const;

  QWidget* form_;
};

// name with ".pod" appended when its upper-case form lacks ".POD".
QString WithPodExtension(const QString& name);
// The folder part (ending with the separator) and the name part of a file
// name, as 8-bit settings texts.
std::string FolderPart(const QString& name);
std::string NamePart(const QString& name);
// A file name in the system's 8-bit file name encoding.
std::string LocalFileName(const QString& name);

}  // namespace tavena

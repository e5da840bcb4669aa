// "Lista podmiotów": the taxpayer entity files (".pod") of the folder PodPath.
// A double-click loads one into the window that owns the list (the main
// window); a file can be deleted after a question.
#pragma once

#include <QString>
#include <memory>
#include <optional>

#include "windows/Baseform.h"

namespace Ui {
class TPodmiotyForm;
}

namespace tavena {

class TPodmiotyForm : public TBaseForm {
  Q_OBJECT

 public:
  // The entity is loaded into parent's controls.
  explicit TPodmiotyForm(QWidget* parent = nullptr);
  ~TPodmiotyForm() override;

 public slots:
  void RefreshClick();
  void Wczytaj1Click();
  void ListDblClick();
  void ClearClick();
  void Zamknij1Click();

 protected:
  void FormShow() override;

 private:
  void ListFolder();
  std::optional<QString> AskForFolder();
  std::optional<QString> SelectedName() const;
  QString FullName(const QString& name) const;

  std::unique_ptr<Ui::TPodmiotyForm> ui;
};

}  // namespace tavena

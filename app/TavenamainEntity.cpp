// The main window's taxpayer entity: open, save and clear from the "Plik"
// menu, save by a click on the file name (Label15).
#include <QDir>
#include <QLabel>

#include "app/Dialogs.h"
#include "app/Entitycontrols.h"
#include "app/Tavenamain.h"
#include "app/Texts.h"
#include "sequence/Messagelanguage.h"
#include "ui_Tavenamain.h"

namespace tavena {

namespace {

const char* const kEntityFilter = "Pliki konfiguracyjne(*.pod)|*.pod|Wszystkie pliki(*.*)|*.*";

FileDialogRequest EntityRequest(const char* title) {
  return {FromUtf8(kEntityFilter), FromUtf8(title), FromCp1250(Settings().pod_path), {}};
}

}  // namespace

void TTavenaForm::ConnectEntityHandlers() {
  connect(ui->Otwrzpodmiot1, &QAction::triggered, this, &TTavenaForm::Otwrzpodmiot1Click);
  connect(ui->Zapiszpodmiot1, &QAction::triggered, this, &TTavenaForm::Zapiszpodmiot1Click);
  connect(ui->ClearPod, &QAction::triggered, this, &TTavenaForm::ClearPodClick);
  OnLabelClick(ui->Label15, [this] { Label15Click(); });
}

void TTavenaForm::Otwrzpodmiot1Click() {
  const std::optional<QString> name =
      Dialogs().OpenFile(this, EntityRequest("Odczyt ustawień uzytkownika."));
  if (!name) return;
  ui->Label15->setText(QDir::toNativeSeparators(*name));
  OpenEntity();
}

void TTavenaForm::Zapiszpodmiot1Click() {
  const std::optional<QString> name =
      Dialogs().SaveFile(this, EntityRequest("Zapis ustawień uzytkownika."));
  if (!name) return;
  last_saved_entity_ = WithPodExtension(QDir::toNativeSeparators(*name));
  ui->Label15->setText(last_saved_entity_);
  SaveEntity();
}

void TTavenaForm::Label15Click() {
  if (Dialogs().Message(this, FromUtf8("Zapisać do pliku\n") + ui->Label15->text(), Caption(),
                        MessageButtons::kOkCancel))
    SaveEntity();
}

void TTavenaForm::ClearPodClick() {
  Settings().pod_file.clear();
  WidgetEntityControls controls(this);
  ResetEntity(controls);
}

void TTavenaForm::OpenEntity() {
  const QString name = ui->Label15->text();
  if (name.size() <= 3) return;
  Settings().pod_path = FolderPart(name);
  Settings().pod_file = NamePart(name);
  WidgetEntityControls controls(this);
  ReadEntity(LocalFileName(name), controls);
}

// The settings take the name last chosen in the save dialog, not the label's:
// saving through the label alone leaves them empty.
void TTavenaForm::SaveEntity() {
  const QString name = WithPodExtension(ui->Label15->text());
  Settings().pod_path = FolderPart(last_saved_entity_);
  Settings().pod_file = NamePart(last_saved_entity_);
  WidgetEntityControls controls(this);
  if (!WriteEntity(LocalFileName(name), controls))
    ShowMessage(this,
                FromUtf8(MsgUtf8("Nie można zapisać pliku: ", "Cannot write the file: ")) + name,
                Caption());
}

}  // namespace tavena

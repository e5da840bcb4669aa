#include "Podmioty.h"

#include <QFile>

#include "app/Dialogs.h"
#include "app/Entitycontrols.h"
#include "app/Fonts.h"
#include "app/Texts.h"
#include "ui_Podmioty.h"
#include "windows/Filelist.h"

namespace tavena {

TPodmiotyForm::TPodmiotyForm(QWidget* parent) : TBaseForm(parent), ui(new Ui::TPodmiotyForm) {
  ui->setupUi(this);
  KeepPlaceIn(&Settings().pod);
  connect(ui->Zamknij1, &QAction::triggered, this, &TPodmiotyForm::Zamknij1Click);
  connect(ui->Wczytaj1, &QAction::triggered, this, &TPodmiotyForm::Wczytaj1Click);
  connect(ui->Refresh, &QAction::triggered, this, &TPodmiotyForm::RefreshClick);
  connect(ui->Clear, &QAction::triggered, this, &TPodmiotyForm::ClearClick);
  connect(ui->List, &QListWidget::itemDoubleClicked, this, &TPodmiotyForm::ListDblClick);
}

TPodmiotyForm::~TPodmiotyForm() = default;

// The folder's files are listed at once when the folder is known.
void TPodmiotyForm::FormShow() {
  ApplyFont(ui->List, Fonts().wind);
  if (!Settings().pod_path.empty()) ListFolder();
}

// The folder is that of a file chosen in an open dialog.
std::optional<QString> TPodmiotyForm::AskForFolder() {
  const FileDialogRequest request{
      FromUtf8("Pliki konfiguracyjne(*.pod)|*.pod|Wszystkie pliki(*.*)|*.*"),
      FromUtf8("Odczyt katalogu z użytkownikami."),
      FromCp1250(Settings().pod_path),
      {}};
  const std::optional<QString> file = Dialogs().OpenFile(this, request);
  if (!file) return std::nullopt;
  return FromCp1250(FolderPart(*file));
}

void TPodmiotyForm::ListFolder() {
  ui->List->clear();
  ui->List->addItems(ArchiveFiles(FromCp1250(Settings().pod_path), QStringLiteral("pod")));
}

void TPodmiotyForm::RefreshClick() {
  if (Settings().pod_path.empty()) {
    const std::optional<QString> folder = AskForFolder();
    if (!folder) return;
    Settings().pod_path = ToCp1250(*folder);
  }
  ListFolder();
}

void TPodmiotyForm::Wczytaj1Click() {
  const std::optional<QString> folder = AskForFolder();
  if (!folder) return;
  Settings().pod_path = ToCp1250(*folder);
  ListFolder();
}

std::optional<QString> TPodmiotyForm::SelectedName() const {
  const QListWidgetItem* item = ui->List->currentItem();
  if (!item || !item->isSelected()) return std::nullopt;
  return item->text();
}

QString TPodmiotyForm::FullName(const QString& name) const {
  return FromCp1250(Settings().pod_path) + name;
}

// Label15 keeps its text: the main window's save goes where it went before.
void TPodmiotyForm::ListDblClick() {
  const std::optional<QString> name = SelectedName();
  if (!name || !parentWidget()) return;
  Settings().pod_file = ToCp1250(*name);
  WidgetEntityControls controls(parentWidget());
  ReadEntity(LocalFileName(FullName(*name)), controls);
}

void TPodmiotyForm::ClearClick() {
  const std::optional<QString> name = SelectedName();
  if (!name) return;
  const QString file = FullName(*name);
  if (!Dialogs().Message(
          this, FromUtf8("Chcesz skasować plik o nazwie:\n") + file + FromUtf8("\nKontynuować?"),
          windowTitle(), MessageButtons::kOkCancel))
    return;
  QFile::remove(file);
  RefreshClick();
}

void TPodmiotyForm::Zamknij1Click() {
  close();
}

}  // namespace tavena

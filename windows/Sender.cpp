#include "Sender.h"

#include <QFile>

#include "app/Dialogs.h"
#include "app/Fonts.h"
#include "app/Texts.h"
#include "ui_Sender.h"
#include "windows/Filelist.h"
#include "windows/Filenames.h"
#include "windows/Printersend.h"

namespace tavena {

TSenderForm::TSenderForm(QWidget* parent) : TBaseForm(parent), ui(new Ui::TSenderForm) {
  ui->setupUi(this);
  KeepPlaceIn(&Settings().sender);
  send_ = new PrinterSend(*this);
  connect(ui->Koniec1, &QAction::triggered, this, &TSenderForm::Koniec1Click);
  connect(ui->Wczytaj1, &QAction::triggered, this, &TSenderForm::Wczytaj1Click);
  connect(ui->Refresh, &QAction::triggered, this, &TSenderForm::RefreshClick);
  connect(ui->Kasuj1, &QAction::triggered, this, &TSenderForm::Kasuj1Click);
  connect(ui->List, &QListWidget::itemDoubleClicked, this, &TSenderForm::ListDblClick);
}

TSenderForm::~TSenderForm() = default;

void TSenderForm::FormShow() {
  RefreshClick();
  ApplyFont(ui->List, Fonts().wind);
  busy_ = false;
}

void TSenderForm::Koniec1Click() {
  close();
}

void TSenderForm::Wczytaj1Click() {
  if (ChooseFolder(SenderFile().Folder())) RefreshClick();
}

// The last file chosen or sent is selected again.
void TSenderForm::RefreshClick() {
  ui->List->clear();
  if (Settings().sender_path.empty() && !ChooseFolder(QString())) return;
  ui->List->addItems(ArchiveFiles(SenderFile().Folder(), QStringLiteral("bin")));
  const QList<QListWidgetItem*> last = ui->List->findItems(SenderFile().Name(), Qt::MatchExactly);
  if (!last.isEmpty()) ui->List->setCurrentItem(last.front());
}

void TSenderForm::ListDblClick() {
  const std::optional<QString> name = Selected();
  if (busy_ || !name) return;
  busy_ = true;
  SendFile(*name);
  busy_ = false;
}

void TSenderForm::Kasuj1Click() {
  const std::optional<QString> name = Selected();
  if (!name) return;
  if (!Dialogs().Message(
          nullptr, FromUtf8("Chcesz skasować plik o nazwie:\n") + *name + FromUtf8("Kontynuować?"),
          windowTitle(), MessageButtons::kOkCancel))
    return;
  QFile::remove(SenderFile().Folder() + *name);
  RefreshClick();
}

bool TSenderForm::ChooseFolder(const QString& initial_folder) {
  const std::optional<QString> path =
      Dialogs().OpenFile(this, {FromUtf8("Pliki wykonywalne(*.bin)|*.bin|Wszystkie pliki(*.*)|*.*"),
                                QString(), initial_folder, QString()});
  if (!path) return false;
  SenderFile().Remember(*path);
  return true;
}

std::optional<QString> TSenderForm::Selected() const {
  const QList<QListWidgetItem*> selected = ui->List->selectedItems();
  if (selected.isEmpty()) return std::nullopt;
  return selected.front()->text();
}

// After the send the printer's answer is read into the same buffer and
// dropped.
void TSenderForm::SendFile(const QString& name) {
  if (name.isEmpty()) {
    Tell("Wybrany wiersz jest pusty.");
    return;
  }
  iBuffer file;
  if (!file.LoadFromFile(NativeName(SenderFile().Folder() + name))) {
    Tell("Podany plik jest pusty lub brak pliku.");
    return;
  }
  Settings().sender_file = ToCp1250(name);
  const auto read_reply = [&file](Drukarka& printer) { ReadReply(printer, file, 0); };
  if (send_->Send({file}, read_reply) == SendOutcome::kFailed)
    Tell("Nie udało sie wysłać sekwencji.");
}

// Plain boxes without an owner window, titled with the window's caption.
void TSenderForm::Tell(const char* text_utf8) {
  Dialogs().Message(nullptr, FromUtf8(text_utf8), windowTitle(), MessageButtons::kOk);
}

}  // namespace tavena

#include "Edytorseq.h"

#include <QTextBlock>

#include "app/Dialogs.h"
#include "app/Fonts.h"
#include "app/Texts.h"
#include "ui_Edytorseq.h"
#include "windows/Compilelist.h"
#include "windows/Filenames.h"
#include "windows/Printersend.h"
#include "windows/Seqhighlighter.h"
#include "windows/Textlines.h"

namespace tavena {

namespace {

const char* const kTextFilter = "Sekwencje(*.txt)|*.txt|Wszystkie pliki(*.*)|*.*";
const char* const kBinaryFilter = "Postać binarna(*.bin)|*.bin|Wszystkie pliki(*.*)|*.*";
const char* const kCompileFailed = "Kompilacja nie powiodła się.\rSprawdź składnię";
constexpr int kReplyLimit = 200;

}  // namespace

TEdytorSeqForm::TEdytorSeqForm(QWidget* parent) : TBaseForm(parent), ui(new Ui::TEdytorSeqForm) {
  ui->setupUi(this);
  KeepPlaceIn(&Settings().edit_seq);
  send_ = new PrinterSend(*this);
  new SequenceHighlighter(ui->EEkran->document());
  ConnectActions<TEdytorSeqForm>(
      this, {{ui->Odczytsekwencji1, &TEdytorSeqForm::Odczytsekwencji1Click},
             {ui->Zapiszsekwencj1, &TEdytorSeqForm::Zapiszsekwencj1Click},
             {ui->Zapiszbokubinarny1, &TEdytorSeqForm::Zapiszbokubinarny1Click},
             {ui->ZamknijEdytor1, &TEdytorSeqForm::ZamknijEdytor1Click},
             {ui->Kasujokno1, &TEdytorSeqForm::Kasujokno1Click},
             {ui->Transmituj, &TEdytorSeqForm::TransmitujClick},
             {ui->Sprawdzenie, &TEdytorSeqForm::SprawdzenieClick},
             {ui->Opis1, &TEdytorSeqForm::Opis1Click}});
  OnLabelClick(ui->Label1, [this] { Label1Click(); });
}

TEdytorSeqForm::~TEdytorSeqForm() = default;

void TEdytorSeqForm::FormShow() {
  ui->EEkran->clear();
  ApplyEditorFont(*ui->EEkran);
  ApplyFont(ui->Label1, Fonts().wind);
  const RememberedFile file = SequenceFile();
  if (file.name->size() <= 2) return;
  const QString path = file.Path();
  if (path.toUpper().contains(QLatin1String(".TXT")))
    ReadSource(path);
  else
    Tell("Nierozpoznany typ pliku.");
}

void TEdytorSeqForm::FormClose() {
  TCompileListForm* list = CompileList();
  if (list && list->isVisible()) list->close();
}

void TEdytorSeqForm::Odczytsekwencji1Click() {
  const std::optional<QString> path =
      Dialogs().OpenFile(this, {FromUtf8(kTextFilter), FromUtf8("Odczyt pliku do edycji."),
                                SequenceFile().Folder(), QString()});
  if (!path) return;
  ui->EEkran->clear();
  SequenceFile().Remember(*path);
  ReadSource(*path);
}

void TEdytorSeqForm::Zapiszsekwencj1Click() {
  const std::optional<QString> path =
      Dialogs().SaveFile(this, {FromUtf8(kTextFilter), FromUtf8("Zapis pliku w postaci znakowej."),
                                SequenceFile().Folder(), SequenceFile().Name()});
  if (path) SaveSourceAs(WithExtension(*path, QStringLiteral(".TXT")));
}

void TEdytorSeqForm::Zapiszbokubinarny1Click() {
  const std::optional<QString> path = Dialogs().SaveFile(
      this, {FromUtf8(kBinaryFilter), FromUtf8("Kompilacja i zapis pliku edytowanego."),
             BinaryFile().Folder(), SequenceFile().Name()});
  if (!path) return;
  const QString target = WithExtension(*path, QStringLiteral(".BIN"));
  BinaryFile().Remember(target);
  if (!CompileSilently()) {
    Tell(kCompileFailed);
    return;
  }
  Tell("Kompilacja powiodła się.");
  compiler_.output.SaveToFile(NativeName(target));
}

void TEdytorSeqForm::ZamknijEdytor1Click() {
  close();
}

void TEdytorSeqForm::Kasujokno1Click() {
  ui->EEkran->clear();
}

// The reply that may follow is read and dropped.
void TEdytorSeqForm::TransmitujClick() {
  if (!CompileSilently()) {
    Tell(kCompileFailed);
    return;
  }
  const auto read_reply = [](Drukarka& printer) {
    iBuffer reply;
    ReadReply(printer, reply, kReplyLimit);
  };
  if (send_->Send({compiler_.output}, read_reply) == SendOutcome::kFailed)
    Tell("Nie udało sie wysłać sekwencji.");
}

void TEdytorSeqForm::SprawdzenieClick() {
  TCompileListForm* list = OpenCompileList();
  std::vector<std::string> messages;
  compiler_.Compile(Lines(), &messages);
  if (list) list->AddLines(messages);
}

void TEdytorSeqForm::Opis1Click() {
  TCompileListForm* list = OpenCompileList();
  std::vector<std::string> lines;
  SeqCompileClass::DescribeNotation(lines);
  if (list) list->AddLines(lines);
}

// An empty label names no file: there is nothing to ask.
void TEdytorSeqForm::Label1Click() {
  const QString path = ui->Label1->text();
  if (path.isEmpty()) return;
  if (Dialogs().Message(this, FromUtf8("Zapisać do pliku\n") + path, windowTitle(),
                        MessageButtons::kOkCancel))
    SaveSourceAs(path);
}

// Only brings the editor forward: showing it again would reread its file.
void TEdytorSeqForm::GoToLine(int line) {
  QTextDocument* text = ui->EEkran->document();
  const QTextBlock block = text->findBlockByNumber(std::min(line, text->blockCount() - 1));
  ui->EEkran->setTextCursor(QTextCursor(block));
  ui->EEkran->centerCursor();
  raise();
  activateWindow();
  ui->EEkran->setFocus();
}

TCompileListForm* TEdytorSeqForm::CompileList() const {
  QWidget* owner = parentWidget();
  return owner ? owner->findChild<TCompileListForm*>(QString(), Qt::FindDirectChildrenOnly)
               : nullptr;
}

TCompileListForm* TEdytorSeqForm::OpenCompileList() {
  TCompileListForm* list = CompileList();
  if (!list) return nullptr;
  if (list->isVisible()) list->Clear();
  ShowWindow(list);
  connect(list, &TCompileListForm::LineChosen, this, &TEdytorSeqForm::GoToLine,
          Qt::UniqueConnection);
  return list;
}

void TEdytorSeqForm::ReadSource(const QString& path) {
  compiler_.source_file_name = NativeName(path);
  std::vector<std::string> lines;
  compiler_.LoadSource(lines);
  SetTextLines(*ui->EEkran, lines);
  ui->Label1->setText(path);
}

void TEdytorSeqForm::SaveSourceAs(const QString& path) {
  SequenceFile().Remember(path);
  compiler_.source_file_name = NativeName(path);
  ui->Label1->setText(path);
  compiler_.SaveSource(Lines());
}

std::vector<std::string> TEdytorSeqForm::Lines() const {
  return TextLines(*ui->EEkran);
}

bool TEdytorSeqForm::CompileSilently() {
  return compiler_.Compile(Lines(), nullptr);
}

void TEdytorSeqForm::Tell(const char* text_utf8) {
  ShowMessage(this, FromUtf8(text_utf8), windowTitle());
}

}  // namespace tavena

#include "Edytor.h"

#include <QFileInfo>

#include "app/Dialogs.h"
#include "app/Fonts.h"
#include "app/Texts.h"
#include "protocol/Framefile.h"
#include "ui_Edytor.h"
#include "windows/Filenames.h"
#include "windows/Printersend.h"
#include "windows/Textlines.h"

namespace tavena {

struct TEdytorForm::FileKind {
  const char* open_filter;
  const char* open_title;
  const char* save_filter;
  const char* save_title;
  const char* extension;
  std::vector<std::string> (*read)(std::string_view file);
  std::string (*write)(const std::vector<std::string>& lines);
};

namespace {

const TEdytorForm::FileKind kText{"Sekwencje(*.sek)|*.sek|Wszystkie pliki(*.*)|*.*",
                                  "Odczyt pliku do edycji.",
                                  "Sekwencje(*.sek)|*.sek|Wszystkie pliki(*.*)|*.*",
                                  "Zapis pliku w postaci znakowej.",
                                  ".SEK",
                                  ReadSekText,
                                  WriteSekText};
const TEdytorForm::FileKind kFrames{"Sekwencje(*.bin)|*.bin|Wszystkie pliki(*.*)|*.*",
                                    "Odczyt pliku binarnego do edycji.",
                                    "Postać binarna(*.bin)|*.bin|Wszystkie pliki(*.*)|*.*",
                                    "Zapis pliku edytowanego.",
                                    ".BIN",
                                    ReadFrameFile,
                                    WriteFrameFile};

}  // namespace

TEdytorForm::TEdytorForm(QWidget* parent) : TBaseForm(parent), ui(new Ui::TEdytorForm) {
  ui->setupUi(this);
  KeepPlaceIn(&Settings().edit);
  send_ = new PrinterSend(*this);
  ConnectActions<TEdytorForm>(this,
                              {{ui->Odczytsekwencji1, &TEdytorForm::Odczytsekwencji1Click},
                               {ui->Dopiszsekwencj1, &TEdytorForm::Dopiszsekwencj1Click},
                               {ui->Zapiszsekwencj1, &TEdytorForm::Zapiszsekwencj1Click},
                               {ui->Odczytbinarny1, &TEdytorForm::Odczytbinarny1Click},
                               {ui->Dopiszplikbinarny1, &TEdytorForm::Dopiszplikbinarny1Click},
                               {ui->Zapiszbokubinarny1, &TEdytorForm::Zapiszbokubinarny1Click},
                               {ui->ZamknijEdytor1, &TEdytorForm::ZamknijEdytor1Click},
                               {ui->Kasujokno1, &TEdytorForm::Kasujokno1Click},
                               {ui->Transmituj, &TEdytorForm::TransmitujClick}});
}

TEdytorForm::~TEdytorForm() = default;

void TEdytorForm::FormShow() {
  ApplyEditorFont(*ui->EEkran);
  ApplyFont(ui->Label1, Fonts().wind);
  ApplyFont(ui->Label2, Fonts().wind);
  const RememberedFile file = BinaryFile();
  if (file.name->size() <= 2) return;
  const QString path = file.Path();
  const QString upper = path.toUpper();
  if (upper.contains(QLatin1String(".BIN"))) {
    ReadIfPresent(path, kFrames);
  } else if (upper.contains(QLatin1String(".SEK"))) {
    ReadIfPresent(path, kText);
  } else {
    ui->Label2->clear();
    ShowMessage(this, FromUtf8("Nierozpoznany typ pliku."), windowTitle());
  }
}

void TEdytorForm::Odczytsekwencji1Click() {
  OpenFile(kText, false);
}

void TEdytorForm::Dopiszsekwencj1Click() {
  OpenFile(kText, true);
}

void TEdytorForm::Zapiszsekwencj1Click() {
  SaveFile(kText);
}

void TEdytorForm::Odczytbinarny1Click() {
  OpenFile(kFrames, false);
}

void TEdytorForm::Dopiszplikbinarny1Click() {
  OpenFile(kFrames, true);
}

void TEdytorForm::Zapiszbokubinarny1Click() {
  SaveFile(kFrames);
}

void TEdytorForm::ZamknijEdytor1Click() {
  close();
}

void TEdytorForm::Kasujokno1Click() {
  ui->EEkran->clear();
}

// Each line as it stands: no framing, no sum, no Mazovia.
void TEdytorForm::TransmitujClick() {
  std::vector<iBuffer> frames;
  for (const std::string& line : TextLines(*ui->EEkran))
    if (!line.empty()) frames.emplace_back(DecodeReadable(line));
  if (send_->Send(frames) == SendOutcome::kFailed)
    ShowMessage(this, FromUtf8("Nie udało sie wysłać sekwencji."), windowTitle());
}

void TEdytorForm::OpenFile(const FileKind& kind, bool append) {
  const std::optional<QString> path = Dialogs().OpenFile(
      this,
      {FromUtf8(kind.open_filter), FromUtf8(kind.open_title), BinaryFile().Folder(), QString()});
  if (path) ReadFile(*path, kind, append);
}

void TEdytorForm::SaveFile(const FileKind& kind) {
  const std::optional<QString> chosen =
      Dialogs().SaveFile(this, {FromUtf8(kind.save_filter), FromUtf8(kind.save_title),
                                BinaryFile().Folder(), BinaryFile().Name()});
  if (!chosen) return;
  const QString path = WithExtension(*chosen, QString::fromLatin1(kind.extension));
  WriteWholeFile(path, kind.write(TextLines(*ui->EEkran)));
  BinaryFile().Remember(path);
  ui->Label2->setText(path);
}

bool TEdytorForm::ReadFile(const QString& path, const FileKind& kind, bool append) {
  const std::optional<std::string> file = ReadWholeFile(path);
  if (!file) return false;
  const std::vector<std::string> lines = kind.read(*file);
  if (append) {
    AppendTextLines(*ui->EEkran, lines);
    return true;
  }
  SetTextLines(*ui->EEkran, lines);
  BinaryFile().Remember(path);
  ui->Label2->setText(path);
  return true;
}

void TEdytorForm::ReadIfPresent(const QString& path, const FileKind& kind) {
  if (!QFileInfo::exists(path) || !ReadFile(path, kind, false)) ui->Label2->clear();
}

}  // namespace tavena

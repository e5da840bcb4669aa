#include "Listing.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTableView>

#include "app/Dialogs.h"
#include "app/Fonts.h"
#include "app/Texts.h"
#include "sequence/Messagelanguage.h"
#include "ui_Listing.h"
#include "windows/Exchangeview.h"

namespace tavena {

namespace {

constexpr int kPictureWidth = 1240;  // wide enough for every column of the exchange view

}  // namespace

TListingForm::TListingForm(QWidget* parent) : TBaseForm(parent), ui(new Ui::TListingForm) {
  ui->setupUi(this);
  KeepPlaceIn(&Settings().list);
  connect(ui->Koniec1, &QAction::triggered, this, &TListingForm::Koniec1Click);
  connect(ui->Zapisz1, &QAction::triggered, this, &TListingForm::Zapisz1Click);
  connect(ui->Wyczy1, &QAction::triggered, this, &TListingForm::Wyczy1Click);
  exchanges_ = new TExchangeView(ui->TabWymiana);
  ui->layoutWymiana->addWidget(exchanges_);
  connect(ui->ZapiszCsv1, &QAction::triggered, this, &TListingForm::ZapiszCsv1Click);
}

TListingForm::~TListingForm() = default;

void TListingForm::AppendLine(const std::string& line) {
  ui->EEkran->appendPlainText(FromCp1250(line));
}

QStringList TListingForm::Lines() const {
  const QString text = ui->EEkran->toPlainText();
  if (text.isEmpty()) return {};
  return text.split(QLatin1Char('\n'));
}

bool TListingForm::WriteLines(const QString& path, const QStringList& lines) {
  std::string bytes;
  for (const QString& line : lines) bytes += ToCp1250(line) + "\r\n";
  QFile file(path);
  if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) return false;
  const qint64 size = static_cast<qint64>(bytes.size());
  return file.write(bytes.data(), size) == size && file.flush();
}

void TListingForm::CannotWrite(const QString& path) {
  ShowMessage(this,
              FromUtf8(MsgUtf8("Nie można zapisać pliku: ", "Cannot write the file: ")) +
                  QDir::toNativeSeparators(path),
              windowTitle());
}

// The folder of the last save, in the system's own form (C:\x on Windows).
void TListingForm::RememberFolder(const QString& path) {
  Settings().list_path = ToCp1250(QDir::toNativeSeparators(QFileInfo(path).absolutePath()));
}

void TListingForm::Koniec1Click() {
  close();
}

void TListingForm::Zapisz1Click() {
  const FileDialogRequest request{
      FromUtf8("Logi(*.log)|*.log|Pliki tekstowe(*.txt)|*.txt|Wszystkie pliki(*.*)|*.*"),
      FromUtf8("Zapis pliku na dysk."), FromCp1250(Settings().list_path), FromUtf8("Listing.log")};
  const std::optional<QString> path = Dialogs().SaveFile(this, request);
  if (!path) return;
  RememberFolder(*path);
  if (!WriteLines(*path, Lines())) CannotWrite(*path);
}

// Clears the tab that is showing.
void TListingForm::Wyczy1Click() {
  if (ui->Zakladki->currentWidget() == ui->TabWymiana)
    exchanges_->Clear();
  else
    ui->EEkran->clear();
}

void TListingForm::Exchange(const ExchangeRecord& record) {
  exchanges_->Append(record);
}

void TListingForm::SaveExchangesPicture(const QString& path) {
  QWidget* shown = ui->Zakladki->currentWidget();
  const QSize size = this->size();
  resize(std::max(size.width(), kPictureWidth), size.height());
  ui->Zakladki->setCurrentWidget(ui->TabWymiana);
  exchanges_->Table()->scrollToBottom();
  QCoreApplication::processEvents();
  grab().save(path);
  ui->Zakladki->setCurrentWidget(shown);
  resize(size);
}

void TListingForm::ZapiszCsv1Click() {
  const FileDialogRequest request{FromUtf8("Pliki CSV(*.csv)|*.csv|Wszystkie pliki(*.*)|*.*"),
                                  FromUtf8("Zapis pliku na dysk."),
                                  FromCp1250(Settings().list_path), FromUtf8("Wymiana.csv")};
  const std::optional<QString> path = Dialogs().SaveFile(this, request);
  if (!path) return;
  RememberFolder(*path);
  QFile file(*path);
  const QByteArray bytes = exchanges_->Csv();
  if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(bytes) != bytes.size())
    CannotWrite(*path);
}

void TListingForm::FormShow() {
  QFont font = Fonts().wind.font;
  font.setFamily(FromUtf8("Courier New"));
  ui->EEkran->setFont(font);
}

}  // namespace tavena

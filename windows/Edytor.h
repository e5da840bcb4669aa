// "Edycja sekwencji binarnych do drukarki.": each line of the text is the
// body of one command frame in readable form ("[xHH]" for a byte). Reads,
// appends and writes such lines as text (".sek") or as the frames
// themselves (".bin"), and sends the lines to the printer as they stand.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "windows/Baseform.h"

namespace Ui {
class TEdytorForm;
}

namespace tavena {

class PrinterSend;

class TEdytorForm : public TBaseForm {
  Q_OBJECT

 public:
  explicit TEdytorForm(QWidget* parent = nullptr);
  ~TEdytorForm() override;

  PrinterSend& Sending() { return *send_; }

  // The two file kinds: text lines (".sek") and frames (".bin").
  struct FileKind;

 public slots:
  void Odczytsekwencji1Click();
  void Dopiszsekwencj1Click();
  void Zapiszsekwencj1Click();
  void Odczytbinarny1Click();
  void Dopiszplikbinarny1Click();
  void Zapiszbokubinarny1Click();
  void ZamknijEdytor1Click();
  void Kasujokno1Click();
  void TransmitujClick();

 protected:
  void FormShow() override;

 private:
  void OpenFile(const FileKind& kind, bool append);
  void SaveFile(const FileKind& kind);
  // Replaces (or extends) the text with the file's lines; false, with the
  // text left alone, when the file cannot be read.
  bool ReadFile(const QString& path, const FileKind& kind, bool append);
  void ReadIfPresent(const QString& path, const FileKind& kind);

  std::unique_ptr<Ui::TEdytorForm> ui;
  PrinterSend* send_ = nullptr;
};

}  // namespace tavena

// "Edycja sekwencji do drukarki.": writes a sequence text, reads and saves
// it as a text file, checks it, saves its compiled bytes as a ".bin" file
// and sends them straight to the printer. Diagnostics and the notation's
// description go to the compile list window.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "sequence/Seqcompileclass.h"
#include "windows/Baseform.h"

namespace Ui {
class TEdytorSeqForm;
}

namespace tavena {

class PrinterSend;
class TCompileListForm;

class TEdytorSeqForm : public TBaseForm {
  Q_OBJECT

 public:
  explicit TEdytorSeqForm(QWidget* parent = nullptr);
  ~TEdytorSeqForm() override;

  PrinterSend& Sending() { return *send_; }

 public slots:
  void Odczytsekwencji1Click();
  void Zapiszsekwencj1Click();
  void Zapiszbokubinarny1Click();
  void ZamknijEdytor1Click();
  void Kasujokno1Click();
  void TransmitujClick();
  void SprawdzenieClick();
  void Opis1Click();
  void Label1Click();
  // Puts the cursor on a line of the text (0 is the first).
  void GoToLine(int line);

 protected:
  void FormShow() override;
  void FormClose() override;

 private:
  // The compile list beside this window (a child of the same main window).
  TCompileListForm* CompileList() const;
  // Shows the compile list, or clears it when it is showing.
  TCompileListForm* OpenCompileList();
  void ReadSource(const QString& path);
  void SaveSourceAs(const QString& path);
  std::vector<std::string> Lines() const;
  bool CompileSilently();
  void Tell(const char* text_utf8);

  std::unique_ptr<Ui::TEdytorSeqForm> ui;
  SeqCompileClass compiler_;
  PrinterSend* send_ = nullptr;
};

}  // namespace tavena

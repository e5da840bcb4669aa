// "Wysyłanie plików binarnych.": lists the compiled sequence files (".bin")
// of the sending folder, sends the one double-clicked to the printer as it
// stands, and deletes files after asking.
#pragma once

#include <memory>
#include <optional>

#include "windows/Baseform.h"

namespace Ui {
class TSenderForm;
}

namespace tavena {

class PrinterSend;

class TSenderForm : public TBaseForm {
  Q_OBJECT

 public:
  explicit TSenderForm(QWidget* parent = nullptr);
  ~TSenderForm() override;

  PrinterSend& Sending() { return *send_; }

 public slots:
  void Koniec1Click();
  void Wczytaj1Click();
  void RefreshClick();
  void ListDblClick();
  void Kasuj1Click();

 protected:
  void FormShow() override;

 private:
  // The open dialog; on OK the chosen file's folder becomes the sending
  // folder.
  bool ChooseFolder(const QString& initial_folder);
  // The selected line's text, or nothing.
  std::optional<QString> Selected() const;
  void SendFile(const QString& name);
  void Tell(const char* text_utf8);

  std::unique_ptr<Ui::TSenderForm> ui;
  PrinterSend* send_ = nullptr;
  bool busy_ = false;
};

}  // namespace tavena

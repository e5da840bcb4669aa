// "Opis błędów": shows the description of a printer error code as the user
// types it.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "windows/Baseform.h"

namespace Ui {
class TErrorForm;
}

namespace tavena {

class TErrorForm : public TBaseForm {
  Q_OBJECT

 public:
  // Error code -> description (8-bit Windows-1250, lines split by "\n").
  using Lookup = std::function<std::string(int code)>;

  explicit TErrorForm(QWidget* parent = nullptr);
  ~TErrorForm() override;

  void SetLookup(Lookup lookup) { lookup_ = std::move(lookup); }
  QStringList Description() const;

  // Looks up the edit's text with the pressed key's character appended.
  void Edit1KeyPress(const QString& key_text);

 public slots:
  void Zamknij1Click();

 protected:
  void FormShow() override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  std::unique_ptr<Ui::TErrorForm> ui;
  Lookup lookup_;
};

}  // namespace tavena

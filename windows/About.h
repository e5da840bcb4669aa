// "O programie": one text line, the version under it and an OK button.
#pragma once

#include <memory>

#include "windows/Baseform.h"

namespace Ui {
class TAboutForm;
}

namespace tavena {

class TAboutForm : public TBaseForm {
  Q_OBJECT

 public:
  explicit TAboutForm(QWidget* parent = nullptr);
  ~TAboutForm() override;

  void SetText(const QString& text);
  QString Text() const;

 public slots:
  void OKButtonClick();

 protected:
  void FormShow() override;

 private:
  std::unique_ptr<Ui::TAboutForm> ui;
};

}  // namespace tavena

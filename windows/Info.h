// A notice of four lines shown in the top-left corner of the screen that
// closes itself on the third tick of its 10 s timer.
#pragma once

#include <QTimer>
#include <memory>

#include "windows/Baseform.h"

class QLabel;

namespace Ui {
class TInfoForm;
}

namespace tavena {

class TInfoForm : public TBaseForm {
  Q_OBJECT

 public:
  explicit TInfoForm(QWidget* parent = nullptr);
  ~TInfoForm() override;

  // Label1 .. Label4 (n from 1 to 4).
  QLabel* Line(int n) const;
  // Empties the four lines.
  void ClearLines();
  QTimer* Timer1() const { return timer_; }
  int32_t Countdown() const { return countdown_; }

 public slots:
  void Timer1Timer();
  void Zamknij1Click();

 protected:
  void FormShow() override;

 private:
  void LayOutLabels();

  std::unique_ptr<Ui::TInfoForm> ui;
  QTimer* timer_;
  int32_t countdown_ = 0;
};

}  // namespace tavena

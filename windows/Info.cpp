#include "Info.h"

#include "app/Fonts.h"
#include "ui_Info.h"

namespace tavena {

TInfoForm::TInfoForm(QWidget* parent)
    : TBaseForm(parent), ui(new Ui::TInfoForm), timer_(new QTimer(this)) {
  ui->setupUi(this);
  timer_->setObjectName(QStringLiteral("Timer1"));
  timer_->setInterval(10000);
  connect(timer_, &QTimer::timeout, this, &TInfoForm::Timer1Timer);
  connect(ui->Zamknij1, &QAction::triggered, this, &TInfoForm::Zamknij1Click);
  LayOutLabels();
  timer_->stop();
}

TInfoForm::~TInfoForm() = default;

QLabel* TInfoForm::Line(int n) const {
  return findChild<QLabel*>(QStringLiteral("Label%1").arg(n));
}

void TInfoForm::ClearLines() {
  for (int n = 1; n <= 4; ++n) Line(n)->clear();
}

void TInfoForm::LayOutLabels() {
  const QRect first = Line(1)->geometry();
  for (int n = 1; n <= 4; ++n) {
    QLabel* label = Line(n);
    ApplyFont(label, Fonts().info);
    label->move(first.left(), (n - 1) * (first.height() + 5) + first.top());
    label->clear();
  }
}

void TInfoForm::FormShow() {
  move(0, 0);
  countdown_ = 20;
  timer_->start();
}

// Ticks leave 10, 0 and -10: the notice closes on the third tick. The timer
// is left running; later ticks only close the closed window again.
void TInfoForm::Timer1Timer() {
  countdown_ -= timer_->interval() / 1000;
  if (countdown_ < 0) {
    if (!timer_->isActive()) timer_->start();
    close();
  }
}

void TInfoForm::Zamknij1Click() {
  close();
}

}  // namespace tavena

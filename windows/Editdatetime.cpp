#include "Editdatetime.h"

#include <QEventLoop>
#include <QRegularExpression>

#include "ui_Editdatetime.h"

namespace tavena {

TEditDateTimeForm::TEditDateTimeForm(QWidget* parent)
    : TBaseForm(parent), ui(new Ui::TEditDateTimeForm) {
  ui->setupUi(this);
  connect(ui->Zapisz, &QPushButton::clicked, this, &TEditDateTimeForm::ZapiszClick);
  connect(ui->Przerwij, &QPushButton::clicked, this, &TEditDateTimeForm::PrzerwijClick);
}

TEditDateTimeForm::~TEditDateTimeForm() = default;

std::optional<QString> TEditDateTimeForm::Execute(const DateTimeRequest& request,
                                                  const DateTimeAccept& accept) {
  if (loop_) return std::nullopt;  // already open
  ui->Prompt->setText(request.prompt);
  date_only_ = request.date_only;
  for (QWidget* control : {static_cast<QWidget*>(ui->Hour), static_cast<QWidget*>(ui->Minute),
                           static_cast<QWidget*>(ui->TimeLabel)})
    control->setVisible(!date_only_);
  SetText(request.text, QDateTime::currentDateTime());
  accept_ = accept;
  result_.reset();
  setWindowModality(Qt::ApplicationModal);
  CentreOnScreen(*this);
  show();
  QEventLoop loop;
  loop_ = &loop;
  loop.exec();
  loop_ = nullptr;
  accept_ = nullptr;
  return result_;
}

void TEditDateTimeForm::SetText(const QString& text, const QDateTime& now) {
  QList<int> numbers;
  for (const QRegularExpressionMatch& match : QRegularExpression("\\d+").globalMatch(text))
    numbers << match.captured().toInt();
  if (numbers.size() < 3) {
    numbers = {now.date().year(), now.date().month(), now.date().day(), now.time().hour(),
               now.time().minute()};
  }
  if (numbers[2] > 31) std::swap(numbers[0], numbers[2]);
  ui->Year->setValue(numbers[0]);
  ui->Month->setValue(numbers[1]);
  ui->Day->setValue(numbers[2]);
  ui->Hour->setValue(numbers.value(3));
  ui->Minute->setValue(numbers.value(4));
}

QString TEditDateTimeForm::Text() const {
  const QString date = QStringLiteral("%1-%2-%3")
                           .arg(ui->Year->value(), 4, 10, QLatin1Char('0'))
                           .arg(ui->Month->value(), 2, 10, QLatin1Char('0'))
                           .arg(ui->Day->value(), 2, 10, QLatin1Char('0'));
  if (date_only_) return date;
  return date + QStringLiteral(" %1:%2")
                    .arg(ui->Hour->value(), 2, 10, QLatin1Char('0'))
                    .arg(ui->Minute->value(), 2, 10, QLatin1Char('0'));
}

void TEditDateTimeForm::ZapiszClick() {
  const QString text = Text();
  if (accept_ && !accept_(text)) return;
  result_ = text;
  close();
}

void TEditDateTimeForm::PrzerwijClick() {
  result_.reset();
  close();
}

void TEditDateTimeForm::FormClose() {
  if (loop_) loop_->quit();
}

}  // namespace tavena

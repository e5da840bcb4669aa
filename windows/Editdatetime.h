// The date and time entry dialog "Wprowadzanie daty i czasu": a prompt,
// year-month-day and hour:minute spinners, "Zapisz" and "Przerwij". Shown
// modally by Execute, which a handler may call several times in a row.
#pragma once

#include <QDateTime>
#include <memory>
#include <optional>

#include "app/Dialogs.h"
#include "windows/Baseform.h"

class QEventLoop;

namespace Ui {
class TEditDateTimeForm;
}

namespace tavena {

class TEditDateTimeForm : public TBaseForm {
  Q_OBJECT

 public:
  explicit TEditDateTimeForm(QWidget* parent = nullptr);
  ~TEditDateTimeForm() override;

  // Shows the dialog and waits until it closes: the text that "Zapisz"
  // handed over and accept took, or nothing after "Przerwij".
  std::optional<QString> Execute(const DateTimeRequest& request, const DateTimeAccept& accept);
  // Fills the spinners from a text: year, month and day (a third number
  // above 31 is the year, so a day-first date is accepted), then hour and
  // minute; an empty text gives now.
  void SetText(const QString& text, const QDateTime& now);
  // "YYYY-MM-DD hh:mm", or "YYYY-MM-DD" in the date-only mode.
  QString Text() const;

 public slots:
  void ZapiszClick();
  void PrzerwijClick();

 protected:
  void FormClose() override;

 private:
  std::unique_ptr<Ui::TEditDateTimeForm> ui;
  DateTimeAccept accept_;
  std::optional<QString> result_;
  QEventLoop* loop_ = nullptr;
  bool date_only_ = false;
};

}  // namespace tavena

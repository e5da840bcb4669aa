#include "Error.h"

#include <QKeyEvent>
#include <cstdlib>

#include "app/Fonts.h"
#include "app/Texts.h"
#include "ui_Error.h"

namespace tavena {

TErrorForm::TErrorForm(QWidget* parent) : TBaseForm(parent), ui(new Ui::TErrorForm) {
  ui->setupUi(this);
  ui->Edit1->installEventFilter(this);
  connect(ui->Zamknij1, &QAction::triggered, this, &TErrorForm::Zamknij1Click);
}

TErrorForm::~TErrorForm() = default;

QStringList TErrorForm::Description() const {
  const QString text = ui->EEkran->toPlainText();
  return text.isEmpty() ? QStringList() : text.split(QLatin1Char('\n'));
}

// The key has not reached the edit yet, so its character is appended here.
// The number is read like atoi: leading digits, anything else ends it.
void TErrorForm::Edit1KeyPress(const QString& key_text) {
  const std::string typed = ToCp1250(ui->Edit1->text() + key_text);
  const int code = std::atoi(typed.c_str());
  const std::string description = lookup_ ? lookup_(code) : std::string();
  ui->EEkran->clear();
  if (description.empty()) return;
  for (const QString& line : FromCp1250(description).split(QLatin1Char('\n')))
    ui->EEkran->appendPlainText(line);
}

bool TErrorForm::eventFilter(QObject* watched, QEvent* event) {
  if (watched == ui->Edit1 && event->type() == QEvent::KeyPress) {
    const QString key_text = static_cast<QKeyEvent*>(event)->text();
    if (!key_text.isEmpty()) Edit1KeyPress(key_text);
  }
  return TBaseForm::eventFilter(watched, event);
}

void TErrorForm::FormShow() {
  ui->EEkran->clear();
  ApplyFont(ui->Label1, Fonts().wind);
  ApplyFont(ui->EEkran, Fonts().wind);
  ApplyFont(ui->Edit1, Fonts().edit);
  CentreOnScreen(*this);
}

void TErrorForm::Zamknij1Click() {
  close();
}

}  // namespace tavena

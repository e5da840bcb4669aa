#include "About.h"

#include "Tavenaversion.h"
#include "app/Fonts.h"
#include "ui_About.h"

namespace tavena {

TAboutForm::TAboutForm(QWidget* parent) : TBaseForm(parent), ui(new Ui::TAboutForm) {
  ui->setupUi(this);
  ui->LabelVersion->setText(QStringLiteral("Wersja ") + QLatin1String(kVersion));
  connect(ui->OKButton, &QPushButton::clicked, this, &TAboutForm::OKButtonClick);
}

TAboutForm::~TAboutForm() = default;

void TAboutForm::SetText(const QString& text) {
  ui->Label1->setText(text);
}

QString TAboutForm::Text() const {
  return ui->Label1->text();
}

void TAboutForm::FormShow() {
  ApplyFont(ui->Label1, Fonts().info);
  ApplyFont(ui->LabelVersion, Fonts().info);
  CentreOnScreen(*this);
}

void TAboutForm::OKButtonClick() {
  close();
}

}  // namespace tavena

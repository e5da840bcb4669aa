#include "Baza.h"

#include "ui_Baza.h"

namespace tavena {

TBazaForm::TBazaForm(QWidget* parent) : TBaseForm(parent), ui(new Ui::TBazaForm) {
  ui->setupUi(this);
}

TBazaForm::~TBazaForm() = default;

}  // namespace tavena

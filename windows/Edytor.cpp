#include "Edytor.h"

#include "ui_Edytor.h"

namespace tavena {

TEdytorForm::TEdytorForm(QWidget* parent) : TBaseForm(parent), ui(new Ui::TEdytorForm) {
  ui->setupUi(this);
  KeepPlaceIn(&Settings().edit);
}

TEdytorForm::~TEdytorForm() = default;

}  // namespace tavena

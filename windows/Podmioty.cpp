#include "Podmioty.h"

#include "ui_Podmioty.h"

namespace tavena {

TPodmiotyForm::TPodmiotyForm(QWidget* parent) : TBaseForm(parent), ui(new Ui::TPodmiotyForm) {
  ui->setupUi(this);
  KeepPlaceIn(&Settings().pod);
}

TPodmiotyForm::~TPodmiotyForm() = default;

}  // namespace tavena

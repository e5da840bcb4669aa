#include "Editdatetime.h"

#include "ui_Editdatetime.h"

namespace tavena {

TEditDateTimeForm::TEditDateTimeForm(QWidget* parent)
    : TBaseForm(parent), ui(new Ui::TEditDateTimeForm) {
  ui->setupUi(this);
}

TEditDateTimeForm::~TEditDateTimeForm() = default;

}  // namespace tavena

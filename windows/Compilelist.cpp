#include "Compilelist.h"

#include "ui_Compilelist.h"

namespace tavena {

TCompileListForm::TCompileListForm(QWidget* parent)
    : TBaseForm(parent), ui(new Ui::TCompileListForm) {
  ui->setupUi(this);
}

TCompileListForm::~TCompileListForm() = default;

}  // namespace tavena

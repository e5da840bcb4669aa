#include "Sender.h"

#include "ui_Sender.h"

namespace tavena {

TSenderForm::TSenderForm(QWidget* parent) : TBaseForm(parent), ui(new Ui::TSenderForm) {
  ui->setupUi(this);
  KeepPlaceIn(&Settings().sender);
}

TSenderForm::~TSenderForm() = default;

}  // namespace tavena

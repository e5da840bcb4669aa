#include "Serialportform.h"

#include "ui_Serialportform.h"

namespace tavena {

TSerialPortsForm::TSerialPortsForm(QWidget* parent)
    : TBaseForm(parent), ui(new Ui::TSerialPortsForm) {
  ui->setupUi(this);
}

TSerialPortsForm::~TSerialPortsForm() = default;

}  // namespace tavena

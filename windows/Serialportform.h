// The report of the serial ports found. Its controls and handlers are not built yet.
#pragma once

#include <memory>

#include "windows/Baseform.h"

namespace Ui {
class TSerialPortsForm;
}

namespace tavena {

class TSerialPortsForm : public TBaseForm {
  Q_OBJECT

 public:
  explicit TSerialPortsForm(QWidget* parent = nullptr);
  ~TSerialPortsForm() override;

 private:
  std::unique_ptr<Ui::TSerialPortsForm> ui;
};

}  // namespace tavena

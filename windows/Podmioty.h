// The list of taxpayer entity files of a folder. Its controls and handlers are not built yet.
#pragma once

#include <memory>

#include "windows/Baseform.h"

namespace Ui {
class TPodmiotyForm;
}

namespace tavena {

class TPodmiotyForm : public TBaseForm {
  Q_OBJECT

 public:
  explicit TPodmiotyForm(QWidget* parent = nullptr);
  ~TPodmiotyForm() override;

 private:
  std::unique_ptr<Ui::TPodmiotyForm> ui;
};

}  // namespace tavena

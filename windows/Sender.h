// Sends compiled sequence files of a folder to the printer. Its controls and handlers are not built
// yet.
#pragma once

#include <memory>

#include "windows/Baseform.h"

namespace Ui {
class TSenderForm;
}

namespace tavena {

class TSenderForm : public TBaseForm {
  Q_OBJECT

 public:
  explicit TSenderForm(QWidget* parent = nullptr);
  ~TSenderForm() override;

 private:
  std::unique_ptr<Ui::TSenderForm> ui;
};

}  // namespace tavena

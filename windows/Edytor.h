// The editor of ready printer command frames. Its controls and handlers are not built yet.
#pragma once

#include <memory>

#include "windows/Baseform.h"

namespace Ui {
class TEdytorForm;
}

namespace tavena {

class TEdytorForm : public TBaseForm {
  Q_OBJECT

 public:
  explicit TEdytorForm(QWidget* parent = nullptr);
  ~TEdytorForm() override;

 private:
  std::unique_ptr<Ui::TEdytorForm> ui;
};

}  // namespace tavena

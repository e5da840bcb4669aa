// Prints the printer's goods database. Its controls and handlers are not built yet.
#pragma once

#include <memory>

#include "windows/Baseform.h"

namespace Ui {
class TBazaForm;
}

namespace tavena {

class TBazaForm : public TBaseForm {
  Q_OBJECT

 public:
  explicit TBazaForm(QWidget* parent = nullptr);
  ~TBazaForm() override;

 private:
  std::unique_ptr<Ui::TBazaForm> ui;
};

}  // namespace tavena

// The compiler's messages. Its controls and handlers are not built yet.
#pragma once

#include <memory>

#include "windows/Baseform.h"

namespace Ui {
class TCompileListForm;
}

namespace tavena {

class TCompileListForm : public TBaseForm {
  Q_OBJECT

 public:
  explicit TCompileListForm(QWidget* parent = nullptr);
  ~TCompileListForm() override;

 private:
  std::unique_ptr<Ui::TCompileListForm> ui;
};

}  // namespace tavena

// The date and time entry dialog. Its controls and handlers are not built yet.
#pragma once

#include <memory>

#include "windows/Baseform.h"

namespace Ui {
class TEditDateTimeForm;
}

namespace tavena {

class TEditDateTimeForm : public TBaseForm {
  Q_OBJECT

 public:
  explicit TEditDateTimeForm(QWidget* parent = nullptr);
  ~TEditDateTimeForm() override;

 private:
  std::unique_ptr<Ui::TEditDateTimeForm> ui;
};

}  // namespace tavena

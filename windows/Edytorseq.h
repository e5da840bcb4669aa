// The sequence editor. Its controls and handlers are not built yet.
#pragma once

#include <memory>

#include "windows/Baseform.h"

namespace Ui {
class TEdytorSeqForm;
}

namespace tavena {

class TEdytorSeqForm : public TBaseForm {
  Q_OBJECT

 public:
  explicit TEdytorSeqForm(QWidget* parent = nullptr);
  ~TEdytorSeqForm() override;

 private:
  std::unique_ptr<Ui::TEdytorSeqForm> ui;
};

}  // namespace tavena

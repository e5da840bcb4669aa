#include "Edytorseq.h"

#include "ui_Edytorseq.h"

namespace tavena {

TEdytorSeqForm::TEdytorSeqForm(QWidget* parent) : TBaseForm(parent), ui(new Ui::TEdytorSeqForm) {
  ui->setupUi(this);
  KeepPlaceIn(&Settings().edit_seq);
}

TEdytorSeqForm::~TEdytorSeqForm() = default;

}  // namespace tavena

// The service record of the main window's programming operations: one line
// per operation with the printer's unique number and model as the window
// shows them, and whether the printer confirmed the command.
#include <QLineEdit>

#include "app/Tavenamain.h"
#include "app/Texts.h"
#include "protocol/Printererrors.h"
#include "protocol/Servicerecord.h"
#include "ui_Tavenamain.h"

namespace tavena {

// Asked right after the command: ENQ's bit 2 says it was interpreted.
bool TTavenaForm::Recorded(Drukarka& printer, const std::string& operation,
                           const std::string& details, bool sent) {
  const int status = sent ? printer.QueryENQ() : -1;
  ServiceEntry entry;
  entry.time = CurrentClock().Local();
  entry.unique_number = ToCp1250(ui->ENumerPF->text());
  entry.model = ToCp1250(ui->ETypDrukarki->text());
  entry.operation = operation;
  entry.details = details;
  entry.confirmed = !NoCommunication(status) && (status & 0x04) != 0;
  AppendServiceRecord(entry);
  return sent;
}

}  // namespace tavena

#include "Tavenaapp.h"

#include "protocol/Printererrors.h"
#include "windows/About.h"
#include "windows/Baza.h"
#include "windows/Compilelist.h"
#include "windows/Editdatetime.h"
#include "windows/Edytor.h"
#include "windows/Edytorseq.h"
#include "windows/Error.h"
#include "windows/Info.h"
#include "windows/Listing.h"
#include "windows/Podmioty.h"
#include "windows/Sender.h"
#include "windows/Serialportform.h"

namespace tavena {

std::unique_ptr<TTavenaForm> CreateWindows(std::unique_ptr<PrinterLink> link,
                                           const std::string& settings_folder) {
  auto main = std::make_unique<TTavenaForm>(std::move(link), settings_folder);
  TTavenaForm* owner = main.get();
  AppWindows w;
  w.listing = new TListingForm(owner);
  main->Printer().exchanges = w.listing;
  w.date_time = new TEditDateTimeForm(owner);
  w.podmioty = new TPodmiotyForm(owner);
  w.edytor_seq = new TEdytorSeqForm(owner);
  w.sender = new TSenderForm(owner);
  w.baza = new TBazaForm(owner);
  w.info = new TInfoForm(owner);
  w.error = new TErrorForm(owner);
  w.error->SetLookup(PrinterErrorText);
  w.edytor = new TEdytorForm(owner);
  w.compile_list = new TCompileListForm(owner);
  w.serial_ports = new TSerialPortsForm(owner);
  w.about = new TAboutForm(owner);
  for (QObject* child : owner->children())
    if (auto* window = qobject_cast<TBaseForm*>(child)) window->SetPrinterAccess(owner);
  main->SetWindows(w);
  return main;
}

}  // namespace tavena

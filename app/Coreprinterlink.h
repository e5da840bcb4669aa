// The printer link of the program: the core's printer object (which owns
// the serial channel) and port discovery.
#pragma once

#include <memory>

#include "app/Printerlink.h"

namespace tavena {

std::unique_ptr<PrinterLink> MakeCorePrinterLink();

}  // namespace tavena

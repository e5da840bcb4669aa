// Start-up: every window created once, in the start-up order, the main
// window first. The others are the main window's children: they live as
// long as it does and are only shown and hidden.
#pragma once

#include <memory>
#include <string>

#include "app/Tavenamain.h"

namespace tavena {

std::unique_ptr<TTavenaForm> CreateWindows(std::unique_ptr<PrinterLink> link,
                                           const std::string& settings_folder);

}  // namespace tavena

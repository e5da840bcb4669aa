// The header and VAT-rate steps of the printer subcommands, shared with
// "program". Texts are Windows-1250.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "Cli.h"
#include "protocol/Inputcheck.h"

namespace tavena {

class Drukarka;

// Opens the port, runs work on the open printer and closes the port again;
// the result is work's exit code.
int WithPrinter(CliContext& ctx, const std::function<int(Drukarka&)>& work);

// Notes a programming operation for the service record: confirmed when code,
// its confirmation's exit code, is kExitDone. Returns code.
int Recorded(CliContext& ctx, const std::string& operation, const std::string& details, int code);

// The window's checks; false (exit code 2, the reason said) when refused.
bool HeaderAccepted(CliContext& ctx, const HeaderText& h);
bool VatRatesAccepted(CliContext& ctx, const std::vector<std::string>& texts, VatRates& rates);

// Each writes and waits for the printer's confirmation.
int WriteHeader(CliContext& ctx, Drukarka& d, const HeaderText& h);
int WriteVatRates(CliContext& ctx, Drukarka& d, const VatRates& rates);
// The advice after the rates were sent.
void SayConfirmVatRates(CliContext& ctx);

}  // namespace tavena

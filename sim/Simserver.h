// Serves a simulated printer on a pseudo-terminal (POSIX hosts).
#pragma once

#include <cstdio>
#include <string>

#include "Simprinter.h"

namespace tavena {

struct SimServerOptions {
  std::string link;           // make this path a symbolic link to the terminal
  bool enforce_baud = false;  // a client at another speed than the printer's is not understood
  bool quiet = false;         // log only failures
  std::string record;         // write every byte read from the terminal to this file, at once
};

// Opens a pseudo-terminal, writes its path as the first line of out,
// serves the printer until SIGINT or SIGTERM or until its line closes, and
// logs what it received to log. Returns 0 after a normal stop, 1 when the
// terminal or the record file cannot be opened or served.
int ServeOnPty(SimPrinter& printer, const SimServerOptions& options, std::FILE* out,
               std::FILE* log);

// "HH:MM:SS.mmm " of the local time, for log lines.
std::string SimLogStamp();

}  // namespace tavena

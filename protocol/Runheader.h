// The communication log's run header: the first line each program run
// writes into a port's log file, and the printer's identity once it is known.
#pragma once

#include <cstdint>
#include <string>

namespace tavena {

struct RunHeader {
  std::string port;
  int32_t speed = 9600;
  std::string model;  // empty while unknown
  std::string version;
  std::string unique_number;
  bool logging_from_start = false;  // logging was on before the first exchange
};

// "=== tavena 1.2.0; port com5, 9600 b/s; ...; logi od startu programu ==="
// (by MessageLanguage, Windows-1250).
std::string RunHeaderLine(const RunHeader& header);
// "=== Drukarka: model ..., wersja ..., numer unikatowy ... ==="
std::string IdentityHeaderLine(const RunHeader& header);

// True the first time it is asked for this key in this run.
bool FirstTimeInRun(const std::string& key);
// Forgets every key (tests).
void ForgetRunHeaders();

}  // namespace tavena

// The service record: what was programmed into which fiscal printer. An
// append-only CSV file in the log folder, Windows-1250 with CR LF, one line
// per programming operation:
//   date and time;unique number;model;operation;details;confirmed
#pragma once

#include <array>
#include <string>
#include <vector>

#include "Fiscalbiblio.h"
#include "sequence/Clock.h"

namespace tavena {

inline constexpr const char* kServiceRecordName = "rejestr_serwisowy.csv";

struct ServiceEntry {
  LocalTime time;
  std::string unique_number;  // Windows-1250 texts
  std::string model;
  std::string operation;
  std::string details;
  bool confirmed = false;
};

// The operations as the record names them (Windows-1250).
namespace service {
std::string Clock();
std::string VatRates();
std::string Header();
std::string Fiscalisation();
std::string DailyReport();
std::string PeriodicReport();
std::string TestReceipt();
}  // namespace service

// Details of the operations.
std::string ClockDetails(const LocalTime& t);
std::string DateDetails(const PrinterDate& date);
std::string HeaderDetails(const std::vector<HeaderLine>& lines);

// <log folder>/rejestr_serwisowy.csv
std::string ServiceRecordPath();
// One line with its CR LF; a field holding ";", a quote or a line break is
// quoted, its quotes doubled.
std::string ServiceRecordLine(const ServiceEntry& entry);
// Appends the line (the column heading first when the file is new). False
// when the file cannot be written.
bool AppendServiceRecord(const ServiceEntry& entry, const std::string& path = ServiceRecordPath());
// The fields of every line of a record file (heading included); a lone LF
// also ends a line.
std::vector<std::vector<std::string>> ReadServiceRecord(const std::string& file_bytes);

}  // namespace tavena

#include "Servicerecord.h"

#include <cstdio>

#include "sequence/Messagelanguage.h"
#include "transport/Createdirectory.h"
#include "transport/Filelog.h"

namespace tavena {

namespace service {
std::string Clock() {
  return Msg("Zegar", "Clock");
}
std::string VatRates() {
  return Msg("Stawki VAT", "VAT rates");
}
std::string Header() {
  return Msg("Nagłówek", "Header");
}
std::string Fiscalisation() {
  return Msg("Fiskalizacja", "Fiscalisation");
}
std::string DailyReport() {
  return Msg("Raport dobowy", "Daily report");
}
std::string PeriodicReport() {
  return Msg("Raport okresowy", "Periodic report");
}
std::string TestReceipt() {
  return Msg("Paragon testowy", "Test receipt");
}
}  // namespace service

namespace {

std::string CsvField(const std::string& text) {
  if (text.find_first_of(";\"\r\n") == std::string::npos) return text;
  std::string quoted = "\"";
  for (const char c : text) quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
  return quoted + "\"";
}

std::string Heading() {
  return Msg("Data i czas;Numer unikatowy;Model;Operacja;Szczegóły;Potwierdzone",
             "Date and time;Unique number;Model;Operation;Details;Confirmed") +
         "\r\n";
}

}  // namespace

std::string ClockDetails(const LocalTime& t) {
  return TextF("%04d-%02d-%02d %02d:%02d:%02d", t.year, t.month, t.day, t.hour, t.minute, t.second);
}

std::string DateDetails(const PrinterDate& d) {
  return TextF("%04d-%02d-%02d", d.year, d.month, d.day);
}

std::string HeaderDetails(const std::vector<HeaderLine>& lines) {
  std::string text;
  for (const HeaderLine& line : lines) {
    if (line.text.empty()) continue;
    if (!text.empty()) text += " | ";
    text += line.text;
  }
  return text;
}

std::string ServiceRecordPath() {
  return LogFolder() + kPathSeparator + kServiceRecordName;
}

std::string ServiceRecordLine(const ServiceEntry& e) {
  const LocalTime& t = e.time;
  const std::string fields[] = {
      TextF("%04d-%02d-%02d %02d:%02d:%02d", t.year, t.month, t.day, t.hour, t.minute, t.second),
      e.unique_number,
      e.model,
      e.operation,
      e.details,
      e.confirmed ? Msg("tak", "yes") : Msg("nie", "no")};
  std::string line;
  for (const std::string& field : fields) line += (line.empty() ? "" : ";") + CsvField(field);
  return line + "\r\n";
}

bool AppendServiceRecord(const ServiceEntry& entry, const std::string& path) {
  const size_t cut = path.find_last_of(kPathSeparator);
  if (cut != std::string::npos) ForceDirectories(path.substr(0, cut));
  std::FILE* f = std::fopen(path.c_str(), "ab");
  if (!f) return false;
  std::fseek(f, 0, SEEK_END);
  std::string text = std::ftell(f) == 0 ? Heading() : std::string();
  text += ServiceRecordLine(entry);
  const bool written = std::fwrite(text.data(), 1, text.size(), f) == text.size();
  return std::fclose(f) == 0 && written;
}

std::vector<std::vector<std::string>> ReadServiceRecord(const std::string& bytes) {
  std::vector<std::vector<std::string>> lines;
  std::vector<std::string> fields;
  std::string field;
  bool quoted = false;
  for (size_t i = 0; i < bytes.size(); ++i) {
    const char c = bytes[i];
    if (quoted) {
      if (c != '"')
        field += c;
      else if (i + 1 < bytes.size() && bytes[i + 1] == '"')
        field += bytes[++i];
      else
        quoted = false;
    } else if (c == '"') {
      quoted = true;
    } else if (c == ';') {
      fields.push_back(std::move(field));
      field.clear();
    } else if (c == '\n') {
      fields.push_back(std::move(field));
      field.clear();
      lines.push_back(std::move(fields));
      fields.clear();
    } else if (c != '\r') {
      field += c;
    }
  }
  if (!field.empty() || !fields.empty()) {
    fields.push_back(std::move(field));
    lines.push_back(std::move(fields));
  }
  return lines;
}

}  // namespace tavena

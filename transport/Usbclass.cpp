#include "Usbclass.h"

#include <cctype>
#include <cinttypes>
#include <cstdarg>
#include <cstdio>

#include "sequence/Codepage.h"
#include "sequence/Messagelanguage.h"

namespace tavena {

namespace {

std::string Upper(std::string text) {
  for (char& c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return text;
}

bool Has(const std::string& text, const char* word) {
  return text.find(word) != std::string::npos;
}

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

uint64_t ParseHex(const std::string& text, size_t from = 0) {
  uint64_t value = 0;
  for (size_t i = from; i < text.size() && HexDigit(text[i]) >= 0; ++i)
    value = (value << 4) | static_cast<uint64_t>(HexDigit(text[i]));
  return value;
}

uint64_t ParseDecimal(const std::string& text, size_t from = 0) {
  uint64_t value = 0;
  for (size_t i = from; i < text.size() && std::isdigit(static_cast<unsigned char>(text[i])); ++i)
    value = value * 10 + static_cast<uint64_t>(text[i] - '0');
  return value;
}

std::vector<std::string> SplitAmp(const std::string& text) {
  std::vector<std::string> parts;
  size_t start = 0;
  for (;;) {
    const size_t amp = text.find('&', start);
    parts.push_back(text.substr(start, amp == std::string::npos ? std::string::npos : amp - start));
    if (amp == std::string::npos) return parts;
    start = amp + 1;
  }
}

// Decimal value of a BCD byte pair: 0x0600 gives 6.00, 0x0110 gives 1.10.
double VersionOf(uint32_t revision) {
  auto bcd = [](uint32_t byte) { return static_cast<int>((byte >> 4) & 15) * 10 + (byte & 15); };
  return bcd((revision >> 8) & 0xFF) + bcd(revision & 0xFF) / 100.0;
}

// Trailing decimal number of a device path, or -1 when it has none.
int64_t TrailingNumber(const std::string& path) {
  size_t i = path.size();
  while (i > 0 && std::isdigit(static_cast<unsigned char>(path[i - 1]))) --i;
  if (i == path.size()) return -1;
  return static_cast<int64_t>(ParseDecimal(path, i));
}

void SerialFromInstanceId(const std::string& instance_id, DeviceRecord& record) {
  std::vector<std::string> parts = SplitAmp(instance_id);
  if (parts.size() > 10) parts.resize(10);
  int last = static_cast<int>(parts.size()) - 1;
  while (last >= 0 && parts[last].empty()) --last;
  if (last < 0) return;
  record.instance_part = static_cast<uint32_t>(ParseDecimal(parts[last]));
  const uint64_t upper = last >= 2 ? ParseDecimal(parts[last - 2]) : 0;
  const uint64_t lower = last >= 1 ? ParseHex(parts[last - 1]) : 0;
  record.device_serial = (upper << 8) | lower;
}

void AddLine(std::string& out, const char* label, const std::string& value) {
  out += label;
  out += value;
  out += "\r\n";
}

std::string Format(const char* format, ...) __attribute__((format(printf, 1, 2)));
std::string Format(const char* format, ...) {
  char buffer[128];
  va_list args;
  va_start(args, format);
  std::vsnprintf(buffer, sizeof buffer, format, args);
  va_end(args);
  return buffer;
}

}  // namespace

int32_t DeviceKindFromDescription(const std::string& description) {
  const std::string d = Upper(description);
  if (Has(d, "LUMEN USB")) return 1;
  if (Has(d, "SOLIDA USB")) return 2;
  if (Has(d, "KOPIA ELEKTR")) return 3;
  if (Has(d, "QX-1") && Has(d, "COM0")) return 4;
  if (Has(d, "QX-1") && Has(d, "COM1")) return 5;
  const bool named = Has(d, "LUMEN USB") || Has(d, "SOLIDA USB") || Has(d, "KOPIA ELEKTR") ||
                     Has(d, "QX-1") || Has(d, "KORVUS");
  const size_t ej = d.find("EJ");
  if (!named && Has(d, "COM1,") && ej != std::string::npos && ej > 0) return 5;
  if (Has(d, "KORVUS") && Has(d, "COM0")) return 6;
  if (Has(d, "KORVUS") && Has(d, "COM1")) return 7;
  return 0;
}

uint64_t HexAfter(const std::string& text, const std::string& marker) {
  const size_t at = text.find(marker);
  return at == std::string::npos ? 0 : ParseHex(text, at + marker.size());
}

int32_t PortNumberFromFriendlyName(const std::string& friendly_name) {
  const size_t at = friendly_name.find("(COM");
  return at == std::string::npos ? 0 : static_cast<int32_t>(ParseDecimal(friendly_name, at + 4));
}

std::string NoDefinitionPortName() {
  return Msg("Port szeregowy niezdefiniowany", "No definition serial port");
}

DeviceRecord RecordFromProperties(const DeviceProperties& properties) {
  DeviceRecord record;
  record.description = properties.device_description;
  record.device_kind = DeviceKindFromDescription(properties.device_description);
  record.hardware_id = properties.hardware_id;
  record.compatible_ids = properties.compatible_ids;
  const std::vector<std::string> hw = SplitAmp(properties.hardware_id);
  if (hw.size() > 1) record.identifier = hw[1];
  record.revision = static_cast<uint32_t>(HexAfter(properties.hardware_id, "REV_"));
  record.vendor = HexAfter(properties.hardware_id, "VID_");
  if (!properties.device_path.empty()) {
    const int64_t n = TrailingNumber(properties.device_path);
    record.port_number = n < 0 ? 0 : static_cast<int32_t>(n + 1);
    record.port_name = properties.device_path;
  } else {
    record.port_number = PortNumberFromFriendlyName(properties.friendly_name);
    record.port_name = Has(properties.friendly_name, "(COM")
                           ? "com" + std::to_string(record.port_number)
                           : NoDefinitionPortName();
  }
  SerialFromInstanceId(properties.instance_id, record);
  return record;
}

std::string RecordSummary(const DeviceRecord& r) {
  std::string out;
  AddLine(out, "HardwareId:         ", r.hardware_id);
  AddLine(out, "Version:            ", Format("%0.2f", VersionOf(r.revision)));
  AddLine(out, "SystemID:           ", Format("%" PRIX64, r.device_serial));
  AddLine(out, "Numer systemowy:    ", Format("%" PRIu32, r.instance_part));
  AddLine(out, "Numer urzadzenia:   ", Format("%" PRId32, r.port_number));
  AddLine(out, "Identyfikator:      ", r.identifier);
  AddLine(out, "Nazwa urzadzenia:   ", r.port_name);
  AddLine(out, "Kod urzadzenia:     ", Format("%" PRId32, r.device_kind));
  AddLine(out, "Vendor odczytany:   0x", Format("%04" PRIX64, r.vendor));
  AddLine(out, "PID konfiguracyjny: ", Format("%04" PRIX64, HexAfter(r.hardware_id, "PID_")));
  return out;
}

std::string PropertyReport(const DeviceProperties& p) {
  std::string out;
  AddLine(out, "HARDWAREID:    ", p.hardware_id);
  AddLine(out, "COMPATIBLEIDS: ", p.compatible_ids);
  AddLine(out, "FRIENDLYNAME:  ", p.friendly_name);
  AddLine(out, "Class Descr:   ", p.class_description);
  AddLine(out, "Class Guid:    ", p.class_guid);
  AddLine(out, "Config flags:  ", p.config_flags);
  AddLine(out, "Driver desc:   ", p.device_description);
  AddLine(out, "Driver:        ", p.driver);
  AddLine(out, "Mfg:           ", p.manufacturer);
  AddLine(out, "Enumerator:    ", p.enumerator);
  AddLine(out, "Physical name: ", p.physical_name);
  return out;
}

std::string FormatClassGuid(uint32_t data1, uint16_t data2, uint16_t data3,
                            const uint8_t data4[8]) {
  return Format("{%08" PRIX32 "-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}", data1, data2, data3,
                data4[0], data4[1], data4[2], data4[3], data4[4], data4[5], data4[6], data4[7]);
}

bool IsPrinterVendor(const DeviceRecord& record) {
  return record.vendor == 0x7A7A;
}

bool UsbClass::PassesVendorFilter(const std::string& instance_id) const {
  return !vendor_filter || Upper(instance_id).find(kPrinterVendorId) != std::string::npos;
}

bool UsbClass::AddDevice(const DeviceProperties& properties) {
  if (!all_devices && !properties.present) return false;
  if (report) report_ += PropertyReport(properties);
  DeviceRecord record = RecordFromProperties(properties);
  if (numbered_only && record.port_number < 1) return false;
  if (report) report_ += RecordSummary(record) + "\r\n";
  records_.push_back(std::move(record));
  return true;
}

void UsbClass::AddError(const char* first_utf8, const char* second_utf8, const char* third_utf8) {
  for (const char* line : {first_utf8, second_utf8, third_utf8}) {
    if (line == nullptr) continue;
    error_text_ += Utf8ToCp1250(line);
    error_text_ += "\r\n";
  }
}

bool UsbClass::Discover() {
  records_.clear();
  report_.clear();
  error_text_.clear();
  return DiscoverPlatform();
}

}  // namespace tavena

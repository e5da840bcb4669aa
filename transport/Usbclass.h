// Port discovery: lists the serial ports the system knows and recognises the
// maker's USB printers (vendor 7A7A). On Windows through the Setup API, on
// Linux from /sys/class/tty and the USB attributes above each tty; both fill
// the same device record. All texts are 8-bit Windows-1250.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tavena {

struct DeviceRecord {
  uint32_t revision = 0;       // hex number after "REV_" in the hardware id
  int32_t device_kind = 0;     // 0 unknown, 1..7 from the description
  uint64_t vendor = 0;         // hex number after "VID_" in the hardware id
  int32_t port_number = 0;     // number after "(COM", 0 when absent
  uint64_t device_serial = 0;  // built from the instance id parts
  uint32_t instance_part = 0;  // last non-empty "&" part of the instance id
  std::string port_name;       // "com3", a device path on Linux, or "no definition"
  std::string identifier;      // second "&" part of the hardware id
  std::string hardware_id;
  std::string compatible_ids;
  std::string description;
};

// Raw properties of one port as the platform reports them, in reading order.
struct DeviceProperties {
  std::string instance_id;
  std::string hardware_id;
  std::string compatible_ids;
  std::string friendly_name;
  std::string class_description;
  std::string class_guid;
  std::string config_flags;
  std::string device_description;
  std::string driver;
  std::string manufacturer;
  std::string enumerator;
  std::string physical_name;
  // Linux only: the device path (/dev/ttyUSB0). When set it is the port name,
  // and the port number is the tty's trailing number plus one (0 if none).
  std::string device_path;
  // False for a port the system knows but whose hardware is absent.
  bool present = true;
};

inline constexpr const char* kPrinterVendorId = "VID_7A7A";

class UsbClass {
 public:
  // Options, set before Discover().
  bool all_devices = false;    // also devices that are not present
  bool vendor_filter = false;  // only ids containing "VID_7A7A"
  bool numbered_only = false;  // only records with a port number of at least 1
  bool report = false;         // collect the property report text

  // Refills Records() (and Report() in report mode). False after a system
  // failure; ErrorText() then holds its lines and Records() what was found
  // before it.
  bool Discover();

  const std::vector<DeviceRecord>& Records() const { return records_; }
  const std::string& Report() const { return report_; }
  const std::string& ErrorText() const { return error_text_; }

  // Linux: the sysfs root scanned (default "/sys"); tests point it at a fixture.
  void SetSysfsRoot(std::string root) { sysfs_root_ = std::move(root); }

  // With the vendor filter on, only instance ids holding "VID_7A7A" pass.
  bool PassesVendorFilter(const std::string& instance_id) const;
  // Turns one port's properties into a record, and in report mode appends
  // the property lines. Answers whether the record is kept by the options.
  bool AddDevice(const DeviceProperties& properties);
  void AddError(const char* first_utf8, const char* second_utf8, const char* third_utf8 = nullptr);

 private:
  bool DiscoverPlatform();

  std::vector<DeviceRecord> records_;
  std::string report_;
  std::string error_text_;
  std::string sysfs_root_ = "/sys";
};

// Pieces of the record, exposed for the window and the tests.
int32_t DeviceKindFromDescription(const std::string& description);
uint64_t HexAfter(const std::string& text, const std::string& marker);
int32_t PortNumberFromFriendlyName(const std::string& friendly_name);
std::string NoDefinitionPortName();
DeviceRecord RecordFromProperties(const DeviceProperties& properties);
// "HardwareId:" .. "PID konfiguracyjny:" lines, each ended by CR LF.
std::string RecordSummary(const DeviceRecord& record);
// "HARDWAREID:" .. "Physical name:" lines, each ended by CR LF.
std::string PropertyReport(const DeviceProperties& properties);
// "{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}".
std::string FormatClassGuid(uint32_t data1, uint16_t data2, uint16_t data3, const uint8_t data4[8]);
// True for a record of the maker's USB vendor.
bool IsPrinterVendor(const DeviceRecord& record);

}  // namespace tavena

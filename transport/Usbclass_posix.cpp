// Port discovery on Linux: every entry of <sysfs>/class/tty that has a
// device behind it is a serial port; the USB attributes above it fill the
// same record the Setup API fills on Windows.
#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>

#include "Usbclass.h"

namespace tavena {

namespace fs = std::filesystem;

namespace {

constexpr const char* kPortsClassGuid = "{4D36E978-E325-11CE-BFC1-08002BE10318}";

std::string Attribute(const fs::path& dir, const char* name) {
  std::ifstream in(dir / name, std::ios::binary);
  std::string line;
  std::getline(in, line);
  while (!line.empty() && std::isspace(static_cast<unsigned char>(line.back()))) line.pop_back();
  return line;
}

std::string Upper(std::string text) {
  for (char& c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return text;
}

bool Inside(const fs::path& path, const fs::path& root) {
  const std::string p = path.string(), r = root.string();
  return p.size() > r.size() && p.compare(0, r.size(), r) == 0 && p[r.size()] == '/';
}

// First folder from dir upwards (staying under root) that holds the file.
fs::path FindUp(fs::path dir, const fs::path& root, const char* file) {
  std::error_code ec;
  for (; Inside(dir, root); dir = dir.parent_path())
    if (fs::exists(dir / file, ec)) return dir;
  return {};
}

std::string LinkName(const fs::path& link) {
  std::error_code ec;
  const fs::path target = fs::canonical(link, ec);
  return ec ? std::string() : target.filename().string();
}

// The driver of the port: the first bound driver from the device upwards,
// passing over the generic serial-core "port" driver.
std::string DriverOf(fs::path dir, const fs::path& root) {
  for (; Inside(dir, root); dir = dir.parent_path()) {
    const std::string name = LinkName(dir / "driver");
    if (!name.empty() && name != "port") return name;
  }
  return {};
}

void FillUsb(const fs::path& usb, const fs::path& device, const fs::path& root,
             DeviceProperties& p) {
  const std::string vid = Upper(Attribute(usb, "idVendor"));
  const std::string pid = Upper(Attribute(usb, "idProduct"));
  const std::string rev = Upper(Attribute(usb, "bcdDevice"));
  std::string serial = Attribute(usb, "serial");
  if (serial.empty()) serial = usb.filename().string();
  p.hardware_id = "USB\\VID_" + vid + "&PID_" + pid + "&REV_" + rev;
  p.instance_id = "USB\\VID_" + vid + "&PID_" + pid + "\\" + serial;
  const fs::path intf = FindUp(device, root, "bInterfaceClass");
  if (!intf.empty())
    p.compatible_ids = "USB\\Class_" + Attribute(intf, "bInterfaceClass") + "&SubClass_" +
                       Attribute(intf, "bInterfaceSubClass") + "&Prot_" +
                       Attribute(intf, "bInterfaceProtocol");
  p.device_description = Attribute(usb, "product");
  p.manufacturer = Attribute(usb, "manufacturer");
  p.enumerator = "USB";
}

void FillOther(const fs::path& device, const fs::path& root, DeviceProperties& p) {
  const fs::path pnp = FindUp(device, root, "id");
  const fs::path alias = FindUp(device, root, "modalias");
  fs::path source = device;
  if (!pnp.empty()) {
    p.hardware_id = "ACPI\\" + Attribute(pnp, "id");
    source = pnp;
  } else if (!alias.empty()) {
    p.hardware_id = Attribute(alias, "modalias");
    source = alias;
  } else {
    p.hardware_id = device.filename().string();
  }
  p.enumerator = Upper(LinkName(source / "subsystem"));
  p.instance_id = p.enumerator + "\\" + device.filename().string();
  p.device_description = "Communications Port";
}

DeviceProperties PropertiesOfTty(const fs::path& tty, const fs::path& root) {
  DeviceProperties p;
  std::error_code ec;
  const fs::path device = fs::canonical(tty / "device", ec);
  const fs::path usb = FindUp(device, root, "idVendor");
  if (!usb.empty())
    FillUsb(usb, device, root, p);
  else
    FillOther(device, root, p);
  if (p.device_description.empty()) p.device_description = "USB Serial Port";
  p.device_path = "/dev/" + tty.filename().string();
  p.friendly_name = p.device_description + " (" + p.device_path + ")";
  p.class_description = "Ports";
  p.class_guid = kPortsClassGuid;
  p.config_flags = "0";
  p.driver = DriverOf(device, root);
  p.physical_name = device.string().substr(root.string().size());
  // A legacy UART slot with no chip behind it reports type 0.
  p.present = !(fs::exists(tty / "type", ec) && Attribute(tty, "type") == "0");
  return p;
}

// ttyS2 before ttyS10: by name prefix, then by trailing number.
bool NaturalLess(const std::string& a, const std::string& b) {
  auto split = [](const std::string& s) {
    size_t i = s.size();
    while (i > 0 && std::isdigit(static_cast<unsigned char>(s[i - 1]))) --i;
    const long n = i < s.size() ? std::stol(s.substr(i, 9)) : -1;
    return std::make_pair(s.substr(0, i), n);
  };
  return split(a) < split(b);
}

std::vector<fs::path> TtysWithDevice(const fs::path& class_tty) {
  std::vector<std::string> names;
  std::error_code ec;
  for (const auto& entry : fs::directory_iterator(class_tty, ec))
    if (fs::exists(entry.path() / "device", ec)) names.push_back(entry.path().filename().string());
  std::sort(names.begin(), names.end(), NaturalLess);
  std::vector<fs::path> ttys;
  for (const auto& name : names) ttys.push_back(class_tty / name);
  return ttys;
}

}  // namespace

bool UsbClass::DiscoverPlatform() {
  std::error_code ec;
  const fs::path root = fs::canonical(sysfs_root_, ec);
  if (ec || !fs::is_directory(root / "class" / "tty", ec)) {
    AddError("Krytyczny błąd w poszukiwaniu portu.", "Brak katalogu /sys/class/tty.");
    return false;
  }
  for (const fs::path& tty : TtysWithDevice(root / "class" / "tty")) {
    const DeviceProperties properties = PropertiesOfTty(tty, root);
    if (PassesVendorFilter(properties.instance_id)) AddDevice(properties);
  }
  return true;
}

}  // namespace tavena

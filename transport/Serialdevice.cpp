#include "Serialdevice.h"

#include <cctype>
#include <utility>

namespace tavena {

namespace {

SerialOpener& InstalledOpener() {
  static SerialOpener opener;
  return opener;
}

std::optional<bool>& WineOverride() {
  static std::optional<bool> value;
  return value;
}

std::string Lowercase(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

// N of "comN" (N >= 1, digits only), else 0.
int ComNumber(const std::string& lower) {
  if (lower.size() < 4 || lower.size() > 12 || lower.compare(0, 3, "com") != 0) return 0;
  int n = 0;
  for (size_t i = 3; i < lower.size(); ++i) {
    if (!std::isdigit(static_cast<unsigned char>(lower[i]))) return 0;
    n = n * 10 + (lower[i] - '0');
  }
  return n;
}

}  // namespace

void SetSerialOpener(SerialOpener opener) {
  InstalledOpener() = std::move(opener);
}

std::unique_ptr<SerialDevice> OpenSerialDevice(const std::string& port_name, int& error) {
  error = 0;
  if (InstalledOpener()) return InstalledOpener()(port_name, error);
  return OpenHostSerialDevice(port_name, error);
}

bool RunningUnderWine() {
  if (WineOverride()) return *WineOverride();
  static const bool detected = DetectWineHost();
  return detected;
}

void SetWineOverride(std::optional<bool> under_wine) {
  WineOverride() = under_wine;
}

bool HostUsesDevicePaths() {
#ifdef _WIN32
  return false;
#else
  return true;
#endif
}

std::string HostDevicePath(const std::string& port_name) {
  if (!HostUsesDevicePaths()) return port_name;
  std::string lower = Lowercase(port_name);
  if (lower.compare(0, 4, "\\\\.\\") == 0) lower.erase(0, 4);
  if (const int n = ComNumber(lower); n > 0) return "/dev/ttyS" + std::to_string(n - 1);
  if (!port_name.empty() && port_name[0] == '/') return port_name;
  return "";
}

std::string LogBaseNameOf(const std::string& port_name) {
  if (!HostUsesDevicePaths()) return port_name;
  const std::string path = HostDevicePath(port_name);
  if (path.empty()) return port_name;
  const size_t slash = path.find_last_of('/');
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

}  // namespace tavena

// Port discovery on Windows through the Setup API: the device list of the
// "Ports" class, the device instance ids and the registry properties.
#include <windows.h>
// setupapi.h and cfgmgr32.h need windows.h first.
#include <cfgmgr32.h>
#include <setupapi.h>

#include <cstdio>
#include <vector>

#include "Usbclass.h"

namespace tavena {

namespace {

constexpr const char* kSearchFailed = "Krytyczny błąd w poszukiwaniu portu.";

// UTF-16 to 8-bit Windows-1250.
std::string Narrow(const wchar_t* text) {
  const int n = WideCharToMultiByte(1250, 0, text, -1, nullptr, 0, nullptr, nullptr);
  if (n <= 1) return {};
  std::string out(static_cast<size_t>(n), '\0');
  WideCharToMultiByte(1250, 0, text, -1, out.data(), n, nullptr, nullptr);
  out.resize(static_cast<size_t>(n - 1));
  return out;
}

// "{4d36e978-e325-...}" in the fixed upper-case layout.
std::string GuidText(const std::string& text) {
  unsigned d1 = 0, d2 = 0, d3 = 0, b[8] = {};
  if (std::sscanf(text.c_str(), "{%8x-%4x-%4x-%2x%2x-%2x%2x%2x%2x%2x%2x}", &d1, &d2, &d3, &b[0],
                  &b[1], &b[2], &b[3], &b[4], &b[5], &b[6], &b[7]) != 11)
    return text;
  uint8_t bytes[8];
  for (int i = 0; i < 8; ++i) bytes[i] = static_cast<uint8_t>(b[i]);
  return FormatClassGuid(d1, static_cast<uint16_t>(d2), static_cast<uint16_t>(d3), bytes);
}

class PortList {
 public:
  ~PortList() {
    if (set_ != INVALID_HANDLE_VALUE) SetupDiDestroyDeviceInfoList(set_);
  }
  HDEVINFO set_ = INVALID_HANDLE_VALUE;
  SP_DEVINFO_LIST_DETAIL_DATA_W detail_{};
  SP_DEVINFO_DATA data_{};
};

enum class Read { kOk, kAbsent, kFailed };

// One registry property, read as the system asks: once for the size, once
// into a buffer of twice that size. An absent property reads as empty.
Read Property(PortList& list, DWORD property, DWORD& type, std::vector<BYTE>& buffer) {
  DWORD size = 0;
  if (!SetupDiGetDeviceRegistryPropertyW(list.set_, &list.data_, property, &type, nullptr, 0,
                                         &size)) {
    const DWORD error = GetLastError();
    if (error == ERROR_INVALID_DATA) return Read::kAbsent;
    if (error != ERROR_INSUFFICIENT_BUFFER) return Read::kFailed;
  }
  buffer.assign(static_cast<size_t>(size) * 2 + 4, 0);
  if (!SetupDiGetDeviceRegistryPropertyW(list.set_, &list.data_, property, &type, buffer.data(),
                                         static_cast<DWORD>(buffer.size()), nullptr))
    return Read::kFailed;
  return Read::kOk;
}

std::string PropertyText(DWORD property, DWORD type, const std::vector<BYTE>& buffer) {
  if (type == REG_DWORD) return std::to_string(*reinterpret_cast<const DWORD*>(buffer.data()));
  if (property == SPDRP_CLASSGUID)
    return GuidText(Narrow(reinterpret_cast<const wchar_t*>(buffer.data())));
  // Multi-strings show their first string.
  return Narrow(reinterpret_cast<const wchar_t*>(buffer.data()));
}

struct Slot {
  DWORD property;
  std::string DeviceProperties::*field;
};

constexpr Slot kSlots[] = {
    {SPDRP_HARDWAREID, &DeviceProperties::hardware_id},
    {SPDRP_COMPATIBLEIDS, &DeviceProperties::compatible_ids},
    {SPDRP_FRIENDLYNAME, &DeviceProperties::friendly_name},
    {SPDRP_CLASS, &DeviceProperties::class_description},
    {SPDRP_CLASSGUID, &DeviceProperties::class_guid},
    {SPDRP_CONFIGFLAGS, &DeviceProperties::config_flags},
    {SPDRP_DEVICEDESC, &DeviceProperties::device_description},
    {SPDRP_DRIVER, &DeviceProperties::driver},
    {SPDRP_MFG, &DeviceProperties::manufacturer},
    {SPDRP_ENUMERATOR_NAME, &DeviceProperties::enumerator},
    {SPDRP_PHYSICAL_DEVICE_OBJECT_NAME, &DeviceProperties::physical_name},
};

bool ReadProperties(PortList& list, DeviceProperties& p) {
  std::vector<BYTE> buffer;
  for (const Slot& slot : kSlots) {
    DWORD type = REG_SZ;
    const Read r = Property(list, slot.property, type, buffer);
    if (r == Read::kFailed) return false;
    p.*slot.field = r == Read::kOk ? PropertyText(slot.property, type, buffer) : std::string();
  }
  return true;
}

}  // namespace

bool UsbClass::DiscoverPlatform() {
  GUID guid{};
  DWORD required = 0;
  if (!SetupDiClassGuidsFromNameExW(L"ports", &guid, 1, &required, nullptr, nullptr)) {
    AddError(kSearchFailed, "Błąd systemowy w wywołaniu funkcji SetupDiClassGuidsFromNameEx.");
    return false;
  }
  PortList list;
  const DWORD flags = all_devices ? DIGCF_ALLCLASSES : DIGCF_PRESENT;
  list.set_ = SetupDiGetClassDevsExW(&guid, nullptr, nullptr, flags, nullptr, nullptr, nullptr);
  if (list.set_ == INVALID_HANDLE_VALUE) {
    AddError(kSearchFailed, "Błąd systemowy w wywołaniu funkcji SetupDiGetClassDevsEx.");
    return false;
  }
  list.detail_.cbSize = sizeof(list.detail_);
  if (!SetupDiGetDeviceInfoListDetailW(list.set_, &list.detail_)) {
    AddError("Krytyczny błąd w inicjacji listy informacji o urządzeniu.",
             "Błąd systemowy w wywołaniu funkcji SetupDiGetDeviceInfoListDetail.");
    return false;
  }
  list.data_.cbSize = sizeof(list.data_);
  for (DWORD index = 0; SetupDiEnumDeviceInfo(list.set_, index, &list.data_); ++index) {
    std::vector<wchar_t> id(2048, L'\0');
    if (CM_Get_Device_ID_ExW(list.data_.DevInst, id.data(), 2048, 0,
                             list.detail_.RemoteMachineHandle) != CR_SUCCESS) {
      AddError("Krytyczny błąd odczytu urządzeń powiązanych.",
               "Błąd systemowy w wywołaniu funkcji CM_Get_Device_ID_Ex.");
      return false;
    }
    DeviceProperties properties;
    properties.instance_id = Narrow(id.data());
    if (!PassesVendorFilter(properties.instance_id)) continue;
    if (!ReadProperties(list, properties)) {
      AddError("Krytyczny błąd w odczycie informacji o urządzeniach w petli GUID.",
               "Błąd systemowy w wywołaniu funkcji klasy GetDeviceProperty.",
               "oraz funkcji systemowej SetupDiGetDeviceRegistryProperty.");
      return false;
    }
    AddDevice(properties);
  }
  return true;
}

}  // namespace tavena

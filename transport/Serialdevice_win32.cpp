// Win32 backend: a blocking (not overlapped) handle from CreateFileW, with
// the driver's time-outs bounding every ReadFile and WriteFile.
#include <windows.h>

#include <string>

#include "Serialdevice.h"

namespace tavena {

namespace {

bool IsDevice(HANDLE h) {
  return h != nullptr && h != INVALID_HANDLE_VALUE;
}

// The errors a handle answers once its USB device has been pulled out.
bool VanishedError(DWORD error) {
  return error == ERROR_BAD_COMMAND || error == ERROR_ACCESS_DENIED;
}

class Win32SerialDevice : public SerialDevice {
 public:
  explicit Win32SerialDevice(HANDLE handle) : handle_(handle) {}
  ~Win32SerialDevice() override { Close(); }

  uint32_t SetupQueues(uint32_t in_size, uint32_t out_size) override {
    return SetupComm(handle_, in_size, out_size) ? 0 : GetLastError();
  }

  bool Escape(uint32_t code) override { return EscapeCommFunction(handle_, code) != 0; }

  // WINE turns a transmit purge into tcflush(TCOFLUSH), which drops bytes a
  // blocking WriteFile already reported as written (on a pseudo-terminal,
  // all the other end has not read yet); there only the receive side is
  // purged.
  bool Purge(uint32_t flags) override {
    if (RunningUnderWine()) flags &= ~(kPurgeTxAbort | kPurgeTxClear);
    return flags == 0 || PurgeComm(handle_, flags) != 0;
  }

  bool ClearErrors(uint32_t& in_queue, uint32_t& out_queue) override {
    DWORD errors = 0;
    COMSTAT stat{};
    if (!ClearCommError(handle_, &errors, &stat)) return Failed();
    in_queue = stat.cbInQue;
    out_queue = stat.cbOutQue;
    return true;
  }

  bool Configure(const LineSettings& line, const SerialTimeouts& timeouts) override {
    DCB dcb{};
    dcb.DCBlength = sizeof(DCB);
    GetCommState(handle_, &dcb);
    dcb.BaudRate = static_cast<DWORD>(line.baud_rate);
    dcb.fBinary = 1;
    dcb.ByteSize = 8;
    dcb.Parity = NOPARITY;
    dcb.StopBits = ONESTOPBIT;
    dcb.fDtrControl = DTR_CONTROL_DISABLE;
    dcb.fRtsControl = RTS_CONTROL_DISABLE;
    dcb.fOutxCtsFlow = 0;
    dcb.fOutxDsrFlow = 0;
    dcb.fDsrSensitivity = 0;
    dcb.fAbortOnError = line.abort_on_error ? 1 : 0;
    dcb.fTXContinueOnXoff = line.tx_continue_on_xoff ? 1 : 0;
    dcb.fOutX = 0;
    dcb.fInX = 0;
    dcb.XonChar = 17;
    dcb.XoffChar = 19;
    dcb.XonLim = 0;
    dcb.XoffLim = 0;
    dcb.fErrorChar = 0;
    dcb.fNull = 0;
    dcb.EofChar = 0;
    SetCommState(handle_, &dcb);
    COMMTIMEOUTS t{};
    t.ReadIntervalTimeout = timeouts.read_interval;
    t.ReadTotalTimeoutMultiplier = timeouts.read_multiplier;
    t.ReadTotalTimeoutConstant = timeouts.read_constant;
    t.WriteTotalTimeoutMultiplier = timeouts.write_multiplier;
    t.WriteTotalTimeoutConstant = timeouts.write_constant;
    SetCommTimeouts(handle_, &t);
    GetCommMask(handle_, &event_mask_);
    return SetCommMask(handle_, EV_TXEMPTY) != 0;
  }

  bool Read(uint8_t* dest, uint32_t max, uint32_t& got) override {
    DWORD n = 0;
    const bool ok = ReadFile(handle_, dest, max, &n, nullptr) != 0;
    got = n;
    return ok || Failed();
  }

  bool Write(const uint8_t* bytes, uint32_t n, uint32_t& written) override {
    DWORD done = 0;
    const bool ok = WriteFile(handle_, bytes, n, &done, nullptr) != 0;
    written = done;
    return ok || Failed();
  }

  bool WaitTransmitEmpty() override {
    return WaitCommEvent(handle_, &event_mask_, nullptr) != 0 || Failed();
  }

  void Close() override {
    if (!IsDevice(handle_)) return;
    CloseHandle(handle_);
    handle_ = INVALID_HANDLE_VALUE;
  }

  bool Gone() const override { return gone_; }

 private:
  // Notes a device that has vanished (from GetLastError); always false.
  bool Failed() {
    if (VanishedError(GetLastError())) gone_ = true;
    return false;
  }

  HANDLE handle_;
  DWORD event_mask_ = 0;
  bool gone_ = false;
};

// Slashes outnumbering backslashes in the environment block mean WINE.
bool EnvironmentLooksLikeWine() {
  wchar_t* block = GetEnvironmentStringsW();
  if (!block) return false;
  long slashes = 0, backslashes = 0;
  for (const wchar_t* p = block; *p; p += wcslen(p) + 1) {
    for (const wchar_t* c = p; *c; ++c) {
      if (*c == L'/') ++slashes;
      if (*c == L'\\') ++backslashes;
    }
  }
  FreeEnvironmentStringsW(block);
  return slashes > backslashes;
}

bool NtdllIsWine() {
  HMODULE ntdll = GetModuleHandleW(L"ntdll.dll");
  return ntdll && GetProcAddress(ntdll, "wine_get_version") != nullptr;
}

}  // namespace

std::unique_ptr<SerialDevice> OpenHostSerialDevice(const std::string& port_name, int& error) {
  std::wstring wide;
  for (const char c : port_name) wide += static_cast<wchar_t>(static_cast<unsigned char>(c));
  HANDLE h = CreateFileW(wide.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0,
                         nullptr);
  if (!IsDevice(h)) {
    error = static_cast<int>(GetLastError());
    return nullptr;
  }
  return std::make_unique<Win32SerialDevice>(h);
}

bool DetectWineHost() {
  return EnvironmentLooksLikeWine() || NtdllIsWine();
}

}  // namespace tavena

#include <windows.h>
// shellapi.h needs windows.h first.
#include <shellapi.h>

#include "Cliplatform.h"
#include "sequence/Messagelanguage.h"

namespace tavena {

namespace {

std::string ToUtf8(const wchar_t* text) {
  const int n = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
  if (n <= 1) return {};
  std::string out(static_cast<size_t>(n), '\0');
  WideCharToMultiByte(CP_UTF8, 0, text, -1, out.data(), n, nullptr, nullptr);
  out.resize(static_cast<size_t>(n - 1));
  return out;
}

std::wstring ToWide(const std::string& utf8) {
  const int n = MultiByteToWideChar(CP_UTF8, 0, utf8.c_str(), -1, nullptr, 0);
  if (n <= 1) return {};
  std::wstring out(static_cast<size_t>(n), L'\0');
  MultiByteToWideChar(CP_UTF8, 0, utf8.c_str(), -1, out.data(), n);
  out.resize(static_cast<size_t>(n - 1));
  return out;
}

}  // namespace

std::string NativePath(const std::string& utf8) {
  const std::wstring wide = ToWide(utf8);
  if (wide.empty()) return utf8;
  const int n = WideCharToMultiByte(CP_ACP, 0, wide.c_str(), -1, nullptr, 0, nullptr, nullptr);
  if (n <= 1) return utf8;
  std::string out(static_cast<size_t>(n), '\0');
  WideCharToMultiByte(CP_ACP, 0, wide.c_str(), -1, out.data(), n, nullptr, nullptr);
  out.resize(static_cast<size_t>(n - 1));
  return out;
}

std::vector<std::string> Utf8Arguments(int argc, char** argv) {
  int count = 0;
  wchar_t** wide = CommandLineToArgvW(GetCommandLineW(), &count);
  if (wide == nullptr) return std::vector<std::string>(argv, argv + argc);
  std::vector<std::string> args;
  for (int i = 0; i < count; ++i) args.push_back(ToUtf8(wide[i]));
  LocalFree(wide);
  return args;
}

void PrepareTerminal() {
  SetConsoleOutputCP(CP_UTF8);
}

bool StdoutIsTerminal() {
  DWORD mode = 0;
  return GetConsoleMode(GetStdHandle(STD_OUTPUT_HANDLE), &mode) != 0;
}

std::string ConfigFolder() {
  wchar_t path[MAX_PATH] = {};
  const DWORD n = GetModuleFileNameW(nullptr, path, MAX_PATH);
  std::string folder = ToUtf8(n > 0 ? path : L".");
  const size_t slash = folder.find_last_of("\\/");
  return slash == std::string::npos ? std::string(".") : folder.substr(0, slash);
}

std::string OpenFailureAdvice(int system_error) {
  if (system_error == ERROR_ACCESS_DENIED)
    return MsgUtf8("Port jest zajęty przez inny program.", "The port is used by another program.");
  if (system_error == ERROR_FILE_NOT_FOUND || system_error == ERROR_PATH_NOT_FOUND)
    return MsgUtf8("Nie ma takiego portu.", "There is no such port.");
  return {};
}

namespace {

volatile LONG g_interrupted = 0;

BOOL WINAPI OnConsoleControl(DWORD) {
  InterlockedExchange(&g_interrupted, 1);
  return TRUE;
}

}  // namespace

struct DeviceChanges::Host {};

DeviceChanges::DeviceChanges(const std::string&) : host_(std::make_unique<Host>()) {
  SetConsoleCtrlHandler(OnConsoleControl, TRUE);
}

DeviceChanges::~DeviceChanges() = default;

bool DeviceChanges::Watching() const {
  return true;
}

bool DeviceChanges::Wait() {
  for (int i = 0; i < 10 && !g_interrupted; ++i) Sleep(100);
  return !g_interrupted;
}

}  // namespace tavena

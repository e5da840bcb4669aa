#include "Createdirectory.h"

#include <vector>

#ifdef _WIN32
#include <windows.h>

#include "../sequence/Codepage.h"
#else
#include <sys/stat.h>
#endif

namespace tavena {

namespace {

#ifdef _WIN32
std::wstring Wide(const std::string& cp1250) {
  std::wstring out;
  for (const char c : cp1250) out += static_cast<wchar_t>(Cp1250ToUnicode(static_cast<uint8_t>(c)));
  return out;
}
void MakeDir(const std::string& path) {
  CreateDirectoryW(Wide(path).c_str(), nullptr);
}
#else
void MakeDir(const std::string& path) {
  mkdir(path.c_str(), 0777);
}
#endif

std::vector<std::string> SplitPath(const std::string& path) {
  std::vector<std::string> parts;
  std::string part;
  for (const char c : path) {
    if (c == kPathSeparator) {
      parts.push_back(part);
      part.clear();
    } else {
      part += c;
    }
  }
  parts.push_back(part);
  return parts;
}

bool IsDrive(const std::string& part) {
  return part.size() == 2 && static_cast<unsigned char>(part[0]) < 0x80 && part[1] == ':';
}

}  // namespace

bool DirectoryExists(const std::string& path) {
#ifdef _WIN32
  const DWORD attributes = GetFileAttributesW(Wide(path).c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY);
#else
  struct stat st {};
  return stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
#endif
}

bool ForceDirectories(std::string path) {
  if (!path.empty() && path.back() == kPathSeparator) path.pop_back();
  if (path.empty()) return false;
  if (DirectoryExists(path)) return true;

  const std::vector<std::string> parts = SplitPath(path);
  std::string prefix;
  size_t first = 0;
  if (IsDrive(parts[0])) {
    prefix = parts[0];
    first = 1;
  } else if (path.size() >= 2 && path[0] == kPathSeparator && path[1] == kPathSeparator) {
    prefix = std::string(2, kPathSeparator);
    first = 2;
  } else if (parts[0].empty()) {
    // An absolute path on Linux: the walk starts at the root.
    first = 1;
  }
  for (size_t i = first; i < parts.size() && !parts[i].empty(); ++i) {
    if (prefix.empty() && i == 0) {
      prefix = parts[i];
    } else if (prefix.size() == 2 && prefix[0] == kPathSeparator && i == 2) {
      prefix += parts[i];
    } else {
      prefix += kPathSeparator + parts[i];
    }
    if (!DirectoryExists(prefix)) MakeDir(prefix);
  }
  return DirectoryExists(prefix);
}

}  // namespace tavena

// Creates a folder together with its missing parents.
#pragma once

#include <string>

namespace tavena {

// Path separator of the host's file names.
#ifdef _WIN32
inline constexpr char kPathSeparator = '\\';
#else
inline constexpr char kPathSeparator = '/';
#endif

bool DirectoryExists(const std::string& path);

// Creates every missing folder of path (8-bit; Windows-1250 on Windows,
// UTF-8 on Linux). Answers whether the folder exists at the end.
bool ForceDirectories(std::string path);

}  // namespace tavena

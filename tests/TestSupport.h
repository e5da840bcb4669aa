// Small helpers shared by the tests.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "protocol/Exchange.h"

namespace tavena::test {

// A fresh temporary folder, removed with everything in it at scope end.
class TempDir {
 public:
  TempDir() {
#ifdef _WIN32
    path_ = std::filesystem::temp_directory_path() / ("tavena_test_" + std::to_string(std::rand()));
    std::filesystem::create_directories(path_);
#else
    std::string name = (std::filesystem::temp_directory_path() / "tavena_test_XXXXXX").string();
    path_ = mkdtemp(name.data());
#endif
  }
  ~TempDir() {
    std::error_code ec;
    std::filesystem::remove_all(path_, ec);
  }
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;
  const std::filesystem::path& path() const {
    return path_;
  }
  std::string str() const {
    return path_.string();
  }
  std::string file(const std::string& name) const {
    return (path_ / name).string();
  }

 private:
  std::filesystem::path path_;
};

inline std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

inline void WriteFile(const std::string& path, const std::string& bytes) {
  std::ofstream out(path, std::ios::binary);
  out << bytes;
}

// Upper-case hex pairs separated by single spaces.
inline std::string Hex(const std::string& bytes) {
  return HexPairs(bytes);
}

// Sets an environment variable for a scope, restoring the old value.
class ScopedEnv {
 public:
  ScopedEnv(const char* name, const std::string& value) : name_(name) {
    if (const char* old = std::getenv(name)) old_ = old, had_ = true;
    Set(name, value.c_str());
  }
  ~ScopedEnv() { Set(name_, had_ ? old_.c_str() : nullptr); }
  ScopedEnv(const ScopedEnv&) = delete;
  ScopedEnv& operator=(const ScopedEnv&) = delete;

 private:
  const char* name_;
  std::string old_;
  bool had_ = false;
  // nullptr removes the variable.
  static void Set(const char* name, const char* value) {
#ifdef _WIN32
    _putenv_s(name, value ? value : "");
#else
    value ? setenv(name, value, 1) : unsetenv(name);
#endif
  }
};

}  // namespace tavena::test

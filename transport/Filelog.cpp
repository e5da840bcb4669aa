#include "Filelog.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#ifdef _WIN32
#include <io.h>
#endif

#include "../sequence/Clock.h"
#include "Createdirectory.h"

namespace tavena {

std::string LogFolder() {
  if (const char* dir = std::getenv("TAVENA_LOG_DIR"); dir && *dir) return dir;
#ifdef _WIN32
  // Files kept outside the port logs (the service record) follow the logs
  // to c: where there is no d: drive.
  return _access("d:\\", 0) == 0 ? "d:\\tavena_log" : "c:\\tavena_log";
#else
  const char* home = std::getenv("HOME");
  return std::string(home && *home ? home : ".") + "/tavena_log";
#endif
}

std::string LogTimestamp() {
  const LocalTime t = CurrentClock().Local();
  char stamp[40];
  std::snprintf(stamp, sizeof stamp, "%04d.%02d.%02d %02d:%02d:%02d.%03d", t.year, t.month, t.day,
                t.hour, t.minute, t.second, t.millisecond);
  return stamp;
}

namespace {

std::FILE* OpenAppend(const std::string& path) {
  return std::fopen(path.c_str(), "ab");
}

std::FILE* OpenLogFile(const std::string& folder, const std::string& path) {
  std::FILE* f = OpenAppend(path);
  if (!f && ForceDirectories(folder)) f = OpenAppend(path);
#ifdef _WIN32
  // No d: drive: the same folder on c:.
  if (!f && !path.empty()) {
    std::string lower_path = path;
    lower_path[0] = static_cast<char>(lower_path[0] - 1);
    f = OpenAppend(lower_path);
    if (!f && !folder.empty()) {
      std::string lower_folder = folder.substr(0, 255);
      lower_folder[0] = static_cast<char>(lower_folder[0] - 1);
      if (ForceDirectories(lower_folder)) f = OpenAppend(lower_path);
    }
  }
#endif
  return f;
}

}  // namespace

void WriteLogLine(const char* text, const char* folder, const char* base) {
  const std::string dir = folder ? folder : "";
  const std::string path = dir + kPathSeparator + (base ? base : "") + "_log.txt";
  // Lines end with CR LF on every host, as the Windows text mode writes them.
  const std::string line = LogTimestamp() + "> " + (text ? text : "") + "\r\n";
  std::FILE* f = OpenLogFile(dir, path);
  if (!f) return;
  std::fwrite(line.data(), 1, line.size(), f);
  std::fclose(f);
}

void LogToPortFile(const char* text, const char* base) {
  WriteLogLine(text, LogFolder().c_str(), base);
}

void LogError(const char* text) {
  LogToPortFile(text, "error");
}

void LogToFolder(const char* text, const char* base, const char* folder) {
  WriteLogLine(text, folder, base);
}

}  // namespace tavena

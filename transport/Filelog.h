// Communication log: one timestamped line per event, appended to
// <folder>/<base>_log.txt. Keeps no file open and never reports a failure.
#pragma once

#include <string>

namespace tavena {

// The log folder: $TAVENA_LOG_DIR when set; else d:\tavena_log on Windows
// (c: where there is no d: drive, and for a log file d: refuses), or
// ~/tavena_log on Linux.
std::string LogFolder();

// "YYYY.MM.DD hh:mm:ss.mmm" of the current clock.
std::string LogTimestamp();

// The one worker. text, folder and base are 8-bit zero-terminated texts;
// a zero byte ends the text.
void WriteLogLine(const char* text, const char* folder, const char* base);
void LogToPortFile(const char* text, const char* base);
void LogError(const char* text);
void LogToFolder(const char* text, const char* base, const char* folder);

}  // namespace tavena

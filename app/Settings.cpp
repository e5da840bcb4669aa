#include "Settings.h"

#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "sequence/Messagelanguage.h"
#include "transport/Createdirectory.h"

namespace tavena {

namespace {

void AddText(std::vector<SettingEntry>& table, const std::string& key, std::string& target) {
  table.push_back({key, kSettingText, &target, nullptr, nullptr});
}

void AddInteger(std::vector<SettingEntry>& table, const std::string& key, int32_t& target) {
  table.push_back({key, kSettingInteger, nullptr, &target, nullptr});
}

void AddFlag(std::vector<SettingEntry>& table, const std::string& key, bool& target) {
  table.push_back({key, kSettingFlag, nullptr, nullptr, &target});
}

void AddPlace(std::vector<SettingEntry>& table, const std::string& prefix, WindowPlace& place,
              bool with_showing) {
  AddInteger(table, prefix + "Top", place.top);
  AddInteger(table, prefix + "Left", place.left);
  AddInteger(table, prefix + "Width", place.width);
  AddInteger(table, prefix + "Height", place.height);
  if (with_showing) AddFlag(table, prefix + "Showing", place.showing);
}

void AddFont(std::vector<SettingEntry>& table, const std::string& prefix, FontSetting& font) {
  AddText(table, prefix + "Set", font.face);
  AddInteger(table, prefix + "Col", font.colour);
  AddInteger(table, prefix + "Size", font.size);
  AddInteger(table, prefix + "Style", font.style);
}

// Signed decimal number read as 64 bits and kept as 32; no number gives 0.
int32_t ParseInteger(const std::string& text) {
  return static_cast<int32_t>(std::strtoll(text.c_str(), nullptr, 10));
}

void AssignValue(const SettingEntry& entry, const std::string& value) {
  switch (entry.kind) {
    case kSettingText:
      *entry.text = value;
      break;
    case kSettingInteger:
      *entry.integer = ParseInteger(value);
      break;
    case kSettingFlag:
      *entry.flag = std::strtoll(value.c_str(), nullptr, 10) > 0;
      break;
  }
}

std::string FormatValue(const SettingEntry& entry) {
  switch (entry.kind) {
    case kSettingText:
      return *entry.text;
    case kSettingInteger:
      return std::to_string(*entry.integer);
    case kSettingFlag:
      return *entry.flag ? "1" : "0";
  }
  return {};
}

const SettingEntry* FindEntry(const std::vector<SettingEntry>& table, const std::string& key) {
  for (const SettingEntry& entry : table)
    if (entry.key == key) return &entry;
  return nullptr;
}

// Interprets one line; answers false when the line has no "=" (the rest of
// the file is then abandoned).
bool ReadLine(const std::vector<SettingEntry>& table, const std::string& line) {
  const size_t start = line.find_first_not_of(" \t");
  const size_t equals = line.find('=', start == std::string::npos ? 0 : start);
  if (start == std::string::npos || equals == std::string::npos) return false;
  if (const SettingEntry* entry = FindEntry(table, line.substr(start, equals - start)))
    AssignValue(*entry, line.substr(equals + 1));
  return true;
}

void DefaultFont(FontSetting& font, int32_t colour, int32_t style) {
  if (font.face.empty()) {
    font.face = "Arial";
    font.colour = colour;
    font.style = style;
  }
  if (font.size == 0) font.size = 10;
}

// Writes text to path and waits until it is on the disk, so that the rename
// that follows never exposes an empty file after a power cut.
bool WriteDurably(const std::string& path, const std::string& text) {
  std::FILE* file = std::fopen(path.c_str(), "wb");
  if (!file) return false;
  bool ok = std::fwrite(text.data(), 1, text.size(), file) == text.size() && std::fflush(file) == 0;
#ifdef _WIN32
  ok = ok && _commit(_fileno(file)) == 0;
#else
  ok = ok && fsync(fileno(file)) == 0;
#endif
  return std::fclose(file) == 0 && ok;
}

}  // namespace

std::vector<SettingEntry> SettingsTable(SettingsRecord& r) {
  std::vector<SettingEntry> table;
  AddText(table, "ListPath", r.list_path);
  AddPlace(table, "List", r.list, true);
  AddPlace(table, "Main", r.main, false);
  AddText(table, "PodPath", r.pod_path);
  AddText(table, "PodFile", r.pod_file);
  AddPlace(table, "Pod", r.pod, true);
  AddText(table, "EditPath", r.edit_path);
  AddText(table, "EditFile", r.edit_file);
  AddPlace(table, "Edit", r.edit, true);
  AddText(table, "EditSeqPath", r.edit_seq_path);
  AddText(table, "EditSeqFile", r.edit_seq_file);
  AddPlace(table, "EditSeq", r.edit_seq, true);
  AddText(table, "SenderPath", r.sender_path);
  AddText(table, "SenderFile", r.sender_file);
  AddPlace(table, "Sender", r.sender, true);
  AddFont(table, "FontInfo", r.font_info);
  AddFont(table, "FontEdit", r.font_edit);
  AddFont(table, "FontWind", r.font_wind);
  return table;
}

bool LoadSettings(const std::string& path, SettingsRecord& record) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return false;
  const std::vector<SettingEntry> table = SettingsTable(record);
  std::string line;
  while (std::getline(in, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (line.size() < 3 || !ReadLine(table, line)) break;
  }
  return true;
}

bool SaveSettings(const std::string& path, const SettingsRecord& record) {
  SettingsRecord copy = record;  // the table needs mutable targets
  std::string text;
  for (const SettingEntry& entry : SettingsTable(copy))
    text += entry.key + "=" + FormatValue(entry) + "\r\n";
  const std::string fresh = path + ".new";
  std::error_code error;
  if (!WriteDurably(fresh, text)) {
    std::filesystem::remove(fresh, error);
    return false;
  }
  std::filesystem::rename(fresh, path, error);
  return !error;
}

void ApplyFontDefaults(SettingsRecord& record) {
  DefaultFont(record.font_info, 0x696A4F, kFontBold | kFontItalic);
  DefaultFont(record.font_edit, -1, kFontBold | kFontItalic);
  DefaultFont(record.font_wind, -1, 0);
}

SettingsRecord& Settings() {
  static SettingsRecord record;
  return record;
}

std::string SettingsFolder(const std::string& program_folder) {
#ifdef _WIN32
  std::string folder = program_folder;
#else
  (void)program_folder;
  std::string folder;
  if (const char* xdg = std::getenv("XDG_CONFIG_HOME"); xdg && *xdg)
    folder = std::string(xdg) + "/tavena";
  else if (const char* home = std::getenv("HOME"); home && *home)
    folder = std::string(home) + "/.config/tavena";
  else
    folder = ".";
  ForceDirectories(folder);
#endif
  if (!folder.empty() && folder.back() != kPathSeparator) folder += kPathSeparator;
  return folder;
}

void ReadMessageLanguage(const std::string& folder) {
  const int digit = ReadLanguageFile(folder + "language.tav");
  if (digit >= 0) MessageLanguage = digit;
}

}  // namespace tavena

#include "Settings.h"

#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "sequence/Messagelanguage.h"
#include "transport/Createdirectory.h"

namespace tavena {

namespace {

// Signed decimal number read as 64 bits and kept as 32; no number gives 0.
int32_t ParseInteger(const std::string& text) {
  return static_cast<int32_t>(std::strtoll(text.c_str(), nullptr, 10));
}

void AddText(KeyValueTable& table, const std::string& key, std::string& target) {
  table.push_back(
      {key, [&target] { return target; }, [&target](const std::string& value) { target = value; }});
}

void AddInteger(KeyValueTable& table, const std::string& key, int32_t& target) {
  table.push_back({key, [&target] { return std::to_string(target); },
                   [&target](const std::string& value) { target = ParseInteger(value); }});
}

void AddFlag(KeyValueTable& table, const std::string& key, bool& target) {
  table.push_back({key, [&target] { return std::string(target ? "1" : "0"); },
                   [&target](const std::string& value) {
                     target = std::strtoll(value.c_str(), nullptr, 10) > 0;
                   }});
}

void AddPlace(KeyValueTable& table, const std::string& prefix, WindowPlace& place,
              bool with_showing) {
  AddInteger(table, prefix + "Top", place.top);
  AddInteger(table, prefix + "Left", place.left);
  AddInteger(table, prefix + "Width", place.width);
  AddInteger(table, prefix + "Height", place.height);
  if (with_showing) AddFlag(table, prefix + "Showing", place.showing);
}

void AddFont(KeyValueTable& table, const std::string& prefix, FontSetting& font) {
  AddText(table, prefix + "Set", font.face);
  AddInteger(table, prefix + "Col", font.colour);
  AddInteger(table, prefix + "Size", font.size);
  AddInteger(table, prefix + "Style", font.style);
}

// A line without "=" abandons the rest of the file.
constexpr KeyValueRules kSettingsRules{.line_without_equals_ends = true};

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

KeyValueTable SettingsTable(SettingsRecord& r) {
  KeyValueTable table;
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
  return ReadKeyValueFile(path, SettingsTable(record), kSettingsRules);
}

void ReadSettings(std::string_view text, SettingsRecord& record) {
  ReadKeyValues(text, SettingsTable(record), kSettingsRules);
}

bool SaveSettings(const std::string& path, const SettingsRecord& record) {
  SettingsRecord copy = record;  // the table needs mutable targets
  const std::string text = WriteKeyValues(SettingsTable(copy));
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

// The settings record of "config.tav": window places, last files and the
// three font sets. Its table of key, kind and target drives the key=value
// reader and writer (app/Keyvalue.h). Plain C++ (no Qt), 8-bit Windows-1250
// texts.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "app/Keyvalue.h"

namespace tavena {

// Top, left, width and height of a window, and whether it was open.
struct WindowPlace {
  int32_t top = 0;
  int32_t left = 0;
  int32_t width = 0;
  int32_t height = 0;
  bool showing = false;
};

// Face name, colour (0x00BBGGRR, -1 = leave the control's colour), size in
// points and style bits (bold 1, italic 2, underline 4, strike-out 8).
struct FontSetting {
  std::string face;
  int32_t colour = 0;
  int32_t size = 0;
  int32_t style = 0;
};

enum FontStyleBit { kFontBold = 1, kFontItalic = 2, kFontUnderline = 4, kFontStrikeOut = 8 };

struct SettingsRecord {
  std::string list_path;
  WindowPlace list;
  WindowPlace main;  // its showing flag is not stored
  std::string pod_path, pod_file;
  WindowPlace pod;
  std::string edit_path, edit_file;
  WindowPlace edit;
  std::string edit_seq_path, edit_seq_file;
  WindowPlace edit_seq;
  std::string sender_path, sender_file;
  WindowPlace sender;
  FontSetting font_info, font_edit, font_wind;
};

// The table over a record, in file order. Kinds: text (as is), integer
// (signed decimal, "%d"), flag ("1"/"0", read as a number greater than 0).
KeyValueTable SettingsTable(SettingsRecord& record);

// Reads path into record. A missing file leaves the record as it is; reading
// stops at a line shorter than 3 characters or at a line without "=";
// unknown keys are ignored. Answers whether the file could be opened.
bool LoadSettings(const std::string& path, SettingsRecord& record);
// The same rules over the bytes of a settings file.
void ReadSettings(std::string_view text, SettingsRecord& record);

// Writes every entry as "key=value" CR LF into a new file beside path and
// renames it over path, so a crash never leaves a half-written file.
bool SaveSettings(const std::string& path, const SettingsRecord& record);

// Gives each font set its defaults: an empty face restores face, colour and
// style; a zero size restores the size.
void ApplyFontDefaults(SettingsRecord& record);

// The process-wide record.
SettingsRecord& Settings();

// Folder of config.tav and language.tav, ending with the path separator:
// the program's folder on Windows, $XDG_CONFIG_HOME/tavena (default
// ~/.config/tavena) elsewhere, created when missing.
std::string SettingsFolder(const std::string& program_folder);

// Sets MessageLanguage from the single digit of language.tav, if present.
void ReadMessageLanguage(const std::string& folder);

}  // namespace tavena

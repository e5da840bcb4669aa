// Process-wide message language: 0 Polish, anything else English.
#pragma once

#include <string>

namespace tavena {

extern int MessageLanguage;

inline bool EnglishMessages() {
  return MessageLanguage != 0;
}

// Picks the text of the current language. Both arguments are UTF-8 source
// literals; the result is the 8-bit Windows-1250 text the core works with.
std::string Msg(const char* polish_utf8, const char* english);

// Same choice, kept in UTF-8 for the user interface and the terminal.
inline const char* MsgUtf8(const char* polish_utf8, const char* english) {
  return EnglishMessages() ? english : polish_utf8;
}

// Reads a single leading digit from a language.tav file. Returns -1 when the
// file is missing or does not start with a digit.
int ReadLanguageFile(const std::string& path);

}  // namespace tavena

#include "Messagelanguage.h"

#include <cstdio>

#include "Codepage.h"

namespace tavena {

int MessageLanguage = 0;

std::string Msg(const char* polish_utf8, const char* english) {
  return Utf8ToCp1250(EnglishMessages() ? english : polish_utf8);
}

int ReadLanguageFile(const std::string& path) {
  std::FILE* f = std::fopen(path.c_str(), "rb");
  if (!f) return -1;
  const int c = std::fgetc(f);
  std::fclose(f);
  return (c >= '0' && c <= '9') ? c - '0' : -1;
}

}  // namespace tavena

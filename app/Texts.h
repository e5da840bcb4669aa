// Conversion of 8-bit Windows-1250 texts at the window's edge.
#pragma once

#include <QString>
#include <string>

#include "sequence/Codepage.h"

namespace tavena {

inline QString FromCp1250(const std::string& cp1250) {
  return QString::fromStdString(Cp1250ToUtf8(cp1250));
}

inline std::string ToCp1250(const QString& text) {
  return Utf8ToCp1250(text.toStdString());
}

// A UTF-8 source literal as a Qt string.
inline QString FromUtf8(const char* utf8) {
  return QString::fromUtf8(utf8);
}

}  // namespace tavena

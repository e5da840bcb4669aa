#include "Framefile.h"

#include <cstdint>
#include <cstdio>

#include "Drukarka.h"
#include "sequence/Codepage.h"

namespace tavena {

namespace {

bool IsHexDigit(char c) {
  return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
}

// The kept digit rule: only 0..9 and A..F give their hex value.
int DigitValue(char c) {
  return c <= '9' ? c - 0x30 : c - 0x37;
}

// "[x", two hex digits, "]" at pos.
bool ReadableByteAt(std::string_view line, size_t pos) {
  return pos + 5 <= line.size() && line[pos] == '[' && line[pos + 1] == 'x' &&
         IsHexDigit(line[pos + 2]) && IsHexDigit(line[pos + 3]) && line[pos + 4] == ']';
}

constexpr std::string_view kFrameStart = "\x1bP";
constexpr std::string_view kFrameEnd = "\x1b\\";

}  // namespace

std::string EncodeReadable(std::string_view bytes) {
  std::string line;
  for (const char c : bytes) {
    const auto byte = static_cast<uint8_t>(c);
    if (byte >= 0x20 && byte <= 0x7E) {
      line += c;
    } else {
      char hex[8];
      std::snprintf(hex, sizeof hex, "[x%02X]", byte);
      line += hex;
    }
  }
  return line;
}

std::string DecodeReadable(std::string_view line) {
  std::string bytes;
  size_t pos = 0;
  while (pos < line.size()) {
    if (ReadableByteAt(line, pos)) {
      bytes += static_cast<char>(DigitValue(line[pos + 2]) * 16 + DigitValue(line[pos + 3]));
      pos += 5;
    } else {
      bytes += line[pos++];
    }
  }
  return bytes;
}

std::vector<std::string> ReadSekText(std::string_view file) {
  std::vector<std::string> lines;
  size_t pos = 0;
  while (pos < file.size()) {
    size_t end = file.find('\n', pos);
    if (end == std::string_view::npos) end = file.size();
    std::string_view line = file.substr(pos, end - pos);
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    if (line.empty()) break;
    lines.emplace_back(line);
    pos = end + 1;
  }
  return lines;
}

std::string WriteSekText(const std::vector<std::string>& lines) {
  std::string file;
  for (const std::string& line : lines) file += line + "\r\n";
  return file;
}

std::vector<std::string> ReadFrameFile(std::string_view file) {
  const std::string text = FromMazovia(std::string(file));
  std::vector<std::string> lines;
  size_t pos = 0;
  for (;;) {
    const size_t start = text.find(kFrameStart, pos);
    if (start == std::string::npos) break;
    const size_t body = start + kFrameStart.size();
    const size_t end = text.find(kFrameEnd, body);
    if (end == std::string::npos) break;
    const size_t length = end - body;
    lines.push_back(
        EncodeReadable(std::string_view(text).substr(body, length < 2 ? 0 : length - 2)));
    pos = end + kFrameEnd.size();
  }
  return lines;
}

std::string WriteFrameFile(const std::vector<std::string>& lines) {
  std::string file;
  for (const std::string& line : lines) file += BuildFrame(DecodeReadable(line), true);
  return file;
}

}  // namespace tavena

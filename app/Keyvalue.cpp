#include "Keyvalue.h"

#include <cstdio>
#include <fstream>
#include <iterator>

namespace tavena {

namespace {

const KeyValueRow* FindRow(const KeyValueTable& table, std::string_view key) {
  for (const KeyValueRow& row : table)
    if (row.key == key) return &row;
  return nullptr;
}

// Interprets one line; answers false when the reading ends here.
bool ReadLine(std::string_view line, const KeyValueTable& table, const KeyValueRules& rules) {
  const size_t start = line.find_first_not_of(" \t");
  const size_t equals = start == std::string_view::npos ? start : line.find('=', start);
  if (equals == std::string_view::npos) return !rules.line_without_equals_ends;
  if (const KeyValueRow* row = FindRow(table, line.substr(start, equals - start)))
    row->set(std::string(line.substr(equals + 1)));
  return true;
}

}  // namespace

std::string WriteKeyValues(const KeyValueTable& table) {
  std::string text;
  for (const KeyValueRow& row : table) text += row.key + "=" + row.get() + "\r\n";
  return text;
}

void ReadKeyValues(std::string_view text, const KeyValueTable& table, const KeyValueRules& rules) {
  while (!text.empty()) {
    const size_t end = text.find('\n');
    std::string_view line = text.substr(0, end);
    text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    if (line.size() <= 2 || !ReadLine(line, table, rules)) return;
  }
}

bool ReadKeyValueFile(const std::string& path, const KeyValueTable& table,
                      const KeyValueRules& rules) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return false;
  const std::string text{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
  ReadKeyValues(text, table, rules);
  return true;
}

bool WriteKeyValueFile(const std::string& path, const KeyValueTable& table) {
  const std::string text = WriteKeyValues(table);
  std::FILE* file = std::fopen(path.c_str(), "wb");
  if (!file) return false;
  const bool written = std::fwrite(text.data(), 1, text.size(), file) == text.size();
  return std::fclose(file) == 0 && written;
}

}  // namespace tavena

// The one reader and writer of the program's "key=value" files (config.tav
// and the .pod entity files). A table of rows drives both: each row is a
// key and the way to its target, which the table's owner builds from the
// row's kind. Plain C++ (no Qt); keys and values are 8-bit Windows-1250.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace tavena {

struct KeyValueRow {
  std::string key;
  // The target's value as written (empty when the target is missing).
  std::function<std::string()> get;
  // Gives a value read from the file to the target (ignored when missing).
  std::function<void(const std::string& value)> set;
};

using KeyValueTable = std::vector<KeyValueRow>;

// Where the two files differ: a line without "=" ends config.tav, while an
// entity file skips it.
struct KeyValueRules {
  bool line_without_equals_ends = false;
};

// "key=value" CR LF for every row, in table order.
std::string WriteKeyValues(const KeyValueTable& table);

// Interprets text line by line: a line ends at LF (a CR before it is
// dropped); the first line of 2 characters or fewer ends the reading;
// leading blanks are skipped; the key before the first "=" is matched
// case-sensitively and its row's target takes everything after the "=";
// unknown keys are skipped, so a later duplicate overwrites an earlier one.
void ReadKeyValues(std::string_view text, const KeyValueTable& table, const KeyValueRules& rules);

// The file forms (path in the system's 8-bit file name encoding). Reading
// answers false, leaving the targets alone, when the file cannot be opened;
// writing creates the file anew.
bool ReadKeyValueFile(const std::string& path, const KeyValueTable& table,
                      const KeyValueRules& rules);
bool WriteKeyValueFile(const std::string& path, const KeyValueTable& table);

}  // namespace tavena

// The printer models the simulator can play, selected by name.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavena {

struct SimModelInfo {
  std::string name;                 // the name it is selected by ("LUMEN", "QX-1:4")
  int type_code = 0;                // the type code its identity answer reads as
  int subtype = 0;                  // the digit before "#R" (types 4 and 6 read it)
  std::string identity_name;        // text before "/" in the identity answer
  std::string version;              // text after "/"
  std::string unique_number;        // 11 characters
  bool answers_identity = true;     // a printer: control bytes, frames, identity
  bool electronic_journal = false;  // answers the unique-number request ESC "S"
  bool korvus = false;              // answers the "0^" probe

  // Printers of the two-digit family take VAT rates as "7$p" + values with
  // 101 (inactive) and 100 (exempt); the others take flags and values.
  bool TwoDigitRates() const {
    return (type_code == 4 || type_code == 6) && (subtype == 3 || subtype == 4);
  }
};

// A model by name, letter case ignored: LUMEN, SOLIDA, "SOLIDA EJ" (also
// SOLIDA-EJ), QX-1 (subtype 3), QX-1TR (subtype 4), TM410, MERIDO, EJ-COPY.
// QX-1 and QX-1TR take another subtype digit after ":" ("QX-1:2").
std::optional<SimModelInfo> FindSimModel(std::string_view name);
// The names FindSimModel knows, for help texts.
std::vector<std::string> SimModelNames();

}  // namespace tavena

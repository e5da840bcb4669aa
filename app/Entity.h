// Taxpayer entity files (".pod"): the header lines with their print
// attributes, the NIP and the seven VAT rates typed into the main window.
// One table of key, control and kind drives the key=value reader and writer
// (app/Keyvalue.h); the controls are reached by name. Plain C++ (no Qt).
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tavena {

// Text and box are used by the table; the third kind behaves like text.
enum EntityKind { kEntityText = 1, kEntityBox = 2, kEntityOtherText = 3 };

struct EntityRow {
  std::string key;
  std::string control;
  EntityKind kind;
};

// The 32 rows in file order: Linia1..8, NIP, LineBold1..8, LineCenter1..8,
// PTUA..PTUG.
const std::vector<EntityRow>& EntityTable();

// The controls of the window that holds the entity, found by name.
class EntityControls {
 public:
  virtual ~EntityControls() = default;
  virtual bool Has(const std::string& name) const = 0;
  // Texts are 8-bit Windows-1250.
  virtual std::string Text(const std::string& name) const = 0;
  virtual void SetText(const std::string& name, const std::string& text) = 0;
  virtual bool Checked(const std::string& name) const = 0;
  virtual void SetChecked(const std::string& name, bool checked) = 0;
};

// Texts empty, boxes unchecked, for every control of the table.
void ResetEntity(EntityControls& form);

// Resets the controls, then reads the file into them; a missing file reads
// as empty (answers false). A box is checked when its value's first
// character is above "0".
bool ReadEntity(const std::string& path, EntityControls& form);
// Reads the bytes of an entity file (the same rules, no reset).
void ReadEntityText(std::string_view text, EntityControls& form);

// Creates the file anew with one "key=value" CR LF line per row; a missing
// control writes an empty value.
bool WriteEntity(const std::string& path, EntityControls& form);
// The bytes WriteEntity writes.
std::string EntityText(EntityControls& form);

}  // namespace tavena

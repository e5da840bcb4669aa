#include "Entity.h"

#include "app/Keyvalue.h"

namespace tavena {

namespace {

std::vector<EntityRow> BuildTable() {
  std::vector<EntityRow> rows;
  for (int n = 1; n <= 8; ++n)
    rows.push_back({"Linia" + std::to_string(n), "Line" + std::to_string(n), kEntityText});
  rows.push_back({"NIP", "ENIP", kEntityText});
  for (int n = 1; n <= 8; ++n)
    rows.push_back({"LineBold" + std::to_string(n), "BLine" + std::to_string(n), kEntityBox});
  for (int n = 1; n <= 8; ++n)
    rows.push_back({"LineCenter" + std::to_string(n), "CLine" + std::to_string(n), kEntityBox});
  for (const char letter : std::string("ABCDEFG"))
    rows.push_back({std::string("PTU") + letter, std::string("E_Vat") + letter, kEntityText});
  return rows;
}

std::string ValueOf(const EntityRow& row, const EntityControls& form) {
  if (!form.Has(row.control)) return {};
  if (row.kind == kEntityBox) return form.Checked(row.control) ? "1" : "0";
  return form.Text(row.control);
}

void Assign(const EntityRow& row, EntityControls& form, const std::string& value) {
  if (!form.Has(row.control)) return;
  if (row.kind == kEntityBox)
    form.SetChecked(row.control, !value.empty() && static_cast<unsigned char>(value[0]) > '0');
  else
    form.SetText(row.control, value);
}

KeyValueTable Bind(EntityControls& form) {
  KeyValueTable table;
  for (const EntityRow& row : EntityTable())
    table.push_back({row.key, [&row, &form] { return ValueOf(row, form); },
                     [&row, &form](const std::string& value) { Assign(row, form, value); }});
  return table;
}

// A line without "=" is skipped, not the end of the file.
constexpr KeyValueRules kEntityRules{.line_without_equals_ends = false};

}  // namespace

const std::vector<EntityRow>& EntityTable() {
  static const std::vector<EntityRow> table = BuildTable();
  return table;
}

void ResetEntity(EntityControls& form) {
  for (const EntityRow& row : EntityTable()) Assign(row, form, {});
}

bool ReadEntity(const std::string& path, EntityControls& form) {
  ResetEntity(form);
  return ReadKeyValueFile(path, Bind(form), kEntityRules);
}

void ReadEntityText(std::string_view text, EntityControls& form) {
  ReadKeyValues(text, Bind(form), kEntityRules);
}

bool WriteEntity(const std::string& path, EntityControls& form) {
  return WriteKeyValueFile(path, Bind(form));
}

std::string EntityText(EntityControls& form) {
  return WriteKeyValues(Bind(form));
}

}  // namespace tavena

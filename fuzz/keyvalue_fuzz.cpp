// Any bytes read as a .pod entity file and as config.tav: nothing crashes,
// reading takes time and memory in proportion to the input, and what was
// read survives a write and a second read unchanged.
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>

#include "app/Entity.h"
#include "app/Settings.h"

namespace {

void Check(bool condition) {
  if (!condition) __builtin_trap();
}

// The main window's entity controls as plain values; "Line8" is missing.
class FakeControls : public tavena::EntityControls {
 public:
  bool Has(const std::string& name) const override { return name != "Line8"; }
  std::string Text(const std::string& name) const override { return Value(name); }
  void SetText(const std::string& name, const std::string& text) override {
    Check(Has(name));
    values[name] = text;
  }
  bool Checked(const std::string& name) const override { return Value(name) == "1"; }
  void SetChecked(const std::string& name, bool checked) override {
    Check(Has(name));
    values[name] = checked ? "1" : "0";
  }
  std::string Value(const std::string& name) const {
    const auto found = values.find(name);
    return found == values.end() ? std::string() : found->second;
  }

  std::map<std::string, std::string> values;
};

void ReadAsEntity(std::string_view bytes) {
  FakeControls first;
  tavena::ResetEntity(first);
  tavena::ReadEntityText(bytes, first);
  Check(first.values.size() == 31);  // 32 rows, one control missing
  for (const auto& [name, value] : first.values)
    Check(value.size() <= bytes.size() + 1);  // "0" of a box

  FakeControls second;
  tavena::ResetEntity(second);
  const std::string text = tavena::EntityText(first);
  tavena::ReadEntityText(text, second);
  Check(second.values == first.values);
}

std::string Written(tavena::SettingsRecord& record) {
  return tavena::WriteKeyValues(tavena::SettingsTable(record));
}

void ReadAsSettings(std::string_view bytes) {
  tavena::SettingsRecord first;
  tavena::ReadSettings(bytes, first);
  Check(first.list_path.size() <= bytes.size() && first.font_wind.face.size() <= bytes.size());
  const std::string text = Written(first);
  tavena::SettingsRecord second;
  tavena::ReadSettings(text, second);
  Check(Written(second) == text);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  ReadAsEntity(bytes);
  ReadAsSettings(bytes);
  return 0;
}

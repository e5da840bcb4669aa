// Subcommands on the program's files: decompile (.bin to readable lines),
// entity show (.pod) and program (a .pod's header and VAT rates to the printer).
#include <CLI/CLI.hpp>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>

#include "Cli.h"
#include "Cliplatform.h"
#include "Cliprinter.h"
#include "app/Entity.h"
#include "protocol/Framefile.h"
#include "sequence/Codepage.h"
#include "sequence/Messagelanguage.h"

namespace tavena {

namespace {

bool ReadWholeFile(const std::string& utf8_path, std::string& bytes) {
  std::ifstream in(std::filesystem::path(std::u8string(utf8_path.begin(), utf8_path.end())),
                   std::ios::binary);
  if (!in) return false;
  bytes.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  return true;
}

bool WriteWholeFile(const std::string& utf8_path, const std::string& bytes) {
  std::ofstream out(std::filesystem::path(std::u8string(utf8_path.begin(), utf8_path.end())),
                    std::ios::binary | std::ios::trunc);
  return out.write(bytes.data(), static_cast<std::streamsize>(bytes.size())) && out.flush();
}

int CannotRead(CliContext& ctx, const std::string& path) {
  return FailUtf8(ctx, kExitUsage,
                  MsgUtf8("Nie można odczytać pliku: ", "Cannot read the file: ") + path);
}

struct DecompileOptions {
  std::string source;
  std::string output;
};

int RunDecompile(CliContext& ctx, const DecompileOptions& o) {
  std::string bytes;
  if (!ReadWholeFile(o.source, bytes)) return CannotRead(ctx, o.source);
  const std::vector<std::string> lines = ReadFrameFile(bytes);
  if (o.output.empty()) {
    for (const std::string& line : lines) PrintLine(ctx, line);
    return kExitDone;
  }
  if (!WriteWholeFile(o.output, WriteSekText(lines)))
    return FailUtf8(ctx, kExitUsage,
                    MsgUtf8("Nie można zapisać pliku: ", "Cannot write the file: ") + o.output);
  return kExitDone;
}

// The entity's controls without a window: texts and boxes by name.
class EntityValues : public EntityControls {
 public:
  EntityValues() {
    for (const EntityRow& row : EntityTable())
      if (row.kind == kEntityBox)
        boxes_[row.control] = false;
      else
        texts_[row.control] = {};
  }
  bool Has(const std::string& name) const override {
    return texts_.contains(name) || boxes_.contains(name);
  }
  std::string Text(const std::string& name) const override {
    const auto it = texts_.find(name);
    return it == texts_.end() ? std::string() : it->second;
  }
  void SetText(const std::string& name, const std::string& text) override { texts_[name] = text; }
  bool Checked(const std::string& name) const override {
    const auto it = boxes_.find(name);
    return it != boxes_.end() && it->second;
  }
  void SetChecked(const std::string& name, bool checked) override { boxes_[name] = checked; }

 private:
  std::map<std::string, std::string> texts_;
  std::map<std::string, bool> boxes_;
};

bool LoadEntity(CliContext& ctx, const std::string& path, EntityValues& entity) {
  std::error_code ec;
  if (std::filesystem::is_regular_file(
          std::filesystem::path(std::u8string(path.begin(), path.end())), ec) &&
      ReadEntity(NativePath(path), entity))
    return true;
  CannotRead(ctx, path);
  return false;
}

HeaderText EntityHeader(const EntityValues& entity) {
  HeaderText h;
  for (int i = 0; i < kHeaderLines; ++i) {
    const std::string n = std::to_string(i + 1);
    h.lines[i] = entity.Text("Line" + n);
    h.large[i] = entity.Checked("BLine" + n);
    h.centre[i] = entity.Checked("CLine" + n);
  }
  return h;
}

std::vector<std::string> EntityRates(const EntityValues& entity) {
  std::vector<std::string> rates;
  for (const char letter : std::string("ABCDEFG"))
    rates.push_back(entity.Text(std::string("E_Vat") + letter));
  return rates;
}

int RunEntityShow(CliContext& ctx, const std::string& path) {
  EntityValues entity;
  if (!LoadEntity(ctx, path, entity)) return kExitUsage;
  const HeaderText h = EntityHeader(entity);
  for (int i = 0; i < kHeaderLines; ++i)
    PrintLine(ctx, std::to_string(i + 1) + ": " + h.lines[i] +
                       (h.large[i] ? Msg("  [pogrubiona]", "  [bold]") : "") +
                       (h.centre[i] ? Msg("  [środek]", "  [centre]") : ""));
  PrintLine(ctx, "NIP: " + entity.Text("ENIP"));
  const std::vector<std::string> rates = EntityRates(entity);
  for (int i = 0; i < kVatRateCount; ++i)
    PrintLine(ctx, std::string(1, static_cast<char>('A' + i)) + ": " + rates[i]);
  return kExitDone;
}

int RunProgram(CliContext& ctx, const std::string& path) {
  EntityValues entity;
  if (!LoadEntity(ctx, path, entity)) return kExitUsage;
  const HeaderText h = EntityHeader(entity);
  VatRates rates{};
  if (!HeaderAccepted(ctx, h) || !VatRatesAccepted(ctx, EntityRates(entity), rates))
    return kExitUsage;
  const int code = WithPrinter(ctx, [&](Drukarka& d) {
    const int header = WriteHeader(ctx, d, h);
    return header != kExitDone ? header : WriteVatRates(ctx, d, rates);
  });
  if (code == kExitDone) SayConfirmVatRates(ctx);
  return code;
}

}  // namespace

void AddFileCommands(CLI::App& app, CliContext& ctx, CommandList& commands) {
  auto decompile = std::make_shared<DecompileOptions>();
  CLI::App* d =
      app.add_subcommand("decompile", "Print the frames of a .bin file as readable lines");
  d->add_option("file", decompile->source, "Compiled file (.bin)")->required();
  d->add_option("-o,--output", decompile->output, "Write the lines to a .sek file instead");
  commands.emplace_back(d, [&ctx, decompile] { return RunDecompile(ctx, *decompile); });

  auto pod = std::make_shared<std::string>();
  CLI::App* entity = app.add_subcommand("entity", "Taxpayer entity files (.pod)");
  entity->require_subcommand(1);
  CLI::App* show =
      entity->add_subcommand("show", "Print the header, NIP and VAT rates of a .pod file");
  show->add_option("file", *pod, "Entity file (.pod)")->required();
  commands.emplace_back(show, [&ctx, pod] { return RunEntityShow(ctx, *pod); });

  auto program = std::make_shared<std::string>();
  CLI::App* p = app.add_subcommand("program", "Program the header and VAT rates of a .pod file");
  p->add_option("file", *program, "Entity file (.pod)")->required();
  commands.emplace_back(p, [&ctx, program] { return RunProgram(ctx, *program); });
}

}  // namespace tavena

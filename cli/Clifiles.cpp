// Subcommands on the program's files: decompile (.bin to readable lines)
// and entity show (.pod).
#include <CLI/CLI.hpp>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>

#include "Cli.h"
#include "Cliplatform.h"
#include "protocol/Framefile.h"
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

}  // namespace

void AddFileCommands(CLI::App& app, CliContext& ctx, CommandList& commands) {
  auto decompile = std::make_shared<DecompileOptions>();
  CLI::App* d =
      app.add_subcommand("decompile", "Print the frames of a .bin file as readable lines");
  d->add_option("file", decompile->source, "Compiled file (.bin)")->required();
  d->add_option("-o,--output", decompile->output, "Write the lines to a .sek file instead");
  commands.emplace_back(d, [&ctx, decompile] { return RunDecompile(ctx, *decompile); });
}

}  // namespace tavena

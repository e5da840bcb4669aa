// "tavena history [--unique NUMBER]": the service record, one programming
// operation a line, optionally only those of one printer.
#include <CLI/CLI.hpp>
#include <fstream>
#include <iterator>

#include "Cli.h"
#include "protocol/Servicerecord.h"
#include "sequence/Messagelanguage.h"

namespace tavena {

namespace {

constexpr size_t kUniqueColumn = 1;

std::string Joined(const std::vector<std::string>& fields) {
  std::string line;
  for (const std::string& field : fields) line += (line.empty() ? "" : " | ") + field;
  return line;
}

int RunHistory(CliContext& ctx, const std::string& unique) {
  const std::string path = ServiceRecordPath();
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    ctx.out << MsgUtf8("Rejestr serwisowy jest pusty: ", "The service record is empty: ") << path
            << '\n';
    return kExitDone;
  }
  const std::string bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
  const std::vector<std::vector<std::string>> lines = ReadServiceRecord(bytes);
  for (size_t i = 0; i < lines.size(); ++i) {
    const bool shown = i == 0 || unique.empty() ||
                       (lines[i].size() > kUniqueColumn && lines[i][kUniqueColumn] == unique);
    if (shown) PrintLine(ctx, Joined(lines[i]));
  }
  return kExitDone;
}

}  // namespace

void AddHistoryCommand(CLI::App& app, CliContext& ctx, CommandList& commands) {
  auto unique = std::make_shared<std::string>();
  CLI::App* sub = app.add_subcommand(
      "history", "Print the service record: every programming operation, newest last");
  sub->add_option("--unique", *unique, "Only the printer with this unique number");
  commands.emplace_back(sub, [&ctx, unique] { return RunHistory(ctx, *unique); });
}

}  // namespace tavena

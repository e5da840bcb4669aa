#include <CLI/CLI.hpp>
#include <iostream>

#include "Cli.h"
#include "Cliplatform.h"
#include "sequence/Codepage.h"
#include "sequence/Messagelanguage.h"
#include "transport/Createdirectory.h"
#ifdef TAVENA_CLI_HAVE_SIM
#include "sim/Simmain.h"
#endif

namespace tavena {

namespace {

// --lang wins; else the digit in language.tav; else Polish.
int ChooseLanguage(const std::string& lang) {
  if (lang == "pl") return 0;
  if (lang == "en") return 1;
  const int digit = ReadLanguageFile(ConfigFolder() + kPathSeparator + "language.tav");
  return digit < 0 ? 0 : digit;
}

// Position of the "sim" subcommand when it is the first word after the
// common options, else 0. Everything after it belongs to the simulator.
size_t SimulatorPosition(const std::vector<std::string>& args) {
  for (size_t i = 1; i < args.size(); ++i) {
    const std::string& a = args[i];
    if (a == "--port" || a == "--speed" || a == "--lang") {
      ++i;
      continue;
    }
    if (a.starts_with("-")) continue;
    return a == "sim" ? i : 0;
  }
  return 0;
}

// args[0] is "sim": the simulator's own command line.
int RunSimulator(std::vector<std::string> args, CliContext& ctx) {
#ifdef TAVENA_CLI_HAVE_SIM
  std::vector<char*> argv;
  for (std::string& a : args) argv.push_back(a.data());
  argv.push_back(nullptr);
  (void)ctx;
  return SimMain(static_cast<int>(args.size()), argv.data());
#else
  (void)args;
  return FailUtf8(ctx, kExitUsage,
                  MsgUtf8("Ta wersja nie zawiera symulatora drukarki.",
                          "This build has no printer simulator."));
#endif
}

void AddGlobalOptions(CLI::App& app, CliContext& ctx, std::string& lang) {
  app.add_option("--port", ctx.port, "Printer port: a device path (/dev/ttyUSB0) or comN");
  app.add_option("--speed", ctx.speed, "Line speed in bits per second")
      ->capture_default_str()
      ->check(CLI::PositiveNumber);
  app.add_flag("--log", ctx.log, "Write the communication log");
  app.add_option("--lang", lang, "Message language (default: language.tav, else pl)")
      ->check(CLI::IsMember({"pl", "en"}));
  app.set_version_flag("--version", std::string("tavena ") + TAVENA_VERSION);
}

// Common options may also follow a subcommand; its help names them.
void LetOptionsFallThrough(CLI::App& app) {
  for (CLI::App* sub : app.get_subcommands({})) {
    sub->fallthrough();
    sub->footer(
        "Common options (before or after the subcommand): --port PORT (/dev/ttyUSB0 or comN), "
        "--speed N (default 9600), --log, --lang pl|en");
    LetOptionsFallThrough(*sub);
  }
}

int Parse(CLI::App& app, const std::vector<std::string>& args, CliContext& ctx) {
  std::vector<const char*> argv;
  for (const std::string& a : args) argv.push_back(a.c_str());
  try {
    app.parse(static_cast<int>(argv.size()), argv.data());
  } catch (const CLI::ParseError& e) {
    if (e.get_exit_code() == 0) return app.exit(e, ctx.out, ctx.err), kExitDone;
    ctx.err << "tavena: " << OneLine(e.what()) << " (--help)\n";
    return kExitUsage;
  }
  return -1;
}

}  // namespace

void PrintLine(CliContext& ctx, const std::string& cp1250) {
  ctx.out << Cp1250ToUtf8(cp1250) << '\n';
}

int FailUtf8(CliContext& ctx, int code, const std::string& utf8) {
  ctx.out.flush();
  ctx.err << "tavena: " << OneLine(utf8) << '\n';
  return code;
}

int Fail(CliContext& ctx, int code, const std::string& cp1250) {
  return FailUtf8(ctx, code, Cp1250ToUtf8(cp1250));
}

std::string OneLine(std::string text) {
  while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.pop_back();
  for (char& c : text)
    if (c == '\n' || c == '\r') c = ' ';
  return text;
}

bool ArgumentToCp1250(CliContext& ctx, const std::string& utf8, std::string& cp1250) {
  cp1250 = Utf8ToCp1250(utf8);
  if (Cp1250ToUtf8(cp1250) == utf8) return true;
  FailUtf8(ctx, kExitUsage,
           MsgUtf8("Tekst zawiera znaki spoza strony kodowej Windows-1250: ",
                   "The text has characters outside the Windows-1250 code page: ") +
               utf8);
  return false;
}

int RunCli(const std::vector<std::string>& args, std::ostream& out, std::ostream& err,
           bool terminal) {
  CliContext ctx{out, err, {}, 9600, false, terminal, "/sys", {}};
  MessageLanguage = ChooseLanguage("");

  CLI::App app("Service tool for TAVENA fiscal printers", "tavena");
  app.require_subcommand(1);
  app.allow_windows_style_options(false);  // "/path/file.bin" is a file, not an option
  std::string lang;
  AddGlobalOptions(app, ctx, lang);
  app.add_subcommand("sim", "Serve a simulated printer on a pseudo-terminal (as tavena-sim)");
  CommandList commands;
  AddOfflineCommands(app, ctx, commands);
  AddPrinterCommands(app, ctx, commands);
  AddFileCommands(app, ctx, commands);
  AddHistoryCommand(app, ctx, commands);
  LetOptionsFallThrough(app);

  const size_t sim = SimulatorPosition(args);
  const int parsed =
      Parse(app, sim ? std::vector<std::string>(args.begin(), args.begin() + sim + 1) : args, ctx);
  if (parsed >= 0) return parsed;
  MessageLanguage = ChooseLanguage(lang);
  if (sim) return RunSimulator(std::vector<std::string>(args.begin() + sim, args.end()), ctx);
  for (auto& [sub, run] : commands)
    if (sub->parsed()) return run();
  return FailUtf8(ctx, kExitUsage, "no subcommand (--help)");
}

int CliMain(int argc, char** argv) {
  PrepareTerminal();
  const std::vector<std::string> args = Utf8Arguments(argc, argv);
  const int code = RunCli(args, std::cout, std::cerr, StdoutIsTerminal());
  std::cout.flush();
  return code;
}

}  // namespace tavena

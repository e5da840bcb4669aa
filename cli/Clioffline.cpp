// Subcommands that need no printer: compile, frame, ports.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>

#include "Cli.h"
#include "Cliplatform.h"
#include "protocol/Drukarka.h"
#include "protocol/Inputcheck.h"
#include "sequence/Clock.h"
#include "sequence/Codepage.h"
#include "sequence/Messagelanguage.h"
#include "sequence/Seqcompileclass.h"
#include "transport/Usbclass.h"

namespace tavena {

namespace {

struct CompileOptions {
  std::string source;
  std::string output;
  std::string now;
  bool hex = false;
};

// The compile date: --now, or the host's clock.
bool CompileClock(CliContext& ctx, const std::string& now, std::optional<VirtualClock>& clock) {
  if (now.empty()) return true;
  DateTimeValue d;
  std::string message;
  if (!ParseDateTime(Utf8ToCp1250(now), true, d, message)) return Fail(ctx, 0, message), false;
  clock.emplace(LocalTime{d.year, d.month, d.day, d.hour, d.minute, d.second, 0});
  return true;
}

int RunCompile(CliContext& ctx, const CompileOptions& o) {
  std::error_code ec;
  const std::u8string source(o.source.begin(), o.source.end());
  if (!std::filesystem::is_regular_file(std::filesystem::path(source), ec))
    return FailUtf8(ctx, kExitUsage,
                    MsgUtf8("Brak pliku sekwencji: ", "No sequence file: ") + o.source);
  std::optional<VirtualClock> clock;
  if (!CompileClock(ctx, o.now, clock)) return kExitUsage;
  ScopedClock scope(clock ? &*clock : &CurrentClock());

  SeqCompileClass compiler;
  compiler.source_file_name = NativePath(o.source);
  std::vector<std::string> lines, messages;
  compiler.LoadSource(lines);  // an empty file compiles to "Input file is empty."
  const bool ok = compiler.Compile(lines, &messages);
  for (const std::string& m : messages) PrintLine(ctx, m);
  if (!ok)
    return FailUtf8(ctx, kExitPrinter,
                    MsgUtf8("Kompilacja nie powiodła się.", "The compilation failed."));
  if (o.hex) ctx.out << HexPairs(compiler.output.ToString()) << '\n';
  if (!o.output.empty() && !compiler.output.SaveToFile(NativePath(o.output)))
    return FailUtf8(ctx, kExitUsage,
                    MsgUtf8("Nie można zapisać pliku: ", "Cannot write the file: ") + o.output);
  return kExitDone;
}

struct FrameOptions {
  std::string body;
  bool no_sum = false;
};

int RunFrame(CliContext& ctx, const FrameOptions& o) {
  std::string body;
  if (!ArgumentToCp1250(ctx, o.body, body)) return kExitUsage;
  ctx.out << HexPairs(BuildFrame(body, !o.no_sum)) << '\n';
  return kExitDone;
}

struct PortsOptions {
  bool all = false;
  bool report = false;
  bool watch = false;
};

std::string RecordTitle(const DeviceRecord& r) {
  std::string title = r.port_name + "  " + r.description;
  if (IsPrinterVendor(r)) title += Msg("  [drukarka TAVENA USB]", "  [TAVENA USB printer]");
  return title;
}

void PrintRecord(CliContext& ctx, const DeviceRecord& r) {
  PrintLine(ctx, RecordTitle(r));
  std::string summary = RecordSummary(r);
  for (size_t start = 0, end; (end = summary.find("\r\n", start)) != std::string::npos;
       start = end + 2)
    PrintLine(ctx, "  " + summary.substr(start, end - start));
}

void PrepareDiscovery(CliContext& ctx, const PortsOptions& o, UsbClass& usb) {
  usb.SetSysfsRoot(ctx.sysfs);
  usb.all_devices = o.all;
  usb.numbered_only = true;
  usb.report = o.report;
}

// The ports found now: name -> the title line the list shows.
std::map<std::string, std::string> PortTitles(CliContext& ctx, const PortsOptions& o) {
  UsbClass usb;
  PrepareDiscovery(ctx, o, usb);
  usb.Discover();
  std::map<std::string, std::string> titles;
  for (const DeviceRecord& r : usb.Records()) titles[r.port_name] = RecordTitle(r);
  return titles;
}

// One line, time-stamped, for each port in from that is not in to.
void PrintMissing(CliContext& ctx, const std::map<std::string, std::string>& from,
                  const std::map<std::string, std::string>& to, const char* sign) {
  const LocalTime t = CurrentClock().Local();
  for (const auto& [name, title] : from)
    if (!to.contains(name))
      PrintLine(ctx, TextF("%02d:%02d:%02d %s ", t.hour, t.minute, t.second, sign) + title);
}

// The ports now, then a line for each port that comes (+) or goes (-).
int WatchPorts(CliContext& ctx, const PortsOptions& o) {
  DeviceChanges changes(ctx.sysfs == "/sys" ? std::string() : ctx.sysfs);
  if (!changes.Watching())
    return FailUtf8(ctx, kExitPrinter,
                    MsgUtf8("Nie można śledzić portów.", "The ports cannot be watched."));
  std::map<std::string, std::string> shown = PortTitles(ctx, o);
  for (const auto& [name, title] : shown) PrintLine(ctx, title);
  PrintLine(ctx, Msg("Czekam na zmiany portów (Ctrl+C kończy).",
                     "Waiting for ports to come or go (Ctrl+C ends)."));
  ctx.out.flush();
  while (changes.Wait()) {
    const std::map<std::string, std::string> now = PortTitles(ctx, o);
    PrintMissing(ctx, shown, now, "-");
    PrintMissing(ctx, now, shown, "+");
    ctx.out.flush();
    shown = now;
  }
  return kExitDone;
}

int RunPorts(CliContext& ctx, const PortsOptions& o) {
  if (o.watch) return WatchPorts(ctx, o);
  UsbClass usb;
  PrepareDiscovery(ctx, o, usb);
  const bool ok = usb.Discover();
  if (o.report) {
    std::string report = usb.Report();
    report.erase(std::remove(report.begin(), report.end(), '\r'), report.end());
    ctx.out << Cp1250ToUtf8(report);
  } else {
    for (const DeviceRecord& r : usb.Records()) PrintRecord(ctx, r);
  }
  if (usb.Records().empty() && ok)
    PrintLine(ctx, Msg("Nie znaleziono portów szeregowych.", "No serial ports found."));
  return ok ? kExitDone : Fail(ctx, kExitPrinter, usb.ErrorText());
}

}  // namespace

void AddOfflineCommands(CLI::App& app, CliContext& ctx, CommandList& commands) {
  auto compile = std::make_shared<CompileOptions>();
  CLI::App* c = app.add_subcommand("compile", "Compile a sequence file");
  c->add_option("source", compile->source, "Sequence source file")->required();
  c->add_option("-o,--output", compile->output, "Write the compiled bytes (.bin) on success");
  c->add_option("--now", compile->now,
                "Date and time for the date escapes, \"YYYY-MM-DD hh:mm:ss\"");
  c->add_flag("--hex", compile->hex, "Print the compiled bytes in hex");
  commands.emplace_back(c, [&ctx, compile] { return RunCompile(ctx, *compile); });

  auto frame = std::make_shared<FrameOptions>();
  CLI::App* f = app.add_subcommand("frame", "Print the frame of a command body in hex");
  f->add_option("body", frame->body, "Command body (UTF-8)")->required();
  f->add_flag("--no-sum", frame->no_sum, "Leave out the control sum");
  commands.emplace_back(f, [&ctx, frame] { return RunFrame(ctx, *frame); });

  auto ports = std::make_shared<PortsOptions>();
  CLI::App* p = app.add_subcommand("ports", "List the serial ports, TAVENA USB printers marked");
  p->add_flag("--all", ports->all, "Also ports that are not present or have no number");
  p->add_flag("--report", ports->report, "Every property of every port");
  p->add_flag("--watch", ports->watch,
              "Print a line for each port that comes or goes, until Ctrl+C");
  p->add_option("--sysfs", ctx.sysfs, "Root of the sysfs tree to scan (Linux)")->group("");
  commands.emplace_back(p, [&ctx, ports] { return RunPorts(ctx, *ports); });
}

}  // namespace tavena

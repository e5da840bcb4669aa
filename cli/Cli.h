// The command-line tool: one program for compiling sequences, framing
// bodies, listing ports, talking to a printer and running the simulator.
// Exit codes: 0 done, 1 the printer refused or did not answer, 2 bad usage
// or bad input (one line on standard error says why).
#pragma once

#include <functional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "protocol/Servicerecord.h"

namespace CLI {
class App;
}

namespace tavena {

inline constexpr int kExitDone = 0;
inline constexpr int kExitPrinter = 1;
inline constexpr int kExitUsage = 2;

struct CliContext {
  std::ostream& out;
  std::ostream& err;
  std::string port;
  int speed = 9600;
  bool log = false;
  bool terminal = false;  // standard output is a terminal (progress bar)
  std::string sysfs = "/sys";
  // Programming operations of this run, written to the service record when
  // the port is left.
  std::vector<ServiceEntry> service;
};

// Runs the tool on UTF-8 arguments (args[0] is the program name); terminal
// says whether out is a terminal (progress bar).
int RunCli(const std::vector<std::string>& args, std::ostream& out, std::ostream& err,
           bool terminal = false);
// The process entry: arguments, terminal, then RunCli on std::cout/cerr.
int CliMain(int argc, char** argv);

// Output helpers. Texts are Windows-1250 unless the name says UTF-8.
void PrintLine(CliContext& ctx, const std::string& cp1250);
int Fail(CliContext& ctx, int code, const std::string& cp1250);
int FailUtf8(CliContext& ctx, int code, const std::string& utf8);
// A message of several lines as one line.
std::string OneLine(std::string text);
// A UTF-8 text from the command line as Windows-1250; false (exit code 2
// and the reason said) when it holds a character that code page lacks.
bool ArgumentToCp1250(CliContext& ctx, const std::string& utf8, std::string& cp1250);

// Each subcommand registers the function that runs it once the whole
// command line has been read.
using CommandList = std::vector<std::pair<CLI::App*, std::function<int()>>>;
void AddOfflineCommands(CLI::App& app, CliContext& ctx, CommandList& commands);
void AddPrinterCommands(CLI::App& app, CliContext& ctx, CommandList& commands);
void AddFileCommands(CLI::App& app, CliContext& ctx, CommandList& commands);
void AddHistoryCommand(CLI::App& app, CliContext& ctx, CommandList& commands);

}  // namespace tavena

#include "Simmain.h"

#include <charconv>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Simprinter.h"
#include "Simserver.h"
#include "Tavenaversion.h"

namespace tavena {

namespace {

constexpr const char* kUsage =
    "Usage: tavena-sim [options]\n"
    "Serves a simulated TAVENA fiscal printer on a pseudo-terminal. The first\n"
    "line of standard output is the terminal's path; what the printer receives\n"
    "is logged to standard error. Stops on SIGINT or SIGTERM.\n"
    "\n"
    "Options:\n"
    "  --model NAME          printer model (default LUMEN); see --list-models\n"
    "  --baud N              the printer's speed; a client at another speed is\n"
    "                        not understood (default: any speed, 9600 for --line-rate)\n"
    "  --link PATH           make PATH a symbolic link to the terminal\n"
    "  --record FILE         write every byte the printer receives to FILE, raw,\n"
    "                        in order and at once (the file is emptied first)\n"
    "  --fixed-clock \"YYYY-MM-DD HH:MM\"\n"
    "                        the printer's clock stands at this time\n"
    "  --fiscal              start in fiscal mode\n"
    "  --quiet               log nothing but failures\n"
    "  --list-models         print the model names and exit\n"
    "  -h, --help            print this help and exit\n"
    "  --version             print the version and exit\n"
    "\n"
    "Faults:\n"
    "  --silent              answer nothing\n"
    "  --answers N           give N answers, then fall silent\n"
    "  --delay MS            start every answer MS milliseconds late\n"
    "  --bad-sum             send wrong control sums in answers\n"
    "  --garbage N           send N garbage bytes before every answer\n"
    "  --xoff                send XOFF (and never XON) at the start of every frame\n"
    "  --close-after N       close the line after N frames\n"
    "  --line-rate           deliver bytes at the line rate (baud / 10 per second)\n"
    "  --noise MS            send a noise byte every MS milliseconds\n";

struct Options {
  std::string model = "LUMEN";
  int baud = 0;
  std::optional<LocalTime> fixed_clock;
  bool fiscal = false;
  bool list_models = false;
  bool help = false;
  bool version = false;
  SimServerOptions server;
  SimFaults faults;
};

bool ParseInt(std::string_view text, int& value, int minimum) {
  const auto r = std::from_chars(text.data(), text.data() + text.size(), value);
  return r.ec == std::errc() && r.ptr == text.data() + text.size() && value >= minimum;
}

bool ParseClock(const std::string& text, LocalTime& t) {
  char tail = 0;
  t = LocalTime{};
  const int n = std::sscanf(text.c_str(), "%d-%d-%d %d:%d%c", &t.year, &t.month, &t.day, &t.hour,
                            &t.minute, &tail);
  return n == 5 && t.year >= 1950 && t.year <= 2049 && ValidLocalTime(t);
}

std::string GarbageOf(int n) {
  static const char pattern[] = {'\x00', '\xFF', '\x55', '\x2A'};
  std::string out;
  for (int i = 0; i < n; ++i) out += pattern[i % 4];
  return out;
}

class Parser {
 public:
  Parser(int argc, char** argv) : args_(argv + 1, argv + (argc > 0 ? argc : 1)) {}

  // Fills options; on a bad option returns false with the reason in error.
  bool Parse(Options& o, std::string& error) {
    for (i_ = 0; i_ < args_.size(); ++i_) {
      if (!One(args_[i_], o, error)) return false;
    }
    return true;
  }

 private:
  bool Value(const std::string& name, std::string& value, std::string& error) {
    if (i_ + 1 >= args_.size()) {
      error = name + " needs a value";
      return false;
    }
    value = args_[++i_];
    return true;
  }

  bool Number(const std::string& name, int& value, int minimum, std::string& error) {
    std::string text;
    if (!Value(name, text, error)) return false;
    if (ParseInt(text, value, minimum)) return true;
    error = name + ": not a valid number: " + text;
    return false;
  }

  bool One(const std::string& a, Options& o, std::string& error) {
    if (a == "-h" || a == "--help") return o.help = true;
    if (a == "--version") return o.version = true;
    if (a == "--list-models") return o.list_models = true;
    if (a == "--fiscal") return o.fiscal = true;
    if (a == "--quiet") return o.server.quiet = true;
    if (a == "--silent") return o.faults.silent = true;
    if (a == "--bad-sum") return o.faults.bad_answer_sum = true;
    if (a == "--xoff") return o.faults.xoff = true;
    if (a == "--line-rate") return o.faults.line_rate = true;
    if (a == "--model") return Value(a, o.model, error);
    if (a == "--link") return Value(a, o.server.link, error);
    if (a == "--record") return Value(a, o.server.record, error);
    if (a == "--baud") return Number(a, o.baud, 1, error);
    if (a == "--answers") return Number(a, o.faults.answers_before_silence, 0, error);
    if (a == "--delay") return Number(a, o.faults.answer_delay_ms, 0, error);
    if (a == "--close-after") return Number(a, o.faults.close_after_frames, 0, error);
    if (a == "--noise") return Number(a, o.faults.noise_every_ms, 1, error);
    if (a == "--garbage") {
      int n = 0;
      if (!Number(a, n, 0, error)) return false;
      o.faults.garbage = GarbageOf(n);
      return true;
    }
    if (a == "--fixed-clock") {
      std::string text;
      LocalTime t;
      if (!Value(a, text, error)) return false;
      if (!ParseClock(text, t)) {
        error = "--fixed-clock: expected \"YYYY-MM-DD HH:MM\" (years 1950 to 2049), got " + text;
        return false;
      }
      o.fixed_clock = t;
      return true;
    }
    error = "unknown option: " + a;
    return false;
  }

  std::vector<std::string> args_;
  size_t i_ = 0;
};

void ListModels() {
  for (const std::string& name : SimModelNames()) {
    const SimModelInfo m = *FindSimModel(name);
    std::printf("%-10s type %d%s%s%s\n", name.c_str(), m.type_code,
                m.type_code == 4 || m.type_code == 6
                    ? (", subtype " + std::to_string(m.subtype) + " (NAME:D for another)").c_str()
                    : "",
                m.electronic_journal ? ", electronic journal" : "",
                m.answers_identity ? "" : ", answers only the unique-number request");
  }
}

}  // namespace

int SimMain(int argc, char** argv) {
  Options o;
  std::string error;
  if (!Parser(argc, argv).Parse(o, error)) {
    std::fprintf(stderr, "tavena-sim: %s\n(see --help)\n", error.c_str());
    return 2;
  }
  if (o.help) {
    std::fputs(kUsage, stdout);
    return 0;
  }
  if (o.version) {
    std::printf("tavena-sim %s\n", kVersion);
    return 0;
  }
  if (o.list_models) {
    ListModels();
    return 0;
  }
  const std::optional<SimModelInfo> model = FindSimModel(o.model);
  if (!model) {
    std::fprintf(stderr, "tavena-sim: unknown model: %s (see --list-models)\n", o.model.c_str());
    return 2;
  }
  SimPrinter printer(*model);
  printer.Faults() = o.faults;
  printer.SetBaud(o.baud > 0 ? o.baud : 9600);
  o.server.enforce_baud = o.baud > 0;
  if (o.fixed_clock) printer.PrinterClock().Fix(*o.fixed_clock);
  printer.State().fiscal = o.fiscal;
  return ServeOnPty(printer, o.server, stdout, stderr);
}

}  // namespace tavena

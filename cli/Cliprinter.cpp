// Subcommands that talk to a printer: info, find, enq, dle, bel, clock, vat,
// header, report, receipt-test, fiscalise, send, status. Each opens the
// port, does its exchange and closes it again.
#include <CLI/CLI.hpp>
#include <functional>
#include <map>
#include <memory>

#include "Cliprinter.h"

#include "Cli.h"
#include "Cliplatform.h"
#include "Cliprogress.h"
#include "protocol/Answerparse.h"
#include "protocol/Drukarka.h"
#include "protocol/Inputcheck.h"
#include "protocol/Printererrors.h"
#include "sequence/Clock.h"
#include "sequence/Codepage.h"
#include "sequence/Messagelanguage.h"
#include "transport/Usbclass.h"

namespace tavena {

namespace {

// The status fields of the main window, in the order the fill writes them.
const std::vector<std::string>& InfoFields() {
  static const std::vector<std::string> names = {"ETypDrukarki",  "EWersjaSoftu",
                                                 "EFiskalny",     "EIloscZerowan",
                                                 "EOstatniZapis", "EVatA",
                                                 "EVatB",         "EVatC",
                                                 "EVatD",         "EVatE",
                                                 "EVatF",         "EVatG",
                                                 "ETotA",         "ETotB",
                                                 "ETotC",         "ETotD",
                                                 "ETotE",         "ETotF",
                                                 "ETotG",         "ENumerPF",
                                                 "ECzasDrukarki", "EDataPierwszegoRD"};
  return names;
}

class InfoForm : public FormFields {
 public:
  bool HasControl(const std::string& name) const override {
    for (const std::string& n : InfoFields())
      if (n == name) return true;
    return false;
  }
  void SetText(const std::string& name, const std::string& text) override { values[name] = text; }
  std::map<std::string, std::string> values;
};

bool NeedPort(CliContext& ctx) {
  if (!ctx.port.empty()) return true;
  FailUtf8(ctx, kExitUsage,
           MsgUtf8("Podaj port drukarki: --port /dev/ttyUSB0 albo --port com1.",
                   "Give the printer's port: --port /dev/ttyUSB0 or --port com1."));
  return false;
}

std::string CannotOpen(const CliContext& ctx, int system_error) {
  std::string text = MsgUtf8("Nie można otworzyć portu ", "Cannot open the port ") + ctx.port + ".";
  const std::string advice = OpenFailureAdvice(system_error);
  return advice.empty() ? text : text + " " + advice;
}

// Opens the printer's port; on failure says why. False means exit code set.
bool Connect(CliContext& ctx, Drukarka& d, int& code) {
  code = kExitUsage;
  if (!NeedPort(ctx)) return false;
  d.SetPort(ctx.port, ctx.speed);
  d.SetLogging(ctx.log);
  if (d.Open()) return true;
  code = FailUtf8(ctx, kExitPrinter, CannotOpen(ctx, d.com.LastOpenError()));
  return false;
}

// A failure on a port that vanished, or on a line that never fell silent,
// says so.
int FailureReason(CliContext& ctx, const Drukarka& d, int code) {
  if (code == kExitDone) return code;
  if (d.com.DeviceGone())
    return FailUtf8(ctx, kExitPrinter,
                    MsgUtf8("Port ", "Port ") + ctx.port +
                        MsgUtf8(" zniknął. Czy drukarka została odłączona?",
                                " has disappeared. Has the printer been disconnected?"));
  if (!d.LineNotQuiet()) return code;
  return FailUtf8(ctx, kExitPrinter,
                  MsgUtf8("Linia na porcie ", "The line on port ") + ctx.port +
                      MsgUtf8(" nie cichnie: bajty napływają bez przerwy.",
                              " does not quiet down: bytes keep arriving."));
}

int NoAnswer(CliContext& ctx) {
  return FailUtf8(ctx, kExitPrinter,
                  MsgUtf8("Drukarka nie odpowiada na porcie ", "The printer does not answer on ") +
                      ctx.port + ".");
}

// After a command: ENQ must come back with "last command understood".
int Confirm(CliContext& ctx, Drukarka& d) {
  const int s = d.QueryENQ();
  if (NoCommunication(s)) return NoAnswer(ctx);
  if ((s & 0x04) != 0) return kExitDone;
  char byte[8];
  std::snprintf(byte, sizeof byte, "0x%02X", s);
  return FailUtf8(
      ctx, kExitPrinter,
      MsgUtf8("Drukarka nie przyjęła rozkazu (ENQ ", "The printer refused the command (ENQ ") +
          std::string(byte) + ").");
}

// Confirm, and on success say so.
int ConfirmAndSay(CliContext& ctx, Drukarka& d) {
  const int code = Confirm(ctx, d);
  if (code == kExitDone)
    PrintLine(ctx, Msg("Drukarka przyjęła rozkaz.", "The printer accepted the command."));
  return code;
}

PrinterDate ToPrinterDate(const DateTimeValue& d) {
  return PrinterDate{d.year, d.month, d.day};
}

// The run's operations with the printer's model and unique number, read once
// after them; empty when the printer does not answer.
void WriteServiceRecord(CliContext& ctx, Drukarka& d) {
  if (ctx.service.empty()) return;
  const std::string model = d.ReadIdentity(1);
  const std::string number = d.LastReadOk() ? d.ReadStatus(0, kStatusUniqueNumber) : "";
  for (ServiceEntry& entry : ctx.service) {
    entry.model = model;
    entry.unique_number = number;
    if (!AppendServiceRecord(entry))
      ctx.err << MsgUtf8("tavena: uwaga: nie można zapisać ", "tavena: warning: cannot write ")
              << ServiceRecordPath() << '\n';
  }
  ctx.service.clear();
}

// ---- info ----

bool InfoFailed(const InfoForm& form) {
  const auto& v = form.values;
  auto is = [&](const char* name, const std::string& text) {
    const auto it = v.find(name);
    return it == v.end() || it->second == text;
  };
  return is("ETypDrukarki", Msg("Nieokreślony", "Unspecified")) ||
         is("EFiskalny", Msg("Błąd komunikacji.", "Communication error."));
}

int RunInfo(CliContext& ctx) {
  Drukarka d;
  int code;
  if (!Connect(ctx, d, code)) return code;
  d.Close();
  InfoForm form;
  d.FillStatusFields(form, ctx.port, ctx.speed);
  for (const std::string& name : InfoFields()) {
    const auto it = form.values.find(name);
    ctx.out << name << ": " << Cp1250ToUtf8(it == form.values.end() ? "" : it->second) << '\n';
  }
  if (!InfoFailed(form)) return kExitDone;
  const bool known = d.LineNotQuiet() || d.com.DeviceGone();
  return known ? FailureReason(ctx, d, kExitPrinter) : NoAnswer(ctx);
}

// ---- find ----

struct FindOptions {
  int type = 0;
  bool long_mode = false;
};

std::string FindReason(int result) {
  switch (result) {
    case kFindUnidentified:
      return Msg("odpowiada urządzenie, które nie jest drukarką TAVENA",
                 "a device answers that is not a TAVENA printer");
    case kFindCannotOpen:
      return Msg("nie można otworzyć portu", "the port cannot be opened");
    case kFindNotQuiet:
      return Msg("port nie ucichł w ciągu 2 s", "the port did not quiet down within 2 s");
    default:
      return Msg("brak odpowiedzi", "no answer");
  }
}

std::vector<std::string> PortsToSearch(CliContext& ctx) {
  if (!ctx.port.empty()) return {ctx.port};
  UsbClass usb;
  usb.SetSysfsRoot(ctx.sysfs);
  usb.numbered_only = true;
  usb.Discover();
  std::vector<std::string> ports;
  for (const DeviceRecord& r : usb.Records()) ports.push_back(r.port_name);
  return ports;
}

void PrintFound(CliContext& ctx, Drukarka& d, int result) {
  ctx.out << MsgUtf8("Port: ", "Port: ") << d.port_name << '\n'
          << MsgUtf8("Prędkość: ", "Speed: ") << d.speed << '\n';
  if (result == kFindUniqueNumber) {
    PrintLine(ctx, Msg("Rodzaj: urządzenie z numerem unikatowym", "Kind: unique-number device"));
    return;
  }
  std::string name;
  if (d.Open()) {
    name = d.ReadIdentity(1);
    d.Close();
  }
  PrintLine(ctx, Msg("Rodzaj: ", "Kind: ") + name + " (" + std::to_string(d.type_code) + ")");
}

int RunFind(CliContext& ctx, const FindOptions& o) {
  Drukarka d;
  d.SetLogging(ctx.log);
  for (std::string port : PortsToSearch(ctx)) {
    int32_t speed = ctx.speed;
    const int result = d.FindPrinter(port, speed, o.type, o.long_mode);
    if (result == kFindPrinter || result == kFindUniqueNumber) {
      PrintFound(ctx, d, result);
      return kExitDone;
    }
    PrintLine(ctx, Utf8ToCp1250(port) + ": " + FindReason(result));
  }
  return FailUtf8(ctx, kExitPrinter, MsgUtf8("Nie znaleziono drukarki.", "No printer found."));
}

// ---- enq, dle, bel ----

// The byte in hex and its interpretation lines.
int ShowControlByte(CliContext& ctx, char which, int s) {
  if (!NoCommunication(s)) {
    char byte[8];
    std::snprintf(byte, sizeof byte, "0x%02X", s & 0xFF);
    ctx.out << byte << '\n';
  }
  for (const std::string& line : which == 'e' ? EnqLines(s) : DleLines(s))
    if (!line.empty()) PrintLine(ctx, line);
  return NoCommunication(s) ? kExitPrinter : kExitDone;
}

int RunControlByte(CliContext& ctx, char which) {
  return WithPrinter(ctx, [&](Drukarka& d) {
    if (which == 'b') return d.SendBEL() ? kExitDone : NoAnswer(ctx);
    return ShowControlByte(ctx, which, which == 'e' ? d.QueryENQ() : d.QueryDLE());
  });
}

// ---- clock ----

struct ClockOptions {
  bool set_system = false;
  std::string set;
};

int RunClock(CliContext& ctx, const ClockOptions& o) {
  DateTimeValue t;
  std::string message;
  if (!o.set.empty() && !ParseDateTime(Utf8ToCp1250(o.set), true, t, message))
    return Fail(ctx, kExitUsage, message);
  if (o.set_system) {
    const LocalTime now = CurrentClock().Local();
    t = DateTimeValue{now.year, now.month, now.day, now.hour, now.minute, now.second};
  }
  return WithPrinter(ctx, [&](Drukarka& d) {
    int code = kExitDone;
    if (o.set_system || !o.set.empty()) {
      d.SetClock(t.year, t.month, t.day, t.hour, t.minute, t.second);
      SleepMs(100);
      const LocalTime set{t.year, t.month, t.day, t.hour, t.minute, t.second, 0};
      code = Recorded(ctx, service::Clock(), ClockDetails(set), Confirm(ctx, d));
    }
    ctx.out << d.ReadClock() << '\n';
    if (code != kExitDone) return code;
    return d.LastReadOk() ? kExitDone : NoAnswer(ctx);
  });
}

// ---- vat ----

std::vector<std::string> SplitCommas(const std::string& text) {
  std::vector<std::string> parts;
  size_t start = 0;
  for (size_t comma; (comma = text.find(',', start)) != std::string::npos; start = comma + 1)
    parts.push_back(text.substr(start, comma - start));
  parts.push_back(text.substr(start));
  return parts;
}

int ShowVatRates(CliContext& ctx, Drukarka& d) {
  const std::string rates = d.ReadStatus(23, kStatusRates);
  if (!d.LastReadOk() || rates.size() < 5) return NoAnswer(ctx);
  size_t start = 0;
  for (int i = 0; i < kVatRateCount; ++i) {
    const size_t semi = rates.find(';', start);
    std::string piece = rates.substr(start, semi == std::string::npos ? semi : semi - start);
    start = semi == std::string::npos ? rates.size() : semi + 1;
    ctx.out << static_cast<char>('A' + i) << ": " << (piece == "-1" ? "nakt" : piece) << '\n';
  }
  return kExitDone;
}

int RunVat(CliContext& ctx, const std::string& set) {
  VatRates rates{};
  if (!set.empty() && !VatRatesAccepted(ctx, SplitCommas(Utf8ToCp1250(set)), rates))
    return kExitUsage;
  const int code = WithPrinter(ctx, [&](Drukarka& d) {
    return set.empty() ? ShowVatRates(ctx, d) : WriteVatRates(ctx, d, rates);
  });
  if (code == kExitDone && !set.empty()) SayConfirmVatRates(ctx);
  return code;
}

// ---- header ----

struct HeaderOptions {
  std::vector<std::string> lines;
  std::vector<int> bold;
  std::vector<int> center;
};

// UTF-8 lines to the window's header; a character with no Windows-1250 code
// becomes DEL, which the check refuses.
HeaderText BuildHeader(const HeaderOptions& o) {
  HeaderText h;
  for (size_t i = 0; i < o.lines.size() && i < kHeaderLines; ++i) {
    std::string line = Utf8ToCp1250(o.lines[i]);
    if (Cp1250ToUtf8(line) != o.lines[i]) line += '\x7F';
    h.lines[i] = line;
  }
  for (int n : o.bold)
    if (n >= 1 && n <= kHeaderLines) h.large[n - 1] = true;
  for (int n : o.center)
    if (n >= 1 && n <= kHeaderLines) h.centre[n - 1] = true;
  return h;
}

int RunHeader(CliContext& ctx, const HeaderOptions& o) {
  if (o.lines.size() > static_cast<size_t>(kHeaderLines))
    return FailUtf8(ctx, kExitUsage,
                    MsgUtf8("Nagłówek ma najwyżej 8 linii.", "A header has at most 8 lines."));
  const HeaderText h = BuildHeader(o);
  if (!HeaderAccepted(ctx, h)) return kExitUsage;
  return WithPrinter(ctx, [&](Drukarka& d) { return WriteHeader(ctx, d, h); });
}

// ---- report ----

int RunDailyReport(CliContext& ctx) {
  return WithPrinter(ctx, [&](Drukarka& d) {
    const std::string clock = d.ReadClock();
    if (!d.LastReadOk()) return NoAnswer(ctx);
    DateTimeValue date;
    std::string message;
    if (!CheckDailyReportDate(clock, CurrentClock().Local(), date, message))
      return Fail(ctx, kExitPrinter, message);
    d.ReportByNumber(1, ToPrinterDate(date));
    return Recorded(ctx, service::DailyReport(), DateDetails(ToPrinterDate(date)),
                    ConfirmAndSay(ctx, d));
  });
}

struct PeriodOptions {
  std::string from;
  std::string to;
  int param = 0;
};

int RunPeriodicReport(CliContext& ctx, const PeriodOptions& o) {
  DateTimeValue from, to;
  std::string message;
  if (!ParseDateTime(Utf8ToCp1250(o.from), false, from, message) ||
      !ParseDateTime(Utf8ToCp1250(o.to), false, to, message) ||
      !CheckPeriodDates(from, to, message))
    return Fail(ctx, kExitUsage, message);
  return WithPrinter(ctx, [&](Drukarka& d) {
    d.PeriodicReport(ToPrinterDate(from), ToPrinterDate(to), o.param);
    return Recorded(ctx, service::PeriodicReport(),
                    DateDetails(ToPrinterDate(from)) + " - " + DateDetails(ToPrinterDate(to)),
                    ConfirmAndSay(ctx, d));
  });
}

// ---- receipt-test ----

int RunReceiptTest(CliContext& ctx) {
  return WithPrinter(ctx, [&](Drukarka& d) {
    d.TestReceipt();
    return Recorded(ctx, service::TestReceipt(), "", ConfirmAndSay(ctx, d));
  });
}

// ---- fiscalise ----

int RunFiscalise(CliContext& ctx, const std::string& nip_utf8) {
  const std::string nip = Utf8ToCp1250(nip_utf8);
  if (CheckNip(nip) != 1) return Fail(ctx, kExitUsage, NipFormatMessage());
  char kind = 0;
  std::string mode;
  const int code = WithPrinter(ctx, [&](Drukarka& d) {
    kind = FiscalDeviceKind(d.ReadIdentity(1));
    const std::string clock = d.LastReadOk() ? d.ReadClock() : std::string();
    DateTimeValue date;
    std::string message;
    if (!d.LastReadOk() || clock.size() < 11 ||
        !ParseDateTime(clock.substr(0, 10), false, date, message))
      return Fail(
          ctx, kExitPrinter,
          Msg("Brak odczytanej daty z drukarki.", "No date has been read from the printer."));
    d.ReportByNumber(1, ToPrinterDate(date));
    SleepMs(300);
    int result =
        Recorded(ctx, service::DailyReport(), DateDetails(ToPrinterDate(date)), Confirm(ctx, d));
    if (result == kExitDone) {
      d.Fiscalise(0, nip);
      SleepMs(300);
      result = Recorded(ctx, service::Fiscalisation(), "NIP " + nip, Confirm(ctx, d));
    }
    if (result == kExitDone) mode = d.ReadStatus(0, kStatusFiscal);
    return result;
  });
  if (code != kExitDone) return code;
  if (mode.empty() || mode[0] != '1')
    return FailUtf8(ctx, kExitPrinter,
                    MsgUtf8("Drukarka nie przeszła w tryb fiskalny.",
                            "The printer did not enter fiscal mode."));
  PrintLine(ctx, Msg("Tryb fiskalny.", "Fiscal mode."));
  if (kind == '1')
    PrintLine(ctx, Msg("Starsza drukarka: zaprogramuj teraz zegar (tavena clock --set-system) i "
                       "stawki VAT (tavena vat --set ...), potem wykonaj raport dobowy.",
                       "Older printer: now program the clock (tavena clock --set-system) and the "
                       "VAT rates (tavena vat --set ...), then run the daily report."));
  return kExitDone;
}

// ---- send ----

int RunSend(CliContext& ctx, const std::string& file, int block) {
  iBuffer stream;
  if (!stream.LoadFromFile(NativePath(file)))
    return Fail(ctx, kExitUsage,
                Msg("Podany plik jest pusty lub brak pliku.", "The file is empty or missing."));
  return WithPrinter(ctx, [&](Drukarka& d) {
    SendProgress progress(ctx.out, ctx.terminal, stream.Length());
    progress.Update(0);
    d.stream_progress = [&progress](size_t done, size_t) {
      progress.Update(static_cast<int64_t>(done));
    };
    const bool sent = d.SendStreamConfirmed(stream, block);
    progress.Finish();
    if (!sent)
      return Fail(ctx, kExitPrinter,
                  Msg("Nie udało sie wysłać sekwencji.", "The sequence could not be sent."));
    ctx.out << MsgUtf8("Wysłano bajtów: ", "Bytes sent: ") << stream.Length() << '\n';
    return kExitDone;
  });
}

// ---- status ----

int RunStatus(CliContext& ctx, int parameter, int selector) {
  return WithPrinter(ctx, [&](Drukarka& d) {
    const std::string text = d.ReadStatus(parameter, selector);
    if (!d.LastReadOk()) return NoAnswer(ctx);
    PrintLine(ctx, text);
    return kExitDone;
  });
}

template <typename Options>
std::shared_ptr<Options> Make() {
  return std::make_shared<Options>();
}

void AddQueries(CLI::App& app, CliContext& ctx, CommandList& commands) {
  CLI::App* info = app.add_subcommand("info", "Read the printer's identity and state");
  commands.emplace_back(info, [&ctx] { return RunInfo(ctx); });

  auto find = Make<FindOptions>();
  CLI::App* f = app.add_subcommand("find", "Search for the printer (all ports without --port)");
  f->add_option("--type", find->type, "Expected printer type code (1..7)");
  f->add_flag("--long", find->long_mode, "Long identification");
  f->add_option("--sysfs", ctx.sysfs, "Root of the sysfs tree to scan (Linux)")->group("");
  commands.emplace_back(f, [&ctx, find] { return RunFind(ctx, *find); });

  const std::pair<const char*, const char*> control[] = {
      {"enq", "Send ENQ and interpret the status byte"},
      {"dle", "Send DLE and interpret the status byte"},
      {"bel", "Ring the printer's bell (BEL)"}};
  for (const auto& [name, description] : control) {
    CLI::App* c = app.add_subcommand(name, description);
    const char which = name[0];
    commands.emplace_back(c, [&ctx, which] { return RunControlByte(ctx, which); });
  }

  auto status = std::make_shared<std::pair<int, int>>(0, 0);
  CLI::App* s = app.add_subcommand("status", "Status query: one field of the answer");
  s->add_option("--param", status->first, "Query parameter (22: raw answer)")->required();
  s->add_option("--selector", status->second, "Field (0..10, 11 raw record)")->required();
  commands.emplace_back(s,
                        [&ctx, status] { return RunStatus(ctx, status->first, status->second); });
}

void AddProgramming(CLI::App& app, CliContext& ctx, CommandList& commands) {
  auto clock = Make<ClockOptions>();
  CLI::App* c = app.add_subcommand("clock", "Read the printer's clock, or set it");
  auto* system = c->add_flag("--set-system", clock->set_system, "Set it from this computer");
  c->add_option("--set", clock->set, "Set it to \"YYYY-MM-DD hh:mm:ss\"")->excludes(system);
  commands.emplace_back(c, [&ctx, clock] { return RunClock(ctx, *clock); });

  auto vat = Make<std::string>();
  CLI::App* v = app.add_subcommand("vat", "Read the VAT rates, or set A..G");
  v->add_option("--set", *vat, "Seven rates A,B,C,D,E,F,G: a number, nakt or zw");
  commands.emplace_back(v, [&ctx, vat] { return RunVat(ctx, *vat); });

  auto header = Make<HeaderOptions>();
  CLI::App* h = app.add_subcommand("header", "Program the header lines");
  h->add_option("--line", header->lines, "A header line (repeat for lines 1..8)")
      ->required()
      ->allow_extra_args(false);
  h->add_option("--bold", header->bold, "Number of a double-width line")->allow_extra_args(false);
  h->add_option("--center", header->center, "Number of a centred line")->allow_extra_args(false);
  commands.emplace_back(h, [&ctx, header] { return RunHeader(ctx, *header); });

  CLI::App* report = app.add_subcommand("report", "Daily or periodic report");
  report->require_subcommand(1);
  CLI::App* daily = report->add_subcommand("daily", "Daily report (printer date must be today)");
  commands.emplace_back(daily, [&ctx] { return RunDailyReport(ctx); });
  auto period = Make<PeriodOptions>();
  CLI::App* periodic = report->add_subcommand("periodic", "Periodic report between two dates");
  periodic->add_option("--from", period->from, "First date YYYY-MM-DD")->required();
  periodic->add_option("--to", period->to, "Second date YYYY-MM-DD")->required();
  periodic->add_option("--param", period->param, "Report parameter")->capture_default_str();
  commands.emplace_back(periodic, [&ctx, period] { return RunPeriodicReport(ctx, *period); });

  CLI::App* receipt = app.add_subcommand("receipt-test", "Print a test receipt for 1 grosz");
  commands.emplace_back(receipt, [&ctx] { return RunReceiptTest(ctx); });

  auto nip = Make<std::string>();
  CLI::App* fiscal = app.add_subcommand("fiscalise", "Fiscalise the printer with a NIP");
  fiscal->add_option("--nip", *nip, "XXX-XX-XX-XXX, XXX-XXX-XX-XX or XXXXXXXXXX")->required();
  commands.emplace_back(fiscal, [&ctx, nip] { return RunFiscalise(ctx, *nip); });

  auto send = std::make_shared<std::pair<std::string, int>>("", 512);
  CLI::App* sn = app.add_subcommand("send", "Send a compiled sequence (.bin) in confirmed blocks");
  sn->add_option("file", send->first, "Compiled sequence file")->required();
  sn->add_option("--block", send->second, "Block size limit in bytes")
      ->capture_default_str()
      ->check(CLI::PositiveNumber);
  commands.emplace_back(sn, [&ctx, send] { return RunSend(ctx, send->first, send->second); });
}

}  // namespace

int WithPrinter(CliContext& ctx, const std::function<int(Drukarka&)>& work) {
  Drukarka d;
  int code;
  if (!Connect(ctx, d, code)) return code;
  code = work(d);
  WriteServiceRecord(ctx, d);
  d.Close();
  return FailureReason(ctx, d, code);
}

int Recorded(CliContext& ctx, const std::string& operation, const std::string& details, int code) {
  ServiceEntry entry;
  entry.time = CurrentClock().Local();
  entry.operation = operation;
  entry.details = details;
  entry.confirmed = code == kExitDone;
  ctx.service.push_back(entry);
  return code;
}

bool HeaderAccepted(CliContext& ctx, const HeaderText& h) {
  if (const int line = CheckHeader(h); line != 0)
    return Fail(ctx, kExitUsage, HeaderErrorMessage(line, " ")), false;
  if (HeaderByteCount(h) >= kHeaderByteLimit)
    ctx.err << MsgUtf8("tavena: uwaga: licznik bajtów nagłówka ",
                       "tavena: warning: header byte count ")
            << HeaderByteCount(h)
            << MsgUtf8(", nagłówek zostanie obcięty.\n", ", the header will be cut.\n");
  return true;
}

bool VatRatesAccepted(CliContext& ctx, const std::vector<std::string>& texts, VatRates& rates) {
  std::string message;
  if (CheckVatRates(texts, rates, message)) return true;
  Fail(ctx, kExitUsage, message);
  return false;
}

int WriteHeader(CliContext& ctx, Drukarka& d, const HeaderText& h) {
  std::vector<HeaderLine> lines;
  for (int i = 0; i < kHeaderLines; ++i)
    lines.push_back(HeaderLine{
        h.lines[i], (h.large[i] ? kHeaderDoubleWidth : 0) | (h.centre[i] ? kHeaderCentre : 0)});
  d.SetHeader(lines);
  return Recorded(ctx, service::Header(), HeaderDetails(lines), ConfirmAndSay(ctx, d));
}

int WriteVatRates(CliContext& ctx, Drukarka& d, const VatRates& rates) {
  d.ReadIdentity(1);  // the wire form of the rates depends on the subtype
  if (d.LineNotQuiet()) return kExitPrinter;
  d.SetVatRates(rates);
  return Recorded(ctx, service::VatRates(), FormatRates(rates), Confirm(ctx, d));
}

void SayConfirmVatRates(CliContext& ctx) {
  PrintLine(ctx, Msg("Potwierdź na drukarce. Jeśli drukarka nic nie robi,\nto stawki już zostały "
                     "zaprogramowane wcześniej\nw identycznej wysokości. Wtedy naciśnij OK",
                     "Confirm on the printer. If the printer does nothing,\nthe rates have "
                     "already been programmed\nwith the same values. Then press OK"));
}

void AddPrinterCommands(CLI::App& app, CliContext& ctx, CommandList& commands) {
  AddQueries(app, ctx, commands);
  AddProgramming(app, ctx, commands);
}

}  // namespace tavena

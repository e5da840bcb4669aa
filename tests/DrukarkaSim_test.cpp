// The printer object against the simulated printer, in process, on virtual
// time: identity, status, the status form, the printer search and commands.
#if TAVENA_HAVE_SIM

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <set>
#include <tuple>

#include "Fakeserial.h"
#include "protocol/Drukarka.h"
#include "sequence/Clock.h"
#include "sequence/Codepage.h"
#include "sequence/Messagelanguage.h"
#include "sim/Simport.h"
#include "sim/Simprinter.h"

namespace tavena {
namespace {

std::string Cp(const char* utf8) {
  return Utf8ToCp1250(utf8);
}

// A simulated printer of a model behind the port "com5", and a printer object set to it.
class Bench {
 public:
  explicit Bench(const char* model, int baud = 9600)
      : sim_(MakeSimPrinter(model)), port_("com5", *sim_) {
    sim_->SetBaud(baud);
    printer.SetPort("com5", baud);
  }
  SimState& state() { return sim_->State(); }
  SimFaults& faults() { return sim_->Faults(); }
  SimPrinter& sim() { return *sim_; }
  const SimRecordedFrame& LastFrame() const { return sim_->Record().frames.back(); }
  size_t Frames() const { return sim_->Record().frames.size(); }
  const std::string& Received() const { return sim_->Record().received; }
  // Searches a port untyped from a speed; port and speed keep what the search chose.
  int Find(const char* name = "com5", int32_t baud = 9600) {
    port = name;
    speed = baud;
    return printer.FindPrinter(port, speed, 0, false);
  }
  int FindTyped(int type, bool long_mode = false, int32_t baud = 9600) {
    speed = baud;
    return printer.FindPrinter(5, speed, type, long_mode);
  }

  Drukarka printer;
  std::string port;
  int32_t speed = 0;

 private:
  std::unique_ptr<SimPrinter> sim_;
  SimPort port_;
};

class DrukarkaSimTest : public ::testing::Test {
 protected:
  void TearDown() override { MessageLanguage = 0; }
  VirtualClock clock_;
  ScopedClock scoped_{&clock_};
  test::ScopedWine wine_{false};
};

TEST_F(DrukarkaSimTest, SearchOfEachModel) {
  // Model, type and subtype as the search finds them (identity texts: FillStatusFields).
  const std::tuple<const char*, int, int> cases[] = {
      {"LUMEN", 1, 0},  {"SOLIDA", 2, 0}, {"SOLIDA EJ", 3, 0}, {"QX-1", 4, 3},
      {"QX-1:2", 4, 2}, {"QX-1TR", 6, 4}, {"TM410", 7, 0},     {"MERIDO", 0, 0}};
  for (const auto& [model, type, subtype] : cases) {
    Bench found(model, 19200);  // at 19200 the KORVUS probe is skipped
    EXPECT_EQ(found.Find("com5", 19200), kFindPrinter) << model;
    EXPECT_EQ(found.printer.type_code, type) << model;
    EXPECT_EQ(found.printer.subtype, subtype) << model;
    EXPECT_EQ(found.port + std::to_string(found.speed), "com519200");
    if (type == 0) continue;
    Bench typed(model);  // the probe of its own type finds it too
    EXPECT_EQ(typed.FindTyped(type), kFindPrinter) << model;
    EXPECT_EQ(typed.printer.type_code, type) << model;
  }
}

// A form that has the controls it was given and logs every write in order.
class RecordingForm : public FormFields {
 public:
  explicit RecordingForm(std::set<std::string> controls) : controls_(std::move(controls)) {}
  bool HasControl(const std::string& name) const override { return controls_.count(name) > 0; }
  void SetText(const std::string& name, const std::string& text) override {
    log += name + "=" + text + "|";
  }
  std::string log;

 private:
  std::set<std::string> controls_;
};

RecordingForm MainWindowForm() {
  std::set<std::string> names = {"ETypDrukarki",  "EWersjaSoftu",     "EFiskalny",
                                 "EIloscZerowan", "EOstatniZapis",    "ENumerPF",
                                 "ECzasDrukarki", "EDataPierwszegoRD"};
  for (char c = 'A'; c <= 'G'; ++c)
    names.insert({std::string("EVat") + c, std::string("ETot") + c});
  return RecordingForm(names);
}

// What a fill writes into the form, in order.
std::string Fill(Drukarka& p, RecordingForm form = MainWindowForm(), const char* port = "com5") {
  p.FillStatusFields(form, port, 9600);
  return form.log;
}

// The log of <prefix>A..G.
std::string RowLog(const std::string& prefix, const std::vector<std::string>& texts) {
  std::string log;
  for (size_t i = 0; i < texts.size(); ++i) log += prefix + char('A' + i) + "=" + texts[i] + "|";
  return log;
}

// The log of the fields from the resets on, when the reads have failed.
std::string DefaultsLog(const std::string& no_read, const std::string& error) {
  const std::vector<std::string> errors(7, error);
  return "EIloscZerowan=" + no_read + "|EOstatniZapis=" + no_read + "|" + RowLog("EVat", errors) +
         RowLog("ETot", errors) + "ENumerPF=" + no_read + "|ECzasDrukarki=" + no_read +
         "|EDataPierwszegoRD=" + Cp("Początek") + "|EDataPierwszegoRD=" + no_read + "|";
}

TEST_F(DrukarkaSimTest, FillStatusFields) {
  Bench bench("QX-1");
  bench.state().first_daily_report = {2012, 5, 2};
  bench.state().totals = {1.5, 0, 0, 0, 0, 0, 2};
  EXPECT_EQ(Fill(bench.printer),
            "ETypDrukarki=TAVENA QX-1|EWersjaSoftu=4.10|EFiskalny=Tryb szkoleniowy.|"
            "EIloscZerowan=1|EOstatniZapis=2011-01-03|" +
                RowLog("EVat", {"23.00", "8.00", "5.00", "0.00", "nakt", "nakt", "zw"}) +
                RowLog("ETot", {"1.50", "0.00", "0.00", "0.00", "0.00", "0.00", "2.00"}) +
                "ENumerPF=BQX04000551|ECzasDrukarki=2012-05-14 09:03|"
                "EDataPierwszegoRD=" +
                Cp("Początek") + "|EDataPierwszegoRD=2012-05-02|");
  EXPECT_EQ(bench.Frames(), 10u);  // identity twice, six status queries, clock, report
  EXPECT_EQ(bench.LastFrame().text, "2;0;0;1#r96");

  // Only the form's fields are asked; the mode follows the fiscal flag; no
  // first report gives "Brak" after three tries.
  Bench fiscal("LUMEN");
  fiscal.state().fiscal = true;
  EXPECT_EQ(
      Fill(fiscal.printer, RecordingForm({"EFiskalny", "EDataPierwszegoRD"})),
      "EFiskalny=Tryb fiskalny.|EDataPierwszegoRD=" + Cp("Początek") + "|EDataPierwszegoRD=Brak|");
  EXPECT_EQ(fiscal.Frames(), 4u);  // the status, then the report query three times

  // Silent: only the first query goes out; every field takes its default.
  Bench silent("LUMEN");
  silent.faults().silent = true;
  const std::string polish =
      "ETypDrukarki=" + Cp("Nieokreślony") + "|EWersjaSoftu=" + Cp("Nieokreślony") +
      "|EFiskalny=" + Cp("Błąd komunikacji.") + "|" + DefaultsLog("Brak", Cp("Błąd"));
  EXPECT_EQ(Fill(silent.printer), polish);
  EXPECT_EQ(silent.Frames(), 1u);
  MessageLanguage = 1;
  EXPECT_EQ(Fill(silent.printer),
            "ETypDrukarki=Unspecified|EWersjaSoftu=Unspecified|EFiskalny=Communication error.|" +
                DefaultsLog("No read", "Error"));
  MessageLanguage = 0;

  EXPECT_EQ(Fill(silent.printer, MainWindowForm(), ""), polish);  // an empty port reads nothing
  EXPECT_EQ(silent.Frames(), 2u);
}

TEST_F(DrukarkaSimTest, FindPrinterProbesRhythmAndOutcomes) {
  const std::string identity = "\x10\x1bP#v\x1b\\";
  const std::string korvus = "\x1bP0^91\x1b\\";
  const std::string unique = "\x1a\x1bS";
  // Nobody answers: every untyped probe once, in order; KORVUS only at 9600.
  for (const int baud : {9600, 19200}) {
    Bench silent("LUMEN", baud);
    silent.faults().silent = true;
    EXPECT_EQ(silent.Find("com5", baud), kFindNothing);
    EXPECT_EQ(silent.Received(), std::string("\n\x05") + (baud == 9600 ? korvus : "") + identity +
                                     "\x10\x05\x10" + unique)
        << baud;
  }
  // A typed probe goes again after 300 ms (500 ms for the unique number) and
  // a 1000 ms pause while its allowance lasts: 2000 ms, 15000 ms for 5 (and 7).
  // Type, probe, times sent, the least and the most time taken.
  const std::tuple<int, std::string, int, int64_t, int64_t> typed[] = {
      {1, identity, 2, 100 + 2 * 1300, 100 + 3 * 1300},
      {6, korvus, 2, 100 + 2 * 1300, 100 + 3 * 1300},
      {3, unique, 2, 100 + 2 * 1500, 100 + 2 * 1500 + 300},
      {5, unique, 10, 100 + 10 * 1500, 100 + 10 * 1500 + 300}};
  for (const auto& [type, probe, times, min_ms, max_ms] : typed) {
    Bench silent(type == 1 || type == 6 ? "LUMEN" : "SOLIDA EJ");
    silent.faults().silent = true;
    const int64_t start = NowMs();
    EXPECT_EQ(silent.FindTyped(type), kFindNothing);
    std::string sent;
    for (int i = 0; i < times; ++i) sent += probe;
    EXPECT_EQ(silent.Received(), sent) << type;
    EXPECT_GE(NowMs() - start, min_ms) << type;
    EXPECT_LT(NowMs() - start, max_ms) << type;
  }
  // Found: the composite follows the answered probe.
  Bench found("LUMEN");
  EXPECT_EQ(found.Find(), kFindPrinter);
  EXPECT_EQ(found.Received(), "\n\x05\x18\x1bP0#e89\x1b\\ \x1bP0$e8E\x1b\\ \x1bP#v\x1b\\ \x1bS");

  struct Lines : MonitorSink {
    void AppendLine(const std::string& line) override { all.push_back(line); }
    bool Has(const char* utf8) const {
      return std::find(all.begin(), all.end(), Cp(utf8)) != all.end();
    }
    std::vector<std::string> all;
  } lines;

  Bench copy("EJ-COPY");  // a unique number answers a probe: the composite follows
  copy.printer.monitor = &lines;
  EXPECT_EQ(copy.Find(), kFindUniqueNumber);
  for (const char* line : {"Wybrano port com5 i prędkość 9600. Znak 0x4E.",
                           "Główne przetwarzanie com5 9600.", "Przed wysłaniem.", "Po wysłaniu."})
    EXPECT_TRUE(lines.Has(line)) << line;

  Bench noisy("LUMEN");
  noisy.faults().noise_every_ms = 50;
  noisy.printer.monitor = &lines;
  EXPECT_EQ(noisy.Find(), kFindNotQuiet);
  EXPECT_EQ(lines.all.back(), Cp("<com5><,> Port nie ucichł w ciągu 2000 ms."));

  Bench wrong_speed("LUMEN", 19200);
  EXPECT_EQ(wrong_speed.Find(), kFindNothing);
  EXPECT_EQ(wrong_speed.Find("com7"), kFindCannotOpen);

  // Long mode: an answer with only the unique number gives 2, even after a
  // status byte answered the probe; the speed is raised to 9600.
  Bench long_mode("SOLIDA EJ");
  EXPECT_EQ(long_mode.FindTyped(3, true, 4800), kFindUniqueNumber);
  EXPECT_EQ(long_mode.speed, 9600);
  EXPECT_EQ(long_mode.sim().Record().frames[0].body, "&dBD");
  EXPECT_EQ(long_mode.sim().Record().unique_requests, 1);
}

// Each fault against each kind of operation between Open and Close: it ends in the bound
// its time-outs give; its first request reaches the printer unless the line is closed
// (or noisy, for the two that check quiet).
TEST_F(DrukarkaSimTest, FaultMatrixEveryOperationEnds) {
  using Run = std::function<std::string(Drukarka&)>;
  struct Op {
    const char* name;
    std::string first;  // the first request, as it reaches the printer
    int bound_ms;       // open and close: 110 ms
    bool quiet_check;   // the fill and the search ask nothing on a noisy line
    Run run;
  };
  const std::string stream = "\x1bP0$h83\x1b\\\x1bP0$e8E\x1b\\";
  const Op ops[] = {
      // 10 + quiet check 2300 + 10 pauses of 100 + the read limits (2 x 4000,
      // 6 x 3000, 2200) + 3 x 3000 + 100.
      {"fill", "\x1bP#v\x1b\\", 40610, true, [](Drukarka& p) { return Fill(p).substr(0, 40); }},
      // 10 + 2300 + probes 4 x 500 + 2500 + composite 1500 + 100.
      {"search", "\n\x05", 8410, true,
       [](Drukarka& p) {
         std::string port = "com5";
         int32_t speed = 9600;
         return std::to_string(p.FindPrinter(port, speed, 0, false));
       }},
      {"enq", "\x05", 110 + 1500, false, [](Drukarka& p) { return std::to_string(p.QueryENQ()); }},
      {"clock", "\x1bP0#c\x1b\\", 110 + 2220, false, [](Drukarka& p) { return p.ReadClock(); }},
      {"vat", "\x1bP23#s\x1b\\", 110 + 3020, false,
       [](Drukarka& p) { return p.ReadStatus(23, 6); }},
      {"vat set", "\x1bP7;0;0;0;0;1;1;2$p23.00/8.00/5.00/0.00/0.00/0.00/0.00/98\x1b\\", 110, false,
       [](Drukarka& p) {
         return std::to_string(p.SetVatRates({23, 8, 5, 0, -1, -1, -2}));
       }},
      // Two blocks of at most 5110 ms of ENQ waits each.
      {"stream", stream.substr(0, 9) + "\x05", 110 + 2 * 5110, false,
       [&](Drukarka& p) { return std::to_string(p.SendStreamConfirmed(iBuffer(stream), 5)); }},
  };
  enum Kind { kNone, kClosed, kNoise };
  const std::pair<const char*, std::function<Kind(SimFaults&)>> faults[] = {
      {"none", [](SimFaults&) { return kNone; }},
      {"silent", [](SimFaults& f) { return f.silent = true, kNone; }},
      {"answers 2", [](SimFaults& f) { return f.answers_before_silence = 2, kNone; }},
      {"delay 300", [](SimFaults& f) { return f.answer_delay_ms = 300, kNone; }},
      {"bad sum", [](SimFaults& f) { return f.bad_answer_sum = true, kNone; }},
      {"garbage", [](SimFaults& f) { return f.garbage = "\x01\x7Fxyz", kNone; }},
      {"xoff", [](SimFaults& f) { return f.xoff = true, kNone; }},
      {"closed", [](SimFaults& f) { return f.line_closed = true, kClosed; }},
      {"line rate", [](SimFaults& f) { return f.line_rate = true, kNone; }},
      {"noise 20", [](SimFaults& f) { return f.noise_every_ms = 20, kNoise; }},
  };
  for (const Op& op : ops) {
    for (const auto& [fault, set] : faults) {
      Bench bench("LUMEN");
      const Kind kind = set(bench.faults());
      const int64_t start = NowMs();
      bench.printer.Open();
      const std::string where = std::string(op.name) + " / " + fault + ": " + op.run(bench.printer);
      bench.printer.Close();
      EXPECT_LE(NowMs() - start, op.bound_ms) << where;
      EXPECT_FALSE(bench.printer.com.IsOpen()) << where;
      const bool nothing = kind == kClosed || (kind == kNoise && op.quiet_check);
      EXPECT_EQ(bench.Received().substr(0, op.first.size()), nothing ? "" : op.first) << where;
    }
  }
}

TEST_F(DrukarkaSimTest, CommandsChangeThePrinter) {
  Bench lumen("LUMEN");
  Drukarka& p = lumen.printer;
  ASSERT_TRUE(p.Open());
  ASSERT_TRUE(p.SetVatRates({22, 7, 3, 0, 0, kVatInactive, kVatExempt}));
  EXPECT_EQ(p.QueryENQ() & 0x04, 0x04);
  EXPECT_EQ(p.ReadStatus(23, 6), "22.00;7.00;3.00;0.00;0.00;-1;zw;");
  ASSERT_TRUE(p.SetHeader({{"ABCDEFGHIJ", kHeaderCentre}, {"Sklep", kHeaderDoubleWidth}}));
  EXPECT_EQ(lumen.state().header,
            (std::vector<std::string>{std::string(15, ' ') + "ABCDEFGHIJ", "\x0ESklep\x14"}));

  ASSERT_TRUE(p.ParamCommandDollarH(0));
  SaleLineRecord line;
  line.name = "Towar testowy 1gr";
  line.price = 0.01;
  ASSERT_TRUE(p.SaleLine(line));
  EndTransactionRecord end;
  end.code = "NRS5555";
  end.lines = {"Stopka 1", "Stopka 2", "Stopka 3", ""};
  end.amount1 = end.amount2 = 0.01;
  ASSERT_TRUE(p.EndTransaction(end));
  EXPECT_EQ(p.QueryENQ() & 0x05, 0x05);
  EXPECT_EQ(p.ReadStatus(0, 7), "1");
  EXPECT_EQ(p.ReadStatus(23, 8), "0.01;0.00;0.00;0.00;0.00;0.00;0.00;");
  ASSERT_TRUE(p.CancelTransaction());
  EXPECT_EQ(lumen.LastFrame().text, "0$e8E");
  EXPECT_FALSE(p.CashCommand(5, "Kasa", 'A'));

  // Fiscalisation, then the daily report of today, read back by status.
  ASSERT_TRUE(p.Fiscalise(0, "123-45-67-890"));
  EXPECT_EQ(p.ReadStatus(0, 1), "1");
  ASSERT_TRUE(p.ReportByNumber(1, {2012, 5, 14}));
  EXPECT_EQ(p.ReadStatus(0, 5), "2012-05-14");

  EXPECT_EQ(p.ReadClock(), "2012-05-14 09:03");  // follows the host clock
  ASSERT_TRUE(p.SetClock(2012, 5, 31, 23, 59, 0));
  EXPECT_EQ(p.ReadClock(), "2012-05-31 23:59");
  const size_t frames = lumen.Frames();
  EXPECT_FALSE(p.SetClock(2012, 5, 31, 23, 61, 0));
  EXPECT_FALSE(p.SetClockFromText("2012-05-31"));
  EXPECT_EQ(lumen.Frames(), frames);  // refused: nothing sent
}

}  // namespace
}  // namespace tavena

#endif  // TAVENA_HAVE_SIM

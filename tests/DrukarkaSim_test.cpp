// The printer object against the simulated printer, in process, on virtual
// time: identity, clock, status, the status form, the printer search and
// the effect of every command.
#if TAVENA_HAVE_SIM

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <set>

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

// A simulated printer of a model behind the port "com5", and a printer
// object open on it.
class Bench {
 public:
  explicit Bench(const char* model, int baud = 9600)
      : sim_(MakeSimPrinter(model)), port_("com5", *sim_) {
    sim_->SetBaud(baud);
    printer.SetPort("com5", baud);
  }
  SimPrinter& sim() { return *sim_; }
  SimState& state() { return sim_->State(); }
  const SimRecordedFrame& LastFrame() const { return sim_->Record().frames.back(); }
  size_t Frames() const { return sim_->Record().frames.size(); }
  // Searches the port untyped, the speed starting at baud.
  int Find(const char* port = "com5", int32_t baud = 9600) {
    std::string name = port;
    int32_t speed = baud;
    return printer.FindPrinter(name, speed, 0, false);
  }
  int FindTyped(int type, bool long_mode = false, int32_t* speed_out = nullptr) {
    int32_t speed = speed_out ? *speed_out : 9600;
    const int found = printer.FindPrinter(5, speed, type, long_mode);
    if (speed_out) *speed_out = speed;
    return found;
  }
  const std::string& Received() const { return sim_->Record().received; }

  Drukarka printer;

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

TEST_F(DrukarkaSimTest, IdentityAndSearchOfEachModel) {
  struct Case {
    const char* model;
    int type, subtype;
    const char* name;
    const char* version;
  };
  const Case cases[] = {
      {"LUMEN", 1, 0, "TAVENA LUMEN", "1.05"},
      {"SOLIDA", 2, 0, "TAVENA SOLIDA", "2.13"},
      {"SOLIDA EJ", 3, 0, "TAVENA SOLIDA EJ", "3.02"},
      {"QX-1", 4, 3, "TAVENA QX-1", "4.10"},
      {"QX-1:2", 4, 2, "TAVENA QX-1", "4.10"},
      {"QX-1TR", 6, 4, "TAVENA QX-1TR", "6.01"},
      {"TM410", 7, 0, "TAVENA TM410", "7.00"},
      {"MERIDO", 0, 0, "TAVENA MERIDO QP51KZ", "1.00"},
  };
  for (const Case& c : cases) {
    Bench bench(c.model);
    ASSERT_TRUE(bench.printer.Open()) << c.model;
    EXPECT_EQ(bench.printer.ReadIdentity(1), c.name) << c.model;
    EXPECT_EQ(bench.printer.ReadIdentity(2), c.version) << c.model;
    EXPECT_EQ(bench.printer.type_code, c.type) << c.model;
    EXPECT_EQ(bench.printer.subtype, c.subtype) << c.model;
    for (const int baud : {9600, 19200}) {
      Bench found(c.model, baud);
      std::string port = "com5";
      int32_t speed = baud;
      EXPECT_EQ(found.printer.FindPrinter(port, speed, 0, false), kFindPrinter)
          << c.model << " " << baud;
      EXPECT_EQ(found.printer.type_code, c.type) << c.model;
      EXPECT_EQ(port + std::to_string(speed), "com5" + std::to_string(baud));
      EXPECT_FALSE(found.printer.com.IsOpen());
    }
    if (c.type == 0) continue;
    Bench typed(c.model);  // the probe of its own type finds it too
    EXPECT_EQ(typed.FindTyped(c.type), kFindPrinter) << c.model;
    EXPECT_EQ(typed.printer.type_code, c.type) << c.model;
  }
}

TEST_F(DrukarkaSimTest, ClockReadSetAndDefault) {
  Bench bench("LUMEN");
  ASSERT_TRUE(bench.printer.Open());
  EXPECT_EQ(bench.printer.ReadClock(),
            "2012-05-14 09:03");  // follows the host clock
  EXPECT_EQ(bench.LastFrame().body, "0#c");

  ASSERT_TRUE(bench.printer.SetClock(2012, 5, 31, 23, 59, 0));
  EXPECT_EQ(bench.LastFrame().text, "12;5;31;23;59;0$c8A");
  EXPECT_EQ(bench.printer.ReadClock(), "2012-05-31 23:59");
  ASSERT_TRUE(bench.printer.SetClockFromText("2049-12-31 10:11:12"));
  EXPECT_EQ(bench.printer.ReadClock(), "2049-12-31 10:11");
  bench.sim().PrinterClock().Set(LocalTime{1950, 1, 2, 3, 4, 5, 0});
  EXPECT_EQ(bench.printer.ReadClock(),
            "1950-01-02 03:04");  // the clock reads 50 as 1950

  const size_t frames = bench.Frames();
  EXPECT_FALSE(bench.printer.SetClock(2012, 5, 31, 23, 61, 0));
  EXPECT_FALSE(bench.printer.SetClockFromText("2012-05-31"));
  EXPECT_EQ(bench.Frames(), frames);  // refused: nothing sent
}

TEST_F(DrukarkaSimTest, StatusFieldByField) {
  Bench bench("LUMEN");
  SimState& s = bench.state();
  s.resets_mark = '<';
  s.ram_resets = 12;
  s.last_record = {2050, 1, 2};  // the status reads 50 as 2050
  s.rates = {23, 8, 5, 0, kVatInactive, kVatInactive, kVatExempt};
  s.receipts = 4;
  s.totals = {100, 20, 3.5, 0, 0, 0, 7.25};
  s.further_amount = 130.75;
  s.fiscal = true;
  ASSERT_TRUE(bench.printer.Open());
  Drukarka& p = bench.printer;
  std::string fields, bodies;
  for (const int selector : {1, 4, 5, 6, 7, 8, 9, 10}) {
    fields += p.ReadStatus(selector == 6 || selector == 8 ? 23 : 0, selector) + "|";
    bodies += bench.LastFrame().body + " ";
  }
  EXPECT_EQ(fields,
            "1|-1|2050-01-02|23.00;8.00;5.00;0.00;-1;-1;zw;|4|"
            "100.00;20.00;3.50;0.00;0.00;0.00;7.25;|130.75|BLM01000017|");
  EXPECT_EQ(bodies, "0#s 0#s 0#s 23#s 0#s 23#s 0#s 0#s ");
  EXPECT_EQ(p.ReadStatus(0, 11).size(), kStatusRawSize);
  EXPECT_EQ(p.LastStatus().resets, -1);
  // Parameter 22 and selectors outside 0..11 give the answer as it came.
  EXPECT_EQ(p.ReadStatus(22, 1).substr(0, 6), "\x1bP1#X0");
  EXPECT_EQ(p.ReadStatus(0, 12).substr(0, 6), "\x1bP1#X0");
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

std::set<std::string> MainWindowControls() {
  std::set<std::string> names = {"ETypDrukarki",  "EWersjaSoftu",     "EFiskalny",
                                 "EIloscZerowan", "EOstatniZapis",    "ENumerPF",
                                 "ECzasDrukarki", "EDataPierwszegoRD"};
  for (char c = 'A'; c <= 'G'; ++c) {
    names.insert(std::string("EVat") + c);
    names.insert(std::string("ETot") + c);
  }
  return names;
}

// The log of <prefix>A..G.
std::string RowLog(const std::string& prefix, const std::vector<std::string>& texts) {
  std::string log;
  for (size_t i = 0; i < texts.size(); ++i) log += prefix + char('A' + i) + "=" + texts[i] + "|";
  return log;
}

// The log of the fields from the resets on, when the reads have failed.
std::string DefaultsLog(const std::string& no_read, const std::string& error) {
  return "EIloscZerowan=" + no_read + "|EOstatniZapis=" + no_read + "|" +
         RowLog("EVat", std::vector<std::string>(7, error)) +
         RowLog("ETot", std::vector<std::string>(7, error)) + "ENumerPF=" + no_read +
         "|ECzasDrukarki=" + no_read + "|EDataPierwszegoRD=" + Cp("Początek") +
         "|EDataPierwszegoRD=" + no_read + "|";
}

TEST_F(DrukarkaSimTest, FillStatusFieldsHealthyPrinter) {
  Bench bench("QX-1");
  bench.state().first_daily_report = {2012, 5, 2};
  bench.state().totals = {1.5, 0, 0, 0, 0, 0, 2};
  RecordingForm form(MainWindowControls());
  bench.printer.FillStatusFields(form, "com5", 9600);
  EXPECT_EQ(form.log,
            "ETypDrukarki=TAVENA QX-1|EWersjaSoftu=4.10|EFiskalny=Tryb szkoleniowy.|"
            "EIloscZerowan=1|EOstatniZapis=2011-01-03|" +
                RowLog("EVat", {"23.00", "8.00", "5.00", "0.00", "nakt", "nakt", "zw"}) +
                RowLog("ETot", {"1.50", "0.00", "0.00", "0.00", "0.00", "0.00", "2.00"}) +
                "ENumerPF=BQX04000551|ECzasDrukarki=2012-05-14 "
                "09:03|EDataPierwszegoRD=" +
                Cp("Początek") + "|EDataPierwszegoRD=2012-05-02|");
  EXPECT_EQ(bench.printer.subtype, 3);
  EXPECT_FALSE(bench.printer.com.IsOpen());
  // Identity twice, six status queries, clock, one report query.
  EXPECT_EQ(bench.Frames(), 10u);
  EXPECT_EQ(bench.LastFrame().text, "2;0;0;1#r96");

  // A form with only some fields is asked only for those; the mode follows
  // the printer's fiscal flag; no first report yet gives "Brak" after three
  // tries.
  Bench fiscal("LUMEN");
  fiscal.state().fiscal = true;
  RecordingForm small({"EFiskalny", "EDataPierwszegoRD"});
  const int64_t start = NowMs();
  fiscal.printer.FillStatusFields(small, "com5", 9600);
  EXPECT_EQ(small.log, "EFiskalny=Tryb fiskalny.|EDataPierwszegoRD=" + Cp("Początek") +
                           "|EDataPierwszegoRD=Brak|");
  EXPECT_EQ(fiscal.Frames(), 4u);
  EXPECT_GE(NowMs() - start, 2 * 100 + 3 * 3000);
}

TEST_F(DrukarkaSimTest, FillStatusFieldsSilentAndFailingHalfWay) {
  // Silent: only the first query goes out; every field takes its default.
  Bench silent("LUMEN");
  silent.sim().Faults().silent = true;
  const std::string polish =
      "ETypDrukarki=" + Cp("Nieokreślony") + "|EWersjaSoftu=" + Cp("Nieokreślony") +
      "|EFiskalny=" + Cp("Błąd komunikacji.") + "|" + DefaultsLog("Brak", Cp("Błąd"));
  RecordingForm form(MainWindowControls());
  silent.printer.FillStatusFields(form, "com5", 9600);
  EXPECT_EQ(form.log, polish);
  EXPECT_EQ(silent.Frames(), 1u);

  MessageLanguage = 1;
  RecordingForm english(MainWindowControls());
  silent.printer.FillStatusFields(english, "com5", 9600);
  EXPECT_EQ(english.log,
            "ETypDrukarki=Unspecified|EWersjaSoftu=Unspecified|"
            "EFiskalny=Communication error.|" +
                DefaultsLog("No read", "Error"));

  // Three answers, then silence: identity twice and the mode are read, the
  // resets query fails, everything after takes its default.
  MessageLanguage = 0;
  Bench half("SOLIDA");
  half.sim().Faults().answers_before_silence = 3;
  RecordingForm partial(MainWindowControls());
  half.printer.FillStatusFields(partial, "com5", 9600);
  EXPECT_EQ(partial.log,
            "ETypDrukarki=TAVENA SOLIDA|EWersjaSoftu=2.13|EFiskalny=Tryb "
            "szkoleniowy.|" +
                DefaultsLog("Brak", Cp("Błąd")));
  EXPECT_EQ(half.Frames(), 4u);

  // An empty port name reads nothing.
  RecordingForm none(MainWindowControls());
  half.printer.FillStatusFields(none, "", 9600);
  EXPECT_EQ(none.log, polish);
  EXPECT_EQ(half.Frames(), 4u);
}

TEST_F(DrukarkaSimTest, FindPrinterOtherOutcomes) {
  struct Lines : MonitorSink {
    void AppendLine(const std::string& line) override { all.push_back(line); }
    std::vector<std::string> all;
  } lines;

  Bench copy("EJ-COPY");  // a unique number answers a probe: the composite follows
  copy.printer.monitor = &lines;
  EXPECT_EQ(copy.Find(), kFindUniqueNumber);
  for (const char* line :
       {"Wybrano port com5 i prędkość 9600. Znak 0x4E.", "Główne przetwarzanie com5 9600."})
    EXPECT_NE(std::find(lines.all.begin(), lines.all.end(), Cp(line)), lines.all.end()) << line;

  Bench noisy("LUMEN");  // nothing is sent (the fault matrix): it is said why
  noisy.sim().Faults().noise_every_ms = 50;
  noisy.printer.monitor = &lines;
  EXPECT_EQ(noisy.Find(), kFindNotQuiet);
  EXPECT_EQ(lines.all.back(), Cp("<com5><,> Port nie ucichł w ciągu 2000 ms."));

  Bench wrong_speed("LUMEN", 19200);
  EXPECT_EQ(wrong_speed.Find(), kFindNothing);
  EXPECT_EQ(wrong_speed.Find("com7"), kFindCannotOpen);

  // A printer found: the choice and the composite are logged.
  Bench found("LUMEN");
  lines.all.clear();
  found.printer.monitor = &lines;
  EXPECT_EQ(found.Find(), kFindPrinter);
  const std::vector<std::string> wanted = {Cp("Wybrano port com5 i prędkość 9600. Znak 0x65."),
                                           Cp("Główne przetwarzanie com5 9600."),
                                           Cp("Przed wysłaniem."), Cp("Po wysłaniu.")};
  size_t at = 0;
  for (const std::string& l : lines.all) at += at < wanted.size() && l == wanted[at];
  EXPECT_EQ(at, wanted.size());

  // Long mode: an answer with only the unique number gives 2, even after a
  // status byte answered the probe.
  Bench long_mode("SOLIDA EJ");
  int32_t speed = 4800;  // raised to 9600
  const int64_t long_start = NowMs();
  EXPECT_EQ(long_mode.FindTyped(3, true, &speed), kFindUniqueNumber);
  EXPECT_EQ(speed, 9600);
  EXPECT_EQ(long_mode.sim().Record().frames[0].body, "&dBD");
  EXPECT_EQ(long_mode.sim().Record().unique_requests, 1);
  EXPECT_GE(NowMs() - long_start, 5000);
}

TEST_F(DrukarkaSimTest, FindPrinterProbeBytesAndRhythm) {
  const std::string identity = "\x10\x1bP#v\x1b\\";
  const std::string korvus = "\x1bP0^91\x1b\\";
  const std::string unique = "\x10\x1a\x1bS";
  // Nobody answers: every untyped probe once, in order; the KORVUS probe
  // only at 9600.
  for (const int baud : {9600, 19200}) {
    Bench silent("LUMEN", baud);
    silent.sim().Faults().silent = true;
    EXPECT_EQ(silent.Find("com5", baud), kFindNothing);
    EXPECT_EQ(silent.Received(),
              std::string("\n\x05") + (baud == 9600 ? korvus : "") + identity + "\x10\x05" + unique)
        << baud;
  }
  // A typed probe goes again after 300 ms (500 ms for the unique number) and
  // a 1000 ms pause while its allowance lasts: 2000 ms, 15000 ms for 5 and 7.
  struct Typed {
    int type;
    std::string probe;
    int times;
    int64_t min_ms, max_ms;
  };
  const Typed typed[] = {{1, identity, 2, 100 + 2 * 1300, 100 + 3 * 1300},
                         {6, korvus, 2, 100 + 2 * 1300, 100 + 3 * 1300},
                         {3, "\x1a\x1bS", 2, 100 + 2 * 1500, 100 + 2 * 1500 + 300},
                         {5, "\x1a\x1bS", 10, 100 + 10 * 1500, 100 + 10 * 1500 + 300},
                         {7, "\x1a\x1bS", 10, 100 + 10 * 1500, 100 + 10 * 1500 + 300}};
  for (const Typed& t : typed) {
    Bench silent(t.type == 1 || t.type == 6 ? "LUMEN" : "SOLIDA EJ");
    silent.sim().Faults().silent = true;
    const int64_t start = NowMs();
    EXPECT_EQ(silent.FindTyped(t.type), kFindNothing);
    std::string sent;
    for (int i = 0; i < t.times; ++i) sent += t.probe;
    EXPECT_EQ(silent.Received(), sent) << t.type;
    EXPECT_GE(NowMs() - start, t.min_ms) << t.type;
    EXPECT_LT(NowMs() - start, t.max_ms) << t.type;
  }
  // Found: the composite follows the answered probe, and its answer is
  // collected only 500 ms past the first 10 bytes.
  Bench found("LUMEN");
  const int64_t start = NowMs();
  EXPECT_EQ(found.Find(), kFindPrinter);
  EXPECT_EQ(found.Received(), "\n\x05\x18\x1bP0#e89\x1b\\ \x1bP0$e8E\x1b\\ \x1bP#v\x1b\\ \x1bS");
  EXPECT_LT(NowMs() - start, 100 + 500 + 1500);
}

// Every fault of the simulated printer against every operation of the
// printer object (each between Open and Close): the operation ends within
// the bound its time-outs give; its first request reaches the printer,
// except on a closed line, and on a noisy line for the two that check quiet.
TEST_F(DrukarkaSimTest, FaultMatrixEveryOperationEnds) {
  using Run = std::function<std::string(Drukarka&)>;
  struct Op {
    const char* name;
    std::string first;  // the first request, as it reaches the printer
    int bound_ms;       // open and close: 110 ms
    bool quiet_check;   // the fill and the search ask nothing on a noisy line
    Run run;
  };
  const auto sent = [](std::function<bool(Drukarka&)> command) -> Run {
    return [command](Drukarka& p) { return std::string(command(p) ? "1" : "0"); };
  };
  const auto number = [](std::function<int(Drukarka&)> query) -> Run {
    return [query](Drukarka& p) { return std::to_string(query(p)); };
  };
  const std::string stream = "\x1bP0$h83\x1b\\\x1bP0$e8E\x1b\\";
  const Op ops[] = {
      // 10 + quiet check 2300 + 10 pauses of 100 + the read limits (2 x 4000, 6 x 3000,
      // 2200) + 3 x 3000 + 100.
      {"fill", "\x1bP#v\x1b\\", 40610, true,
       [](Drukarka& p) {
         RecordingForm form(MainWindowControls());
         p.FillStatusFields(form, "com5", 9600);
         return form.log.substr(0, form.log.find('|'));
       }},
      // 10 + 2300 + probes 4 x 500 + 2500 + composite 1500 + 100.
      {"search", "\n\x05", 8410, true, number([](Drukarka& p) {
         std::string port = "com5";
         int32_t speed = 9600;
         return p.FindPrinter(port, speed, 0, false);
       })},
      {"enq", "\x05", 110 + 1500, false, number([](Drukarka& p) { return p.QueryENQ(); })},
      {"dle", "\x10", 110 + 800, false, number([](Drukarka& p) { return p.QueryDLE(); })},
      {"bel", "\x07", 110, false, sent([](Drukarka& p) { return p.SendBEL(); })},
      {"clock", "\x1bP0#c\x1b\\", 110 + 2220, false, [](Drukarka& p) { return p.ReadClock(); }},
      {"clock set", "\x1bP12;5;31;23;59;0$c8A\x1b\\", 110, false,
       sent([](Drukarka& p) { return p.SetClock(2012, 5, 31, 23, 59, 0); })},
      {"vat", "\x1bP23#s\x1b\\", 110 + 3020, false,
       [](Drukarka& p) { return p.ReadStatus(23, 6); }},
      {"vat set", "\x1bP7;0;0;0;0;1;1;2$p23.00/8.00/5.00/0.00/0.00/0.00/0.00/98\x1b\\", 110, false,
       sent([](Drukarka& p) {
         return p.SetVatRates({23, 8, 5, 0, -1, -1, -2});
       })},
      {"header",
       "\x1bP0$fABC\r\xFF"
       "3F\x1b\\",
       110, false, sent([](Drukarka& p) {
         return p.SetHeader({{"ABC", 0}});
       })},
      {"daily", "\x1bP1;12;05;14#rA7\x1b\\", 110, false, sent([](Drukarka& p) {
         return p.ReportByNumber(1, {2012, 5, 14});
       })},
      {"periodic", "\x1bP12;05;01;12;05;14;0#o87\x1b\\", 110, false, sent([](Drukarka& p) {
         return p.PeriodicReport({2012, 5, 1}, {2012, 5, 14}, 0);
       })},
      {"receipt", "\x1bP0$h83\x1b\\", 110, false, sent([](Drukarka& p) {
         return p.ParamCommandDollarH(0) && p.SaleLine({}) && p.EndTransaction({});
       })},
      {"fiscalise",
       "\x1bP0$fNIP 123-45-67-890\xFF"
       "29\x1b\\",
       110, false, sent([](Drukarka& p) { return p.Fiscalise(0, "123-45-67-890"); })},
      // Two blocks of at most 5110 ms of ENQ waits each.
      {"stream", stream.substr(0, 9) + "\x05", 110 + 2 * 5110, false,
       sent([&](Drukarka& p) { return p.SendStreamConfirmed(iBuffer(stream), 5); })},
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
      const Kind kind = set(bench.sim().Faults());
      const int64_t start = NowMs();
      bench.printer.Open();
      const std::string result = op.run(bench.printer);
      bench.printer.Close();
      const std::string where = std::string(op.name) + " / " + fault + ": " + result;
      EXPECT_LE(NowMs() - start, op.bound_ms) << where;
      EXPECT_FALSE(bench.printer.com.IsOpen()) << where;
      if (kind == kClosed || (kind == kNoise && op.quiet_check))
        EXPECT_EQ(bench.Received(), "") << where;
      else
        EXPECT_EQ(bench.Received().substr(0, op.first.size()), op.first) << where;
    }
  }
}

TEST_F(DrukarkaSimTest, CommandsChangeThePrinter) {
  Bench lumen("LUMEN");
  Drukarka& p = lumen.printer;
  ASSERT_TRUE(p.Open());
  const VatRates changed = {22, 7, 3, 0, 0, kVatInactive, kVatExempt};
  ASSERT_TRUE(p.SetVatRates(changed));
  EXPECT_EQ(lumen.state().rates, changed);
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

  ASSERT_TRUE(p.ParamCommandDollarH(0));
  EXPECT_TRUE(lumen.state().in_transaction);
  ASSERT_TRUE(p.CancelTransaction());
  EXPECT_FALSE(lumen.state().in_transaction);
  EXPECT_EQ(lumen.LastFrame().text, "0$e8E");

  ASSERT_TRUE(p.CashCommand(1, "Kasa", 'A'));
  EXPECT_EQ(lumen.state().display_text, "Kasa");
  EXPECT_FALSE(p.CashCommand(5, "Kasa", 'A'));
  ASSERT_TRUE(p.ParamCommandAmpC(3));
  EXPECT_EQ(lumen.state().last_ampc, 3);
  ASSERT_TRUE(p.PeriodicReport({2012, 5, 1}, {2012, 5, 14}, 0));
  EXPECT_EQ(lumen.state().periodic_reports, 1);

  // Fiscalisation, then the daily report of today, read back by status.
  ASSERT_TRUE(p.Fiscalise(0, "123-45-67-890"));
  EXPECT_TRUE(lumen.state().fiscal);
  EXPECT_EQ(p.ReadStatus(0, 1), "1");
  ASSERT_TRUE(p.Fiscalise(0, "123-45-67-890"));
  EXPECT_EQ(p.QueryENQ() & 0x0C, 0x08);  // fiscal, command refused
  EXPECT_EQ(lumen.state().last_error, 13);
  ASSERT_TRUE(p.ReportByNumber(1, {2012, 5, 14}));
  EXPECT_EQ(lumen.state().daily_reports, 1);
  EXPECT_EQ(p.ReadStatus(0, 5), "2012-05-14");
  EXPECT_TRUE(p.SendText("0#e"));
  EXPECT_EQ(lumen.LastFrame().text, "0#e89");
}

}  // namespace
}  // namespace tavena

#endif  // TAVENA_HAVE_SIM

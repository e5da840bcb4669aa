// The command-line tool in process: subcommands without a printer, refusals made
// before a port is touched, and printer subcommands against a simulated printer.
#include <gtest/gtest.h>

#include <sstream>

#include "Fakeserial.h"
#include "TestSupport.h"
#include "cli/Cli.h"
#include "cli/Cliprogress.h"
#include "sequence/Messagelanguage.h"
#include "sim/Simport.h"
#include "transport/Serialdevice.h"

namespace tavena {
namespace {

using test::TempDir;

struct CliRun {
  int code = -1;
  std::string out;
  std::string err;
};

CliRun Tavena(std::vector<std::string> args) {
  args.insert(args.begin(), "tavena");
  std::ostringstream out, err;
  CliRun r;
  r.code = RunCli(args, out, err);
  r.out = out.str();
  r.err = err.str();
  MessageLanguage = 0;
  return r;
}

// Exit code 2 and one line on standard error that says why.
void ExpectRefused(const CliRun& r, const std::string& reason) {
  EXPECT_EQ(r.code, 2) << r.err;
  EXPECT_EQ(r.err, "tavena: " + reason + "\n");
}

class CliTest : public ::testing::Test {
 protected:
  TempDir dir_;
  test::ScopedEnv xdg_{"XDG_CONFIG_HOME", dir_.file("config")};
  test::ScopedEnv logs_{"TAVENA_LOG_DIR", dir_.str()};  // logs and service record
};

TEST_F(CliTest, FrameAndCompile) {
  EXPECT_EQ(Tavena({"frame", "0$e"}).out, "1B 50 30 24 65 38 45 1B 5C\n");
  EXPECT_EQ(Tavena({"frame", "#v", "--no-sum"}).out, "1B 50 23 76 1B 5C\n");
  EXPECT_EQ(Tavena({"frame", "ą"}).out, "1B 50 86 37 39 1B 5C\n");  // UTF-8 in, Mazovia out
  ExpectRefused(Tavena({"frame", "ą☃"}),
                "Tekst zawiera znaki spoza strony kodowej Windows-1250: ą☃");

  test::WriteFile(dir_.file("ok.txt"), "komentarz\r\nseq = \\<ESC>P \\<D>.\\<M>.\\<Y>\\<end>\r\n");
  CliRun r = Tavena({"compile", dir_.file("ok.txt"), "--now", "2009-03-05 07:04:00", "--hex", "-o",
                     dir_.file("ok.bin")});
  EXPECT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(r.out, "2: Koniec przetwarzania. Brak błędów.\n1B 50 35 2E 33 2E 39\n");
  EXPECT_EQ(test::ReadFile(dir_.file("ok.bin")), "\x1BP5.3.9");
  // File names are UTF-8 on the command line.
  std::filesystem::copy_file(dir_.file("ok.txt"),
                             dir_.path() / std::filesystem::path(u8"próba.txt"));
  EXPECT_EQ(Tavena({"compile", dir_.str() + "/próba.txt", "-o", dir_.str() + "/wynik ó.bin"}).code,
            0);
  EXPECT_TRUE(std::filesystem::exists(dir_.path() / std::filesystem::path(u8"wynik ó.bin")));

  test::WriteFile(dir_.file("bad.txt"), "seq = A\r\n\\q\\<end>\r\n");
  r = Tavena(
      {"--lang", "en", "compile", dir_.file("bad.txt"), "-o", dir_.file("bad.bin"), "--hex"});
  EXPECT_EQ(r.code, 1);
  EXPECT_EQ(r.out, "1: Failure character or sequence.\n2: There is 1 error.\n");
  EXPECT_EQ(r.err, "tavena: The compilation failed.\n");
  EXPECT_FALSE(std::filesystem::exists(dir_.file("bad.bin")));
  ExpectRefused(Tavena({"compile", dir_.file("none.txt")}),
                "Brak pliku sekwencji: " + dir_.file("none.txt"));
  ExpectRefused(Tavena({"compile", dir_.file("ok.txt"), "--now", "2009-02-30 07:04:00"}),
                "Nieprawidłowa data i czas: \"2009-02-30 07:04:00\". Oczekiwano "
                "RRRR-MM-DD GG:MM[:SS].");
}

TEST_F(CliTest, PortsListsNumberedPortsAndMarksThePrinter) {
#ifdef _WIN32
  GTEST_SKIP() << "the port list comes from the Setup API on Windows";
#endif
  const std::string sysfs = TAVENA_SOURCE_DIR "/tests/fixtures/sysfs";
  CliRun r = Tavena({"ports", "--sysfs", sysfs});
  EXPECT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(r.out.find("/dev/ttyACM0  TAVENA LUMEN USB  [drukarka TAVENA USB]\n"
                       "  HardwareId:         USB\\VID_7A7A&PID_0001&REV_0110\n"
                       "  Version:            1.10\n"),
            0u)
      << r.out;
  r = Tavena({"ports", "--sysfs", "/nonexistent"});
  EXPECT_EQ(r.code, 1);
  EXPECT_EQ(r.err.rfind("tavena: Krytyczny błąd w poszukiwaniu portu. ", 0), 0u);
}

TEST_F(CliTest, BadInputIsRefusedBeforeThePortIsTouched) {
  // The port does not exist: reaching it would give exit 1, not 2.
  const std::string port = "/nonexistent/ttyUSB9";
  ExpectRefused(Tavena({"fiscalise", "--port", port, "--nip", "123-4567-890"}),
                "Sprawdź numer NIP. Format jest nieprawidłowy. Prawidłowe formaty: "
                "XXX-XX-XX-XXX XXX-XXX-XX-XX XXXXXXXXXX gdzie X jest dowolną cyfrą.");
  ExpectRefused(Tavena({"vat", "--port", port, "--set", "23,8,zw,0,nakt,zw,5"}),
                "Podano nieprawidłowe stawki VAT Może wystapić tylko jedna stawka "
                "zwolniona. Błąd wystąpił w stawce F");
  ExpectRefused(Tavena({"header", "--port", port, "--line", "Sklep", "--line", "Café €"}),
                "Sprawdź nagłówek w linii numer: 2 Zawiera niedopuszczalne znaki, "
                "albo jest pusty Nie można nagłówka zapisać.");
  ExpectRefused(
      Tavena({"report", "periodic", "--port", port, "--from", "2026-03-05", "--to", "2026-03-04"}),
      "Druga data jest wcześniejsza od pierwszej.");
  ExpectRefused(Tavena({"send", "--port", port, "/nonexistent/file.bin"}),
                "Podany plik jest pusty lub brak pliku.");
  ExpectRefused(Tavena({"info"}), "Podaj port drukarki: --port /dev/ttyUSB0 albo --port com1.");
  EXPECT_EQ(Tavena({"clock", "--port", port, "--set", "2026-11-21 25:00"}).code, 2);
  const CliRun r = Tavena({"enq", "--port", port});
  EXPECT_EQ(r.code, 1);
  EXPECT_EQ(r.err.rfind("tavena: Nie można otworzyć portu " + port + ". ", 0), 0u) << r.err;
}

TEST_F(CliTest, UsageVersionLanguageAndProgress) {
  CliRun r = Tavena({"--version"});
  EXPECT_EQ(r.code, 0);
  EXPECT_EQ(r.out, "tavena 0.1.0\n");
  for (const std::vector<std::string>& bad : {std::vector<std::string>{"bogus"},
                                              {"frame"},
                                              {"--lang", "de", "frame", "x"},
                                              {"--speed", "0", "info"}}) {
    r = Tavena(bad);
    EXPECT_EQ(r.code, 2) << bad[0];
    EXPECT_EQ(r.err.rfind("tavena: ", 0), 0u) << bad[0];
    EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << bad[0];
  }
  // "tavena sim" takes the simulator's own command line.
  testing::internal::CaptureStderr();
  for (const std::vector<std::string>& bad :
       {std::vector<std::string>{"sim", "--model", "KASA"}, {"--lang", "en", "sim", "--delay"}})
    EXPECT_EQ(Tavena(bad).code, 2) << bad.back();
  const std::string sim_errors = testing::internal::GetCapturedStderr();
  EXPECT_EQ(sim_errors.rfind("tavena-sim: unknown model: KASA", 0), 0u) << sim_errors;
  EXPECT_NE(sim_errors.find("tavena-sim: --delay needs a value"), std::string::npos);
#ifndef _WIN32  // language.tav sits beside the program on Windows
  // language.tav in the configuration folder picks English; --lang wins.
  ASSERT_TRUE(std::filesystem::create_directories(dir_.file("config/tavena")));
  test::WriteFile(dir_.file("config/tavena/language.tav"), "1\r\n");
  EXPECT_EQ(Tavena({"fiscalise", "--nip", "1"}).err.rfind("tavena: Check the NIP number. ", 0), 0u);
  EXPECT_EQ(Tavena({"fiscalise", "--nip", "1", "--lang", "pl"}).err.rfind("tavena: Sprawdź ", 0),
            0u);
#endif
  // The send progress bar is drawn on a terminal only.
  std::ostringstream terminal, pipe;
  SendProgress bar(terminal, true, 200), quiet(pipe, false, 200);
  for (SendProgress* p : {&bar, &quiet}) {
    for (const int done : {0, 100, 200}) p->Update(done);
    p->Finish();
  }
  EXPECT_EQ(terminal.str(), "\r[" + std::string(40, ' ') + "] 0%  0/200\r[" + std::string(20, '#') +
                                std::string(20, ' ') + "] 50%  100/200\r[" + std::string(40, '#') +
                                "] 100%  200/200\n");
  EXPECT_EQ(pipe.str(), "");
}

// A LUMEN behind "com5"; the virtual clock starts at 2012-05-14 09:03:07.
class CliPrinterTest : public CliTest {
 protected:
  CliRun At(std::vector<std::string> args) {
    args.insert(args.end(), {"--port", "com5"});
    return Tavena(args);
  }
  // The service record's lines without the heading, their time and CR LF.
  std::vector<std::string> Service() const {
    std::istringstream in(test::ReadFile(dir_.file("rejestr_serwisowy.csv")));
    std::vector<std::string> lines;
    std::string line;
    for (std::getline(in, line); std::getline(in, line);) {
      EXPECT_EQ(line.rfind("2012-05-14 09:0", 0), 0u) << line;
      lines.push_back(line.substr(20, line.size() - 21));
    }
    return lines;
  }
  bool Got(const std::string& body) const {
    return sim_->Record().received.find(body) != std::string::npos;
  }
  VirtualClock clock_;
  ScopedClock scoped_{&clock_};
  test::ScopedWine wine_{false};
  std::unique_ptr<SimPrinter> sim_ = MakeSimPrinter("LUMEN");
  SimPort port_{"com5", *sim_};
};

TEST_F(CliPrinterTest, StatusBytesFindAndInfo) {
  // The status texts themselves: DrukarkaAnswers_test.
  EXPECT_EQ(At({"enq"}).out.rfind("0x65\nTryb szkoleniowy.\nOstatni rozkaz ", 0), 0u);
  EXPECT_EQ(At({"dle"}).out, "0x74\nDrukarka jest w stanie ON-LINE.\nPapier założony.\n");
  EXPECT_EQ(At({"bel"}).code, 0);
  EXPECT_EQ(sim_->State().bells, 1);
  CliRun r = At({"--lang", "en", "find"});
  EXPECT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(r.out, "Port: com5\nSpeed: 9600\nKind: TAVENA LUMEN (1)\n");

  r = At({"vat", "--set", "23,8,5,0,nakt,zw,nakt"});
  EXPECT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(r.out.rfind("Potwierdź na drukarce.", 0), 0u);
  EXPECT_EQ(At({"vat"}).out, "A: 23.00\nB: 8.00\nC: 5.00\nD: 0.00\nE: nakt\nF: zw\nG: nakt\n");
  r = At({"info"});
  EXPECT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(r.out.rfind("ETypDrukarki: TAVENA LUMEN\nEWersjaSoftu: 1.05\n"
                        "EFiskalny: Tryb szkoleniowy.\n",
                        0),
            0u)
      << r.out;

  sim_->Faults().silent = true;
  const int64_t start = clock_.NowMs();
  r = At({"info"});
  EXPECT_EQ(r.code, 1);
  EXPECT_EQ(r.out.rfind("ETypDrukarki: Nieokreślony\n", 0), 0u) << r.out;
  EXPECT_EQ(r.err, "tavena: Drukarka nie odpowiada na porcie com5.\n");
  EXPECT_LT(clock_.NowMs() - start, 8000);
  EXPECT_EQ(At({"enq"}).code, 1);
  EXPECT_EQ(At({"receipt-test"}).code, 1);
  // Model and unique number are empty when the printer does not answer.
  EXPECT_EQ(Service(),
            std::vector<std::string>(
                {"BLM01000017;TAVENA LUMEN;Stawki VAT;\"23.00;8.00;5.00;0.00;-1;zw;-1;\";tak",
                 ";;Paragon testowy;;nie"}));
}

TEST_F(CliPrinterTest, ProgrammingCommandsSendTheirFrames) {
  // Blocks of at most 16 bytes end at a frame's end, each followed by ENQ.
  const std::string first = "\x1BP25;6;7;8;9;10$c85\x1B\\", second = "\x1BP25;6;7;8;9;11$c84\x1B\\";
  test::WriteFile(dir_.file("clock.bin"), first + second);
  EXPECT_EQ(At({"send", dir_.file("clock.bin"), "--block", "16"}).out, "Wysłano bajtów: 42\n");
  EXPECT_EQ(sim_->Record().received, first + "\x05" + second + "\x05");
  // --log: the exchange is in <log dir>/<port's base name>_log.txt (on
  // Windows the log folder is d: or c:, checked by the channel's tests).
  CliRun r = At({"clock", "--set", "2025-06-07 08:09:10", "--log"});
  EXPECT_EQ(r.out, "2025-06-07 08:09\n");
#ifndef _WIN32
  EXPECT_NE(test::ReadFile(dir_.file(LogBaseNameOf("com5") + "_log.txt"))
                .find("> Zapytanie: \x1BP25;6;7;8;9;10$c"),
            std::string::npos);
#endif
  At({"clock", "--set", "2012-05-14 09:03"});

  r = At({"header", "--line", "Sklep", "--line", "Łódź", "--center", "1", "--bold", "2"});
  EXPECT_EQ(r.out, "Drukarka przyjęła rozkaz.\n");
  // Centred: 17 blanks before 5 letters; double width in SO .. DC4, in Mazovia.
  EXPECT_TRUE(Got("0$f" + std::string(17, ' ') +
                  "Sklep\r\x0E\x9C\xA2"
                  "d\xA6\x14\r\xFF"));
  EXPECT_EQ(At({"receipt-test"}).code, 0);
  EXPECT_EQ(sim_->State().receipts, 1);
  EXPECT_EQ(At({"report", "periodic", "--from", "2012-05-01", "--to", "2012-05-14"}).code, 0);
  EXPECT_EQ(sim_->State().periodic_reports, 1);

  r = At({"--lang", "en", "fiscalise", "--nip", "123-45-67-890"});
  EXPECT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(r.out.rfind("Fiscal mode.\nOlder printer: ", 0), 0u) << r.out;
  EXPECT_TRUE(Got("0$fNIP 123-45-67-890\xFF"));
  EXPECT_EQ(At({"status", "--param", "0", "--selector", "1"}).out, "1\n");
  EXPECT_EQ(At({"report", "daily"}).out, "Drukarka przyjęła rozkaz.\n");
  EXPECT_EQ(sim_->State().daily_reports, 2);
  r = At({"fiscalise", "--nip", "123-45-67-890"});  // already fiscal: error 13
  EXPECT_EQ(r.code, 1);
  EXPECT_EQ(r.err, "tavena: Drukarka nie przyjęła rozkazu (ENQ 0x69).\n");
  const std::string at = "BLM01000017;TAVENA LUMEN;";
  EXPECT_EQ(Service(),
            std::vector<std::string>(
                {at + "Zegar;2025-06-07 08:09:10;tak", at + "Zegar;2012-05-14 09:03:00;tak",
                 at + "Nag\xB3\xF3wek;Sklep | \xA3\xF3"
                      "d\x9F;tak",
                 at + "Paragon testowy;;tak", at + "Raport okresowy;2012-05-01 - 2012-05-14;tak",
                 at + "Daily report;2012-05-14;yes", at + "Fiscalisation;NIP 123-45-67-890;yes",
                 at + "Raport dobowy;2012-05-14;tak", at + "Raport dobowy;2012-05-14;tak",
                 at + "Fiskalizacja;NIP 123-45-67-890;nie"}));
}

TEST_F(CliPrinterTest, FileCommandsDecompileShowAndProgram) {
  // Mazovia 0x86 is "ą" (0xB9); bytes outside frames and an unended frame give nothing.
  test::WriteFile(dir_.file("a.bin"),
                  "\x1BP0#e89\x1B\\xx\x1BPab\x86\x01"
                  "12\x1B\\\x1BPend");
  CliRun r = Tavena({"decompile", dir_.file("a.bin")});
  EXPECT_EQ(r.out, "0#e\nab[xB9][x01]\n");
  EXPECT_EQ(Tavena({"decompile", dir_.file("a.bin"), "-o", dir_.file("a.sek")}).out, "");
  EXPECT_EQ(test::ReadFile(dir_.file("a.sek")), "0#e\r\nab[xB9][x01]\r\n");
  ExpectRefused(Tavena({"decompile", dir_.file("none.bin")}),
                "Nie można odczytać pliku: " + dir_.file("none.bin"));

  test::WriteFile(dir_.file("a.pod"),
                  "Linia1=Sklep\r\nLinia2=ul. D\xB3uga\r\nNIP=123-45-67-890\r\nLineBold1=1\r\n"
                  "LineCenter2=1\r\nPTUA=22\r\nPTUB=7\r\nPTUC=3\r\nPTUD=0\r\nPTUE=nakt\r\n"
                  "PTUF=zw\r\nPTUG=nakt\r\n");
  r = Tavena({"entity", "show", dir_.file("a.pod")});
  EXPECT_EQ(r.out,
            "1: Sklep  [pogrubiona]\n2: ul. Długa  [środek]\n3: \n4: \n5: \n6: \n7: \n8: \n"
            "NIP: 123-45-67-890\nA: 22\nB: 7\nC: 3\nD: 0\nE: nakt\nF: zw\nG: nakt\n");

  r = At({"program", dir_.file("a.pod")});
  EXPECT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(r.out.rfind("Drukarka przyjęła rozkaz.\nPotwierdź na drukarce.", 0), 0u) << r.out;
  EXPECT_EQ(sim_->State().header.at(0), "\x0ESklep\x14");
  EXPECT_EQ(sim_->State().rates[0], 22);
  EXPECT_EQ(sim_->State().rates[5], kSimRateExempt);
  // One identity question before the rates, one for the record of both.
  const auto& frames = sim_->Record().frames;
  EXPECT_EQ(
      std::count_if(frames.begin(), frames.end(), [](const auto& f) { return f.command == "#v"; }),
      2);
  EXPECT_EQ(Service(), std::vector<std::string>(
                           {"BLM01000017;TAVENA LUMEN;Nag\xB3\xF3wek;Sklep | ul. D\xB3uga;tak",
                            "BLM01000017;TAVENA LUMEN;Stawki VAT;"
                            "\"22.00;7.00;3.00;0.00;-1;zw;-1;\";tak"}));
  test::WriteFile(dir_.file("b.pod"), "PTUA=22\r\n");  // empty header line 1
  EXPECT_EQ(At({"program", dir_.file("b.pod")}).code, 2);
}

}  // namespace
}  // namespace tavena

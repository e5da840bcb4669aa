// The command-line tool run in-process: subcommands that need no printer,
// and the refusals that must happen before a port is touched.
#include <gtest/gtest.h>

#include <sstream>

#include "TestSupport.h"
#include "cli/Cli.h"
#include "cli/Cliprogress.h"
#include "sequence/Messagelanguage.h"

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

// One line on standard error, nothing else.
void ExpectOneLineReason(const CliRun& r, const std::string& text) {
  EXPECT_EQ(r.err, "tavena: " + text + "\n");
}

class CliTest : public ::testing::Test {
 protected:
  TempDir config_;
  test::ScopedEnv xdg_{"XDG_CONFIG_HOME", config_.str()};
};

TEST_F(CliTest, FramePrintsUpperCaseHexPairs) {
  CliRun r = Tavena({"frame", "0#e"});
  EXPECT_EQ(r.code, 0);
  EXPECT_EQ(r.out, "1B 50 30 23 65 38 39 1B 5C\n");
  EXPECT_EQ(Tavena({"frame", "0$e"}).out, "1B 50 30 24 65 38 45 1B 5C\n");
  EXPECT_EQ(Tavena({"frame", "#v", "--no-sum"}).out, "1B 50 23 76 1B 5C\n");
  // UTF-8 in, Mazovia on the wire: ą is 0x86; sum 0xFF ^ 0x86 = 0x79.
  EXPECT_EQ(Tavena({"frame", "ą"}).out, "1B 50 86 37 39 1B 5C\n");
  // A character Windows-1250 lacks is refused, not sent as "?".
  r = Tavena({"frame", "ą☃"});
  EXPECT_EQ(r.code, 2);
  EXPECT_EQ(r.out, "");
  ExpectOneLineReason(r, "Tekst zawiera znaki spoza strony kodowej Windows-1250: ą☃");
  r = Tavena({"frame"});
  EXPECT_EQ(r.code, 2);
  EXPECT_EQ(r.err.find("tavena: "), 0u);
  EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1);
}

TEST_F(CliTest, CompilePrintsTheListWritesBinOnlyOnSuccess) {
  TempDir dir;
  test::WriteFile(dir.file("ok.txt"), "komentarz\r\nseq = \\<ESC>P \\<D>.\\<M>.\\<Y>\\<end>\r\n");
  CliRun r = Tavena({"compile", dir.file("ok.txt"), "--now", "2009-03-05 07:04:00", "--hex", "-o",
                     dir.file("ok.bin")});
  EXPECT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(r.out, "2: Koniec przetwarzania. Brak błędów.\n1B 50 35 2E 33 2E 39\n");
  EXPECT_EQ(test::ReadFile(dir.file("ok.bin")), "\x1BP5.3.9");

  // File names are UTF-8 on the command line (Windows opens them in its own
  // code page).
  std::filesystem::copy_file(dir.file("ok.txt"), dir.path() / std::filesystem::path(u8"próba.txt"));
  r = Tavena({"compile", dir.str() + "/próba.txt", "-o", dir.str() + "/wynik ó.bin"});
  EXPECT_EQ(r.code, 0) << r.err;
  EXPECT_TRUE(std::filesystem::exists(dir.path() / std::filesystem::path(u8"wynik ó.bin")));

  test::WriteFile(dir.file("bad.txt"), "seq = A\r\n\\q\\<end>\r\n");
  r = Tavena({"--lang", "en", "compile", dir.file("bad.txt"), "-o", dir.file("bad.bin"), "--hex"});
  EXPECT_EQ(r.code, 1);
  EXPECT_EQ(r.out, "1: Failure character or sequence.\n2: There is 1 error.\n");
  ExpectOneLineReason(r, "The compilation failed.");
  EXPECT_FALSE(std::filesystem::exists(dir.file("bad.bin")));

  test::WriteFile(dir.file("empty.txt"), "");
  r = Tavena({"compile", dir.file("empty.txt")});
  EXPECT_EQ(r.code, 1);
  EXPECT_EQ(r.out, "0: Input file is empty.\n0: Wykryto: 1 błędów.\n");

  r = Tavena({"compile", dir.file("none.txt")});
  EXPECT_EQ(r.code, 2);
  ExpectOneLineReason(r, "Brak pliku sekwencji: " + dir.file("none.txt"));
  r = Tavena({"compile", dir.file("ok.txt"), "--now", "2009-02-30 07:04:00"});
  EXPECT_EQ(r.code, 2);
  ExpectOneLineReason(r,
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
  EXPECT_NE(r.out.find("/dev/ttyUSB0  FT232R USB UART\n"), std::string::npos);
  EXPECT_NE(r.out.find("/dev/ttyS0  Communications Port\n"), std::string::npos);
  EXPECT_EQ(r.out.find("ttyPRN"), std::string::npos);  // no number
  EXPECT_EQ(r.out.find("ttyS1"), std::string::npos);   // not present
  EXPECT_NE(Tavena({"ports", "--all", "--sysfs", sysfs}).out.find("/dev/ttyS1  "),
            std::string::npos);
  r = Tavena({"--lang", "en", "ports", "--report", "--sysfs", sysfs});
  EXPECT_NE(r.out.find("Driver:        cdc_acm\n"), std::string::npos);
  r = Tavena({"ports", "--sysfs", "/nonexistent"});
  EXPECT_EQ(r.code, 1);
  EXPECT_EQ(r.err.rfind("tavena: Krytyczny błąd w poszukiwaniu portu. ", 0), 0u);
}

TEST_F(CliTest, BadInputIsRefusedBeforeThePortIsTouched) {
  // The port does not exist: reaching it would give exit 1, not 2.
  const std::string port = "/nonexistent/ttyUSB9";
  CliRun r = Tavena({"fiscalise", "--port", port, "--nip", "123-4567-890"});
  EXPECT_EQ(r.code, 2);
  ExpectOneLineReason(r,
                      "Sprawdź numer NIP. Format jest nieprawidłowy. Prawidłowe formaty: "
                      "XXX-XX-XX-XXX XXX-XXX-XX-XX XXXXXXXXXX gdzie X jest dowolną cyfrą.");
  r = Tavena({"vat", "--port", port, "--set", "23,8,zw,0,nakt,zw,5"});
  EXPECT_EQ(r.code, 2);
  ExpectOneLineReason(r,
                      "Podano nieprawidłowe stawki VAT Może wystapić tylko jedna stawka "
                      "zwolniona. Błąd wystąpił w stawce F");
  r = Tavena({"header", "--port", port, "--line", "Sklep", "--line", "Café €"});
  EXPECT_EQ(r.code, 2);
  ExpectOneLineReason(r,
                      "Sprawdź nagłówek w linii numer: 2 Zawiera niedopuszczalne znaki, "
                      "albo jest pusty Nie można nagłówka zapisać.");
  r = Tavena({"clock", "--port", port, "--set", "2026-11-21 25:00"});
  EXPECT_EQ(r.code, 2);
  r = Tavena({"report", "periodic", "--port", port, "--from", "2026-03-05", "--to", "2026-03-04"});
  EXPECT_EQ(r.code, 2);
  ExpectOneLineReason(r, "Druga data jest wcześniejsza od pierwszej.");
  r = Tavena({"send", "--port", port, "/nonexistent/file.bin"});
  EXPECT_EQ(r.code, 2);
  ExpectOneLineReason(r, "Podany plik jest pusty lub brak pliku.");

  r = Tavena({"info"});
  EXPECT_EQ(r.code, 2);
  ExpectOneLineReason(r, "Podaj port drukarki: --port /dev/ttyUSB0 albo --port com1.");
  r = Tavena({"enq", "--port", port});
  EXPECT_EQ(r.code, 1);
  EXPECT_EQ(r.err.rfind("tavena: Nie można otworzyć portu " + port + ". ", 0), 0u) << r.err;
}

TEST_F(CliTest, UsageVersionAndErrors) {
  CliRun r = Tavena({"--version"});
  EXPECT_EQ(r.code, 0);
  EXPECT_EQ(r.out, "tavena 0.1.0\n");
  r = Tavena({"info", "--help"});
  EXPECT_EQ(r.code, 0);
  EXPECT_NE(r.out.find("--port"), std::string::npos);
  r = Tavena({"bogus"});
  EXPECT_EQ(r.code, 2);
  EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1);
  EXPECT_EQ(Tavena({"--lang", "de", "frame", "x"}).code, 2);
  EXPECT_EQ(Tavena({"--speed", "0", "info"}).code, 2);
}

TEST_F(CliTest, LanguageFileInTheConfigurationFolder) {
#ifdef _WIN32
  GTEST_SKIP() << "language.tav sits beside the program on Windows";
#endif
  // language.tav in the configuration folder picks English; --lang wins.
  ASSERT_TRUE(std::filesystem::create_directories(config_.path() / "tavena"));
  test::WriteFile((config_.path() / "tavena" / "language.tav").string(), "1\r\n");
  CliRun r = Tavena({"fiscalise", "--nip", "1"});
  EXPECT_EQ(r.err.rfind("tavena: Check the NIP number. ", 0), 0u) << r.err;
  r = Tavena({"fiscalise", "--nip", "1", "--lang", "pl"});
  EXPECT_EQ(r.err.rfind("tavena: Sprawdź numer NIP. ", 0), 0u) << r.err;
}

TEST(CliProgress, BarOnATerminalOnly) {
  std::ostringstream terminal, pipe;
  SendProgress bar(terminal, true, 200);
  bar.Update(0);
  bar.Update(100);
  bar.Update(200);
  bar.Finish();
  EXPECT_EQ(terminal.str(), "\r[" + std::string(40, ' ') + "] 0%  0/200" + "\r[" +
                                std::string(20, '#') + std::string(20, ' ') + "] 50%  100/200" +
                                "\r[" + std::string(40, '#') + "] 100%  200/200\n");
  SendProgress quiet(pipe, false, 200);
  quiet.Update(100);
  quiet.Finish();
  EXPECT_EQ(pipe.str(), "");
}

}  // namespace
}  // namespace tavena

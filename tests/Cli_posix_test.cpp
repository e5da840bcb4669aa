// End to end: the tavena program against the tavena-sim program over a
// pseudo-terminal, in real time. Each run is bounded; a hung child is killed.
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <ctime>
#include <thread>

#include "TestSupport.h"
#include "sequence/Codepage.h"
#include "sim/Simprinter.h"

namespace tavena {
namespace {

using test::TempDir;

const std::string kTool = TAVENA_BINARY_DIR "/cli/tavena";
const std::string kSim = TAVENA_BINARY_DIR "/sim/tavena-sim";

pid_t Spawn(const std::vector<std::string>& args, int out_fd, int err_fd) {
  const pid_t pid = fork();
  if (pid == 0) {
    dup2(out_fd, STDOUT_FILENO);
    dup2(err_fd, STDERR_FILENO);
    std::vector<char*> argv;
    for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);
    execv(argv[0], argv.data());
    _exit(127);
  }
  return pid;
}

// Waits up to limit_ms for the child; kills it when it does not end.
int WaitBounded(pid_t pid, int limit_ms) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(limit_ms);
  int status = 0;
  while (waitpid(pid, &status, WNOHANG) == 0) {
    if (std::chrono::steady_clock::now() > end) {
      kill(pid, SIGKILL);
      waitpid(pid, &status, 0);
      return -1;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

struct ToolRun {
  int code = -1;
  std::string out;
  std::string err;
};

class EndToEnd : public ::testing::Test {
 protected:
  void SetUp() override {
    if (access(kSim.c_str(), X_OK) != 0 || access(kTool.c_str(), X_OK) != 0)
      GTEST_SKIP() << "tavena or tavena-sim not built";
  }
  void TearDown() override { StopSim(); }

  // Starts the simulator; its standard error (the receive log) goes to a file.
  // via_tool: run it as "tavena --lang en sim" instead of tavena-sim (common
  // options may stand before the subcommand).
  void StartSim(bool via_tool = false) {
    int out[2];
    ASSERT_EQ(pipe(out), 0);
    const int err = open(dir_.file("sim.log").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    const std::vector<std::string> args =
        via_tool ? std::vector<std::string>{kTool, "--lang", "en", "sim"}
                 : std::vector<std::string>{kSim};
    sim_ = Spawn(args, out[1], err);
    close(out[1]);
    close(err);
    port_ = ReadLine(out[0], 5000);
    close(out[0]);
    ASSERT_EQ(port_.rfind("/dev/", 0), 0u) << port_;
  }

  void StopSim() {
    if (sim_ <= 0) return;
    kill(sim_, SIGTERM);
    WaitBounded(sim_, 3000);
    sim_ = 0;
  }

  static std::string ReadLine(int fd, int limit_ms) {
    std::string line;
    pollfd p{fd, POLLIN, 0};
    char c;
    while (poll(&p, 1, limit_ms) > 0 && read(fd, &c, 1) == 1 && c != '\n') line += c;
    return line;
  }

  ToolRun Tool(std::vector<std::string> args, int limit_ms = 20000) {
    args.insert(args.begin(), kTool);
    const std::string out = dir_.file("out.txt"), err = dir_.file("err.txt");
    const int o = open(out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    const int e = open(err.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    const pid_t pid = Spawn(args, o, e);
    close(o);
    close(e);
    ToolRun r;
    r.code = WaitBounded(pid, limit_ms);
    r.out = test::ReadFile(out);
    r.err = test::ReadFile(err);
    return r;
  }

  // Every byte the simulator logged as received, in its readable form.
  std::string Received() {
    const std::string log = test::ReadFile(dir_.file("sim.log"));
    std::string received;
    const std::string mark = " received ";
    for (size_t at = 0; (at = log.find(mark, at)) != std::string::npos;) {
      const size_t end = log.find('\n', at);
      received += log.substr(at + mark.size(), end - at - mark.size());
      at = end;
    }
    return received;
  }

  TempDir dir_;
  test::ScopedEnv log_dir_{"TAVENA_LOG_DIR", dir_.file("log")};
  test::ScopedEnv xdg_{"XDG_CONFIG_HOME", dir_.file("config")};
  pid_t sim_ = 0;
  std::string port_;
};

TEST_F(EndToEnd, CompiledSequenceReachesThePrinterByteForByte) {
  test::WriteFile(
      dir_.file("clock.txt"),
      "Two clock frames\r\n"
      "seq = \\<ESC>P\\<check_start>25;6;7;8;9;10$c\\<check_insert>\\<ESC>\\\\\r\n"
      "      \\<ESC>P\\<check_start>25;6;7;8;9;11$c\\<check_insert>\\<ESC>\\\\\\<end>\r\n");
  ToolRun r = Tool({"compile", dir_.file("clock.txt"), "-o", dir_.file("clock.bin")});
  ASSERT_EQ(r.code, 0) << r.out << r.err;
  const std::string bin = test::ReadFile(dir_.file("clock.bin"));
  ASSERT_EQ(bin.substr(0, 22), "\x1BP25;6;7;8;9;10$c" + bin.substr(17, 2) + "\x1B\\\x1B");

  StartSim();
  r = Tool({"send", dir_.file("clock.bin"), "--port", port_, "--block", "16"});
  EXPECT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(r.out, "Wysłano bajtów: " + std::to_string(bin.size()) + "\n");
  r = Tool({"clock", "--port", port_});
  EXPECT_EQ(r.out, "2025-06-07 08:09\n");
  StopSim();
  // Each block of one frame is followed by ENQ; then the clock query.
  EXPECT_EQ(Received().rfind(
                SimReadable(bin.substr(0, 21)) + "<05>" + SimReadable(bin.substr(21)) + "<05>", 0),
            0u)
      << Received();
}

TEST_F(EndToEnd, VatRatesSetThenShownByInfo) {
  StartSim();
  ToolRun r = Tool({"vat", "--set", "23,8,5,0,nakt,zw,nakt", "--port", port_});
  EXPECT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(r.out.rfind("Potwierdź na drukarce.", 0), 0u);
  r = Tool({"info", "--port", port_});
  EXPECT_EQ(r.code, 0) << r.err;
  for (const char* line :
       {"EVatA: 23.00\n", "EVatB: 8.00\n", "EVatC: 5.00\n", "EVatD: 0.00\n", "EVatE: nakt\n",
        "EVatF: zw\n", "EVatG: nakt\n", "EFiskalny: Tryb szkoleniowy.\n"})
    EXPECT_NE(r.out.find(line), std::string::npos) << line << r.out;
  EXPECT_EQ(r.out.rfind("ETypDrukarki: ", 0), 0u);
  EXPECT_NE(r.out.find("\nEDataPierwszegoRD: "), std::string::npos);
}

TEST_F(EndToEnd, ClockSetAndReadBackOnTheToolsOwnSimulator) {
  StartSim(true);
  ToolRun r = Tool({"clock", "--set", "2025-06-07 08:09:10", "--port", port_, "--log"});
  EXPECT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(r.out, "2025-06-07 08:09\n");
  StopSim();
  // --log: the exchange is in <log dir>/<last part of the port>_log.txt.
  const std::string base = port_.substr(port_.rfind('/') + 1);
  const std::string log = test::ReadFile(dir_.file("log") + "/" + base + "_log.txt");
  EXPECT_NE(log.find("> Zapytanie: \x1BP25;6;7;8;9;10$c"), std::string::npos) << log;
  EXPECT_NE(Received().find("25;6;7;8;9;10$c"), std::string::npos) << Received();
}

TEST_F(EndToEnd, FiscaliseRefusesABadNipAndDoesAGoodOne) {
  StartSim();
  ToolRun r = Tool({"fiscalise", "--nip", "123-4567-890", "--port", port_});
  EXPECT_EQ(r.code, 2);
  EXPECT_EQ(r.err.rfind("tavena: Sprawdź numer NIP. Format jest nieprawidłowy.", 0), 0u);
  EXPECT_EQ(Received(), "");

  r = Tool({"--lang", "en", "fiscalise", "--nip", "123-45-67-890", "--port", port_});
  EXPECT_EQ(r.code, 0) << r.err;
  EXPECT_NE(r.out.find("Fiscal mode.\n"), std::string::npos) << r.out;
  r = Tool({"status", "--param", "0", "--selector", "1", "--port", port_});
  EXPECT_EQ(r.out, "1\n");
  StopSim();
  EXPECT_NE(Received().find("$fNIP 123-45-67-890"), std::string::npos) << Received();
}

TEST_F(EndToEnd, StatusBytesHeaderReceiptAndDailyReport) {
  StartSim();
  ToolRun r = Tool({"enq", "--port", port_});
  EXPECT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(r.out,
            "0x65\nTryb szkoleniowy.\nOstatni rozkaz ziterpretowany poprawnie.\n"
            "Drukarka nie jest w stanie transakcji.\nOstatnia transakcja zainterpretowana "
            "poprawnie.\n");
  r = Tool({"dle", "--port", port_});
  EXPECT_EQ(r.out, "0x74\nDrukarka jest w stanie ON-LINE.\nPapier założony.\n");
  r = Tool({"--lang", "en", "find", "--port", port_});
  EXPECT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(r.out, "Port: " + port_ + "\nSpeed: 9600\nKind: TAVENA LUMEN (1)\n");

  r = Tool({"header", "--line", "Sklep", "--line", "Łódź", "--center", "1", "--bold", "2", "--port",
            port_});
  EXPECT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(r.out, "Drukarka przyjęła rozkaz.\n");
  r = Tool({"receipt-test", "--port", port_});
  EXPECT_EQ(r.code, 0) << r.err;
  r = Tool({"report", "daily", "--port", port_});
  EXPECT_EQ(r.code, 0) << r.err;
  StopSim();

  const std::string received = Received();
  // Centred: 17 blanks before a 5-letter line; double width: SO .. DC4, Mazovia letters.
  // The log shows the Mazovia bytes as if they were Windows-1250.
  const std::string lodz = Cp1250ToUtf8(ToMazovia(Utf8ToCp1250("Łódź")));
  EXPECT_EQ(lodz,
            "\xC5\x9B\xCB\x98"
            "d\xC2\xA6");  // Mazovia 9C A2 64 A6
  EXPECT_NE(received.find("0$f                 Sklep<0D><0E>" + lodz + "<14><0D>"),
            std::string::npos)
      << received;
  EXPECT_NE(received.find("0$h"), std::string::npos);
  EXPECT_NE(received.find("1$lTowar testowy 1gr<0D>1<0D>A/0.01/0.01/"), std::string::npos);
  EXPECT_NE(received.find("1;0;3;0$eNRS5555<0D>Stopka 1<0D>Stopka 2<0D>Stopka 3<0D>0.01/0.01/"),
            std::string::npos);
  const std::time_t now = std::time(nullptr);
  const std::tm* t = std::localtime(&now);
  char report[32];
  std::snprintf(report, sizeof report, "1;%02d;%02d;%02d#r", t->tm_year % 100, t->tm_mon + 1,
                t->tm_mday);
  EXPECT_NE(received.find(report), std::string::npos) << report;
}

TEST_F(EndToEnd, InfoOnASilentPortPrintsTheDefaults) {
  const int master = posix_openpt(O_RDWR | O_NOCTTY);
  ASSERT_GE(master, 0);
  ASSERT_EQ(grantpt(master), 0);
  ASSERT_EQ(unlockpt(master), 0);
  const std::string slave = ptsname(master);
  const auto start = std::chrono::steady_clock::now();
  ToolRun r = Tool({"info", "--port", slave});
  const auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(
                      std::chrono::steady_clock::now() - start)
                      .count();
  close(master);
  EXPECT_EQ(r.code, 1);
  EXPECT_EQ(r.out.rfind("ETypDrukarki: Nieokreślony\nEWersjaSoftu: Nieokreślony\n"
                        "EFiskalny: Błąd komunikacji.\nEIloscZerowan: Brak\n",
                        0),
            0u)
      << r.out;
  EXPECT_NE(r.out.find("\nECzasDrukarki: Brak\nEDataPierwszegoRD: Brak\n"), std::string::npos);
  EXPECT_EQ(r.err, "tavena: Drukarka nie odpowiada na porcie " + slave + ".\n");
  EXPECT_LT(ms, 8000);
}

}  // namespace
}  // namespace tavena

// Start-up of the whole program against the simulated printer, served by
// tavena-sim on a pseudo-terminal (real time).
#include <gtest/gtest.h>

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>

#include <QApplication>
#include <QComboBox>
#include <QElapsedTimer>
#include <QImage>

#include "app/Coreprinterlink.h"
#include "app/Formfields.h"
#include "app/Simulator.h"
#include "app/Tavenaapp.h"
#include "tests/TestSupport.h"
#include "tests/gui/Guifakes.h"
#include "transport/Fastcom.h"
#include "windows/Listing.h"

namespace tavena {
namespace {

#ifdef TAVENA_SIM_PROGRAM

using test::ReadFile;
using test::ScriptedDialogs;
using test::TempDir;

using StartUp = test::GuiTest;

TEST_F(StartUp, AgainstTheSimulatedPrinterFillsTheFieldsAndTheMonitor) {
  TempDir dir;
  test::ScopedEnv logs("TAVENA_LOG_DIR", dir.file("logs"));
  ScriptedDialogs dialogs;
  SimulatorProcess simulator;
  ASSERT_TRUE(simulator.Start(TAVENA_SIM_PROGRAM, "LUMEN")) << simulator.Error().toStdString();

  std::unique_ptr<TTavenaForm> form = CreateWindows(MakeCorePrinterLink(), dir.str() + "/");
  form->SetSimulatedPort(simulator.Path());
  // "Tworzenie logów" logs the start-up's own exchanges.
  const std::string log_file = dir.file("logs") + "/" +
                               simulator.Path().substr(simulator.Path().rfind('/') + 1) +
                               "_log.txt";
  form->findChild<QCheckBox*>("TworzenieLogow")->setChecked(true);
  test::StartMainWindow(*form);
  const auto text = [&](const char* name) { return ControlText(form.get(), name); };

  auto* ports = form->findChild<QComboBox*>("ComboCom");
  EXPECT_EQ(ports->itemText(0).toStdString(), "Drukarka symulowana " + simulator.Path());
  EXPECT_EQ(form->PortName(), simulator.Path());
  EXPECT_EQ(text("AktualnyCom"), QString::fromUtf8("9600 bodów "));
  EXPECT_TRUE(text("ETypDrukarki").contains("LUMEN")) << text("ETypDrukarki").toStdString();
  EXPECT_EQ(text("EFiskalny"), "Tryb szkoleniowy.");  // kind and mode from it: MainWindowTest
  EXPECT_TRUE(dialogs.messages.empty());
  EXPECT_TRUE(form->Windows().listing->Lines().join('\n').contains("#v"));  // the monitor

  // The program does not hold the port, even after choosing it in the list;
  // a port another program holds is explained.
  FastCom other;
  other.baud_rate = 9600;
  emit ports->activated(0);
  ASSERT_TRUE(other.Open(simulator.Path().c_str(), 1));
  form->ConnectPrinter();
  ASSERT_EQ(dialogs.messages.size(), 1u);
  EXPECT_EQ(dialogs.messages[0].text.toStdString(), "Nie można otworzyć portu " + simulator.Path() +
                                                        ": port jest zajęty przez inny program.");
  EXPECT_EQ(form->PortName(), simulator.Path());

  const std::string log = ReadFile(log_file);
  EXPECT_NE(log.find("Otwarcie portu."), std::string::npos) << log_file;
  EXPECT_NE(log.find("#v"), std::string::npos) << log_file;
  form->close();
}

#endif

#ifdef TAVENA_SERVICE_PROGRAM

// The first child of pid once it runs program (from /proc), else 0.
pid_t ChildRunning(pid_t pid, const std::string& program) {
  const std::string task = "/proc/" + std::to_string(pid) + "/task/" + std::to_string(pid);
  pid_t child = 0;
  std::ifstream(task + "/children") >> child;
  if (child == 0) return 0;
  const std::string command = test::ReadFile("/proc/" + std::to_string(child) + "/cmdline");
  return command.find(program) != std::string::npos ? child : 0;
}

// Gone, or a zombie nobody reaps.
bool Ended(pid_t pid) {
  std::ifstream stat("/proc/" + std::to_string(pid) + "/stat");
  std::string number, name, state;
  return !(stat >> number >> name >> state) || state == "Z";
}

// This process's environment with the platform, settings and log folders
// of the program under test (kept alive in strings).
std::vector<char*> Environment(const char* platform, const test::TempDir& dir,
                               std::vector<std::string>& strings) {
  strings = {std::string("QT_QPA_PLATFORM=") + platform, "XDG_CONFIG_HOME=" + dir.str(),
             "TAVENA_LOG_DIR=" + dir.file("logs")};
  for (char** e = environ; *e; ++e)
    if (!std::string(*e).starts_with("QT_QPA_PLATFORM=") &&
        !std::string(*e).starts_with("XDG_CONFIG_HOME="))
      strings.emplace_back(*e);
  std::vector<char*> envp;
  for (std::string& e : strings) envp.push_back(e.data());
  envp.push_back(nullptr);
  return envp;
}

TEST_F(StartUp, TheSimulatedPrinterEndsWithTheProgramEvenWhenItIsKilled) {
  test::TempDir dir;
  std::vector<std::string> strings;
  std::vector<char*> envp = Environment("offscreen", dir, strings);
  const int null = open("/dev/null", O_WRONLY);
  const pid_t service = fork();
  if (service == 0) {
    dup2(null, STDOUT_FILENO);
    dup2(null, STDERR_FILENO);
    execle(TAVENA_SERVICE_PROGRAM, TAVENA_SERVICE_PROGRAM, "--simulate", nullptr, envp.data());
    _exit(127);
  }
  close(null);
  ASSERT_GT(service, 0);
  pid_t simulator = 0;
  for (int i = 0; i < 200 && !(simulator = ChildRunning(service, "tavena-sim")); ++i) usleep(25000);
  kill(service, SIGKILL);
  waitpid(service, nullptr, 0);
  ASSERT_NE(simulator, 0) << "tavena-service started no simulator";
  bool ended = false;
  for (int i = 0; i < 120 && !(ended = Ended(simulator)); ++i) usleep(25000);
  if (!ended) kill(simulator, SIGKILL);
  EXPECT_TRUE(ended);
}

// The program under a virtual X display (xvfb-run), with the settings in
// dir: the time it ran, in ms, or -1 when it did not end within 20 s.
int64_t RunUnderXvfb(const test::TempDir& dir, std::vector<std::string> arguments) {
  std::vector<std::string> strings;
  std::vector<char*> envp = Environment("xcb", dir, strings), argv;
  arguments.insert(arguments.begin(), TAVENA_SERVICE_PROGRAM);
  arguments.insert(arguments.begin(), {"xvfb-run", "-a", "-s", "-screen 0 1280x1024x24"});
  for (std::string& a : arguments) argv.push_back(a.data());
  argv.push_back(nullptr);
  QElapsedTimer timer;
  timer.start();
  const pid_t pid = fork();
  if (pid == 0) {
    setpgid(0, 0);
    execvpe("xvfb-run", argv.data(), envp.data());
    _exit(127);
  }
  int status = 0;
  while (waitpid(pid, &status, WNOHANG) == 0) {
    if (timer.elapsed() > 20000) {
      kill(-pid, SIGKILL);
      waitpid(pid, &status, 0);
      return -1;
    }
    usleep(10000);
  }
  return timer.elapsed();
}

// A terminal nobody answers on: the printer search sits out all its waits.
struct SilentPort {
  SilentPort() : fd(posix_openpt(O_RDWR | O_NOCTTY)) {
    grantpt(fd);
    unlockpt(fd);
    path = ptsname(fd);
  }
  ~SilentPort() { close(fd); }
  int fd;
  std::string path;
};

class RealProgram : public test::GuiTest {
 protected:
  void SetUp() override {
    if (system("command -v xvfb-run >/dev/null 2>&1") != 0) GTEST_SKIP() << "xvfb-run missing";
    std::filesystem::create_directories(dir.file("tavena"));
  }
  std::string Config() const { return ReadFile(dir.file("tavena/config.tav")); }
  test::TempDir dir;
};

// The kept monitor place comes back unchanged; closing during the search ends within a
// second and saves (the window takes events through the search's waits).
TEST_F(RealProgram, KeptMonitorPlaceAndClosingDuringTheSearchWithinASecond) {
  const std::string place =
      "ListTop=50\r\nListLeft=60\r\nListWidth=500\r\nListHeight=300\r\nListShowing=1\r\n";
  test::WriteFile(dir.file("tavena/config.tav"), place);
  SilentPort port;
  const int64_t ran = RunUnderXvfb(dir, {"--port", port.path, "--close-after", "1000"});
  ASSERT_GT(ran, 0);
  EXPECT_LT(ran, 3200);  // the search alone takes about 4 s
  EXPECT_NE(Config().find("MainWidth="), std::string::npos);
  EXPECT_NE(Config().find(place), std::string::npos) << Config();
}

// What the window shows during the search is checked in process (Groundwork_test).
TEST_F(RealProgram, ScreenshotsLeaveSettingsAlone) {
  const std::string kept = "ListTop=7\r\nListShowing=0\r\n";
  test::WriteFile(dir.file("tavena/config.tav"), kept);
  SilentPort port;
  ASSERT_GT(RunUnderXvfb(dir, {"--port", port.path, "--screenshot", dir.file("shots")}), 0);
  EXPECT_EQ(Config(), kept);
  EXPECT_FALSE(QImage(QString::fromStdString(dir.file("shots/main-window.png"))).isNull());
}

#endif

}  // namespace
}  // namespace tavena

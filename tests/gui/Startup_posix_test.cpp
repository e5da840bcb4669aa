// Start-up of the whole program against the simulated printer, served by
// tavena-sim on a pseudo-terminal (real time).
#include <gtest/gtest.h>

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QRegularExpression>

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
  ASSERT_TRUE(simulator.Path().starts_with("/dev/"));

  std::unique_ptr<TTavenaForm> form = CreateWindows(MakeCorePrinterLink(), dir.str() + "/");
  form->SetSimulatedPort(simulator.Path());
  // "Tworzenie logów" switches the communication log on for the start-up's
  // own exchanges.
  const std::string log_file = dir.file("logs") + "/" +
                               simulator.Path().substr(simulator.Path().rfind('/') + 1) +
                               "_log.txt";
  form->findChild<QCheckBox*>("TworzenieLogow")->setChecked(true);
  test::StartMainWindow(*form);
  const auto text = [&](const char* name) { return ControlText(form.get(), name); };

  auto* ports = form->findChild<QComboBox*>("ComboCom");
  EXPECT_EQ(ports->itemText(0).toStdString(), "Drukarka symulowana " + simulator.Path());
  EXPECT_EQ(ports->currentIndex(), 0);
  EXPECT_EQ(form->PortName(), simulator.Path());
  EXPECT_EQ(text("AktualnyCom"), QString::fromUtf8("9600 bodów "));
  EXPECT_TRUE(text("ETypDrukarki").contains("LUMEN")) << text("ETypDrukarki").toStdString();
  EXPECT_FALSE(text("EWersjaSoftu").isEmpty());
  EXPECT_EQ(text("EFiskalny"), "Tryb szkoleniowy.");
  EXPECT_FALSE(form->IsFiscal());
  EXPECT_EQ(form->DeviceKind(), '1');
  EXPECT_FALSE(form->findChild<QWidget*>("Fiskalizacja")->isHidden());
  EXPECT_TRUE(QRegularExpression("^\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d$")
                  .match(text("ECzasDrukarki"))
                  .hasMatch())
      << text("ECzasDrukarki").toStdString();
  EXPECT_EQ(text("ENumerPF").size(), 11) << text("ENumerPF").toStdString();
  EXPECT_FALSE(text("EVatA").isEmpty());
  EXPECT_TRUE(dialogs.messages.empty());

  // The monitor got the exchanges; saved, they are Windows-1250 lines.
  TListingForm* monitor = form->Windows().listing;
  const QStringList lines = monitor->Lines();
  ASSERT_FALSE(lines.isEmpty());
  EXPECT_TRUE(lines.join('\n').contains("#v")) << lines.join('\n').toStdString();
  dialogs.chosen_file = QString::fromStdString(dir.file("Listing.log"));
  monitor->Zapisz1Click();
  const std::string saved = ReadFile(dir.file("Listing.log"));
  EXPECT_TRUE(saved.ends_with("\r\n"));
  EXPECT_EQ(std::count(saved.begin(), saved.end(), '\n'), lines.size());

  // The program does not hold the port: the tool or another program can
  // open it now, and after choosing it in the list.
  const auto port_is_free = [&] {
    FastCom other;
    other.baud_rate = 9600;
    const bool opened = other.Open(simulator.Path().c_str(), 1);
    other.Close();
    return opened;
  };
  EXPECT_TRUE(port_is_free());
  emit ports->activated(0);
  EXPECT_EQ(form->PortName(), simulator.Path());
  EXPECT_TRUE(port_is_free());
  // A port that another program holds is explained.
  {
    FastCom other;
    other.baud_rate = 9600;
    ASSERT_TRUE(other.Open(simulator.Path().c_str(), 1));
    form->ConnectPrinter();
    ASSERT_EQ(dialogs.messages.size(), 1u);
    EXPECT_EQ(
        dialogs.messages[0].text.toStdString(),
        "Nie można otworzyć portu " + simulator.Path() + ": port jest zajęty przez inny program.");
    EXPECT_EQ(form->PortName(), simulator.Path());
  }

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

TEST_F(StartUp, TheSimulatedPrinterEndsWithTheProgramEvenWhenItIsKilled) {
  test::TempDir dir;
  std::vector<std::string> environment{"QT_QPA_PLATFORM=offscreen", "XDG_CONFIG_HOME=" + dir.str(),
                                       "TAVENA_LOG_DIR=" + dir.file("logs")};
  for (char** e = environ; *e; ++e)
    if (!std::string(*e).starts_with("QT_QPA_PLATFORM=")) environment.emplace_back(*e);
  std::vector<char*> envp;
  for (std::string& e : environment) envp.push_back(e.data());
  envp.push_back(nullptr);
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

#endif

}  // namespace
}  // namespace tavena

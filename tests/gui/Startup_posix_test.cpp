// Start-up of the whole program against the simulated printer, served by
// tavena-sim on a pseudo-terminal (real time).
#include <gtest/gtest.h>

#include <filesystem>

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

TEST(StartUp, AgainstTheSimulatedPrinterFillsTheFieldsAndTheMonitor) {
  Settings() = SettingsRecord{};
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
  form->show();
  QApplication::processEvents();
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
  const std::string log = ReadFile(log_file);
  EXPECT_NE(log.find("Otwarcie portu."), std::string::npos) << log_file;
  EXPECT_NE(log.find("#v"), std::string::npos) << log_file;
  form->close();
  Settings() = SettingsRecord{};
}

#endif

}  // namespace
}  // namespace tavena

// The port list window over the sysfs fixture; the main window's port list
// following devices that come and go.
#include <gtest/gtest.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFrame>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QTimer>
#include <filesystem>
#include <functional>
#include <map>

#include "app/Portwatch.h"
#include "app/Tavenaapp.h"
#include "tests/TestSupport.h"
#include "tests/gui/Guifakes.h"
#include "transport/Usbclass.h"
#include "windows/Serialportform.h"

namespace tavena {
namespace {

namespace fs = std::filesystem;

using test::U;

// Runs the event loop until done() holds or the bound passes.
bool RunUntil(const std::function<bool()>& done, int bound_ms = 2000) {
  QElapsedTimer clock;
  clock.start();
  while (!done() && clock.elapsed() < bound_ms) {
    QEventLoop loop;
    QTimer::singleShot(10, &loop, &QEventLoop::quit);
    loop.exec();
  }
  return done();
}

// A copy of the sysfs fixture that devices can be added to and taken from.
class SysfsCopy {
 public:
  SysfsCopy() {
    fs::copy(fs::path(__FILE__).parent_path().parent_path() / "fixtures" / "sysfs", root(),
             fs::copy_options::recursive | fs::copy_options::copy_symlinks);
  }
  std::string root() const { return dir_.file("sys"); }
  std::string ttys() const { return dir_.file("sys/class/tty"); }
  void Unplug(const std::string& tty) {
    targets_[tty] = fs::read_symlink(ttys() + "/" + tty);
    fs::remove(ttys() + "/" + tty);
  }
  void Plug(const std::string& tty) {
    fs::create_directory_symlink(targets_[tty], ttys() + "/" + tty);
  }

 private:
  test::TempDir dir_;
  std::map<std::string, fs::path> targets_;
};

class PortListWindow : public test::GuiTest {
 protected:
  QStringList Lines() {
    QStringList lines;
    for (int i = 0; i < list->count(); ++i) lines << list->item(i)->text();
    return lines;
  }
  QStringList Named(const QStringList& lines) { return lines.filter("Nazwa urzadzenia:"); }

  SysfsCopy sysfs;
  test::ScriptedDialogs dialogs;
  TSerialPortsForm form;
  QListWidget* list = form.findChild<QListWidget*>("ListBox1");
};

TEST_F(PortListWindow, MenusShowTheSummaryOfPresentOrAllPorts) {
  // The pnp id carries Windows-1250 letters and a lone CR into the summary.
  test::WriteFile(sysfs.root() + "/devices/pnp0/00:04/id",
                  "PNP0501&\xA3\xF3"
                  "d\x9F\rX\n");
  Settings().font_wind = {"Arial", -1, 12, kFontBold};
  CreateFonts(Settings());
  form.SetSysfsRoot(sysfs.root());

  list->addItem("stale");
  form.show();
  EXPECT_EQ(list->count(), 0);  // cleared, and nothing searched on show
  EXPECT_EQ(list->font().family(), "Courier New");
  EXPECT_EQ(list->font().pointSize(), 12);
  EXPECT_TRUE(list->font().bold());

  form.findChild<QAction*>("Portyzainstalowane1")->trigger();
  const QStringList present = Lines();
  ASSERT_EQ(present.size(), 32);  // three records of ten lines, two lines cut at CR
  EXPECT_EQ(
      present.mid(0, 10),
      QStringList({"HardwareId:         USB\\VID_7A7A&PID_0001&REV_0110",
                   "Version:            1.10", "SystemID:           0", "Numer systemowy:    0",
                   "Numer urzadzenia:   1", "Identyfikator:      PID_0001",
                   "Nazwa urzadzenia:   /dev/ttyACM0", "Kod urzadzenia:     1",
                   "Vendor odczytany:   0x7A7A", "PID konfiguracyjny: 0001"}));
  EXPECT_EQ(present.mid(10, 2), QStringList({U("HardwareId:         ACPI\\PNP0501&Łódź"), "X"}));
  EXPECT_EQ(present.mid(16, 2), QStringList({U("Identyfikator:      Łódź"), "X"}));
  EXPECT_EQ(Named(present),
            QStringList({"Nazwa urzadzenia:   /dev/ttyACM0", "Nazwa urzadzenia:   /dev/ttyS0",
                         "Nazwa urzadzenia:   /dev/ttyUSB0"}));

  // All ports add the UART slot with no chip behind it.
  form.findChild<QAction*>("Wszystkieporty1")->trigger();
  EXPECT_EQ(Named(Lines()),
            QStringList({"Nazwa urzadzenia:   /dev/ttyACM0", "Nazwa urzadzenia:   /dev/ttyS0",
                         "Nazwa urzadzenia:   /dev/ttyS1", "Nazwa urzadzenia:   /dev/ttyUSB0"}));

  // A failed discovery leaves what it found (here nothing) and no message.
  form.SetSysfsRoot(sysfs.root() + "/missing");
  form.findChild<QAction*>("Portyzainstalowane1")->trigger();
  EXPECT_EQ(list->count(), 0);
  EXPECT_TRUE(dialogs.messages.empty());

  form.findChild<QAction*>("Zakocz1")->trigger();
  EXPECT_FALSE(form.isVisible());
}

// The ports a copy of the sysfs fixture shows, listed as the program does;
// /dev/ttyACM0 is the maker's USB device.
class SysfsLink : public test::FakeLink {
 public:
  explicit SysfsLink(std::string root) : root_(std::move(root)) { usb_port = "/dev/ttyACM0"; }
  std::vector<PortEntry> ListPorts() override {
    UsbClass usb;
    usb.SetSysfsRoot(root_);
    usb.numbered_only = true;
    usb.Discover();
    std::vector<PortEntry> found;
    for (const DeviceRecord& record : usb.Records())
      found.push_back({record.description, record.port_name});
    return found;
  }

 private:
  std::string root_;
};

class LivePorts : public test::WindowTest {
 protected:
  void Start() {
    Create(std::make_unique<SysfsLink>(sysfs.root()));
    ASSERT_TRUE(form->PortWatcher()->WatchFolder(QString::fromStdString(sysfs.ttys())));
    WindowTest::Start();
    combo = Combo("ComboCom");
    bar = form->findChild<QFrame*>("UsbPrinterBar");
  }
  void Choose(int index) {
    combo->setCurrentIndex(index);
    emit combo->activated(index);
  }

  SysfsCopy sysfs;
  QComboBox* combo = nullptr;
  QFrame* bar = nullptr;
};

const char* const kAcm = "TAVENA LUMEN USB /dev/ttyACM0";
const char* const kUart = "Communications Port /dev/ttyS0";
const char* const kFtdi = "FT232R USB UART /dev/ttyUSB0";

TEST_F(LivePorts, ListFollowsUnplugAndPlugAndKeepsTheChosenPort) {
  Start();
  ASSERT_EQ(Items("ComboCom"), QStringList({kAcm, kUart, kFtdi}));
  Choose(1);
  sysfs.Unplug("ttyUSB0");
  EXPECT_TRUE(RunUntil([&] { return combo->count() == 2; }));
  EXPECT_EQ(Items("ComboCom"), QStringList({kAcm, kUart}));
  EXPECT_EQ(combo->currentText(), kUart);
  EXPECT_EQ(form->PortName(), "/dev/ttyS0");
  EXPECT_FALSE(form->PortWatcher()->Settling());  // no timer runs while nothing changes

  sysfs.Plug("ttyUSB0");
  EXPECT_TRUE(RunUntil([&] { return combo->count() == 3; }));
  EXPECT_EQ(Items("ComboCom"), QStringList({kAcm, kUart, kFtdi}));
  EXPECT_EQ(combo->currentText(), kUart);
  EXPECT_TRUE(bar->isHidden());  // not the maker's device
  EXPECT_TRUE(dialogs.messages.empty());
}

// During a search the list stands still; after it, the list follows, a pulled
// port is named and the maker's device just plugged in is offered a search.
TEST_F(LivePorts, BusyDefersTheRebuildPulledPortIsNamedPluggedPrinterIsOffered) {
  sysfs.Unplug("ttyACM0");
  Start();
  Choose(1);
  ASSERT_EQ(form->PortName(), "/dev/ttyUSB0");
  bool abandoned = false, resumed = false;
  form->SetAbandonWaits([&] { abandoned = true; });
  form->SetResumeWaits([&] { resumed = true; });
  QStringList during;
  link->while_searching = [&] {
    sysfs.Plug("ttyACM0");
    sysfs.Unplug("ttyUSB0");
    EXPECT_TRUE(RunUntil([&] { return abandoned; }));
    during = Items("ComboCom");
    EXPECT_FALSE(resumed);
    EXPECT_TRUE(dialogs.messages.empty());
  };
  form->ConnectPrinter();
  EXPECT_EQ(during, QStringList({kUart, kFtdi}));
  EXPECT_TRUE(resumed);
  EXPECT_EQ(Items("ComboCom"), QStringList({kAcm, kUart}));
  EXPECT_EQ(Messages(),
            QStringList({U("Port /dev/ttyUSB0 zniknął. Czy drukarka została odłączona?")}));

  ASSERT_FALSE(bar->isHidden());
  EXPECT_EQ(bar->findChild<QLabel*>("UsbPrinterText")->text(),
            U("Podłączono urządzenie TAVENA USB na porcie /dev/ttyACM0."));
  link->while_searching = nullptr;
  link->calls.clear();
  bar->findChild<QPushButton*>("UsbPrinterSearch")->click();
  EXPECT_EQ(link->calls.front(), "find /dev/ttyACM0 9600");
  EXPECT_TRUE(bar->isHidden());
}

// The printer's line closes in the middle of an exchange: the channel sees
// the port gone, and the operation ends at once naming it (a silent printer
// would hold the status read for its 2 s time-out).
using VanishedPort = test::WindowTest;

TEST_F(VanishedPort, LineClosedMidExchangeEndsAtOnceNamingThePort) {
  Create();
  Start();
  sim->Faults().close_after_frames = 0;
  const int64_t before = clock.NowMs();
  Trigger(form.get(), "PenyStatus1");
  EXPECT_LT(clock.NowMs() - before, 1000);
  EXPECT_EQ(sim->Record().frames.size(), 1u);
  EXPECT_EQ(Messages(), QStringList({U("Port com5 zniknął. Czy drukarka została odłączona?")}));
  EXPECT_FALSE(form->PrinterBusy());
}

}  // namespace
}  // namespace tavena

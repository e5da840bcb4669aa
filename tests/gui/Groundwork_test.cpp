// What every window builds on: kept places, look-up by name within one
// window, the printer lent by the main window, the modal date/time dialog,
// clickable labels, accessible fields and a start-up that can be seen and
// left.
#include <gtest/gtest.h>

#include <QAccessible>
#include <QApplication>
#include <QLabel>
#include <QMouseEvent>
#include <QPushButton>
#include <QSpinBox>
#include <QStatusBar>
#include <QTimer>

#include "app/Tavenaapp.h"
#include "sequence/Clock.h"
#include "tests/Fakeserial.h"
#include "tests/TestSupport.h"
#include "tests/gui/Guifakes.h"
#include "windows/Editdatetime.h"
#include "windows/Error.h"
#include "windows/Listing.h"
#include "windows/Sender.h"
#if TAVENA_HAVE_SIM
#include "sim/Simport.h"
#include "sim/Simprinter.h"
#endif

namespace tavena {
namespace {

using test::FakeLink;
using test::ScriptedDialogs;

class Groundwork : public test::GuiTest {
 protected:
  void Create() {
    auto fake = std::make_unique<FakeLink>();
    link = fake.get();
    form = CreateWindows(std::move(fake), dir.str() + "/");
  }
  test::TempDir dir;
  ScriptedDialogs dialogs;
  FakeLink* link = nullptr;
  std::unique_ptr<TTavenaForm> form;
};

TEST_F(Groundwork, RestoredPlaceIsTheKeptOneEvenWhenTheSizeDiffers) {
  Settings().list = {50, 60, 500, 300, true};
  TListingForm monitor;
  monitor.resize(200, 100);
  monitor.show();
  QApplication::processEvents();
  EXPECT_EQ(monitor.pos(), QPoint(60, 50));
  EXPECT_EQ(monitor.size(), QSize(500, 300));
  EXPECT_EQ(Settings().list.top, 50);
  EXPECT_EQ(Settings().list.left, 60);
  monitor.move(70, 80);  // a move alone is recorded
  QApplication::processEvents();
  EXPECT_EQ(Settings().list.left, 70);
  EXPECT_EQ(Settings().list.top, 80);
  monitor.close();
  EXPECT_FALSE(Settings().list.showing);
}

TEST_F(Groundwork, LookUpByNameStaysOnItsOwnWindow) {
  Create();
  const FormFields& fields = form->Fields();
  EXPECT_TRUE(fields.HasControl("ENIP"));
  EXPECT_FALSE(fields.HasControl("EEkran"));  // the monitor's pane
  EXPECT_FALSE(fields.HasControl("Edit1"));   // the error window's field
  EXPECT_NE(FindControl(form->Windows().listing, "EEkran"), nullptr);
  form->Fields().SetText("Edit1", "x");
  EXPECT_EQ(ControlText(form->Windows().error, "Edit1"), "");
}

TEST_F(Groundwork, LabelsNameTheirFieldsAndDisplaysAreReadOnly) {
  Create();
  const std::pair<const char*, const char*> fields[] = {{"ENumerPF", "Numer unikatowy"},
                                                        {"ETypDrukarki", "Typ drukarki"},
                                                        {"ENIP", "NIP"},
                                                        {"HCount", "Licznik bajtów nagłówka"},
                                                        {"ETotC", "Totalizery C"},
                                                        {"E_VatG", "Nowe stawki G"},
                                                        {"Line8", "Nagłówek 8"},
                                                        {"CLine2", "Centr. 2"}};
  for (const auto& [name, label] : fields) {
    QAccessibleInterface* field =
        QAccessible::queryAccessibleInterface(FindControl(form.get(), name));
    ASSERT_NE(field, nullptr) << name;
    EXPECT_EQ(field->text(QAccessible::Name), QString::fromUtf8(label)) << name;
  }
  const auto read_only = [&](const char* name) {
    return QAccessible::queryAccessibleInterface(FindControl(form.get(), name))->state().readOnly;
  };
  for (const char* name : {"ENumerPF", "EVatA", "ETotG", "Answer", "HCount", "EDataPierwszegoRD"})
    EXPECT_TRUE(read_only(name)) << name;
  for (const char* name : {"ENIP", "Line1", "E_VatA"}) EXPECT_FALSE(read_only(name)) << name;
  EXPECT_EQ(FindControl<QLabel>(form.get(), "Label6")->buddy(),
            FindControl(form.get(), "ENumerPF"));
}

TEST_F(Groundwork, ClickOnALabelRunsItsHandler) {
  QLabel label("Plik");
  label.resize(80, 20);
  int clicks = 0;
  OnLabelClick(&label, [&] { ++clicks; });
  const auto release = [&](QPointF at, Qt::MouseButton button) {
    QMouseEvent event(QEvent::MouseButtonRelease, at, label.mapToGlobal(at), button, Qt::NoButton,
                      Qt::NoModifier);
    QApplication::sendEvent(&label, &event);
  };
  release({5, 5}, Qt::LeftButton);
  release({5, 5}, Qt::RightButton);
  release({200, 5}, Qt::LeftButton);  // released outside
  EXPECT_EQ(clicks, 1);
}

// The dialog as a handler uses it: twice in a row, the caller deciding
// whether "Zapisz" closes it.
TEST_F(Groundwork, DateTimeDialogIsModalAndAsksTheCallerBeforeClosing) {
  TEditDateTimeForm dialog;
  EXPECT_EQ(dialog.windowTitle(), "Wprowadzanie daty i czasu");
  auto* save = FindControl<QPushButton>(&dialog, "Zapisz");
  auto* cancel = FindControl<QPushButton>(&dialog, "Przerwij");
  ASSERT_TRUE(save && cancel);
  EXPECT_EQ(save->text(), "Zapisz");
  EXPECT_EQ(cancel->text(), "Przerwij");

  QStringList offered;
  QTimer::singleShot(0, [&] {
    EXPECT_TRUE(dialog.isModal());
    save->click();                                     // refused: stays open
    FindControl<QSpinBox>(&dialog, "Hour")->stepUp();  // 23 wraps to 0
    FindControl<QSpinBox>(&dialog, "Minute")->setValue(5);
    save->click();
  });
  const std::optional<QString> first =
      dialog.Execute({QString::fromUtf8("Wpisz datę i czas drukarki."), false, "21.11.2026 23:59"},
                     [&](const QString& text) {
                       offered << text;
                       return offered.size() == 2;
                     });
  EXPECT_EQ(offered, QStringList({"2026-11-21 23:59", "2026-11-21 00:05"}));
  EXPECT_EQ(first, QString("2026-11-21 00:05"));
  EXPECT_FALSE(dialog.isVisible());

  bool called = false;
  QTimer::singleShot(0, [&] {
    EXPECT_TRUE(FindControl(&dialog, "Hour")->isHidden());
    EXPECT_EQ(dialog.Text(), "2026-01-02");
    cancel->click();
  });
  EXPECT_EQ(
      dialog.Execute({"Podaj", true, "2026-01-02"}, [&](const QString&) { return called = true; }),
      std::nullopt);
  EXPECT_FALSE(called);
  // An empty text starts from now.
  dialog.SetText("", QDateTime(QDate(2030, 3, 4), QTime(5, 6)));
  EXPECT_EQ(dialog.Text(), "2030-03-04");
}

TEST_F(Groundwork, StartUpShowsTheSearchAndClosingDuringItEndsAtOnce) {
  Create();
  QString status;
  bool visible = false, abandoned = false, finished = false;
  form->SetAbandonWaits([&] { abandoned = true; });
  QObject::connect(form.get(), &TTavenaForm::StartUpFinished, [&] { finished = true; });
  link->find_result = 1;
  link->while_searching = [&] {
    visible = form->isVisible();
    status = form->statusBar()->currentMessage();
    EXPECT_TRUE(form->PrinterBusy());
    form->close();
  };
  test::StartMainWindow(*form);
  EXPECT_TRUE(visible);
  EXPECT_EQ(status, QString::fromUtf8("Szukam drukarki: com1, 9600 bodów"));
  EXPECT_TRUE(abandoned);
  EXPECT_FALSE(finished);
  EXPECT_EQ(link->calls.front(), "find com1 9600");
  EXPECT_EQ(std::count(link->calls.begin(), link->calls.end(), "fill com1 9600"), 0);
  EXPECT_NE(test::ReadFile(dir.file("config.tav")).find("MainWidth="), std::string::npos);
}

#if TAVENA_HAVE_SIM
// A window borrows the main window's printer: open, one command, close,
// and the main window is busy meanwhile.
TEST_F(Groundwork, WindowsTalkToThePrinterThroughTheMainWindow) {
  VirtualClock clock;
  ScopedClock scoped(&clock);
  test::ScopedWine wine(false);
  std::unique_ptr<SimPrinter> sim = MakeSimPrinter("LUMEN");
  SimPort port("com5", *sim);
  Create();
  form->Printer().SetPort("com5", 9600);
  TBaseForm* sender = form->Windows().sender;
  ASSERT_EQ(sender->Printer(), form.get());
  {
    PrinterSession session(*sender->Printer());
    ASSERT_TRUE(session.IsOpen());
    EXPECT_TRUE(form->PrinterBusy());
    EXPECT_TRUE(session->SetClock(2026, 11, 23, 8, 30, 0));
  }
  EXPECT_FALSE(form->PrinterBusy());
  EXPECT_FALSE(port.IsOpen());
  EXPECT_EQ(link->calls.back(), "answer");
  ASSERT_EQ(sim->Record().frames.size(), 1u);
  EXPECT_EQ(sim->Record().frames[0].text, "26;11;23;8;30;0$c8D");
}
#endif

}  // namespace
}  // namespace tavena

// What every window builds on: look-up by name, the lent printer, the date
// dialog, clickable labels, accessible fields and the visible start-up.
#include <gtest/gtest.h>

#include <QAccessible>
#include <QLabel>
#include <QPushButton>
#include <QSpinBox>
#include <QStatusBar>
#include <QTimer>

#include "tests/gui/Guifakes.h"
#include "windows/Editdatetime.h"
#include "windows/Error.h"
#include "windows/Listing.h"
#include "windows/Sender.h"

namespace tavena {
namespace {

using test::U;
using Groundwork = test::WindowTest;

TEST_F(Groundwork, FieldsAreFoundOnTheirWindowNamedByLabelsAndLendThePrinter) {
  Create();
  const FormFields& fields = form->Fields();
  EXPECT_TRUE(fields.HasControl("ENIP"));
  EXPECT_FALSE(fields.HasControl("EEkran"));  // the monitor's pane
  EXPECT_FALSE(fields.HasControl("Edit1"));   // the error window's field
  EXPECT_NE(FindControl(form->Windows().listing, "EEkran"), nullptr);
  form->Fields().SetText("Edit1", "x");
  EXPECT_EQ(ControlText(form->Windows().error, "Edit1"), "");

  const auto accessible = [&](const char* name) {
    return QAccessible::queryAccessibleInterface(FindControl(form.get(), name));
  };
  const std::pair<const char*, const char*> labels[] = {{"ENumerPF", "Numer unikatowy"},
                                                        {"HCount", "Licznik bajtów nagłówka"},
                                                        {"E_VatG", "Nowe stawki G"},
                                                        {"CLine2", "Centr. 2"}};
  for (const auto& [name, label] : labels)
    EXPECT_EQ(accessible(name)->text(QAccessible::Name), U(label)) << name;
  for (const char* name : {"ENumerPF", "EVatA", "ETotG", "Answer", "HCount"})
    EXPECT_TRUE(accessible(name)->state().readOnly) << name;
  for (const char* name : {"ENIP", "Line1", "E_VatA"})
    EXPECT_FALSE(accessible(name)->state().readOnly) << name;

  // A window borrows the main window's printer: open, one command, close,
  // and the main window is busy meanwhile.
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

TEST_F(Groundwork, ClickOnALabelRunsItsHandler) {
  QLabel label("Plik");
  label.resize(80, 20);
  int clicks = 0;
  OnLabelClick(&label, [&] { ++clicks; });
  test::Click(&label);
  test::Click(&label, {5, 5}, Qt::RightButton);
  test::Click(&label, {200, 5});  // released outside
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

  QStringList offered;
  QTimer::singleShot(0, [&] {
    EXPECT_TRUE(dialog.isModal());
    save->click();                                     // refused: stays open
    FindControl<QSpinBox>(&dialog, "Hour")->stepUp();  // 23 wraps to 0
    FindControl<QSpinBox>(&dialog, "Minute")->setValue(5);
    save->click();
  });
  const std::optional<QString> first = dialog.Execute(
      {U("Wpisz datę i czas drukarki."), false, "21.11.2026 23:59"}, [&](const QString& text) {
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
  Start();
  EXPECT_TRUE(visible);
  EXPECT_EQ(status, U("Szukam drukarki: com1, 9600 bodów"));
  EXPECT_TRUE(abandoned);
  EXPECT_FALSE(finished);
  EXPECT_EQ(link->calls, std::vector<std::string>{"find com1 9600"});  // no fill
}

}  // namespace
}  // namespace tavena

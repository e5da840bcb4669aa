// The monitor, the error description and the information window.
#include <gtest/gtest.h>

#include <QApplication>
#include <QDir>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QScreen>

#include "protocol/Printererrors.h"
#include "tests/gui/Guifakes.h"
#include "windows/Error.h"
#include "windows/Info.h"
#include "windows/Listing.h"

namespace tavena {
namespace {

using test::ReadFile;
using test::U;

using MonitorWindow = test::GuiTest;

TEST_F(MonitorWindow, ShowsSavesAsWindows1250ClearsAndKeepsItsPlace) {
  test::ScriptedDialogs dialogs;
  test::TempDir dir;
  TListingForm monitor;
  MonitorSink& sink = monitor;
  sink.AppendLine("com1<> Pytanie: \x1BP#v\x1B\\");
  sink.AppendLine("com1<> Odpowied\x9F: TAVENA \xA3\xF3\x64\xBF");  // "Odpowiedź", "Łódż"
  EXPECT_EQ(monitor.Lines(),
            QStringList({U("com1<> Pytanie: \x1BP#v\x1B\\"), U("com1<> Odpowiedź: TAVENA Łódż")}));

  dialogs.chosen_file = QString::fromStdString(dir.file("out.log"));
  monitor.Zapisz1Click();
  ASSERT_EQ(dialogs.requests.size(), 1u);
  EXPECT_EQ(dialogs.requests[0].filter,
            "Logi(*.log)|*.log|Pliki tekstowe(*.txt)|*.txt|Wszystkie pliki(*.*)|*.*");
  EXPECT_EQ(dialogs.requests[0].title, "Zapis pliku na dysk.");
#ifdef _WIN32
  const char* every_file = "Wszystkie pliki(*.*)";
#else
  const char* every_file = "Wszystkie pliki(*)";  // also names without a dot
#endif
  EXPECT_EQ(QtFileFilter(dialogs.requests[0].filter),
            QStringLiteral("Logi(*.log);;Pliki tekstowe(*.txt);;") + every_file);
  EXPECT_EQ(dialogs.requests[0].file_name, "Listing.log");
  EXPECT_EQ(dialogs.requests[0].folder, "");
  EXPECT_EQ(ReadFile(dir.file("out.log")),
            "com1<> Pytanie: \x1BP#v\x1B\\\r\ncom1<> Odpowied\x9F: TAVENA \xA3\xF3\x64\xBF\r\n");
  EXPECT_EQ(Settings().list_path, dir.str());

  // The next save starts in the folder used last; a cancelled dialog writes nothing.
  dialogs.chosen_file.reset();
  monitor.Zapisz1Click();
  EXPECT_EQ(dialogs.requests[1].folder.toStdString(), dir.str());
  EXPECT_TRUE(dialogs.messages.empty());

  // A file that cannot be written is reported, not lost silently.
  const QString unwritable =
      QDir::toNativeSeparators(QString::fromStdString(dir.file("brak/out.log")));
  dialogs.chosen_file = unwritable;
  monitor.Zapisz1Click();
  ASSERT_EQ(dialogs.messages.size(), 1u);
  EXPECT_EQ(dialogs.messages[0].text, U("Nie można zapisać pliku: ") + unwritable);
  EXPECT_EQ(dialogs.messages[0].caption, "Monitor");

  monitor.Wyczy1Click();
  EXPECT_TRUE(monitor.Lines().isEmpty());
  sink.AppendLine("po czyszczeniu");
  EXPECT_EQ(monitor.Lines(), QStringList({"po czyszczeniu"}));

  // No kept place: centred; a kept place comes back whatever the size.
  monitor.resize(400, 300);
  monitor.show();
  QApplication::processEvents();
  const QRect screen = monitor.screen()->geometry();
  EXPECT_EQ(monitor.pos(), QPoint((screen.width() - 400) / 2, (screen.height() - 300) / 2));
  EXPECT_TRUE(Settings().list.showing);
  monitor.move(12, 34);  // a move alone is recorded (a resize goes the same way)
  QApplication::processEvents();
  EXPECT_EQ(Settings().list.left, 12);
  EXPECT_EQ(Settings().list.top, 34);
  monitor.close();
  EXPECT_FALSE(Settings().list.showing);

  Settings().list = {50, 60, 500, 300, false};
  monitor.resize(200, 100);
  monitor.show();
  QApplication::processEvents();
  EXPECT_EQ(monitor.pos(), QPoint(60, 50));
  EXPECT_EQ(monitor.size(), QSize(500, 300));
  monitor.close();
}

TEST(ErrorWindow, LooksUpTheCodeAsTheUserTypes) {
  TErrorForm window;
  window.SetLookup(PrinterErrorText);
  EXPECT_EQ(window.windowTitle(), U("Opis błędów"));
  EXPECT_EQ(window.findChild<QLabel*>("Label1")->text(), U("Podaj kod błędu."));
  window.show();
  QLineEdit* edit = window.findChild<QLineEdit*>("Edit1");
  const auto type = [&](const char* key) {
    QKeyEvent press(QEvent::KeyPress, key[0], Qt::NoModifier, QString::fromLatin1(key));
    QApplication::sendEvent(edit, &press);
  };
  type("1");
  type("2");
  EXPECT_EQ(edit->text(), "12");
  EXPECT_EQ(window.Description(), QStringList({U("Błędny nagłówek (np. Za długi "),
                                               U("lub zawierający niedozwolone znaki.")}));
  window.Edit1KeyPress("5");  // 125: no such code
  EXPECT_TRUE(window.Description().isEmpty());
  window.close();
}

TEST(InfoWindow, ClosesOnTheThirdTickAndRestartsItsCountdownWhenShownAgain) {
  TInfoForm info;
  EXPECT_EQ(info.Timer1()->interval(), 10000);
  info.move(100, 100);
  info.show();
  QApplication::processEvents();
  EXPECT_EQ(info.pos(), QPoint(0, 0));
  EXPECT_EQ(info.Countdown(), 20);
  EXPECT_TRUE(info.Timer1()->isActive());
  info.Timer1Timer();
  info.Timer1Timer();
  EXPECT_EQ(info.Countdown(), 0);  // at 0 it stays open
  EXPECT_TRUE(info.isVisible());
  info.Timer1Timer();
  EXPECT_EQ(info.Countdown(), -10);
  EXPECT_FALSE(info.isVisible());
  EXPECT_TRUE(info.Timer1()->isActive());  // left enabled, as the system does

  info.show();
  EXPECT_EQ(info.Countdown(), 20);
  info.Timer1Timer();
  EXPECT_TRUE(info.isVisible());
  info.Zamknij1Click();
  EXPECT_FALSE(info.isVisible());
}

}  // namespace
}  // namespace tavena

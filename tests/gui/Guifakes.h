// Scripted stand-ins for the window tests (the dialog service and the
// printer link) and the fixtures the window tests derive from.
#pragma once

#include <deque>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QDir>
#include <QEventLoop>
#include <QListWidget>
#include <QMouseEvent>
#include <QStringList>
#include <memory>
#include <ostream>

#include "app/Dialogs.h"
#include "app/Fonts.h"
#include "app/Printerlink.h"
#include "app/Settings.h"
#include "app/Tavenaapp.h"
#include "app/Tavenamain.h"
#include "sequence/Clock.h"
#include "sim/Simport.h"
#include "sim/Simprinter.h"
#include "tests/Fakeserial.h"
#include "tests/TestSupport.h"

// Readable Qt strings in test failures.
inline void PrintTo(const QString& text, std::ostream* out) {
  *out << '"' << text.toStdString() << '"';
}
inline void PrintTo(const QStringList& list, std::ostream* out) {
  *out << '{' << list.join(QStringLiteral("\", \"")).prepend('"').append('"').toStdString() << '}';
}

namespace tavena::test {

inline QString U(const char* utf8) {
  return QString::fromUtf8(utf8);
}

struct ShownMessage {
  QString text;
  QString caption;
  MessageButtons buttons;
};

class ScriptedDialogs : public DialogService {
 public:
  ScriptedDialogs() { SetDialogs(this); }
  ~ScriptedDialogs() override { SetDialogs(nullptr); }

  bool Message(QWidget*, const QString& text, const QString& caption,
               MessageButtons buttons) override {
    messages.push_back({text, caption, buttons});
    if (while_message_open) while_message_open();
    if (answers.empty()) return true;
    const bool answer = answers.front();
    answers.pop_front();
    return answer;
  }
  // Each scripted text is entered and handed to accept until one is taken;
  // nothing (or the end of the script) is "Przerwij".
  std::optional<QString> EditDateTime(TEditDateTimeForm&, const DateTimeRequest& request,
                                      const DateTimeAccept& accept) override {
    date_requests.push_back(request);
    while (!date_texts.empty()) {
      const std::optional<QString> text = date_texts.front();
      date_texts.pop_front();
      if (!text) return std::nullopt;
      if (!accept || accept(*text)) return text;
    }
    return std::nullopt;
  }
  std::optional<QString> OpenFile(QWidget*, const FileDialogRequest& request) override {
    requests.push_back(request);
    return chosen_file;
  }
  std::optional<QString> SaveFile(QWidget*, const FileDialogRequest& request) override {
    requests.push_back(request);
    return chosen_file;
  }
  bool ChooseFont(QWidget*, QFont& font) override {
    if (!chosen_font) return false;
    font = *chosen_font;
    return true;
  }
  bool ChooseColour(QWidget*, QColor& colour) override {
    if (!chosen_colour) return false;
    colour = *chosen_colour;
    return true;
  }

  std::vector<ShownMessage> messages;
  std::deque<bool> answers;  // OK (true) or Cancel for the next boxes; OK when empty
  std::vector<DateTimeRequest> date_requests;
  std::deque<std::optional<QString>> date_texts;
  std::function<void()> while_message_open;  // runs as if the box pumped messages
  std::vector<FileDialogRequest> requests;
  std::optional<QString> chosen_file;
  std::optional<QFont> chosen_font;
  std::optional<QColor> chosen_colour;
};

// Records every call; answers as scripted.
class FakeLink : public PrinterLink {
 public:
  Drukarka& Printer() override { return printer; }
  void ShowAnswer() override { calls.push_back("answer"); }
  int FindPrinter(std::string& port, int32_t& baud) override {
    calls.push_back("find " + port + " " + std::to_string(baud));
    if (while_searching) while_searching();
    if (find_result == 1 || find_result == 2) {
      if (!found_port.empty()) port = found_port;
      if (found_baud) baud = found_baud;
    } else {
      port = "com7";  // a failed search may leave anything behind
      baud = 1200;
    }
    return find_result;
  }
  void FillStatusFields(FormFields& form, const std::string& port, int32_t baud) override {
    calls.push_back("fill " + port + " " + std::to_string(baud));
    for (const auto& [name, text] : fields)
      if (form.HasControl(name)) form.SetText(name, text);
  }
  void SelectPort(const std::string& port, int32_t baud) override {
    calls.push_back("select " + port + " " + std::to_string(baud));
  }
  void Attach(MonitorSink* sink, FormFields* form) override {
    monitor = sink;
    answer_form = form;
  }
  void SetLogging(bool on) override { logging = on; }
  bool UnderWine() override { return wine; }
  std::vector<PortEntry> ListPorts() override { return ports; }
  bool IsUsbPort(const std::string& port) override { return port == usb_port; }
  std::string OpenFailureAdvice() override { return advice; }

  Drukarka printer;
  std::function<void()> while_searching;  // runs as if the search pumped messages
  int find_result = 0;
  std::string found_port;
  int32_t found_baud = 0;
  std::map<std::string, std::string> fields;
  std::vector<PortEntry> ports;
  bool wine = false;
  std::string usb_port;
  std::string advice;
  std::vector<std::string> calls;
  MonitorSink* monitor = nullptr;
  FormFields* answer_form = nullptr;
  bool logging = false;
};

// Shows the main window and lets its start-up search and fill run to the end.
inline void StartMainWindow(TTavenaForm& form) {
  bool finished = false;
  const QMetaObject::Connection done =
      QObject::connect(&form, &TTavenaForm::StartUpFinished, [&] { finished = true; });
  form.show();
  for (int i = 0; i < 3000 && !finished; ++i)
    QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
  QObject::disconnect(done);
}

// A left-button release on the widget at the point (a click on a label).
inline void Click(QWidget* widget, QPointF at = {2, 2}, Qt::MouseButton button = Qt::LeftButton) {
  QMouseEvent event(QEvent::MouseButtonRelease, at, widget->mapToGlobal(at), button, Qt::NoButton,
                    Qt::NoModifier);
  QApplication::sendEvent(widget, &event);
}

// The names a file list shows, sorted, one space between.
inline QString ListNames(const QListWidget* list) {
  QStringList names;
  for (int i = 0; i < list->count(); ++i) names << list->item(i)->text();
  names.sort();
  return names.join(' ');
}

// Every window test starts and ends with default settings and fonts.
class GuiTest : public ::testing::Test {
 protected:
  GuiTest() { Reset(); }
  ~GuiTest() override { Reset(); }
  static void Reset() {
    Settings() = SettingsRecord{};
    Fonts() = SharedFonts{};
  }
};

// The whole program's windows over a FakeLink, with scripted dialogs and a
// scratch settings folder; the printer object talks to the in-process
// simulated printer on com5, on virtual time.
class WindowTest : public GuiTest {
 protected:
  // Builds every window; config.tav is read from the scratch folder.
  void Create(std::unique_ptr<FakeLink> fake = std::make_unique<FakeLink>()) {
    link = fake.get();
    link->ports = {{"Port komunikacyjny", "/dev/ttyS0"}, {"TAVENA USB", "/dev/ttyUSB0"}};
    form = CreateWindows(std::move(fake), Folder());
    form->Printer().SetPort("com5", 9600);
  }
  // Builds anew from what config.tav now holds.
  void Recreate() {
    form.reset();
    Reset();
    Create();
  }
  void Start() { StartMainWindow(*form); }
  std::string Folder() const { return Path("").toStdString(); }
  // A file of the scratch folder as the windows show it (C:\x\name on Windows).
  QString Path(const std::string& name) const {
    return QDir::toNativeSeparators(QString::fromStdString(dir.file(name)));
  }
  const std::string& Received() const { return sim->Record().received; }
  QString Text(const char* name) const { return ControlText(form.get(), U(name)); }
  void Set(const char* name, const char* utf8) { SetControlText(form.get(), U(name), U(utf8)); }
  QCheckBox* Box(const char* name) const { return form->findChild<QCheckBox*>(U(name)); }
  QComboBox* Combo(const char* name) const { return form->findChild<QComboBox*>(U(name)); }
  QStringList Items(const char* name) const {
    QStringList items;
    for (int i = 0; i < Combo(name)->count(); ++i) items << Combo(name)->itemText(i);
    return items;
  }
  static void Trigger(QWidget* window, const char* action) {
    window->findChild<QAction*>(U(action))->trigger();
  }
  // Texts of the boxes shown since the last call, all under the given caption.
  QStringList Messages(const char* caption = "Program serwisowy drukarek.") {
    QStringList texts;
    for (const ShownMessage& m : dialogs.messages) {
      EXPECT_EQ(m.caption, U(caption)) << m.text.toStdString();
      texts << m.text;
    }
    dialogs.messages.clear();
    return texts;
  }

  VirtualClock clock;
  ScopedClock scoped_clock{&clock};
  ScopedWine wine{false};
  TempDir dir;
  ScriptedDialogs dialogs;
  std::unique_ptr<SimPrinter> sim = MakeSimPrinter("LUMEN");
  SimPort port{"com5", *sim};
  FakeLink* link = nullptr;
  std::unique_ptr<TTavenaForm> form;
};

}  // namespace tavena::test

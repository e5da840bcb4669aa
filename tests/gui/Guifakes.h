// Scripted stand-ins for the window tests (the dialog service and the
// printer link) and the fixture every window test derives from.
#pragma once

#include <deque>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QEventLoop>
#include <QStringList>
#include <ostream>

#include "app/Dialogs.h"
#include "app/Fonts.h"
#include "app/Printerlink.h"
#include "app/Settings.h"
#include "app/Tavenamain.h"

// Readable Qt strings in test failures.
inline void PrintTo(const QString& text, std::ostream* out) {
  *out << '"' << text.toStdString() << '"';
}
inline void PrintTo(const QStringList& list, std::ostream* out) {
  *out << '{' << list.join(QStringLiteral("\", \"")).prepend('"').append('"').toStdString() << '}';
}

namespace tavena::test {

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

}  // namespace tavena::test

// tavena-service: the service program's entry point.
//   --simulate [MODEL]  start the simulated printer and connect to it
//   --port PORT         look for the printer on PORT at start-up (default com1)
//   --screenshot DIR    after start-up save the main window, the monitor, the
//                       port list (present ports) and every other window
//                       showing as PNG files into DIR and quit (for the docs);
//                       settings come from a copy of the user's config.tav in a
//                       throw-away folder and are never written back
//   --close-after MS    close the main window MS ms after it is shown, as the
//                       user would (for tests)
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTimer>
#include <cstdio>
#include <cstring>

#include "Tavenaversion.h"
#include "app/Coreprinterlink.h"
#include "app/Settings.h"
#include "app/Simulator.h"
#include "app/Tavenaapp.h"
#include "app/Windowclock.h"
#include "sequence/Clock.h"
#include "windows/Listing.h"
#include "windows/Serialportform.h"

namespace {

const char* const kUsage =
    "Usage: tavena-service [--simulate [MODEL]] [--port PORT] [--screenshot DIR]\n"
    "  --simulate [MODEL]  start the simulated printer (tavena-sim, model LUMEN unless given)\n"
    "                      and connect to it\n"
    "  --port PORT         look for the printer on PORT at start-up (/dev/ttyUSB0, com3;\n"
    "                      default com1)\n"
    "  --screenshot DIR    after start-up save main-window.png, monitor.png,\n"
    "                      monitor-exchanges.png, serial-ports.png\n"
    "                      and <window>.png of every other window showing into DIR and\n"
    "                      quit; the user's settings are read but never written\n"
    "  --close-after MS    close the main window MS milliseconds after it is shown\n"
    "  -h, --help          print this help\n"
    "  --version           print the version\n";

struct Options {
  bool help = false;
  QString error;  // what is wrong with the command line
  bool simulate = false;
  QString model;
  QString screenshot_folder;
  QString port;
  int close_after_ms = -1;
};

Options ParseOptions(const QStringList& arguments) {
  Options options;
  for (qsizetype i = 1; i < arguments.size(); ++i) {
    const QString& argument = arguments[i];
    const bool has_value =
        i + 1 < arguments.size() && !arguments[i + 1].startsWith(QLatin1Char('-'));
    if (argument == QLatin1String("--simulate")) {
      options.simulate = true;
      if (has_value) options.model = arguments[++i];
    } else if (argument == QLatin1String("--port")) {
      if (has_value)
        options.port = arguments[++i];
      else
        options.error = QStringLiteral("--port needs a port (/dev/ttyUSB0, com3)");
    } else if (argument == QLatin1String("--screenshot")) {
      if (has_value)
        options.screenshot_folder = arguments[++i];
      else
        options.error = QStringLiteral("--screenshot needs a folder");
    } else if (argument == QLatin1String("--close-after")) {
      bool ok = false;
      if (has_value) options.close_after_ms = arguments[++i].toInt(&ok);
      if (!ok || options.close_after_ms < 0)
        options.error = QStringLiteral("--close-after needs milliseconds");
    } else if (argument == QLatin1String("-h") || argument == QLatin1String("--help")) {
      options.help = true;
    } else if (options.error.isEmpty()) {
      options.error = QStringLiteral("unknown option: ") + argument;
    }
  }
  return options;
}

void SaveScreenshots(tavena::TTavenaForm& main, const QString& folder) {
  QDir().mkpath(folder);
  main.grab().save(folder + QStringLiteral("/main-window.png"));
  tavena::TListingForm* monitor = main.Windows().listing;
  monitor->show();
  QApplication::processEvents();
  monitor->grab().save(folder + QStringLiteral("/monitor.png"));
  monitor->SaveExchangesPicture(folder + QStringLiteral("/monitor-exchanges.png"));
  tavena::TSerialPortsForm* ports = main.Windows().serial_ports;
  ports->show();
  ports->Portyzainstalowane1Click();
  QApplication::processEvents();
  ports->grab().save(folder + QStringLiteral("/serial-ports.png"));
  for (QObject* child : main.children()) {
    auto* window = qobject_cast<tavena::TBaseForm*>(child);
    if (window && window != monitor && window != ports && window->isVisible())
      window->grab().save(folder + QLatin1Char('/') + window->objectName() +
                          QStringLiteral(".png"));
  }
}

// --help and --version are answered before the window system is reached, so
// they also work without a display.
bool Asks(int argc, char** argv, const char* short_name, const char* long_name) {
  for (int i = 1; i < argc; ++i)
    if ((short_name && std::strcmp(argv[i], short_name) == 0) ||
        std::strcmp(argv[i], long_name) == 0)
      return true;
  return false;
}

}  // namespace

int main(int argc, char** argv) {
  if (Asks(argc, argv, "-h", "--help")) {
    std::fputs(kUsage, stdout);
    return 0;
  }
  if (Asks(argc, argv, nullptr, "--version")) {
    std::printf("tavena-service %s\n", tavena::kVersion);
    return 0;
  }
  QApplication app(argc, argv);
  const Options options = ParseOptions(QApplication::arguments());
  if (options.help || !options.error.isEmpty()) {
    if (!options.error.isEmpty())
      std::fprintf(stderr, "tavena-service: %s\n", qPrintable(options.error));
    std::fputs(kUsage, options.help ? stdout : stderr);
    return options.help ? 0 : 2;
  }
  // The C library opens file names in the system's 8-bit code page.
  QTemporaryDir scratch;
  const std::string user_folder =
      tavena::SettingsFolder(QFile::encodeName(QApplication::applicationDirPath()).toStdString());
  std::string folder = user_folder;
  if (!options.screenshot_folder.isEmpty()) {
    folder = QFile::encodeName(scratch.path()).toStdString() + "/";
    QFile::copy(QFile::decodeName((user_folder + "config.tav").c_str()),
                QFile::decodeName((folder + "config.tav").c_str()));
  }
  tavena::ReadMessageLanguage(folder);
  tavena::SetPumpHook([] { QCoreApplication::processEvents(); });
  tavena::WindowClock clock(tavena::CurrentClock());
  tavena::ScopedClock scoped_clock(&clock);

  tavena::SimulatorProcess simulator;
  if (options.simulate) {
    const QString program = tavena::SimulatorProcess::FindProgram();
    if (program.isEmpty() || !simulator.Start(program, options.model)) {
      std::fprintf(stderr, "tavena-service: cannot start the simulated printer (tavena-sim): %s\n",
                   qPrintable(program.isEmpty() ? QStringLiteral("not found") : simulator.Error()));
      return 1;
    }
  }
  std::unique_ptr<tavena::TTavenaForm> main =
      tavena::CreateWindows(tavena::MakeCorePrinterLink(), folder);
  if (!options.port.isEmpty()) main->SetStartPort(options.port.toStdString());
  if (options.simulate) main->SetSimulatedPort(simulator.Path());
  main->SetAbandonWaits([&clock] { clock.Abandon(); });
  main->SetResumeWaits([&clock] { clock.Resume(); });
  if (!options.screenshot_folder.isEmpty()) {
    QObject::connect(main.get(), &tavena::TTavenaForm::StartUpFinished, main.get(), [&] {
      SaveScreenshots(*main, options.screenshot_folder);
      main->close();
    });
  }
  if (options.close_after_ms >= 0)
    QTimer::singleShot(options.close_after_ms, main.get(), [&] { main->close(); });
  main->show();
  const int code = app.exec();
  tavena::SetPumpHook(nullptr);
  return code;
}

// The whole program's windows with the printer object talking to the
// in-process simulated printer on com5, on virtual time, with scripted
// dialogs and a scratch folder.
#pragma once

#if TAVENA_HAVE_SIM

#include <QApplication>
#include <QString>
#include <memory>
#include <string>

#include "app/Tavenaapp.h"
#include "sequence/Clock.h"
#include "sim/Simport.h"
#include "sim/Simprinter.h"
#include "tests/Fakeserial.h"
#include "tests/TestSupport.h"
#include "tests/gui/Guifakes.h"

namespace tavena::test {

class SimulatedPrinterTest : public GuiTest {
 protected:
  SimulatedPrinterTest() {
    form = CreateWindows(std::make_unique<FakeLink>(), dir.str() + "/");
    form->Printer().SetPort("com5", 9600);
  }
  QString Path(const std::string& name) const { return QString::fromStdString(dir.file(name)); }
  std::string Folder() const { return dir.str() + "/"; }
  const std::string& Received() const { return sim->Record().received; }

  VirtualClock clock;
  ScopedClock scoped_clock{&clock};
  ScopedWine wine{false};
  TempDir dir;
  ScriptedDialogs dialogs;
  std::unique_ptr<SimPrinter> sim = MakeSimPrinter("LUMEN");
  SimPort port{"com5", *sim};
  std::unique_ptr<TTavenaForm> form;
};

}  // namespace tavena::test

#endif

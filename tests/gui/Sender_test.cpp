// The file sender: its list, sending through the confirmed stream with the
// busy flags, a stop that leaves only whole frames, and deleting.
#include <gtest/gtest.h>

#include <QFile>
#include <QListWidget>
#include <QProgressBar>
#include <QPushButton>
#include <QStatusBar>

#include "app/Texts.h"
#include "tests/gui/Guifakes.h"
#include "windows/Printersend.h"
#include "windows/Sender.h"

namespace tavena {
namespace {

using test::WriteFile;

// Sets the clock: 23 bytes, "8D" its control sum.
const std::string kClockFrame = "\x1bP26;11;23;8;30;0$c8D\x1b\\";
const char* const kCaption = "Wysyłanie plików binarnych.";

class SenderWindow : public test::WindowTest {
 protected:
  SenderWindow() {
    Create();
    sender = form->Windows().sender;
    Settings().sender_path = Folder();
  }
  QListWidget* List() const { return FindControl<QListWidget>(sender, "List"); }
  void Choose(const char* name) const {
    List()->setCurrentItem(List()->findItems(name, Qt::MatchExactly).value(0));
  }
  TSenderForm* sender = nullptr;
};

TEST_F(SenderWindow, ListsAsksForAFolderDeletesAndSendsOnceWhileBusy) {
  WriteFile(dir.file("a.bin"), kClockFrame);
  WriteFile(dir.file("b.bin"), kClockFrame);
  WriteFile(dir.file("c.txt"), kClockFrame);
  WriteFile(dir.file(".d.bin"), kClockFrame);
  Settings().sender_path.clear();
  dialogs.chosen_file = std::nullopt;
  sender->show();
  EXPECT_EQ(List()->count(), 0);
  EXPECT_EQ(dialogs.requests.back().filter,
            "Pliki wykonywalne(*.bin)|*.bin|Wszystkie pliki(*.*)|*.*");
  EXPECT_EQ(dialogs.requests.back().folder, "");

  dialogs.chosen_file = Path("b.bin");
  sender->Wczytaj1Click();
  EXPECT_EQ(test::ListNames(List()), "a.bin b.bin");
  EXPECT_EQ(List()->currentItem()->text(), "b.bin");
  EXPECT_EQ(Settings().sender_path, Folder());

  dialogs.answers = {false, true};
  Choose("a.bin");
  sender->Kasuj1Click();
  EXPECT_TRUE(QFile::exists(Path("a.bin")));
  sender->Kasuj1Click();
  EXPECT_FALSE(QFile::exists(Path("a.bin")));
  EXPECT_EQ(test::ListNames(List()), "b.bin");
  EXPECT_EQ(dialogs.messages.back().buttons, MessageButtons::kOkCancel);
  EXPECT_EQ(Messages(kCaption),
            QStringList(2, FromUtf8("Chcesz skasować plik o nazwie:\na.binKontynuować?")));

  // Sending: the chosen file once, nothing while the printer is busy.
  WriteFile(dir.file("zegar.bin"), kClockFrame + kClockFrame);
  WriteFile(dir.file("pusty.bin"), "");
  sender->RefreshClick();
  Choose("pusty.bin");
  sender->ListDblClick();
  EXPECT_EQ(Messages(kCaption), QStringList{FromUtf8("Podany plik jest pusty lub brak pliku.")});
  EXPECT_EQ(Received(), "");

  // A double-click during the send does nothing.
  bool busy = false;
  const auto again = QObject::connect(&sender->Sending(), &PrinterSend::Progress, [&] {
    busy = form->PrinterBusy();
    sender->ListDblClick();
  });
  Choose("zegar.bin");
  sender->ListDblClick();
  QObject::disconnect(again);
  EXPECT_EQ(Received(), kClockFrame + kClockFrame + "\x05");
  EXPECT_TRUE(busy);
  EXPECT_FALSE(form->PrinterBusy());
  EXPECT_EQ(Settings().sender_file, "zegar.bin");
  EXPECT_TRUE(dialogs.messages.empty());

  // Another exchange holds the printer: nothing goes out.
  form->SetPrinterBusy(true);
  sender->ListDblClick();
  form->SetPrinterBusy(false);
  EXPECT_EQ(Received(), kClockFrame + kClockFrame + "\x05");
  EXPECT_EQ(sender->statusBar()->currentMessage(), FromUtf8("Drukarka jest zajęta."));

  sim->Faults().silent = true;
  sender->ListDblClick();
  EXPECT_EQ(Messages(kCaption), QStringList{FromUtf8("Nie udało sie wysłać sekwencji.")});
}

// 50 frames go in blocks of 23 (the first frame end past 512 bytes); a stop
// during the first block sends no byte more.
TEST_F(SenderWindow, StopEndsTheSendAfterTheBlockInFlight) {
  std::string stream;
  for (int i = 0; i < 50; ++i) stream += kClockFrame;
  WriteFile(dir.file("dlugi.bin"), stream);
  sender->show();
  Choose("dlugi.bin");
  auto* stop = FindControl<QPushButton>(sender, "Przerwij");
  bool shown = false;
  QObject::connect(&sender->Sending(), &PrinterSend::Progress, [&](qint64 done) {
    shown = stop->isVisible() && FindControl<QProgressBar>(sender, "Postep")->isVisible();
    if (done > 0) stop->click();
  });
  sender->ListDblClick();
  EXPECT_EQ(Received(), stream.substr(0, 23 * kClockFrame.size()) + "\x05");
  EXPECT_EQ(sim->Record().frames.size(), 23u);
  EXPECT_TRUE(shown);
  EXPECT_FALSE(stop->isVisible());
  EXPECT_TRUE(dialogs.messages.empty());
  EXPECT_EQ(sender->statusBar()->currentMessage(),
            FromUtf8("Przerwano: wysłano 529 z 1150 bajtów."));
}

}  // namespace
}  // namespace tavena

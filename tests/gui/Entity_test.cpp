// Entity files: bytes, reading rules, "Plik" menu, list window, start-up.
#include "app/Entity.h"

#include <gtest/gtest.h>

#include <QLabel>
#include <QListWidget>
#include <filesystem>

#include "app/Entitycontrols.h"
#include "tests/gui/Guifakes.h"
#include "windows/Podmioty.h"

namespace tavena {
namespace {

using test::ReadFile;
using test::U;
using test::WriteFile;

const char* const kFilter = "Pliki konfiguracyjne(*.pod)|*.pod|Wszystkie pliki(*.*)|*.*";

class EntityTest : public test::WindowTest {
 protected:
  // A file dialog as "title|folder|file name|filter".
  static QString Asked(const FileDialogRequest& r) {
    return QStringList{r.title, r.folder, r.file_name, r.filter}.join('|');
  }
  void ClickLabel15() { test::Click(form->findChild<QLabel*>("Label15")); }
};

TEST_F(EntityTest, WritesWindows1250WithCrLfAndReadsByItsRules) {
  Create();
  WidgetEntityControls controls(form.get());
  Set("Line1", "Sklep Łódź");
  Set("Line8", "  koniec  ");
  Set("ENIP", "526-025-02-74");
  Box("BLine2")->setChecked(true);
  Box("CLine4")->setChecked(false);  // the others are checked by design
  Set("E_VatA", "23");
  Set("E_VatB", "8");
  Set("E_VatG", "zw");
  const std::string path = dir.file("sklep.pod");
  ASSERT_TRUE(WriteEntity(path, controls));
  EXPECT_EQ(ReadFile(path),
            "Linia1=Sklep \xA3\xF3"
            "d\x9F\r\nLinia2=\r\nLinia3=\r\nLinia4=\r\nLinia5=\r\nLinia6=\r\nLinia7=\r\n"
            "Linia8=  koniec  \r\nNIP=526-025-02-74\r\n"
            "LineBold1=0\r\nLineBold2=1\r\nLineBold3=0\r\nLineBold4=0\r\nLineBold5=0\r\n"
            "LineBold6=0\r\nLineBold7=0\r\nLineBold8=0\r\n"
            "LineCenter1=1\r\nLineCenter2=1\r\nLineCenter3=1\r\nLineCenter4=0\r\nLineCenter5=1\r\n"
            "LineCenter6=1\r\nLineCenter7=1\r\nLineCenter8=1\r\n"
            "PTUA=23\r\nPTUB=8\r\nPTUC=\r\nPTUD=\r\nPTUE=\r\nPTUF=\r\nPTUG=zw\r\n");
  ResetEntity(controls);
  ASSERT_TRUE(ReadEntity(path, controls));
  EXPECT_EQ(EntityText(controls), ReadFile(path));

  // Order, LF-only lines, blanks, duplicates, key case, unknown keys, no "=", boxes
  // by their first character, a short line hiding what follows, no design state.
  WriteFile(path,
            "  PTUB=8\nLinia1=pierwsza\r\nLineCenter3=1\r\nLinia1=druga \xB9 \r\nnip=999\r\n"
            "Obcy=1\nbez znaku\r\nLineBold3=2\r\nLineBold4=a\r\nLineBold5= 1\r\nLineCenter3=\r\n"
            "NIP=123\r\nab\r\nLinia2=ukryta\r\nPTUC=5\r\n");
  Set("Line2", "stare");
  ASSERT_TRUE(ReadEntity(path, controls));
  EXPECT_EQ(EntityText(controls),
            "Linia1=druga \xB9 \r\nLinia2=\r\nLinia3=\r\nLinia4=\r\nLinia5=\r\nLinia6=\r\n"
            "Linia7=\r\nLinia8=\r\nNIP=123\r\n"
            "LineBold1=0\r\nLineBold2=0\r\nLineBold3=1\r\nLineBold4=1\r\nLineBold5=0\r\n"
            "LineBold6=0\r\nLineBold7=0\r\nLineBold8=0\r\n"
            "LineCenter1=0\r\nLineCenter2=0\r\nLineCenter3=0\r\nLineCenter4=0\r\nLineCenter5=0\r\n"
            "LineCenter6=0\r\nLineCenter7=0\r\nLineCenter8=0\r\n"
            "PTUA=\r\nPTUB=8\r\nPTUC=\r\nPTUD=\r\nPTUE=\r\nPTUF=\r\nPTUG=\r\n");

  // A missing file reads as empty.
  EXPECT_FALSE(ReadEntity(dir.file("brak.pod"), controls));
  EXPECT_EQ(Text("ENIP"), "");
}

TEST_F(EntityTest, PlikMenuOpensSavesAndClears) {
  Create();
  const std::string folder = Folder();
  Settings().pod_path = folder;
  WriteFile(folder + "firma.pod", "Linia1=Firma\r\nLineCenter1=1\r\n");
  dialogs.chosen_file = QString::fromStdString(folder + "firma.pod");
  Trigger(form.get(), "Otwrzpodmiot1");
  ASSERT_EQ(dialogs.requests.size(), 1u);
  EXPECT_EQ(Asked(dialogs.requests[0]),
            U("Odczyt ustawień uzytkownika.|") + QString::fromStdString(folder) + "||" + kFilter);
  EXPECT_EQ(Text("Label15"), QString::fromStdString(folder + "firma.pod"));
  EXPECT_EQ(Text("Line1"), "Firma");
  EXPECT_TRUE(Box("CLine1")->isChecked());
  EXPECT_EQ(Settings().pod_file, "firma.pod");

  // Saving through the label: Cancel writes nothing; OK writes the file and,
  // with no save dialog used since start-up, leaves PodPath and PodFile empty.
  Set("Line2", "Nowa");
  dialogs.answers = {false, true};
  ClickLabel15();
  EXPECT_EQ(ReadFile(folder + "firma.pod"), "Linia1=Firma\r\nLineCenter1=1\r\n");
  ClickLabel15();
  EXPECT_EQ(dialogs.messages.at(0).buttons, MessageButtons::kOkCancel);
  EXPECT_EQ(Messages(), QStringList(2, U("Zapisać do pliku\n") + Text("Label15")));
  EXPECT_TRUE(ReadFile(folder + "firma.pod").starts_with("Linia1=Firma\r\nLinia2=Nowa\r\n"));
  EXPECT_EQ(Settings().pod_path + "|" + Settings().pod_file, "|");

  // The save dialog: ".pod" is added when the upper-case name lacks ".POD".
  const std::pair<const char*, const char*> saves[] = {
      {"abc", "abc.pod"}, {"ABC.POD", "ABC.POD"}, {"x.Pod", "x.Pod"}};
  for (const auto& [chosen, stored] : saves) {
    dialogs.chosen_file = QString::fromStdString(folder + chosen);
    Trigger(form.get(), "Zapiszpodmiot1");
    EXPECT_EQ(Text("Label15"), QString::fromStdString(folder + stored));
    EXPECT_TRUE(ReadFile(folder + stored).starts_with("Linia1=Firma\r\nLinia2=Nowa\r\n"));
    EXPECT_EQ(Settings().pod_path, folder);
    EXPECT_EQ(Settings().pod_file, stored);
  }
  EXPECT_FALSE(std::filesystem::exists(folder + "x.Pod.pod"));
  ASSERT_EQ(dialogs.requests.size(), 4u);  // the first save starts in the emptied PodPath
  EXPECT_EQ(Asked(dialogs.requests[1]), U("Zapis ustawień uzytkownika.|||") + kFilter);
  EXPECT_EQ(Asked(dialogs.requests[3]),
            U("Zapis ustawień uzytkownika.|") + QString::fromStdString(folder) + "||" + kFilter);

  // Clearing touches no file and keeps the label.
  const std::string kept = ReadFile(folder + "x.Pod");
  Trigger(form.get(), "ClearPod");
  EXPECT_EQ(Text("Line1"), "");
  EXPECT_FALSE(Box("CLine1")->isChecked());
  EXPECT_EQ(Settings().pod_path + "|" + Settings().pod_file, folder + "|");
  EXPECT_EQ(Text("Label15"), QString::fromStdString(folder + "x.Pod"));
  EXPECT_EQ(ReadFile(folder + "x.Pod"), kept);

  dialogs.chosen_file.reset();  // a cancelled open changes nothing
  Trigger(form.get(), "Otwrzpodmiot1");
  EXPECT_EQ(Text("Label15"), QString::fromStdString(folder + "x.Pod"));
}

TEST_F(EntityTest, ListWindowListsArchiveOnlyFilesLoadsAndDeletes) {
  Settings().font_wind.face = "Courier New";
  Create();
  TPodmiotyForm* window = form->Windows().podmioty;
  QListWidget* list = window->findChild<QListWidget*>("List");
  const std::string folder = Path("pods/").toStdString();
  std::filesystem::create_directories(folder + "katalog.pod");
  WriteFile(folder + "a.pod", "Linia1=A\r\n");
  WriteFile(folder + "B.POD", "Linia1=B\r\n");
  WriteFile(folder + "tylko.pod", "Linia1=R\r\n");
  std::filesystem::permissions(folder + "tylko.pod", std::filesystem::perms::owner_write,
                               std::filesystem::perm_options::remove);
  WriteFile(folder + ".ukryty.pod", "");
  WriteFile(folder + "inny.txt", "");
  window->show();
  EXPECT_EQ(list->font().family(), "Courier New");
  EXPECT_TRUE(Settings().pod.showing);

  // With no folder known, refreshing asks for one; Cancel leaves the list.
  Trigger(window, "Refresh");
  ASSERT_EQ(dialogs.requests.size(), 1u);
  EXPECT_EQ(Asked(dialogs.requests[0]), U("Odczyt katalogu z użytkownikami.|||") + kFilter);
  EXPECT_EQ(list->count(), 0);
  EXPECT_EQ(Settings().pod_path, "");
  dialogs.chosen_file = QString::fromStdString(folder + "a.pod");
  Trigger(window, "Refresh");
  EXPECT_EQ(Settings().pod_path, folder);
  EXPECT_EQ(test::ListNames(list), "B.POD a.pod");

  SetControlText(form.get(), "Label15", "poprzedni.pod");
  list->setCurrentItem(list->findItems("a.pod", Qt::MatchExactly)[0]);
  emit list->itemDoubleClicked(list->currentItem());
  EXPECT_EQ(Text("Line1"), "A");
  EXPECT_EQ(Settings().pod_file, "a.pod");
  EXPECT_EQ(Text("Label15"), "poprzedni.pod");

  list->setCurrentItem(list->findItems("B.POD", Qt::MatchExactly)[0]);
  dialogs.answers = {false, true};
  Trigger(window, "Clear");
  EXPECT_TRUE(std::filesystem::exists(folder + "B.POD"));
  Trigger(window, "Clear");
  ASSERT_EQ(dialogs.messages.size(), 2u);
  EXPECT_EQ(dialogs.messages[0].text,
            QString::fromStdString("Chcesz skasować plik o nazwie:\n" + folder + "B.POD\n") +
                U("Kontynuować?"));
  EXPECT_EQ(dialogs.messages[0].buttons, MessageButtons::kOkCancel);
  EXPECT_FALSE(std::filesystem::exists(folder + "B.POD"));
  EXPECT_EQ(test::ListNames(list), "a.pod");

  // "Wczytaj" always asks for the folder.
  WriteFile(dir.file("inny.pod"), "");
  dialogs.chosen_file = QString::fromStdString(dir.file("inny.pod"));
  Trigger(window, "Wczytaj1");
  EXPECT_EQ(dialogs.requests.back().title, U("Odczyt katalogu z użytkownikami."));
  EXPECT_EQ(Settings().pod_path, Folder());
  EXPECT_EQ(test::ListNames(list), "inny.pod");
  Trigger(window, "Zamknij1");
  EXPECT_FALSE(window->isVisible());
  EXPECT_FALSE(Settings().pod.showing);
}

TEST_F(EntityTest, StartUpReopensTheLastEntityAndShowsTheList) {
  const std::string folder = Folder();
  WriteFile(folder + "config.tav",
            "PodPath=" + folder + "\r\nPodFile=firma.pod\r\nPodShowing=1\r\n");
  WriteFile(folder + "firma.pod", "Linia1=Z pliku\r\nLineCenter2=1\r\n");
  Create();
  Start();
  EXPECT_EQ(Text("Label15"), QString::fromStdString(folder + "firma.pod"));
  EXPECT_EQ(Text("Line1"), U("Z pliku"));
  EXPECT_FALSE(Box("CLine1")->isChecked());
  EXPECT_TRUE(Box("CLine2")->isChecked());
  EXPECT_TRUE(form->Windows().podmioty->isVisible());
  EXPECT_EQ(test::ListNames(form->Windows().podmioty->findChild<QListWidget*>("List")),
            "firma.pod");

  // A name of 3 characters or fewer is not reopened: the design state stays.
  WriteFile(folder + "config.tav", "PodFile=abc\r\n");
  Recreate();
  Start();
  EXPECT_EQ(Text("Label15"), "abc");
  EXPECT_TRUE(Box("CLine1")->isChecked());
}

}  // namespace
}  // namespace tavena

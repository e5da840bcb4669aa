#include "app/Tavenamain.h"

#include <gtest/gtest.h>

#include <QAction>

#include "sequence/Codepage.h"
#include "tests/gui/Guifakes.h"
#include "windows/About.h"
#include "windows/Listing.h"

namespace tavena {
namespace {

using test::ReadFile;
using test::U;
using test::WriteFile;

using MainWindowTest = test::WindowTest;

TEST_F(MainWindowTest, EveryWindowExistsOnceInStartUpOrderWithItsCaptionAndMenus) {
  Create();
  QStringList captions;  // the windows in start-up order, hidden
  for (QObject* child : form->children())
    if (auto* window = qobject_cast<TBaseForm*>(child)) {
      captions << window->windowTitle();
      EXPECT_FALSE(window->isVisible());
    }
  EXPECT_EQ(captions.join('|'),
            U("Monitor|Wprowadzanie daty i czasu|Lista podmiotów|Edycja sekwencji do drukarki.|"
              "Wysyłanie plików binarnych.|Baza towarów|Informacja|Opis błędów|"
              "Edycja sekwencji binarnych do drukarki.|Wynik kompilacji|"
              "Informacje o portach szeregowych|O programie"));
  EXPECT_EQ(form->windowTitle(), U("Program serwisowy drukarek."));

  // The logging box and the menus.
  Start();
  Box("TworzenieLogow")->setChecked(true);
  EXPECT_TRUE(link->logging);
  Box("TworzenieLogow")->setChecked(false);
  EXPECT_FALSE(link->logging);

  form->findChild<QAction*>("MonitorLogi1")->trigger();
  EXPECT_TRUE(form->Windows().listing->isVisible());

  form->findChild<QAction*>("Oprogramie1")->trigger();
  EXPECT_TRUE(form->Windows().about->isVisible());
  EXPECT_EQ(form->Windows().about->Text(), U("Program serwisowy do drukarek TAVENA."));

  form->findChild<QAction*>("Koniec1")->trigger();
  EXPECT_FALSE(form->isVisible());
}

TEST_F(MainWindowTest, FoundPrinterFillsFieldsAndSetsKindAndMode) {
  Create();
  link->find_result = 1;
  link->found_port = "com3";
  link->found_baud = 19200;
  link->fields = {{"ETypDrukarki", "TAVENA QX-1 RX"},
                  {"EFiskalny", "Tryb fiskalny."},
                  {"EWersjaSoftu", "2.15"}};
  Start();
  EXPECT_EQ(form->PortName(), "com3");
  EXPECT_EQ(form->BaudRate(), 19200);
  EXPECT_EQ(Text("AktualnyCom"), U("19200 bodów "));
  EXPECT_TRUE(form->IsFiscal());
  EXPECT_EQ(form->DeviceKind(), '2');
  EXPECT_TRUE(form->findChild<QWidget*>("Fiskalizacja")->isHidden());
  EXPECT_TRUE(form->findChild<QWidget*>("FVatCheck")->isHidden());
  EXPECT_EQ(link->calls,
            (std::vector<std::string>{"find com1 9600", "fill com3 19200", "select com3 19200"}));
  EXPECT_EQ(link->monitor, form->Windows().listing);
  EXPECT_EQ(link->answer_form, &form->Fields());
  EXPECT_TRUE(dialogs.messages.empty());
  // The port and speed in use are shown in their lists.
  EXPECT_EQ(Combo("Baud")->currentText(), "19200");
  EXPECT_EQ(Combo("Baud")->placeholderText(), U("Prędkość"));
  EXPECT_EQ(Items("Baud").join(' '), "9600 19200 38400");

  // Kinds of other printers, none fiscal.
  const std::tuple<const char*, const char*, char> cases[] = {
      {"TAVENA SOLIDA EJ", "Tryb szkoleniowy.", '2'},
      {"tavena lumen", "Tryb szkoleniowy.", '1'},
      {"TAVENA SOLIDA", "Błąd komunikacji.", '1'}};
  for (const auto& [type, mode, kind] : cases) {
    link->fields = {{"ETypDrukarki", type}, {"EFiskalny", Utf8ToCp1250(mode)}};
    form->ConnectPrinter();
    EXPECT_FALSE(form->IsFiscal()) << type;
    EXPECT_EQ(form->DeviceKind(), kind) << type;
    EXPECT_FALSE(form->findChild<QWidget*>("Fiskalizacja")->isHidden()) << type;
  }
  link->usb_port = "com3";
  form->ConnectPrinter();
  EXPECT_EQ(Text("AktualnyCom"), "Tavena USB  ");
}

TEST_F(MainWindowTest, NoPrinterRestoresPortAndSpeedSilently) {
  Create();
  link->find_result = -1;
  Start();
  EXPECT_EQ(form->PortName(), "com1");
  EXPECT_EQ(form->BaudRate(), 9600);
  // The fake search leaves com7 at 1200 behind: the old choice comes back.
  EXPECT_EQ(link->calls, (std::vector<std::string>{"find com1 9600", "select com1 9600"}));
  EXPECT_TRUE(dialogs.messages.empty());
  EXPECT_EQ(Text("AktualnyCom"), "");
  EXPECT_EQ(form->DeviceKind(), '0');

  // Linux explains a denied port.
  link->advice = "Brak uprawnie\xF1";
  form->ConnectPrinter();
  ASSERT_EQ(dialogs.messages.size(), 1u);
  EXPECT_EQ(dialogs.messages[0].text, U("Brak uprawnień"));
}

// The search starts at the given port; a copy found there is named.
TEST_F(MainWindowTest, StartPortIsWhereTheSearchLooksAndACopyIsNamed) {
  Create();
  form->SetStartPort("/dev/ttyUSB0");
  link->find_result = 2;
  Start();
  EXPECT_EQ(Messages(),
            QStringList({U("Znaleziono podłączoną Kopię Elektroniczną.\nProszę wybrać port "
                           "ręcznie.")}));
  EXPECT_EQ(link->calls,
            (std::vector<std::string>{"find /dev/ttyUSB0 9600", "select /dev/ttyUSB0 9600"}));
  EXPECT_EQ(Combo("ComboCom")->currentText(), "TAVENA USB /dev/ttyUSB0");
  EXPECT_FALSE(Items("ComboCom").join(' ').contains("symulowana"));
}

TEST_F(MainWindowTest, PortListAndChoosingPortAndSpeed) {
  Create();
  form->SetSimulatedPort("/dev/pts/4");
  Start();
  EXPECT_EQ(Items("ComboCom"),
            QStringList({"Drukarka symulowana /dev/pts/4", "Port komunikacyjny /dev/ttyS0",
                         "TAVENA USB /dev/ttyUSB0"}));
  EXPECT_EQ(Combo("ComboCom")->placeholderText(), "Porty");
  EXPECT_TRUE(dialogs.messages.empty());

  link->calls.clear();
  Combo("ComboCom")->setCurrentIndex(2);
  emit Combo("ComboCom")->activated(2);
  EXPECT_EQ(form->PortName(), "/dev/ttyUSB0");
  Combo("Baud")->setCurrentIndex(2);
  emit Combo("Baud")->activated(2);
  EXPECT_EQ(form->BaudRate(), 38400);
  EXPECT_EQ(link->calls,
            (std::vector<std::string>{"select /dev/ttyUSB0 9600", "select /dev/ttyUSB0 38400"}));

  // While the printer search runs, the port and speed cannot be changed under it.
  bool greyed = false;
  link->while_searching = [&] {
    greyed = !Combo("ComboCom")->isEnabled() && !Combo("Baud")->isEnabled() &&
             !form->findChild<QWidget*>("SeekCom")->isEnabled();
    form->ComboComChange(0);
    form->BaudChange(0);
  };
  link->calls.clear();
  form->ConnectPrinter();
  EXPECT_TRUE(greyed);
  EXPECT_EQ(link->calls,
            (std::vector<std::string>{"find /dev/ttyUSB0 38400", "select /dev/ttyUSB0 38400"}));
  EXPECT_TRUE(Combo("ComboCom")->isEnabled() && Combo("Baud")->isEnabled());

  // Entries of device paths and simulated ports are chosen above and below.
  EXPECT_EQ(TTavenaForm::PortNameFromEntry("Port komunikacyjny (COM3) com3"), "com3");
  EXPECT_EQ(TTavenaForm::PortNameFromEntry("bez nazwy"), "bez nazwy");
}

// A search of the ports again while one is under way (here from within its message) only says so.
TEST_F(MainWindowTest, NoPortsAndWineGiveNineSimulatedEntries) {
  Create();
  link->ports.clear();
  dialogs.while_message_open = [&] {
    dialogs.while_message_open = nullptr;
    form->SeekComClick();
  };
  Start();
  ASSERT_EQ(dialogs.messages.size(), 2u);
  EXPECT_EQ(dialogs.messages[0].text,
            U("Program nie wykrył żadnego portu szeregowego w systemie\rWindows. Możesz również "
              "nie mieć uprawnień do przeglądania\rrejestru systemowego. Program symuluje wybór "
              "com1...com9.\r"));
  EXPECT_EQ(dialogs.messages[0].caption, U("Brak portów szeregowych."));
  EXPECT_EQ(dialogs.messages[1].text,
            U("Wywołanie ponowne procedury przeszukującej porty szeregowe."));
  EXPECT_EQ(dialogs.messages[1].caption, U("Program serwisowy drukarek."));
  QStringList expected;
  for (int n = 1; n <= 9; ++n) expected << QStringLiteral("com%1 Port symulowany.").arg(n);
  EXPECT_EQ(Items("ComboCom"), expected);
  link->calls.clear();
  emit Combo("ComboCom")->activated(3);
  EXPECT_EQ(form->PortName(), "com4");
  EXPECT_EQ(link->calls, (std::vector<std::string>{"select com4 9600"}));

  link->wine = true;
  form->SeekComClick();  // the guard is cleared after the search
  ASSERT_EQ(dialogs.messages.size(), 3u);
  const QString advice = dialogs.messages[2].text;
  EXPECT_EQ(dialogs.messages[2].caption, U("Informacja."));
  EXPECT_TRUE(
      advice.startsWith(U("Program wykrył, że pracuje pod emulatorem WINE.\rPrzypomina się "
                          "o prawidłowej konfiguracji Linux i WINE.\r")));
  EXPECT_TRUE(advice.contains(U("modprobe usbserial vendor=0x7A7A product=0x000X\r")));
  EXPECT_TRUE(advice.endsWith(U("-Niektóre dystrybucje\r\rProgram symuluje wybór com1...com9.")));
  EXPECT_EQ(Items("ComboCom"), expected);
}

TEST_F(MainWindowTest, ClosingSavesSettingsAndTheNextStartRestoresThem) {
  WriteFile(dir.file("config.tav"), "ListShowing=1\r\nPodFile=firma.pod\r\n");
  Create();
  Start();
  EXPECT_EQ(form->pos(), QPoint(0, 0));  // no kept place
  EXPECT_TRUE(form->Windows().listing->isVisible());
  form->resize(1100, 800);
  form->move(30, 40);
  QApplication::processEvents();
  form->close();
  const std::string saved = ReadFile(dir.file("config.tav"));
  EXPECT_NE(saved.find("\r\nMainTop=40\r\nMainLeft=30\r\nMainWidth=1100\r\nMainHeight=800\r\n"),
            std::string::npos);
  EXPECT_NE(saved.find("\r\nPodFile=firma.pod\r\n"), std::string::npos);

  Recreate();
  Start();
  EXPECT_EQ(form->size(), QSize(1100, 800));
  EXPECT_EQ(form->pos(), QPoint(30, 40));
}

TEST_F(MainWindowTest, FontsGoToControlsByNameAndTheDialogsChangeThem) {
  WriteFile(dir.file("config.tav"), "FontInfoSet=\r\nFontInfoSize=12\r\n");
  Create();
  Start();
  const auto font = [](QWidget* w) {
    const QFont f = w->font();
    return QString("%1 %2 %3%4").arg(f.family()).arg(f.pointSize()).arg(f.bold()).arg(f.italic());
  };
  QWidget* type = form->findChild<QWidget*>("ETypDrukarki");
  EXPECT_EQ(font(type), "Arial 12 11");
  EXPECT_EQ(type->palette().color(QPalette::Base), QColor(0xE5, 0xE5, 0xE5));
  EXPECT_EQ(type->palette().color(QPalette::Text), QColor(0x4F, 0x6A, 0x69));
  QWidget* line = form->findChild<QWidget*>("Line3");
  EXPECT_EQ(line->font().pointSize(), 10);

  dialogs.chosen_font = QFont("Courier New", 14);
  form->Ustawienia3Click();  // Edit
  const FontSetting& edit = Settings().font_edit;
  EXPECT_EQ(edit.face + " " + std::to_string(edit.size) + std::to_string(edit.style),
            "Courier New 140");
  EXPECT_EQ(font(line), "Courier New 14 00");
  EXPECT_EQ(font(type), "Arial 12 11");

  dialogs.chosen_colour = QColor(0x11, 0x22, 0x33);
  form->Color1Click();  // Info
  EXPECT_EQ(Settings().font_info.colour, 0x332211);
  EXPECT_EQ(type->palette().color(QPalette::Text), QColor(0x11, 0x22, 0x33));

  dialogs.chosen_font.reset();
  dialogs.chosen_colour.reset();
  const SettingsRecord before = Settings();
  form->Ustawienia2Click();
  form->Color2Click();
  EXPECT_EQ(Settings().font_wind.face, before.font_wind.face);
  EXPECT_EQ(Settings().font_wind.colour, before.font_wind.colour);
}

}  // namespace
}  // namespace tavena

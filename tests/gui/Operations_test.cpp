// The main window's status queries, header counter, programming operations
// and fiscalisation against the simulated printer, in process, on virtual
// time (the printer's clock and the computer's both start 2012-05-14 09:03).
#include <gtest/gtest.h>

#include <QLabel>
#include <QLineEdit>
#include <array>

#include "app/Texts.h"
#include "tests/gui/Guifakes.h"
#include "windows/Info.h"

namespace tavena {
namespace {

using test::U;

class Operations : public test::WindowTest {
 protected:
  // The main window after a start-up that found a printer of this type on
  // the simulated port.
  void Start(const char* type = "TAVENA LUMEN") {
    Create();
    link->find_result = 1;
    link->found_port = "com5";
    link->fields = {{"ETypDrukarki", type},
                    {"EFiskalny", "Tryb szkoleniowy."},
                    {"ECzasDrukarki", "2012-05-14 09:03"},
                    {"ENumerPF", "ABC12345678"}};
    WindowTest::Start();
    Messages();
  }
  void Tick(const char* name, bool on) { Box(name)->setChecked(on); }
  void SetRates(const std::array<const char*, 7>& rates) {
    for (int i = 0; i < 7; ++i)
      SetControlText(form.get(), QStringLiteral("E_Vat%1").arg(QChar('A' + i)), U(rates[i]));
  }
  QStringList Info() const {
    QStringList lines{form->Windows().info->windowTitle()};
    for (int n = 1; n <= 4; ++n) lines << form->Windows().info->Line(n)->text();
    return lines;
  }
  // Commands that reached the printer since the last call.
  std::string Commands() {
    std::string commands;
    const auto& frames = sim->Record().frames;
    for (; seen < frames.size(); ++seen) commands += frames[seen].command + " ";
    return commands;
  }
  size_t seen = 0;
  // Service record lines written since the last call (the heading left out).
  QStringList Service() {
    QStringList lines = FromCp1250(test::ReadFile(dir.file("rejestr_serwisowy.csv")))
                            .split("\r\n", Qt::SkipEmptyParts)
                            .mid(1);
    lines = lines.mid(service_seen);
    service_seen += lines.size();
    return lines;
  }
  qsizetype service_seen = 0;
  test::ScopedEnv logs{"TAVENA_LOG_DIR", dir.str()};
};

TEST_F(Operations, HeaderByteCounter) {
  Start();
  auto* count = FindControl<QLineEdit>(form.get(), "HCount");
  const auto counted = [&] {
    form->Timer1Timer();
    return count->text();
  };
  EXPECT_EQ(counted(), "");  // eight empty lines count 0: nothing written
  Set("Line1", "1234567890123456789012345678901234567890");
  EXPECT_EQ(counted(), "41");
  Set("Line1", "1234567890");
  Tick("BLine1", true);
  EXPECT_EQ(counted(), "17");
  Set("Line1", "1234567890123456789012345");
  EXPECT_EQ(counted(), "25");  // the pad (22 - 25) / 2 truncates to -1
  Tick("CLine1", false);
  EXPECT_EQ(counted(), "25");  // centring does not change the count
  const QColor info = count->palette().color(QPalette::Text);
  for (const char* line : {"Line2", "Line3", "Line4", "Line5", "Line6"})
    Set(line, "1234567890123456789012345678901234567890");
  EXPECT_EQ(counted(), "230");
  EXPECT_EQ(count->palette().color(QPalette::Text), QColor(Qt::red));
  EXPECT_EQ(FindControl(form.get(), "Label12")->palette().color(QPalette::WindowText),
            QColor(Qt::red));
  Set("Line6", "");
  EXPECT_EQ(counted(), "189");
  EXPECT_EQ(count->palette().color(QPalette::Text), info);
}

TEST_F(Operations, StatusItemsShowTheBytesInTheInformationWindow) {
  Start();
  form->ENQ1Click();
  // The texts of each bit are checked in DrukarkaAnswers_test.
  EXPECT_EQ(Info().mid(0, 2), QStringList({"Interpretacja ENQ", "Tryb szkoleniowy."}));
  EXPECT_TRUE(form->Windows().info->isVisible());
  sim->State().mechanism_error = true;
  form->DLE1Click();
  EXPECT_EQ(Info(), QStringList({"Interpretacja DLE", U("Błąd mechanizmu lub sterownika."),
                                 U("Papier założony."), "", ""}));
  form->BEL1Click();
  form->PenyStatus1Click();
  EXPECT_EQ(sim->Record().enq, 1);
  EXPECT_EQ(sim->Record().dle, 1);
  EXPECT_EQ(sim->Record().bel, 1);
  EXPECT_EQ(Commands(), "#s ");
  EXPECT_EQ(sim->Record().frames.back().text, "22#s");
  EXPECT_FALSE(port.IsOpen());
  EXPECT_TRUE(Messages().isEmpty());

  form->Printer().SetPort("com6", 9600);  // nothing there
  form->DLE1Click();
  EXPECT_EQ(Info(), QStringList({"Interpretacja DLE", "Brak komunikacji", "", "", ""}));
}

TEST_F(Operations, ClockRatesAndHeader) {
  Start();
  form->WDateClick();
  EXPECT_EQ(Commands(), "$c ");
  EXPECT_EQ(sim->Record().frames.back().text.substr(0, 15), "12;5;14;9;3;7$c");

  dialogs.date_texts = {QString("2026-11-21 12:00")};
  form->Programuj1Click();
  ASSERT_EQ(dialogs.date_requests.size(), 1u);
  EXPECT_EQ(dialogs.date_requests[0].prompt, U("Wpisz datę i czas drukarki."));
  EXPECT_FALSE(dialogs.date_requests[0].date_only);
  EXPECT_EQ(sim->Record().frames.back().text.substr(0, 16), "26;11;21;12;0;0$");
  form->Odczytaj1Click();
  EXPECT_EQ(ControlText(form.get(), "ECzasDrukarki"), "2026-11-21 12:00");

  SetRates({"23", "8", "zw", "0", "nakt", "zw", "5"});
  form->WVATClick();
  EXPECT_EQ(Messages(), QStringList({U("Podano nieprawidłowe stawki VAT\nMoże wystapić tylko jedna "
                                       "stawka zwolniona.\nBłąd wystąpił w stawce F")}));
  Set("E_VatF", "nakt");
  form->WVATClick();
  EXPECT_EQ(Messages(), QStringList({U("Potwierdź na drukarce. Jeśli drukarka nic nie robi,\nto "
                                       "stawki już zostały zaprogramowane wcześniej\nw identycznej "
                                       "wysokości. Wtedy naciśnij OK")}));
  EXPECT_EQ(Commands(), "$c #c $p ");  // the clock by hand, its read-back, the rates
  EXPECT_EQ(sim->State().rates[2], -2);

  form->WHeaderClick();                // empty
  Set("Line2", "Sklep \xE2\x82\xAC");  // the euro sign is refused
  form->WHeaderClick();
  EXPECT_EQ(
      Messages().join('|').count(U("Zawiera niedopuszczalne znaki,\nalbo jest pusty\nNie można "
                                   "nagłówka zapisać.")),
      2);
  Set("Line2", "Sklep Żółw");
  Tick("BLine2", true);
  form->WHeaderClick();
  EXPECT_EQ(Commands(), "$f ");
  EXPECT_EQ(sim->State().header_changes, 1);
  // What the printer confirmed, with the unique number and model the window shows.
  const QString at = "2012-05-14 09:03:07;ABC12345678;TAVENA LUMEN;";
  EXPECT_EQ(Service(),
            QStringList({at + "Zegar;2012-05-14 09:03:07;tak", at + "Zegar;2026-11-21 12:00;tak",
                         at + "Stawki VAT;\"23.00;8.00;zw;0.00;-1;-1;5.00;\";tak",
                         at + U("Nagłówek;Sklep Żółw;tak")}));
}

TEST_F(Operations, ReportsAndTheTestReceipt) {
  Start();
  Set("ECzasDrukarki", "");
  form->DObowy1Click();
  Set("ECzasDrukarki", "2012.05.13 09:03");
  form->DObowy1Click();
  EXPECT_EQ(Messages(), QStringList({"Brak odczytanej daty z drukarki.",
                                     U("Data systemowa różna od daty w drukarce.")}));
  EXPECT_EQ(Commands(), "");
  Set("ECzasDrukarki", "2012.05.14 09:03");
  form->DObowy1Click();
  EXPECT_EQ(sim->State().daily_reports, 1);

  dialogs.date_texts = {QString("2012-05-10"), QString("2012-05-09")};
  form->Okresowy1Click();
  EXPECT_EQ(Messages(), QStringList({U("Druga data jest wcześniejsza od pierwszej.")}));
  dialogs.date_texts = {QString("2012-05-10"), QString("10.05.2012")};
  form->Okresowy1Click();
  ASSERT_EQ(dialogs.date_requests.size(), 4u);
  EXPECT_EQ(dialogs.date_requests[2].prompt, U("Podaj pierwszą datę do raportu okresowego.   "));
  EXPECT_EQ(dialogs.date_requests[3].prompt, U("Podaj drugą datę do raportu okresowego.   "));
  EXPECT_TRUE(dialogs.date_requests[3].date_only);
  EXPECT_EQ(sim->State().periodic_reports, 1);

  form->Paragonza1gr1Click();
  EXPECT_EQ(Commands(), "#r #o $h $l $e ");
  EXPECT_EQ(sim->State().receipts, 1);
  EXPECT_TRUE(Messages().isEmpty());
  const QString at = "2012-05-14 09:03:07;ABC12345678;TAVENA LUMEN;";
  EXPECT_EQ(Service(), QStringList({at + "Raport dobowy;2012-05-14;tak",
                                    at + "Raport okresowy;2012-05-10 - 2012-05-10;tak",
                                    at + "Paragon testowy;;tak"}));
}

TEST_F(Operations, FiscalisationOfANewerPrinterWithNoOptionalSteps) {
  Start("TAVENA QX-1 RX");
  Set("ENIP", "123/45/67/890");
  form->FiskalizacjaClick();
  EXPECT_EQ(Messages(),
            QStringList({U("Sprawdź numer NIP.\nFormat jest nieprawidłowy.\nPrawidłowe "
                           "formaty:\nXXX-XX-XX-XXX\nXXX-XXX-XX-XX\nXXXXXXXXXX\ngdzie X "
                           "jest dowolną cyfrą.")}));
  Set("ENIP", "1234567890");
  for (const char* box : {"FHeaderCheck", "FDateCheck", "FVatCheck"}) Tick(box, false);
  const int64_t before = clock.NowMs();
  form->FiskalizacjaClick();
  EXPECT_EQ(
      Messages(),
      QStringList({U("Zostanie przeprowadzona fiskalizacja drukarki.\nZostaną przeprowadzona "
                     "następujące czynności:\n\nwstępne wykonanie Raportu Dobowego\nzapisanie "
                     "numeru NIP w drukarce.\n\nSprawdź wszystko teraz i ewentualnie przerwij "
                     "operację."),
                   U("Naciśnij przycisk OK po wykonaniu\nfiskalizacji i zwarciu zworki "
                     "serwisowej\nponownego uruchomienia drukarki.")}));
  EXPECT_EQ(Commands(), "#r $f ");
  EXPECT_EQ(sim->State().nip, "1234567890");
  EXPECT_GE(clock.NowMs() - before, 600);  // 300 ms after each step
  EXPECT_EQ(link->calls.back(), "fill com5 9600");
  const QString at = "2012-05-14 09:03:07;ABC12345678;TAVENA QX-1 RX;";
  EXPECT_EQ(Service(), QStringList({at + "Raport dobowy;2012-05-14;tak",
                                    at + "Fiskalizacja;NIP 1234567890;tak"}));
}

TEST_F(Operations, FiscalisationOfAnOlderPrinter) {
  Start();
  Set("ENIP", "123-45-67-890");
  Set("Line1", "Sklep");
  SetRates({"23", "8", "5", "0", "nakt", "nakt", "zw"});
  dialogs.answers = {false};  // Cancel on the list: nothing happens
  form->FiskalizacjaClick();
  const QStringList list = Messages();
  ASSERT_EQ(list.size(), 1);
  EXPECT_EQ(list[0],
            U("Zostanie przeprowadzona fiskalizacja drukarki.\nAlgorytm dla starszych "
              "drukarek.\nZostaną przeprowadzona następujące czynności:\n\nwykonanie "
              "wstępnego Raportu Dobowego,\nprogramowanie nagłówka,\nprzepisanie czasu "
              "komputera do drukarki,\nzapisanie numeru NIP w drukarce,\npowtórne "
              "zaprogramowanie zegara,\nprogramowanie stawek VAT,\nwykonanie pierwszego "
              "Rapotu Dobowego.\n\nSprawdź wszystko teraz i ewentualnie przerwij operację."));
  EXPECT_EQ(Commands(), "");

  form->FiskalizacjaClick();
  EXPECT_EQ(Messages().size(), 3);  // list, the jumper, the rates' confirmation
  EXPECT_EQ(Commands(), "#r $f $c $f $c $p #r ");
  const QString at = "2012-05-14 09:03:0";
  EXPECT_EQ(Service(),
            QStringList({at + "7;ABC12345678;TAVENA LUMEN;Raport dobowy;2012-05-14;tak",
                         at + U("7;ABC12345678;TAVENA LUMEN;Nagłówek;Sklep;tak"),
                         at + "8;ABC12345678;TAVENA LUMEN;Zegar;2012-05-14 09:03:08;tak",
                         at + "8;ABC12345678;TAVENA LUMEN;Fiskalizacja;NIP 123-45-67-890;tak",
                         at + "9;ABC12345678;TAVENA LUMEN;Zegar;2012-05-14 09:03:09;tak",
                         at + "9;ABC12345678;TAVENA LUMEN;Stawki VAT;"
                              "\"23.00;8.00;5.00;0.00;-1;-1;zw;\";tak",
                         at + "9;ABC12345678;TAVENA LUMEN;Raport dobowy;2012-05-14;tak"}));

  // Cancel after fiscalising ends the procedure there.
  dialogs.answers = {true, false};
  Tick("FDateCheck", false);
  form->FiskalizacjaClick();
  EXPECT_EQ(Commands(), "#r $f $f ");
  // A printer fiscalised already refuses it.
  const QStringList refused = Service();
  ASSERT_FALSE(refused.isEmpty());
  EXPECT_TRUE(refused.last().endsWith(";Fiskalizacja;NIP 123-45-67-890;nie"));
}

}  // namespace
}  // namespace tavena

// The monitor's exchange view over the main window's printer object and the
// simulated printer on virtual time (2012-05-14 09:03:07.260 at start).
#include <gtest/gtest.h>

#include <QComboBox>
#include <QElapsedTimer>
#include <QFile>
#include <QTabWidget>
#include <QTableView>
#include <cstdio>
#if defined(__GLIBC__)
#include <malloc.h>
#endif

#include "tests/gui/Guifakes.h"
#include "windows/Exchangeview.h"
#include "windows/Listing.h"

namespace tavena {
namespace {

using test::U;

class ExchangeView : public test::WindowTest {
 protected:
  TExchangeView& View() { return *form->Windows().listing->Exchanges(); }
  QStringList Row(int row) {
    QStringList cells;
    const QAbstractItemModel* shown = View().Table()->model();
    for (int c = 0; c < ExchangeModel::kColumns; ++c)
      cells << shown->data(shown->index(row, c)).toString();
    return cells;
  }
};

TEST_F(ExchangeView, RowsFiltersCopyAndCsv) {
  Create();
  auto* tabs = FindControl<QTabWidget>(form->Windows().listing, "Zakladki");
  EXPECT_EQ(tabs->tabText(0), "Tekst");
  EXPECT_EQ(tabs->tabText(1), "Wymiana");
  form->ENQ1Click();
  {
    PrinterSession session(*form);
    session->SendFramed("0#e");  // read by nobody: a row without an answer
  }
  std::unique_ptr<SimPrinter> other = MakeSimPrinter("LUMEN");
  other->Faults().silent = true;
  SimPort other_port("com6", *other);
  form->Printer().SetPort("com6", 9600);
  form->DLE1Click();

  ASSERT_EQ(View().Table()->model()->rowCount(), 3);
  // The cells are checked through the CSV below, which writes them as shown.
  EXPECT_EQ(Row(2)[3], "<DLE>");

  View().Table()->selectRow(1);
  EXPECT_EQ(View().CopyHex(), "1B 50 30 23 65 38 39 1B 5C");
  FindControl<QCheckBox>(&View(), "COnlyFailures")->setChecked(true);
  ASSERT_EQ(View().Table()->model()->rowCount(), 1);
  EXPECT_EQ(Row(0)[1], "com6");
  FindControl<QCheckBox>(&View(), "COnlyFailures")->setChecked(false);
  auto* ports = FindControl<QComboBox>(&View(), "CPort");
  EXPECT_EQ(ports->count(), 3);  // every port, com5, com6
  ports->setCurrentIndex(1);
  EXPECT_EQ(View().Table()->model()->rowCount(), 2);

  dialogs.chosen_file = Path("Wymiana.csv");
  form->Windows().listing->ZapiszCsv1Click();
  ASSERT_EQ(dialogs.requests.size(), 1u);
  EXPECT_EQ(dialogs.requests[0].file_name, "Wymiana.csv");
  QFile csv(Path("Wymiana.csv"));
  ASSERT_TRUE(csv.open(QIODevice::ReadOnly));
  const QByteArray bytes = csv.readAll();
  EXPECT_EQ(bytes.left(3), QByteArray("\xEF\xBB\xBF"));
  EXPECT_EQ(QString::fromUtf8(bytes.mid(3)).split("\r\n"),
            QStringList({U("Czas;Port;Kierunek;Ramka;Hex;Znaczenie;Odpowiedź [ms];Wynik"),
                         U("09:03:07.260;com5;⇄;<ENQ> | e;05 | 65;Tryb szkoleniowy. Ostatni "
                           "rozkaz ziterpretowany poprawnie. Drukarka nie jest w stanie "
                           "transakcji. Ostatnia transakcja zainterpretowana poprawnie.;5;"
                           "potwierdzone"),
                         U("09:03:07.375;com5;→;<ESC>P0#e89<ESC>\\;1B 50 30 23 65 38 39 1B "
                           "5C;;;wysłane"),
                         U("09:03:07.485;com6;→;<DLE>;10;Brak komunikacji;;brak odpowiedzi"), ""}));
}

// 100,000 status exchanges into the view: the table keeps at most the cap
// and a tenth, newest last; prints the time and heap per row.
TEST_F(ExchangeView, HundredThousandExchangesStayWithinTheCap) {
  TExchangeView view;
  ExchangeRecord record;
  record.port = "/dev/ttyUSB0";
  record.question = "\x1bP0#s\x1b\\";
  record.answer =
      "\x1bP1#X0;0;0;0;0;0;12;05;14;23.00;8.00;5.00;0.00;101.00;101.00;100.00;0;"
      "0.00;0.00;0.00;0.00;0.00;0.00;ABC12345678\x1b\\";
  record.response_ms = 12;
  record.result = ExchangeResult::kConfirmed;
  record.meaning =
      "Tryb szkoleniowy. Zerowania: 0, ostatni zapis: 12-05-14, stawki: "
      "23.00;8.00;5.00;0.00;-1;-1;zw; numer unikatowy: ABC12345678";
  constexpr int kExchanges = 100000;
#if defined(__GLIBC__)
  const size_t heap_before = mallinfo2().uordblks;
#endif
  QElapsedTimer timer;
  timer.start();
  for (int i = 0; i < kExchanges; ++i) {
    record.response_ms = i;
    view.Append(record);
  }
  const double us_per_row = timer.nsecsElapsed() / 1000.0 / kExchanges;
  const int rows = view.Model().rowCount();
  EXPECT_LE(rows, kExchangeRowCap + kExchangeRowCap / 10);
  EXPECT_GE(rows, kExchangeRowCap);
  EXPECT_EQ(view.Model().Record(rows - 1).response_ms, kExchanges - 1);
  std::printf("append: %.2f us per row, %d rows kept\n", us_per_row, rows);
#if defined(__GLIBC__)
  std::printf("heap: %.0f bytes per row kept\n",
              static_cast<double>(mallinfo2().uordblks - heap_before) / rows);
#endif
}

}  // namespace
}  // namespace tavena

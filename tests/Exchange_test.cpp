// Exchange records, the log's run header and the service record, against
// the simulated printer on virtual time (2012-05-14 09:03:07.250 at start).
#if TAVENA_HAVE_SIM

#include <gtest/gtest.h>

#include <sstream>

#include "Fakeserial.h"
#include "TestSupport.h"
#include "cli/Cli.h"
#include "protocol/Drukarka.h"
#include "protocol/Runheader.h"
#include "protocol/Servicerecord.h"
#include "sim/Simport.h"
#include "sim/Simprinter.h"

namespace tavena {
namespace {

class Records : public ExchangeSink {
 public:
  void Exchange(const ExchangeRecord& record) override { rows.push_back(record); }
  std::vector<ExchangeRecord> rows;
};

class ExchangeTest : public ::testing::Test {
 protected:
  ExchangeTest() {
    printer.SetPort("com5", 9600);
    printer.exchanges = &records;
    ForgetRunHeaders();
  }
  std::vector<ExchangeRecord>& Rows() { return records.rows; }
  VirtualClock clock;
  ScopedClock scoped{&clock};
  test::ScopedWine wine{false};
  test::TempDir dir;
  test::ScopedEnv logs{"TAVENA_LOG_DIR", dir.str()};
  std::unique_ptr<SimPrinter> sim = MakeSimPrinter("LUMEN");
  SimPort port{"com5", *sim};
  Drukarka printer;
  Records records;
};

TEST_F(ExchangeTest, RowsTimesAndMeanings) {
  ASSERT_TRUE(printer.Open());
  printer.SetClock(2012, 5, 14, 9, 30, 0);  // a command: no answer expected
  printer.QueryENQ();
  printer.QueryDLE();
  printer.ReadIdentity(1);
  printer.ReadStatus(0, kStatusUniqueNumber);
  printer.SendFramed("0#e");  // the error query
  printer.ReadAnswer(200);
  sim->State().online = false;
  printer.QueryDLE();
  printer.Close();
  auto& rows = Rows();
  ASSERT_EQ(rows.size(), 7u);

  EXPECT_EQ(NamedControlBytes(rows[0].question), "<ESC>P12;5;14;9;30;0$cBA<ESC>\\");
  EXPECT_EQ(rows[0].result, ExchangeResult::kSent);
  EXPECT_EQ(rows[0].response_ms, -1);
  EXPECT_EQ(rows[0].time.hour * 10000 + rows[0].time.minute * 100 + rows[0].time.second, 90307);

  EXPECT_EQ(rows[1].answer, "\x65");  // training, command interpreted, no transaction
  EXPECT_EQ(rows[1].result, ExchangeResult::kConfirmed);
  EXPECT_GE(rows[1].response_ms, 0);
  EXPECT_LT(rows[1].response_ms, 20);
  EXPECT_EQ(rows[2].meaning, "Drukarka jest w stanie ON-LINE. Papier za\xB3o\xBFony.");

  EXPECT_EQ(rows[3].meaning.rfind("Model: TAVENA LUMEN, wersja: ", 0), 0u) << rows[3].meaning;
  EXPECT_EQ(rows[4].meaning.rfind("Tryb szkoleniowy. Zerowania: ", 0), 0u) << rows[4].meaning;
  EXPECT_NE(rows[4].meaning.find("numer unikatowy: "), std::string::npos);

  EXPECT_EQ(rows[5].result, ExchangeResult::kConfirmed);
  EXPECT_TRUE(rows[5].meaning.starts_with(std::string("B\xB3\xB9") + "d ")) << rows[5].meaning;

  EXPECT_EQ(rows[6].meaning, "Drukarka jest w stanie OFF-LINE. Papier za\xB3o\xBFony.");
}

TEST_F(ExchangeTest, ResponseTimeFollowsTheDelayAndFailuresAreMarked) {
  sim->Faults().answer_delay_ms = 300;
  ASSERT_TRUE(printer.Open());
  printer.ReadIdentity(1);
  sim->Faults().answer_delay_ms = 0;
  sim->Faults().enq_answers = "\x68";  // bit 2 clear: the last command was refused
  printer.QueryENQ();
  sim->Faults().silent = true;
  printer.QueryENQ();
  printer.Close();
  const auto& rows = Rows();
  ASSERT_EQ(rows.size(), 3u);
  EXPECT_GE(rows[0].response_ms, 300);
  EXPECT_LT(rows[0].response_ms, 400);
  EXPECT_EQ(rows[1].result, ExchangeResult::kRefused);
  EXPECT_EQ(rows[1].meaning,
            "Tryb fiskalny. B\xB3"
            "ad w interpretacji ostatniego rozkazu. Drukarka nie jest w "
            "stanie transakcji. B\xB3\xB9"
            "d w interpretacji ostatniej transakcji.");
  EXPECT_EQ(rows[2].result, ExchangeResult::kNoAnswer);
  EXPECT_EQ(rows[2].meaning, "Brak komunikacji");
  EXPECT_EQ(rows[2].response_ms, -1);
}

TEST_F(ExchangeTest, RunHeaderOpensTheLogOfEachRunAndTheExchangeLinesStay) {
  printer.SetLogging(true);  // on before the first exchange: since start-up
  ASSERT_TRUE(printer.Open());
  printer.ReadIdentity(1);
  printer.ReadStatus(0, kStatusUniqueNumber);
  printer.Close();
  printer.Open();  // same run: no second header
  printer.Close();
  const std::string log = test::ReadFile(dir.file(LogBaseNameOf("com5") + "_log.txt"));
  std::vector<std::string> lines;
  std::istringstream in(log);
  for (std::string line; std::getline(in, line);) lines.push_back(line.substr(25));  // stamp
  ASSERT_GE(lines.size(), 6u);
  EXPECT_EQ(lines[0].rfind("=== tavena ", 0), 0u);
  EXPECT_NE(lines[0].find("; port com5, 9600 b/s; model nieznany, wersja nieznany, numer "
                          "unikatowy nieznany; logi od startu programu ===\r"),
            std::string::npos)
      << lines[0];
  EXPECT_EQ(lines[1], "Otwarcie portu.\r");
  EXPECT_EQ(lines[2], "<com5><,> Zapytanie: \x1bP#v\x1b\\\r");
  const std::string identity = "=== Drukarka: model TAVENA LUMEN, wersja ";
  size_t headers = 0;
  for (const std::string& line : lines) headers += line.rfind("===", 0) == 0;
  EXPECT_EQ(headers, 2u);
  EXPECT_NE(log.find(identity), std::string::npos);

  Drukarka later;  // logging switched on after the first exchange
  later.SetPort("com6", 19200);
  later.Open();
  later.SetLogging(true);
  later.Open();
  EXPECT_NE(test::ReadFile(dir.file(LogBaseNameOf("com6") + "_log.txt"))
                .find("; port com6, 19200 b/s; model nieznany, wersja nieznany, numer unikatowy "
                      "nieznany; logi w\xB3\xB9"
                      "czone p\xF3\x9Fniej ===\r\n"),
            std::string::npos);
}

TEST_F(ExchangeTest, ServiceRecordIsAppendedAndPrintedByHistory) {
  const std::string path = dir.file(kServiceRecordName);
  ServiceEntry vat{{2012, 5, 14, 9, 3, 7, 0}, "ABC12345678", "TAVENA LUMEN", "Stawki VAT",
                   "23.00;8.00;zw;",          true};
  ServiceEntry nip{{2012, 5, 14, 9, 4, 0, 0}, "XYZ00000001", "TAVENA \"QX\"", "Fiskalizacja",
                   "NIP 123-45-67-890",       false};
  ASSERT_TRUE(AppendServiceRecord(vat, path));
  ASSERT_TRUE(AppendServiceRecord(nip, path));
  EXPECT_EQ(test::ReadFile(path),
            "Data i czas;Numer unikatowy;Model;Operacja;Szczeg\xF3\xB3y;Potwierdzone\r\n"
            "2012-05-14 09:03:07;ABC12345678;TAVENA LUMEN;Stawki VAT;\"23.00;8.00;zw;\";tak\r\n"
            "2012-05-14 09:04:00;XYZ00000001;\"TAVENA \"\"QX\"\"\";Fiskalizacja;"
            "NIP 123-45-67-890;nie\r\n");
  std::ostringstream out, err;
  EXPECT_EQ(RunCli({"tavena", "history", "--unique", "ABC12345678"}, out, err), 0);
  EXPECT_EQ(out.str(),
            "Data i czas | Numer unikatowy | Model | Operacja | Szczegóły | Potwierdzone\n"
            "2012-05-14 09:03:07 | ABC12345678 | TAVENA LUMEN | Stawki VAT | 23.00;8.00;zw; | "
            "tak\n");
}

}  // namespace
}  // namespace tavena

#endif  // TAVENA_HAVE_SIM

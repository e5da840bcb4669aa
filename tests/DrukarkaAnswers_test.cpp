// The pure readers of the printer's answers and the printer's message texts.
#include <gtest/gtest.h>

#include <tuple>

#include "protocol/Answerparse.h"
#include "protocol/Printererrors.h"
#include "sequence/Codepage.h"

namespace tavena {
namespace {

std::string Cp(const char* utf8) {
  return Utf8ToCp1250(utf8);
}

TEST(DrukarkaAnswersTest, IdentityModelsTypesAndTexts) {
  // Answer, type, subtype, name, version.
  const std::tuple<const char*, int, int, const char*, const char*> cases[] = {
      {"\x1bP1#RTAVENA LUMEN   /1.05 2011\x1b\\", 1, 0, "TAVENA LUMEN", "1.05 2011"},
      {"\x1bP4#RTAVENA QX-1TR/6.00\x1b\\", 6, 4, "TAVENA QX-1TR", "6.00"},
      {"\x1bP1#ROTHER/1\x1b\\", 0, 0, "OTHER", "1"},
      {"\x1bP1#RTAVEWA MERIDO X/5.0\x1b\\", 0, 0, "TAVENA MERIDO QP51KZ", "5.0"},
      // No end mark: the rest is the version.
      {"1#RTAVENA LUMEN/9.9", 1, 0, "TAVENA LUMEN", "9.9"},
      // No "/" (or "/" first): type read, empty name and version.
      {"\x1bP1#RTAVENA LUMEN 1.05\x1b\\", 1, 0, "", ""},
      {"\x1bP1#R/1.0\x1b\\", 0, 0, "", ""},
  };
  for (const auto& [answer, type, subtype, name, version] : cases) {
    const IdentityAnswer id = ParseIdentity(answer);
    EXPECT_TRUE(id.has_command) << answer;
    EXPECT_EQ(id.type_code, type) << answer;
    EXPECT_EQ(id.subtype, subtype) << answer;
    EXPECT_EQ(id.name, name) << answer;
    EXPECT_EQ(id.version, version) << answer;
  }
  // "#R" missing or at the very start: nothing at all.
  for (const char* none : {"#RTAVENA LUMEN/1", "\x1bPTAVENA LUMEN/1\x1b\\", ""})
    EXPECT_FALSE(ParseIdentity(none).has_command) << none;
  // 39 characters at most, both parts.
  const std::string long_name(50, 'N'), long_version(45, 'V');
  const IdentityAnswer id = ParseIdentity("1#R" + long_name + "/" + long_version + "\x1b\\");
  EXPECT_EQ(id.name, std::string(39, 'N'));
  EXPECT_EQ(id.version, std::string(39, 'V'));
}

TEST(DrukarkaAnswersTest, ClockYearsAndDefault) {
  const std::pair<const char*, const char*> cases[] = {
      {"\x1bP1#C12;5;31;23;59\x1b\\", "2012-05-31 23:59"},
      {"1#C49;1;2;3;4", "2049-01-02 03:04"},
      {"1#C50;1;2;3;4", "1950-01-02 03:04"},
      {"1#C12/05/31 7:08", "2012-05-31 07:08"},  // any non-digit ends a number
      {"\x1bP1#c\x1b\\", "1980-01-01 00:00"},
  };
  for (const auto& [answer, clock] : cases) EXPECT_EQ(ParseClock(answer), clock) << answer;
}

// A status answer in the printer's field forms.
std::string StatusAnswer(const std::string& resets_and_date, const std::string& rates,
                         const std::string& rest) {
  return "\x1bP1#X0;1;2;3;4;" + resets_and_date + rates + rest + "\x1b\\";
}

TEST(DrukarkaAnswersTest, StatusFieldsAndRules) {
  StatusRecord r;
  ASSERT_TRUE(ParseStatus(StatusAnswer("<12;12;5;31;", "23.00/8.00/5.00/0.00/101.00/101.00/100,00/",
                                       "57;100.00/20.00/3.00/0.00/7.50/1.25/ABC12345678"),
                          r));
  std::string fields;
  for (const int selector : {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 12})
    fields += FormatStatusField(r, selector) + "|";
  // Totals only for the active rates A..F, then G and the further amount.
  EXPECT_EQ(fields,
            "0|1|2|3|-1|2012-05-31|23.00;8.00;5.00;0.00;-1;-1;zw;|57|"
            "100.00;20.00;3.00;0.00;0.00;0.00;7.50;|1.25|ABC12345678||");
  EXPECT_EQ(r.f4, 4);
  EXPECT_EQ(FormatStatusField(r, kStatusRaw).size(), 184u);  // selector 11: the record

  // Plain resets; year 50 is 2050 here (the clock reads it as 1950).
  ASSERT_TRUE(ParseStatus(StatusAnswer("12;50;1;2;", "23.00/8.00/5.00/0.00/100.00/101.00/0.00/",
                                       "0;1/2/3/4/5/6/ABCDEFGHIJKLMN"),
                          r));
  EXPECT_EQ(r.resets, 12);
  EXPECT_EQ(FormatStatusField(r, kStatusLastRecord), "2050-01-02");
  EXPECT_EQ(FormatRates(r.rates), "23.00;8.00;5.00;0.00;zw;-1;0.00;");
  EXPECT_EQ(FormatStatusField(r, kStatusTotals), "1.00;2.00;3.00;4.00;0.00;0.00;5.00;");
  EXPECT_EQ(r.further, 6.0);
  EXPECT_EQ(r.unique_number, "ABCDEFGHIJK");
  ASSERT_TRUE(ParseStatus("1#X0;0;0;0;0;>3;99;12;31;", r));
  EXPECT_EQ(r.resets, -1);
  EXPECT_EQ(r.year, 1999);

  // A field without a decimal point is -1 and not consumed (the next rate reads it
  // again); 99.99 is exempt, 100.01 not; 100.99 inactive, 101.01 not; with no rate of
  // 100 or 101 G becomes exempt whatever was sent.
  const std::pair<const char*, const char*> rates[] = {
      {"23.00/x/8.00/5.00/0.00/0.00/0.00/", "23.00;-1;-1;-1;-1;-1;zw;"},
      {"99.99/100.01/100.99/101.01/1.0/2.0/3.0/", "zw;100.01;-1;101.01;1.00;2.00;3.00;"},
      {"23.00/8.00/5.00/0.00/0.00/0.00/12.00/", "23.00;8.00;5.00;0.00;0.00;0.00;zw;"}};
  for (const auto& [sent, read] : rates) {
    ASSERT_TRUE(ParseStatus(StatusAnswer("0;12;5;31;", sent, "9;1/1/1/1/1/1/1/1/U"), r));
    EXPECT_EQ(FormatRates(r.rates), read) << sent;
  }
  EXPECT_EQ(r.receipts, 9);
  EXPECT_EQ(r.unique_number, "U");
  // Parsing stops nowhere outside the text.
  EXPECT_FALSE(ParseStatus("no mark", r));
  ASSERT_TRUE(ParseStatus("#X", r));
  EXPECT_EQ(r.unique_number, "");
}

TEST(DrukarkaAnswersTest, FirstReportDateInText) {
  const std::pair<const char*, int> cases[] = {
      {"\x1bP2#R12;05;14;8C\x1b\\", 20120514},
      {"RAPORT DOBOWY\r\nNr 1 2012-05-14 09:00\r\n", 20120514},
      {"od 14.05.2012", 20120514},
      {"\x1bP2#R8C\x1b\\", 0},  // 0: no date (no report yet)
      {"2#R12;13;14;", 0},
      {"2012-13-01 12;05;14 2012-05/14 112012-05-14 1899-01-01", 0},
  };
  for (const auto& [text, date] : cases) {
    int y = 0, m = 0, d = 0;
    EXPECT_EQ(FindReportDate(text, y, m, d) ? y * 10000 + m * 100 + d : 0, date) << text;
  }
}

TEST(DrukarkaAnswersTest, PrinterErrorTable) {
  EXPECT_EQ(PrinterErrorText(0), "Nie rozpoznany rozkaz");
  EXPECT_EQ(PrinterErrorText(1), Cp("Nie zainicjalizowany zegar RTC.\nUstawić zegar z menu "
                                    "serwisowego lub\nprzesłać z aplikacji"));
  EXPECT_EQ(PrinterErrorText(31),
            "Nadmiar dodawania (przekroczenie zakresu got\xF3wki w kasie)/n"
            "(sekwencja LBDECCSH)");
  EXPECT_EQ(PrinterErrorText(83).substr(0, 34), Cp("Nieokreślone stawki PTU.\nBłąd może"));
  EXPECT_EQ(PrinterErrorText(99).substr(0, 41), Cp("Sekwencja niedozwolona w trybie „Tylko do"));
  EXPECT_EQ(PrinterErrorText(96), Cp("Przekroczony limit czasu na wydruk paragonu (20 minut).\n"
                                     "Paragon anulowany przez drukarkę automatycznie."));
  for (int n : {15, 52, 60, 82, 87, 88, 89, 97, 100, 255, -1})
    EXPECT_EQ(PrinterErrorText(n), "") << n;
}

TEST(DrukarkaAnswersTest, EnqAndDleWindowLines) {
  using Lines = std::vector<std::string>;
  const Lines none = {"Brak komunikacji", "", "", ""};
  for (int status : {0, -1, -128, 0x80, 0xFF, 0x8F}) {
    EXPECT_EQ(EnqLines(status), none) << status;
    EXPECT_EQ(DleLines(status), none) << status;
    EXPECT_TRUE(NoCommunication(status));
  }
  for (int status : {1, 0x7F}) EXPECT_FALSE(NoCommunication(status)) << status;

  // Line 1 is bit 3, line 4 bit 0; each bit alone, so two swapped bits show.
  const Lines clear = {Cp("Tryb szkoleniowy."), Cp("Bład w interpretacji ostatniego rozkazu."),
                       Cp("Drukarka nie jest w stanie transakcji."),
                       Cp("Błąd w interpretacji ostatniej transakcji.")};
  const Lines set = {Cp("Tryb fiskalny."), Cp("Ostatni rozkaz ziterpretowany poprawnie."),
                     Cp("Drukarka jest w stanie transakcji."),
                     Cp("Ostatnia transakcja zainterpretowana poprawnie.")};
  EXPECT_EQ(EnqLines(0x60), clear);
  EXPECT_EQ(EnqLines(0x6F), set);
  for (int bit = 0; bit < 4; ++bit) {
    Lines expected = clear;
    expected[3 - bit] = set[3 - bit];
    EXPECT_EQ(EnqLines(1 << bit), expected) << bit;
  }

  // DLE: a mechanism fault overwrites line 1.
  const std::string off = "Drukarka jest w stanie OFF-LINE.",
                    on = "Drukarka jest w stanie ON-LINE.";
  const std::string paper = Cp("Papier założony."), no_paper = "Brak papieru.";
  const std::string fault = Cp("Błąd mechanizmu lub sterownika.");
  const std::pair<int, Lines> dle[] = {
      {0x60, {off, paper, "", ""}},    {0x04, {on, paper, "", ""}},
      {0x02, {off, no_paper, "", ""}}, {0x01, {fault, paper, "", ""}},
      {0x05, {fault, paper, "", ""}},  {0x73, {fault, no_paper, "", ""}}};
  for (const auto& [status, lines] : dle) EXPECT_EQ(DleLines(status), lines) << status;
}

}  // namespace
}  // namespace tavena

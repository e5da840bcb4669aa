#include "Printererrors.h"

#include "sequence/Codepage.h"

namespace tavena {

namespace {

struct ErrorEntry {
  int number;
  const char* text;  // UTF-8
};

// The printer's own numbering; gaps are numbers it does not use.
constexpr ErrorEntry kErrors[] = {
    {0, "Nie rozpoznany rozkaz"},
    {1,
     "Nie zainicjalizowany zegar RTC.\nUstawić zegar z menu serwisowego lub\nprzesłać z aplikacji"},
    {2, "Błąd bajta kontrolnego."},
    {3, "Zła ilość parametrów."},
    {4, "Błąd danych."},
    {5, "Błąd wykonania (zapisu) do zegara RTC\nlub błąd odczytu zegara RTC"},
    {6, "Błąd odczytu totalizerów\nbłąd operacji z pamięcią fiskalną."},
    {7, "Data wcześniejsza od daty ostatniego\nzapisu w pamięci fiskalnej"},
    {8, "Błąd operacji - niezerowe totalizery"},
    {9, "Błąd operacji I/O (np. nieusunięta zwora serwisowa)"},
    {10,
     "Próba niedozwolonego ustawienia zegara\nw trybie fiskalnym więcej niż o jedną "
     "godzinę,\ndrugi raz od ostatniego raportu dobowego."},
    {11, "Zła ilość wartości PTU, błąd liczby."},
    {12, "Błędny nagłówek (np. Za długi \nlub zawierający niedozwolone znaki."},
    {13, "Próba fiskalizacji zafiskalizowanego urządzenia."},
    {14, "Błędny format NIP przy próbie fiskalizacji."},
    {16, "Błędna nazwa (pusta lub za długa)."},
    {17, "Błędne oznaczenie ilości (puste lub za długie)."},
    {18, "Błędne oznaczenie stawki PTU (lub brak),\ntakże próba sprzedaży w stawce nieaktywnej."},
    {19, "Błąd wartości CENA (syntaktyka,zakres lub brak)."},
    {20,
     "Błąd wartości BRUTTO lub\nRABAT (syntaktyka, zakres lub brak),\nBłąd niespełnienia "
     "warunku.\nilość x cena = brutto przy rabacie kwotowym\nuwzględnienie rabatu nie "
     "może\nprowadzić do ujemnego wyniku."},
    {21, "Sekwencja odebrana przez drukarkę\nprzy wyłączonym trybie transakcji."},
    {22, "Błąd operacji STORNO"},
    {23, "Błędna liczba rekordów (linii) paragonu."},
    {24,
     "Przepełnienie bufora drukarki.\nMożliwość uszkodzenia RS232 w drukarce (układ MAX232)\nlub "
     "komputerze użytkownika."},
    {25,
     "Błędny kod terminalu/ kasjera (zła długość lub format),\nlub błędna treść dodatkowych "
     "linii."},
    {26, "Błąd kwoty WPŁATA"},
    {27, "Błędna suma całkowita TOTAL\nlub błędna kwota RABAT."},
    {28, "Przepełnienie totalizera (maks. 2 684 354.55 dla jednej grupy podatkowej)"},
    {29,
     "Żądanie zakończenia (pozytywnego !) trybu transakcji,\nw momencie kiedy nie został on "
     "jeszcze włączony"},
    {30, "Błąd kwoty WPŁATA (syntaktyka)"},
    {31, "Nadmiar dodawania (przekroczenie zakresu gotówki w kasie)/n(sekwencja LBDECCSH)"},
    {32, "Wartość po odjęciu staje się ujemna\n(przyjmuje się wówczas stan zerowy kasy !)"},
    {33,
     "Błąd napisu <zmiana> lub <kasjer>\nlub <numer> lub <kaucja> \n(np. za długi lub zawierający "
     "błędne znaki)"},
    {34, "Błąd jednej z kwot lub pozostałych napisów."},
    {35, "Zerowy stan totalizerów"},
    {36, "Już istnieje zapis o tej dacie"},
    {37, "Operacja przerwana z klawiatury\n(przed rozpoczęciem drukowania)"},
    {38, "Błąd nazwy Aplikacja użytkownika."},
    {39, "Błąd oznaczenia PTU"},
    {40, "Blokada sekwencji z uwagi na\nbłąd w module fiskalnym lub jego przepełnienie."},
    {41, "Blokada trybu fiskalnego."},
    {42, "Błąd napisu <numer_kasjera>"},
    {43, "Błąd napisu <numer_par>"},
    {44, "Błąd napisu <kontrahent>"},
    {45, "Błąd napisu <terminal>"},
    {46, "Błąd napisu <nazwa_karty>"},
    {47, "Błąd napisu <numer_karty>"},
    {48, "Błąd napisu <data_m>"},
    {49, "Błąd napisu <data_r>"},
    {50, "Błąd napisu <kod_autoryz>"},
    {51, "Błąd wartości <kwota>"},
    {83,
     "Nieokreślone stawki PTU.\nBłąd może wystąpić z zasady tylko w\ntrybie niefiskalnym gdy "
     "stawki są ustawione w trybie FSK\nlub w przypadku złej fiskalizacji urządzenia."},
    {84, "Przekroczenie dopuszczalnej\nilości zmian stawek PTU (=30)"},
    {85,
     "Zapełnienie bazy towarowej.\nBłąd ten może wystąpić w przypadku\npróby sprzedaży nowego "
     "towaru."},
    {86,
     "Sygnalizacja zapełnienia bufora pamięci podręcznej.\nBlokada możliwości sprzedaży.\nNależy "
     "wykonać Raport Dobowy."},
    {90,
     "Operacja tylko z kaucjami\n– nie można wysyłać towarów.\nAktualnie realizowany jest wydruk "
     "obsługi opakowań\nkaucjonowanych\n(niefiskalny)–w tym trybie niedozwolona jest sprzedaż "
     "towarów."},
    {91,
     "Była wysłana forma płatności\nnie można wysyłać towarów.\nUżytkownik zadeklarował "
     "formy\npłatności – paragon można tylko\nzakończyć, nie można kontynuować sprzedaży!"},
    {92, "Przepełnienie bazy towarowej.\nKonieczność interwencji serwisu."},
    {93, "Błąd anulowania formy płatności."},
    {94, "Przekroczenie maksymalnej kwoty sprzedaży."},
    {95, "Drukarka w trybie transakcji – operacja niedozwolona"},
    {96,
     "Przekroczony limit czasu na wydruk paragonu (20 minut).\nParagon anulowany przez drukarkę "
     "automatycznie."},
    {98, "Blokada sprzedaży z powodu założenia zwory serwisowej\nKonieczność interwencji serwisu."},
    {99,
     "Sekwencja niedozwolona w trybie „Tylko do odczytu” lub\n2) wysłano POWTÓRNIE sekwencję "
     "rozpoczęcia transakcji lub\n3) nieprawidłowa składnia sekwencji lub\n4) rozkaz "
     "nierozpoznany"},
};

const char* FindErrorText(int number) {
  for (const ErrorEntry& e : kErrors) {
    if (e.number == number) return e.text;
  }
  return nullptr;
}

std::string Text(const char* utf8) {
  return Utf8ToCp1250(utf8);
}

bool Bit(int status, int bit) {
  return (status >> bit) & 1;
}

}  // namespace

std::string PrinterErrorText(int number) {
  const char* text = FindErrorText(number);
  return text ? Text(text) : std::string();
}

bool NoCommunication(int answer) {
  return answer <= 0 || answer >= 0x80;
}

std::vector<std::string> EnqLines(int status) {
  if (NoCommunication(status)) return {Text("Brak komunikacji"), "", "", ""};
  return {
      Text(Bit(status, 3) ? "Tryb fiskalny." : "Tryb szkoleniowy."),
      Text(Bit(status, 2) ? "Ostatni rozkaz ziterpretowany poprawnie."
                          : "Bład w interpretacji ostatniego rozkazu."),
      Text(Bit(status, 1) ? "Drukarka jest w stanie transakcji."
                          : "Drukarka nie jest w stanie transakcji."),
      Text(Bit(status, 0) ? "Ostatnia transakcja zainterpretowana poprawnie."
                          : "Błąd w interpretacji ostatniej transakcji."),
  };
}

std::vector<std::string> DleLines(int status) {
  if (NoCommunication(status)) return {Text("Brak komunikacji"), "", "", ""};
  std::vector<std::string> lines = {
      Text(Bit(status, 2) ? "Drukarka jest w stanie ON-LINE." : "Drukarka jest w stanie OFF-LINE."),
      Text(Bit(status, 1) ? "Brak papieru." : "Papier założony."), "", ""};
  // A mechanism fault takes the place of the on-line state.
  if (Bit(status, 0)) lines[0] = Text("Błąd mechanizmu lub sterownika.");
  return lines;
}

}  // namespace tavena

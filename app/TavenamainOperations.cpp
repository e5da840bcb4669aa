// The main window's status queries, header byte counter and programming
// operations: each opens the printer, makes its request and closes it
// before any box is shown.
#include <QAction>
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>

#include "app/Dialogs.h"
#include "app/Fonts.h"
#include "app/Tavenamain.h"
#include "app/Texts.h"
#include "protocol/Printererrors.h"
#include "protocol/Servicerecord.h"
#include "sequence/Messagelanguage.h"
#include "ui_Tavenamain.h"
#include "windows/Editdatetime.h"
#include "windows/Info.h"

namespace tavena {

namespace {

constexpr int kHeaderCountMs = 10000;
constexpr int kStepPauseMs = 300;
constexpr int kClockSettleMs = 100;
constexpr int kFullStatus = 22;

PrinterDate DateOf(const DateTimeValue& value) {
  return {value.year, value.month, value.day};
}

QString Lines(std::initializer_list<const char*> lines) {
  QString text;
  for (const char* line : lines) text += FromUtf8(line);
  return text;
}

}  // namespace

void TTavenaForm::ConnectOperations() {
  Timer1 = new QTimer(this);
  Timer1->setObjectName(QStringLiteral("Timer1"));
  connect(Timer1, &QTimer::timeout, this, &TTavenaForm::Timer1Timer);
  Timer1->start(kHeaderCountMs);
  ConnectActions<TTavenaForm>(this, {{ui->ENQ1, &TTavenaForm::ENQ1Click},
                                     {ui->DLE1, &TTavenaForm::DLE1Click},
                                     {ui->BEL1, &TTavenaForm::BEL1Click},
                                     {ui->PenyStatus1, &TTavenaForm::PenyStatus1Click},
                                     {ui->Programuj1, &TTavenaForm::Programuj1Click},
                                     {ui->Odczytaj1, &TTavenaForm::Odczytaj1Click},
                                     {ui->DObowy1, &TTavenaForm::DObowy1Click},
                                     {ui->Okresowy1, &TTavenaForm::Okresowy1Click},
                                     {ui->Paragonza1gr1, &TTavenaForm::Paragonza1gr1Click}});
  const std::pair<QPushButton*, void (TTavenaForm::*)()> buttons[] = {
      {ui->WDate, &TTavenaForm::WDateClick},
      {ui->WVAT, &TTavenaForm::WVATClick},
      {ui->WHeader, &TTavenaForm::WHeaderClick},
      {ui->RD, &TTavenaForm::DObowy1Click},
      {ui->Fiskalizacja, &TTavenaForm::FiskalizacjaClick}};
  for (const auto& [button, handler] : buttons)
    connect(button, &QPushButton::clicked, this, handler);
}

// ---- Status queries and the header byte counter ----

HeaderText TTavenaForm::Header() const {
  HeaderText header;
  for (int n = 1; n <= kHeaderLines; ++n) {
    header.lines[n - 1] = ToCp1250(ControlText(this, QStringLiteral("Line%1").arg(n)));
    header.large[n - 1] = Ticked(qPrintable(QStringLiteral("BLine%1").arg(n)));
    header.centre[n - 1] = Ticked(qPrintable(QStringLiteral("CLine%1").arg(n)));
  }
  return header;
}

bool TTavenaForm::Ticked(const char* name) const {
  const auto* box = FindControl<QCheckBox>(this, QString::fromLatin1(name));
  return box && box->isChecked();
}

// The count changes the counter's look only when it changes: red from the
// limit on, the Info font below it.
void TTavenaForm::Timer1Timer() {
  const int total = HeaderByteCount(Header());
  if (total == ui->HCount->text().toInt()) return;
  ui->HCount->setText(QString::number(total));
  for (QWidget* control : {static_cast<QWidget*>(ui->HCount), static_cast<QWidget*>(ui->Label12)}) {
    if (total < kHeaderByteLimit) {
      ApplyFont(control, Fonts().info);
      continue;
    }
    QPalette palette = control->palette();
    palette.setColor(QPalette::Text, Qt::red);
    palette.setColor(QPalette::WindowText, Qt::red);
    control->setPalette(palette);
  }
}

void TTavenaForm::ShowInfo(const QString& caption, const std::vector<std::string>& lines) {
  TInfoForm* info = windows_.info;
  if (!info) return;
  info->ClearLines();
  info->setWindowTitle(caption);
  for (size_t i = 0; i < lines.size() && i < 4; ++i)
    info->Line(static_cast<int>(i) + 1)->setText(FromCp1250(lines[i]));
  ShowWindow(info);
}

void TTavenaForm::ENQ1Click() {
  int status = -1;
  {
    PrinterSession session(*this);
    if (session.IsOpen()) status = session->QueryENQ();
  }
  ShowInfo(FromUtf8("Interpretacja ENQ"), EnqLines(status));
}

void TTavenaForm::DLE1Click() {
  int status = -1;
  {
    PrinterSession session(*this);
    if (session.IsOpen()) status = session->QueryDLE();
  }
  ShowInfo(FromUtf8("Interpretacja DLE"), DleLines(status));
}

void TTavenaForm::BEL1Click() {
  PrinterSession session(*this);
  if (session.IsOpen()) session->SendBEL();
}

// The printer object shows the whole answer in the monitor.
void TTavenaForm::PenyStatus1Click() {
  PrinterSession session(*this);
  if (session.IsOpen()) session->ReadStatus(kFullStatus, -1);
}

// ---- Programming operations ----

void TTavenaForm::Ask(const QString& text) {
  ShowMessage(this, text, Caption());
}

bool TTavenaForm::WriteClockFromSystem() {
  const LocalTime now = CurrentClock().Local();
  PrinterSession session(*this);
  if (!session.IsOpen()) return false;
  const bool sent =
      Recorded(*session, service::Clock(), ClockDetails(now),
               session->SetClock(now.year, now.month, now.day, now.hour, now.minute, now.second));
  SleepMs(kClockSettleMs);
  return sent;
}

void TTavenaForm::WDateClick() {
  WriteClockFromSystem();
}

// The dialog's text ("YYYY-MM-DD hh:mm") is the clock command's body; one
// too short to make one is ignored.
void TTavenaForm::Programuj1Click() {
  if (!windows_.date_time) return;
  Dialogs().EditDateTime(*windows_.date_time, {FromUtf8("Wpisz datę i czas drukarki."), false, {}},
                         [this](const QString& text) {
                           if (text.size() < 2) return true;
                           PrinterSession session(*this);
                           if (session.IsOpen())
                             Recorded(*session, service::Clock(), ToCp1250(text),
                                      session->SetClockFromText(ToCp1250(text)));
                           return true;
                         });
}

void TTavenaForm::Odczytaj1Click() {
  PrinterSession session(*this);
  if (!session.IsOpen()) return;
  ui->ECzasDrukarki->setText(FromCp1250(session->ReadClock()));
}

bool TTavenaForm::WriteVatRates() {
  std::vector<std::string> texts;
  for (const char letter : {'A', 'B', 'C', 'D', 'E', 'F', 'G'})
    texts.push_back(ToCp1250(ControlText(this, QStringLiteral("E_Vat%1").arg(letter)).trimmed()));
  VatRates rates{};
  std::string message;
  if (!CheckVatRates(texts, rates, message)) {
    Ask(FromCp1250(message));
    return false;
  }
  {
    PrinterSession session(*this);
    if (!session.IsOpen() ||
        !Recorded(*session, service::VatRates(), FormatRates(rates), session->SetVatRates(rates)))
      return false;
  }
  Ask(
      FromUtf8(MsgUtf8("Potwierdź na drukarce. Jeśli drukarka nic nie robi,\nto stawki już zostały "
                       "zaprogramowane wcześniej\nw identycznej wysokości. Wtedy naciśnij OK",
                       "Confirm on the printer. If the printer does nothing,\nthe rates have "
                       "already been programmed\nwith the same values. Then press OK")));
  return true;
}

void TTavenaForm::WVATClick() {
  WriteVatRates();
}

bool TTavenaForm::WriteHeader() {
  const HeaderText header = Header();
  if (const int line = CheckHeader(header); line != 0) {
    Ask(FromCp1250(HeaderErrorMessage(line)));
    return false;
  }
  std::vector<HeaderLine> lines;
  for (int i = 0; i < kHeaderLines; ++i)
    lines.push_back({header.lines[i], (header.large[i] ? kHeaderDoubleWidth : 0) |
                                          (header.centre[i] ? kHeaderCentre : 0)});
  PrinterSession session(*this);
  return session.IsOpen() &&
         Recorded(*session, service::Header(), HeaderDetails(lines), session->SetHeader(lines));
}

void TTavenaForm::WHeaderClick() {
  WriteHeader();
}

// The daily report on the printer's date as last read, which must be today.
void TTavenaForm::DObowy1Click() {
  DateTimeValue date;
  std::string message;
  if (!CheckDailyReportDate(ToCp1250(ui->ECzasDrukarki->text()), CurrentClock().Local(), date,
                            message)) {
    Ask(FromCp1250(message));
    return;
  }
  PrinterSession session(*this);
  if (session.IsOpen())
    Recorded(*session, service::DailyReport(), DateDetails(DateOf(date)),
             session->ReportByNumber(1, DateOf(date)));
}

// One date from the dialog in its date-only mode; it stays open on a text
// that is no date.
std::optional<DateTimeValue> TTavenaForm::AskDate(const char* prompt) {
  if (!windows_.date_time) return std::nullopt;
  DateTimeValue date;
  const std::optional<QString> text = Dialogs().EditDateTime(
      *windows_.date_time, {FromUtf8(prompt), true, {}}, [&](const QString& entered) {
        std::string message;
        if (ParseDateTime(ToCp1250(entered), false, date, message)) return true;
        Ask(FromCp1250(message));
        return false;
      });
  if (!text) return std::nullopt;
  return date;
}

void TTavenaForm::Okresowy1Click() {
  const std::optional<DateTimeValue> first =
      AskDate("Podaj pierwszą datę do raportu okresowego.   ");
  if (!first) return;
  const std::optional<DateTimeValue> second = AskDate("Podaj drugą datę do raportu okresowego.   ");
  if (!second) return;
  std::string message;
  if (!CheckPeriodDates(*first, *second, message)) {
    Ask(FromCp1250(message));
    return;
  }
  PrinterSession session(*this);
  if (session.IsOpen())
    Recorded(*session, service::PeriodicReport(),
             DateDetails(DateOf(*first)) + " - " + DateDetails(DateOf(*second)),
             session->PeriodicReport(DateOf(*first), DateOf(*second), 0));
}

void TTavenaForm::Paragonza1gr1Click() {
  PrinterSession session(*this);
  if (session.IsOpen()) Recorded(*session, service::TestReceipt(), "", session->TestReceipt());
}

// ---- Fiscalisation ----

bool TTavenaForm::DailyReportOnPrinterDate() {
  const std::string clock = ToCp1250(ui->ECzasDrukarki->text());
  DateTimeValue date;
  std::string message;
  if (clock.size() < 11 || !ParseDateTime(clock.substr(0, 10), false, date, message)) {
    Ask(FromUtf8(
        MsgUtf8("Brak odczytanej daty z drukarki.", "No date has been read from the printer.")));
    return false;
  }
  PrinterSession session(*this);
  return session.IsOpen() && Recorded(*session, service::DailyReport(), DateDetails(DateOf(date)),
                                      session->ReportByNumber(1, DateOf(date)));
}

bool TTavenaForm::FiscaliseNip(const std::string& nip) {
  PrinterSession session(*this);
  return session.IsOpen() &&
         Recorded(*session, service::Fiscalisation(), "NIP " + nip, session->Fiscalise(0, nip));
}

// Each step in turn, 300 ms after each; the first that fails ends them.
bool TTavenaForm::RunFiscalSteps(const std::vector<std::function<bool()>>& steps) {
  for (const std::function<bool()>& step : steps) {
    if (!step()) return false;
    SleepMs(kStepPauseMs);
  }
  return true;
}

void TTavenaForm::FiskalizacjaClick() {
  const std::string nip = ToCp1250(ui->ENIP->text());
  if (CheckNip(nip) != 1) {
    Ask(FromCp1250(NipFormatMessage()));
    return;
  }
  if (deviceKind != '1' && deviceKind != '2') {
    Ask(FromUtf8("Nieznany typ urządzenia.\nOperacja nie może być wykonana."));
    return;
  }
  const bool older = deviceKind == '1';
  const bool header = Ticked("FHeaderCheck"), date = Ticked("FDateCheck"),
             vat = Ticked("FVatCheck");
  QString list;
  if (older) {
    list =
        Lines({"Zostanie przeprowadzona fiskalizacja drukarki.\nAlgorytm dla starszych drukarek.\n"
               "Zostaną przeprowadzona następujące czynności:\n\n",
               "wykonanie wstępnego Raportu Dobowego,\n"});
    if (header) list += FromUtf8("programowanie nagłówka,\n");
    if (date) list += FromUtf8("przepisanie czasu komputera do drukarki,\n");
    list += FromUtf8("zapisanie numeru NIP w drukarce,\n");
    if (date) list += FromUtf8("powtórne zaprogramowanie zegara,\n");
    list += Lines({"programowanie stawek VAT,\n", "wykonanie pierwszego Rapotu Dobowego.\n\n"});
  } else {
    list =
        Lines({"Zostanie przeprowadzona fiskalizacja drukarki.\n"
               "Zostaną przeprowadzona następujące czynności:\n\n",
               "wstępne wykonanie Raportu Dobowego\n"});
    if (header) list += FromUtf8("programowanie nagłówka\n");
    if (date) list += FromUtf8("przepisanie czasu komputera do drukarki\n");
    if (vat) list += FromUtf8("programowanie stawek VAT\n");
    list += FromUtf8("zapisanie numeru NIP w drukarce.\n\n");
  }
  list += FromUtf8("Sprawdź wszystko teraz i ewentualnie przerwij operację.");
  if (!Dialogs().Message(this, list, Caption(), MessageButtons::kOkCancel)) return;

  std::vector<std::function<bool()>> steps{[this] { return DailyReportOnPrinterDate(); }};
  if (header) steps.emplace_back([this] { return WriteHeader(); });
  if (date) steps.emplace_back([this] { return WriteClockFromSystem(); });
  if (!older && vat) steps.emplace_back([this] { return WriteVatRates(); });
  steps.emplace_back([this, nip] { return FiscaliseNip(nip); });
  if (RunFiscalSteps(steps)) {
    if (older) {
      const QString done =
          Lines({"Naciśnij przycisk OK po wykonaniu\nfiskalizacji i zwarciu zworki "
                 "serwisowej\nponownego uruchomienia i skasowaniu\nzgłoszonego "
                 "błędu Brak stawek PTU\nlub naciśnij Anuluj, jesli zaniechasz\n"
                 "procesu fiskalizacji."});
      if (Dialogs().Message(this, done, Caption(), MessageButtons::kOkCancel)) {
        std::vector<std::function<bool()>> rest;
        if (date) rest.emplace_back([this] { return WriteClockFromSystem(); });
        rest.emplace_back([this] { return WriteVatRates(); });
        if (date) rest.emplace_back([this] { return DailyReportOnPrinterDate(); });
        RunFiscalSteps(rest);
      }
    } else {
      Ask(
          FromUtf8("Naciśnij przycisk OK po wykonaniu\nfiskalizacji i zwarciu zworki serwisowej\n"
                   "ponownego uruchomienia drukarki."));
    }
  }
  busy = true;
  link_->FillStatusFields(fields_, portName, baudRate);
  busy = false;
}

}  // namespace tavena

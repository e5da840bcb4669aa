#include "Tavenamain.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QStatusBar>
#include <QTimer>
#include <algorithm>
#include <cctype>

#include "app/Dialogs.h"
#include "app/Fonts.h"
#include "app/Texts.h"
#include "transport/Fastcom.h"
#include "ui_Tavenamain.h"
#include "windows/About.h"
#include "windows/Edytor.h"
#include "windows/Edytorseq.h"
#include "windows/Error.h"
#include "windows/Listing.h"
#include "windows/Podmioty.h"
#include "windows/Sender.h"
#include "windows/Serialportform.h"

namespace tavena {

namespace {

constexpr size_t kMaxPortName = 50;
const QColor kDisplayBackground(0xE5, 0xE5, 0xE5);

const char* const kWineAdvice =
    "Program wykrył, że pracuje pod emulatorem WINE.\r"
    "Przypomina się o prawidłowej konfiguracji Linux i WINE.\r"
    "Instalacja portu USB. (Zwykły port nie wymaga instalacji.)\r"
    "modprobe usbserial vendor=0x7A7A product=0x000X\r"
    "product=0x0002 - dla drukarek Solida\r"
    "product=0x0004 - dla drukarek QX1.\r"
    "Emulatorowi Wine należy podać informację o przekierowanych\r"
    "portach szeregowych. W tym celu należy wykonać poniższe \r"
    "przykładowe dyrektywy ustawiające dowiązania symboliczne do\r"
    "nazw portów com1 com2 com3.\r"
    "ln -s /dev/ttyS0 ~/.wine/dosdevices/com1\t - Wbudowany port\r"
    "ln -s /dev/ttyUSB0 ~/.wine/dosdevices/com2 -Solida i QX1\r"
    "ln -s /dev/ttyACM0 ~/.wine/dosdevices/com3 -Niektóre dystrybucje\r"
    "\r"
    "Program symuluje wybór com1...com9.";

const char* const kNoPorts =
    "Program nie wykrył żadnego portu szeregowego w systemie\rWindows. Możesz również nie mieć "
    "uprawnień do przeglądania\rrejestru systemowego. Program symuluje wybór com1...com9.\r";

// Names of the controls that ApplyFonts serves, by font.
QStringList InfoControls() {
  QStringList names;
  for (int n = 1; n <= 19; ++n) names << QStringLiteral("Label%1").arg(n);
  names << "AktualnyCom"
        << "ComboCom"
        << "Baud"
        << "Answer"
        << "EIloscZerowan"
        << "EOstatniZapis"
        << "EDataPierwszegoRD";
  for (const char letter : {'A', 'B', 'C', 'D', 'E', 'F', 'G'})
    names << QStringLiteral("Vat%1").arg(letter) << QStringLiteral("ETot%1").arg(letter);
  return names;
}

QStringList ShadedDisplays() {
  QStringList names{"ETypDrukarki", "EFiskalny",    "ECzasDrukarki",
                    "ENumerPF",     "EWersjaSoftu", "HCount"};
  for (const char letter : {'A', 'B', 'C', 'D', 'E', 'F', 'G'})
    names << QStringLiteral("EVat%1").arg(letter);
  return names;
}

QStringList EditControls() {
  QStringList names{"ENIP"};
  for (int n = 1; n <= 8; ++n)
    names << QStringLiteral("Line%1").arg(n) << QStringLiteral("BLine%1").arg(n)
          << QStringLiteral("CLine%1").arg(n);
  for (const char letter : {'A', 'B', 'C', 'D', 'E', 'F', 'G'})
    names << QStringLiteral("E_Vat%1").arg(letter);
  return names;
}

}  // namespace

TTavenaForm::TTavenaForm(std::unique_ptr<PrinterLink> link, std::string settings_folder,
                         QWidget* parent)
    : TBaseForm(parent),
      ui(new Ui::TTavenaForm),
      link_(std::move(link)),
      settings_folder_(std::move(settings_folder)),
      fields_(this) {
  ui->setupUi(this);
  move(0, 0);
  LoadSettings(SettingsPath(), Settings());
  ClearStateFlags();
  portName = "com1";
  baudRate = 9600;
  deviceKind = '0';
  ApplyFontDefaults(Settings());
  CreateFonts(Settings());
  ConnectHandlers();
  ConnectOperations();
  LinkLabelsToFields();
}

// Each field is reachable under its label's text (screen readers, tests
// that drive the window from outside); display fields are read-only.
void TTavenaForm::LinkLabelsToFields() {
  const std::pair<QLabel*, QWidget*> pairs[] = {
      {ui->Label1, ui->ComboCom},      {ui->Label2, ui->Baud},
      {ui->Label3, ui->ETypDrukarki},  {ui->Label4, ui->EWersjaSoftu},
      {ui->Label5, ui->EFiskalny},     {ui->Label6, ui->ENumerPF},
      {ui->Label7, ui->ECzasDrukarki}, {ui->Label8, ui->EIloscZerowan},
      {ui->Label9, ui->EOstatniZapis}, {ui->Label10, ui->EDataPierwszegoRD},
      {ui->Label11, ui->Answer},       {ui->Label12, ui->HCount},
      {ui->Label19, ui->ENIP},         {ui->Label20, ui->Label15}};
  for (const auto& [label, field] : pairs) {
    label->setBuddy(field);
    field->setAccessibleName(label->text().remove(QLatin1Char('&')).remove(QLatin1Char(':')));
  }
  for (int n = 1; n <= 8; ++n) {
    const QString line = FromUtf8(" %1").arg(n);
    FindControl(this, QStringLiteral("Line%1").arg(n))
        ->setAccessibleName(FromUtf8("Nagłówek") + line);
    FindControl(this, QStringLiteral("BLine%1").arg(n))
        ->setAccessibleName(ui->Label17->text() + line);
    FindControl(this, QStringLiteral("CLine%1").arg(n))
        ->setAccessibleName(ui->Label18->text() + line);
  }
  for (const char letter : {'A', 'B', 'C', 'D', 'E', 'F', 'G'}) {
    const QString suffix = QStringLiteral(" %1").arg(letter);
    const std::pair<QLabel*, QString> columns[] = {{ui->Label13, QStringLiteral("EVat%1")},
                                                   {ui->Label14, QStringLiteral("ETot%1")},
                                                   {ui->Label16, QStringLiteral("E_Vat%1")}};
    for (const auto& [label, name] : columns)
      FindControl(this, name.arg(letter))->setAccessibleName(label->text() + suffix);
  }
  for (const QString& name : ShadedDisplays() + QStringList{"EIloscZerowan", "EOstatniZapis",
                                                            "EDataPierwszegoRD", "Answer"})
    FindControl<QLineEdit>(this, name)->setReadOnly(true);
  for (const char letter : {'A', 'B', 'C', 'D', 'E', 'F', 'G'})
    FindControl<QLineEdit>(this, QStringLiteral("ETot%1").arg(letter))->setReadOnly(true);
}

TTavenaForm::~TTavenaForm() = default;

void TTavenaForm::ConnectHandlers() {
  connect(ui->SeekCom, &QPushButton::clicked, this, &TTavenaForm::SeekComClick);
  connect(ui->ComboCom, &QComboBox::activated, this, &TTavenaForm::ComboComChange);
  connect(ui->Baud, &QComboBox::activated, this, &TTavenaForm::BaudChange);
  connect(ui->TworzenieLogow, &QCheckBox::toggled, this, &TTavenaForm::TworzenieLogowClick);
  ConnectActions<TTavenaForm>(this, {{ui->Ustawienia1, &TTavenaForm::Ustawienia1Click},
                                     {ui->Ustawienia2, &TTavenaForm::Ustawienia2Click},
                                     {ui->Ustawienia3, &TTavenaForm::Ustawienia3Click},
                                     {ui->Color1, &TTavenaForm::Color1Click},
                                     {ui->Color2, &TTavenaForm::Color2Click},
                                     {ui->Color3, &TTavenaForm::Color3Click},
                                     {ui->Koniec1, &TTavenaForm::Koniec1Click},
                                     {ui->Oprogramie1, &TTavenaForm::Oprogramie1Click},
                                     {ui->Podmioty1, &TTavenaForm::Podmioty1Click},
                                     {ui->Edytor1, &TTavenaForm::Edytor1Click},
                                     {ui->Edytorsekwencji1, &TTavenaForm::Edytorsekwencji1Click},
                                     {ui->Wysyanieplikw1, &TTavenaForm::Wysyanieplikw1Click},
                                     {ui->MonitorLogi1, &TTavenaForm::MonitorLogi1Click},
                                     {ui->SerialPorts1, &TTavenaForm::SerialPorts1Click},
                                     {ui->Opisbdw1, &TTavenaForm::Opisbdw1Click}});
  ConnectPortWatch();
  ConnectEntityHandlers();
}

void TTavenaForm::SetSimulatedPort(const std::string& path) {
  simulated_port_ = path;
  SetStartPort(path);
}

void TTavenaForm::SetStartPort(const std::string& port) {
  portName = port.substr(0, kMaxPortName);
}

void TTavenaForm::ClearStateFlags() {
  busy = false;
  searching = false;
}

QString TTavenaForm::Caption() const {
  return windowTitle();
}

void TTavenaForm::ExchangeDone() {
  link_->ShowAnswer();
  PortsAfterBusy();
}

void TTavenaForm::ApplyFonts() {
  for (const QString& name : InfoControls()) ApplyFont(FindControl(this, name), Fonts().info);
  for (const QString& name : ShadedDisplays()) {
    QWidget* control = FindControl(this, name);
    ApplyFont(control, Fonts().info);
    ApplyBackground(control, kDisplayBackground);
  }
  for (const QString& name : EditControls()) ApplyFont(FindControl(this, name), Fonts().edit);
}

void TTavenaForm::FormShow() {
  ApplyFonts();
  ClearStateFlags();
  FillSpeedBox();
  link_->Attach(windows_.listing, &fields_);
  SeekComClick();
  RestoreMainPlace();
  // The search waits for the printer: it starts once the window is painted,
  // and the window's messages are pumped through every wait.
  QTimer::singleShot(0, this, &TTavenaForm::FinishStartUp);
}

void TTavenaForm::FinishStartUp() {
  SearchPrinter();
  if (closing_) return;
  ui->Label15->setText(FromCp1250(Settings().pod_path + Settings().pod_file));
  OpenEntity();
  ShowKeptWindows();
  emit StartUpFinished();
}

// The printer search on the chosen port, shown in the status bar.
void TTavenaForm::SearchPrinter() {
  ShowStatus(FromUtf8("Szukam drukarki: %1, %2 bodów").arg(FromCp1250(portName)).arg(baudRate));
  ConnectPrinter();
  if (closing_) return;
  ShowCurrentPort();
  ShowStatus(
      ui->ETypDrukarki->text().isEmpty()
          ? FromUtf8("Nie znaleziono drukarki. Wybierz port i prędkość.")
          : FromUtf8("Drukarka: %1, %2").arg(ui->ETypDrukarki->text(), FromCp1250(portName)));
}

void TTavenaForm::ShowStatus(const QString& text) {
  statusBar()->showMessage(text);
  if (isVisible()) repaint();
}

void TTavenaForm::FillSpeedBox() {
  ui->Baud->clear();
  ui->Baud->setPlaceholderText(FromUtf8("Prędkość"));
  ui->Baud->addItems({"9600", "19200", "38400"});
  ui->Baud->setCurrentIndex(-1);
  ApplyFont(ui->Baud, Fonts().info);
}

void TTavenaForm::RestoreMainPlace() {
  const WindowPlace& place = Settings().main;
  if (place.width == 0 || place.height == 0) return;
  resize(place.width, place.height);
  move(place.left, place.top);
}

void TTavenaForm::ShowKeptWindows() {
  const SettingsRecord& s = Settings();
  const std::pair<bool, QWidget*> kept[] = {{s.list.showing, windows_.listing},
                                            {s.pod.showing, windows_.podmioty},
                                            {s.edit.showing, windows_.edytor},
                                            {s.edit_seq.showing, windows_.edytor_seq},
                                            {s.sender.showing, windows_.sender}};
  for (const auto& [showing, window] : kept)
    if (showing && window) window->show();
}

// The port list: a simulated printer first, then what the host offers.
void TTavenaForm::SeekComClick() {
  if (searching) {
    ShowMessage(this, FromUtf8("Wywołanie ponowne procedury przeszukującej porty szeregowe."),
                Caption());
    return;
  }
  searching = true;
  ui->ComboCom->clear();
  ui->ComboCom->setPlaceholderText(FromUtf8("Porty"));
  ApplyFont(ui->ComboCom, Fonts().info);
  if (!simulated_port_.empty())
    ui->ComboCom->addItem(FromCp1250("Drukarka symulowana " + simulated_port_));
  FillPortList();
  ui->ComboCom->setCurrentIndex(-1);
  searching = false;
  PortsAfterBusy();
}

void TTavenaForm::FillPortList() {
  if (link_->UnderWine()) {
    ShowMessage(this, FromUtf8(kWineAdvice), FromUtf8("Informacja."));
    AddSimulatedPorts();
    return;
  }
  const std::vector<PortEntry> ports = link_->ListPorts();
  if (ports.empty()) {
    ShowMessage(this, FromUtf8(kNoPorts), FromUtf8("Brak portów szeregowych."));
    AddSimulatedPorts();
    return;
  }
  AddPortEntries(ports);
}

void TTavenaForm::AddSimulatedPorts() {
  for (int n = 1; n <= 9; ++n)
    ui->ComboCom->addItem(QStringLiteral("com%1 Port symulowany.").arg(n));
}

std::string TTavenaForm::PortNameFromEntry(const std::string& entry) {
  const size_t path = entry.rfind(" /");
  if (path != std::string::npos) return entry.substr(path + 1, kMaxPortName);
  if (!entry.empty() && entry[0] == '/') return entry.substr(0, kMaxPortName);
  for (size_t com = entry.find("com"); com != std::string::npos; com = entry.find("com", com + 1)) {
    size_t end = com + 3;
    while (end < entry.size() && std::isdigit(static_cast<unsigned char>(entry[end]))) ++end;
    if (end > com + 3) return entry.substr(com, std::min(end - com, kMaxPortName));
  }
  return entry.substr(0, kMaxPortName);
}

// Shows the port and speed in use, when the lists hold them.
void TTavenaForm::ShowCurrentPort() {
  for (int i = 0; i < ui->ComboCom->count(); ++i)
    if (PortNameFromEntry(ToCp1250(ui->ComboCom->itemText(i))) == portName)
      ui->ComboCom->setCurrentIndex(i);
  const int speed = ui->Baud->findText(QString::number(baudRate));
  if (speed >= 0) ui->Baud->setCurrentIndex(speed);
}

void TTavenaForm::ComboComChange(int index) {
  if (index < 0 || busy) return;
  portName = PortNameFromEntry(ToCp1250(ui->ComboCom->itemText(index)));
  link_->SelectPort(portName, baudRate);
}

void TTavenaForm::BaudChange(int index) {
  if (index < 0 || busy) return;
  baudRate = ui->Baud->itemText(index).toInt();
  link_->SelectPort(portName, baudRate);
}

void TTavenaForm::TworzenieLogowClick(bool checked) {
  link_->SetLogging(checked);
}

// The search leaves the port where the printer answered (or the previous
// one) chosen for every later operation, and closed.
void TTavenaForm::ConnectPrinter() {
  busy = true;
  EnablePortChoice(false);
  const std::string remembered_port = portName;
  const int32_t remembered_baud = baudRate;
  const int result = link_->FindPrinter(portName, baudRate);
  if (closing_) return;
  if (result == 1) {
    ReportFound();
  } else if (result == 2) {
    ShowMessage(this,
                FromUtf8("Znaleziono podłączoną Kopię Elektroniczną.\nProszę wybrać port ręcznie."),
                Caption());
  } else {
    portName = remembered_port;
    baudRate = remembered_baud;
    const std::string advice = link_->OpenFailureAdvice();
    if (!advice.empty()) ShowMessage(this, FromCp1250(advice), Caption());
  }
  link_->SelectPort(portName, baudRate);
  busy = false;
  EnablePortChoice(true);
  PortsAfterBusy();
}

// The port, speed and port search stay greyed out while the printer search
// runs on the chosen port (its waits let the window take clicks).
void TTavenaForm::EnablePortChoice(bool enabled) {
  for (QWidget* control : {static_cast<QWidget*>(ui->ComboCom), static_cast<QWidget*>(ui->Baud),
                           static_cast<QWidget*>(ui->SeekCom)})
    control->setEnabled(enabled);
}

// The printer answered: read its identity and state, then show what kind
// of printer it is. The identity read opens and closes the port itself.
void TTavenaForm::ReportFound() {
  const int number = PortNumberOf(portName.c_str());
  link_->FillStatusFields(fields_, portName, baudRate);
  if (number < 0) {
    ShowMessage(
        this, FromUtf8("Drukarki nie znaleziono. Proszę podłaczyć drukarkę\ni wybrać port w menu."),
        FromUtf8("Komunikat o błędzie"));
    ShowFiscalControls(false);
    return;
  }
  ui->AktualnyCom->setText(link_->IsUsbPort(portName) ? FromUtf8("Tavena USB  ")
                                                      : FromUtf8("%1 bodów ").arg(baudRate));
  isFiscal = ui->EFiskalny->text().contains(FromUtf8("fiskalny"));
  deviceKind = FiscalDeviceKind(ToCp1250(ui->ETypDrukarki->text()));
  ShowFiscalControls(isFiscal);
  link_->Attach(windows_.listing, &fields_);
}

void TTavenaForm::ShowFiscalControls(bool fiscal) {
  for (QWidget* control :
       {static_cast<QWidget*>(ui->Fiskalizacja), static_cast<QWidget*>(ui->FHeaderCheck),
        static_cast<QWidget*>(ui->FDateCheck), static_cast<QWidget*>(ui->FVatCheck)})
    control->setVisible(!fiscal);
}

void TTavenaForm::EditFont(FontSetting& setting) {
  FontObject font = MakeFont(setting);
  if (!Dialogs().ChooseFont(this, font.font)) return;
  StoreFont(font, setting);
  CreateFonts(Settings());
  ApplyFonts();
}

void TTavenaForm::EditColour(FontSetting& setting) {
  FontObject font = MakeFont(setting);
  QColor colour = font.colour.isValid() ? font.colour : QColor(Qt::black);
  if (!Dialogs().ChooseColour(this, colour)) return;
  font.colour = colour;
  StoreFont(font, setting);
  CreateFonts(Settings());
  ApplyFonts();
}

void TTavenaForm::Ustawienia1Click() {
  EditFont(Settings().font_info);
}

void TTavenaForm::Ustawienia2Click() {
  EditFont(Settings().font_wind);
}

void TTavenaForm::Ustawienia3Click() {
  EditFont(Settings().font_edit);
}

void TTavenaForm::Color1Click() {
  EditColour(Settings().font_info);
}

void TTavenaForm::Color2Click() {
  EditColour(Settings().font_wind);
}

void TTavenaForm::Color3Click() {
  EditColour(Settings().font_edit);
}

void TTavenaForm::Koniec1Click() {
  close();
}

void TTavenaForm::Oprogramie1Click() {
  if (!windows_.about || windows_.about->isVisible()) return;
  windows_.about->SetText(FromUtf8("Program serwisowy do drukarek TAVENA."));
  windows_.about->show();
}

void TTavenaForm::Podmioty1Click() {
  ShowWindow(windows_.podmioty);
}

void TTavenaForm::Edytor1Click() {
  ShowWindow(windows_.edytor);
}

void TTavenaForm::Edytorsekwencji1Click() {
  ShowWindow(windows_.edytor_seq);
}

void TTavenaForm::Wysyanieplikw1Click() {
  ShowWindow(windows_.sender);
}

void TTavenaForm::MonitorLogi1Click() {
  ShowWindow(windows_.listing);
}

void TTavenaForm::SerialPorts1Click() {
  ShowWindow(windows_.serial_ports);
}

void TTavenaForm::Opisbdw1Click() {
  ShowWindow(windows_.error);
}

void TTavenaForm::SaveMainPlace() {
  KeepPlace(*this, Settings().main);
  SaveSettings(SettingsPath(), Settings());
}

bool TTavenaForm::FormCloseQuery() {
  SaveMainPlace();
  return true;
}

// Closing while the printer is busy ends the exchange's waits, so the run
// ends at once instead of after the search.
void TTavenaForm::FormClose() {
  SaveMainPlace();
  if (!PrinterBusy()) return;
  closing_ = true;
  if (abandon_waits_) abandon_waits_();
  QCoreApplication::quit();
}

}  // namespace tavena

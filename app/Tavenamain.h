// The main window "Program serwisowy drukarek.": port and speed choice, the
// printer's identity and state, header, VAT rates and fiscalisation fields,
// and the menus that reach every other window.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/Formfields.h"
#include "app/Printeraccess.h"
#include "app/Printerlink.h"
#include "protocol/Inputcheck.h"
#include "windows/Baseform.h"

class QFrame;

namespace Ui {
class TTavenaForm;
}

class QTimer;

namespace tavena {

class TListingForm;
class TEditDateTimeForm;
class TPodmiotyForm;
class TEdytorSeqForm;
class TSenderForm;
class TBazaForm;
class TInfoForm;
class TErrorForm;
class TEdytorForm;
class TCompileListForm;
class TSerialPortsForm;
class TAboutForm;
class PortWatch;

// The windows that live beside the main window for the whole run.
struct AppWindows {
  TListingForm* listing = nullptr;
  TEditDateTimeForm* date_time = nullptr;
  TPodmiotyForm* podmioty = nullptr;
  TEdytorSeqForm* edytor_seq = nullptr;
  TSenderForm* sender = nullptr;
  TBazaForm* baza = nullptr;
  TInfoForm* info = nullptr;
  TErrorForm* error = nullptr;
  TEdytorForm* edytor = nullptr;
  TCompileListForm* compile_list = nullptr;
  TSerialPortsForm* serial_ports = nullptr;
  TAboutForm* about = nullptr;
};

class TTavenaForm : public TBaseForm, public PrinterAccess {
  Q_OBJECT

 public:
  // Reads config.tav from settings_folder (which ends with a separator).
  TTavenaForm(std::unique_ptr<PrinterLink> link, std::string settings_folder,
              QWidget* parent = nullptr);
  ~TTavenaForm() override;

  void SetWindows(const AppWindows& windows) { windows_ = windows; }
  const AppWindows& Windows() const { return windows_; }
  // A simulated printer's port: listed first and tried first.
  void SetSimulatedPort(const std::string& path);
  // The port the start-up search tries (com1 unless set).
  void SetStartPort(const std::string& port);

  const std::string& PortName() const { return portName; }
  int32_t BaudRate() const { return baudRate; }
  bool IsFiscal() const { return isFiscal; }
  char DeviceKind() const { return deviceKind; }
  std::string SettingsPath() const { return settings_folder_ + "config.tav"; }
  FormFields& Fields() { return fields_; }

  // PrinterAccess: the one printer object, lent to every window.
  Drukarka& Printer() override { return link_->Printer(); }
  bool PrinterBusy() const override { return busy || searching; }
  void SetPrinterBusy(bool on) override { busy = on; }
  void ExchangeDone() override;

  // Called when the user closes the window while the printer is busy: the
  // waits of the exchange under way end at once (set by the program).
  void SetAbandonWaits(std::function<void()> abandon) { abandon_waits_ = std::move(abandon); }

  void ConnectPrinter();
  void ShowFiscalControls(bool fiscal);
  void ApplyFonts();

  // The port name in a port list entry: the device path standing last, or
  // the first "com" with its number ("com4 Port symulowany." gives "com4").
  static std::string PortNameFromEntry(const std::string& entry);

 public slots:
  void SeekComClick();
  void ComboComChange(int index);
  void BaudChange(int index);
  void TworzenieLogowClick(bool checked);
  void Ustawienia1Click();
  void Ustawienia2Click();
  void Ustawienia3Click();
  void Color1Click();
  void Color2Click();
  void Color3Click();
  void Koniec1Click();
  void Oprogramie1Click();
  void Podmioty1Click();
  void Edytor1Click();
  void Edytorsekwencji1Click();
  void Wysyanieplikw1Click();
  void MonitorLogi1Click();
  void SerialPorts1Click();
  void Opisbdw1Click();

  // Status queries and the header byte counter.
  void Timer1Timer();
  void ENQ1Click();
  void DLE1Click();
  void BEL1Click();
  void PenyStatus1Click();
  // Programming operations.
  void WDateClick();
  void Programuj1Click();
  void Odczytaj1Click();
  void WVATClick();
  void WHeaderClick();
  void DObowy1Click();
  void Okresowy1Click();
  void Paragonza1gr1Click();
  void FiskalizacjaClick();

 signals:
  // The printer search and fill of the start-up have ended.
  void StartUpFinished();

 protected:
  void FormShow() override;
  bool FormCloseQuery() override;
  void FormClose() override;

 private:
  void ConnectOperations();
  void ShowInfo(const QString& caption, const std::vector<std::string>& lines);
  bool WriteClockFromSystem();
  bool WriteVatRates();
  bool WriteHeader();
  bool DailyReportOnPrinterDate();
  bool FiscaliseNip(const std::string& nip);
  bool RunFiscalSteps(const std::vector<std::function<bool()>>& steps);
  std::optional<DateTimeValue> AskDate(const char* prompt);
  HeaderText Header() const;
  bool Ticked(const char* name) const;
  void Ask(const QString& text);
  void FinishStartUp();
  void ShowStatus(const QString& text);
  void LinkLabelsToFields();
  void ConnectHandlers();
  void ClearStateFlags();
  void FillSpeedBox();
  void FillPortList();
  void AddSimulatedPorts();
  void ShowCurrentPort();
  void EnablePortChoice(bool enabled);
  void ReportFound();
  void RestoreMainPlace();
  void ShowKeptWindows();
  void SaveMainPlace();
  void EditFont(FontSetting& setting);
  void EditColour(FontSetting& setting);
  QString Caption() const;

  std::unique_ptr<Ui::TTavenaForm> ui;
  std::unique_ptr<PrinterLink> link_;
  std::string settings_folder_;
  WidgetFields fields_;
  AppWindows windows_;
  std::string simulated_port_;
  std::function<void()> abandon_waits_;
  bool closing_ = false;
  QTimer* Timer1 = nullptr;

  std::string portName;
  int32_t baudRate = 9600;
  bool busy = false;
  bool searching = false;
  bool isFiscal = false;
  char deviceKind = '0';

  // Ports that follow plug and unplug, the bar that offers a search on a
  // TAVENA USB device just plugged in, a port pulled out during an exchange.
 public:
  PortWatch* PortWatcher() const { return port_watch_; }
  // Lets the waits abandoned for a vanished port run again (set by the program).
  void SetResumeWaits(std::function<void()> resume) { resume_waits_ = std::move(resume); }
  void UsbSearchClick();

 private:
  void ConnectPortWatch();
  void CreateUsbBar();
  void PortsChanged();
  void PortsAfterBusy();
  void RebuildPortList();
  void AddPortEntries(const std::vector<PortEntry>& ports);
  void AbandonIfChosenPortGone();
  void OfferUsbSearch(const std::string& port);
  void SearchPrinter();
  int FirstListedPort() const;
  std::vector<std::string> ListedPortNames() const;

  PortWatch* port_watch_ = nullptr;
  QFrame* usb_bar_ = nullptr;
  std::string usb_bar_port_;
  std::function<void()> resume_waits_;
  bool ports_pending_ = false;
  std::string vanished_port_;

  // Taxpayer entity files: the "Plik" menu and the entity label Label15
  // (app/TavenamainEntity.cpp).
 public slots:
  void Otwrzpodmiot1Click();
  void Zapiszpodmiot1Click();
  void Label15Click();
  void ClearPodClick();

 public:
  void OpenEntity();
  void SaveEntity();

 private:
  void ConnectEntityHandlers();
  QString last_saved_entity_;  // the name last chosen in the save dialog

  // The service record of the programming operations (app/TavenamainService.cpp).
 private:
  bool Recorded(Drukarka& printer, const std::string& operation, const std::string& details,
                bool sent);
};

}  // namespace tavena

// The main window's part in ports that come and go: the port list follows
// plug and unplug, a TAVENA USB device just plugged in is offered a search
// in a bar (not a message box), and a chosen port pulled out during an
// operation ends that operation at once with a message naming the port.
#include <QComboBox>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <algorithm>
#include <utility>

#include "app/Dialogs.h"
#include "app/Portwatch.h"
#include "app/Tavenamain.h"
#include "app/Texts.h"
#include "sequence/Messagelanguage.h"
#include "ui_Tavenamain.h"

namespace tavena {

void TTavenaForm::ConnectPortWatch() {
  port_watch_ = new PortWatch(this);
  connect(port_watch_, &PortWatch::Changed, this, &TTavenaForm::PortsChanged);
  CreateUsbBar();
}

void TTavenaForm::CreateUsbBar() {
  usb_bar_ = new QFrame(ui->centralwidget);
  usb_bar_->setObjectName(QStringLiteral("UsbPrinterBar"));
  usb_bar_->setStyleSheet(
      QStringLiteral("QFrame#UsbPrinterBar { background: #FFF4C8; border: 1px solid #D0A830; }"));
  auto* text = new QLabel(usb_bar_);
  text->setObjectName(QStringLiteral("UsbPrinterText"));
  auto* search = new QPushButton(
      FromUtf8(MsgUtf8("Szukaj drukarki na tym porcie", "Search for the printer on this port")),
      usb_bar_);
  search->setObjectName(QStringLiteral("UsbPrinterSearch"));
  auto* dismiss = new QPushButton(FromUtf8(MsgUtf8("Zamknij", "Close")), usb_bar_);
  dismiss->setObjectName(QStringLiteral("UsbPrinterClose"));
  auto* row = new QHBoxLayout(usb_bar_);
  row->setContentsMargins(8, 4, 4, 4);
  row->addWidget(text, 1);
  row->addWidget(search);
  row->addWidget(dismiss);
  connect(search, &QPushButton::clicked, this, &TTavenaForm::UsbSearchClick);
  connect(dismiss, &QPushButton::clicked, usb_bar_, &QWidget::hide);
  ui->MainLayout->insertWidget(0, usb_bar_);
  usb_bar_->hide();
}

// The list is rebuilt at once unless the printer is busy; then only a chosen
// port that is gone is acted on, and the rebuild waits for the end.
void TTavenaForm::PortsChanged() {
  if (!isVisible() || link_->UnderWine()) return;
  if (!PrinterBusy()) {
    RebuildPortList();
    return;
  }
  ports_pending_ = true;
  AbandonIfChosenPortGone();
}

// The exchange on a port that has vanished cannot succeed: its waits end
// now instead of running out their time-outs.
void TTavenaForm::AbandonIfChosenPortGone() {
  if (!vanished_port_.empty()) return;
  const std::vector<std::string> listed = ListedPortNames();
  if (std::find(listed.begin(), listed.end(), portName) == listed.end()) return;
  for (const PortEntry& port : link_->ListPorts())
    if (port.name == portName) return;
  vanished_port_ = portName;
  if (abandon_waits_) abandon_waits_();
}

// After an exchange or a search: waits run normally again, a change seen
// meanwhile rebuilds the list, and a port pulled out meanwhile (seen by the
// watcher or by the channel itself) is named.
void TTavenaForm::PortsAfterBusy() {
  if (PrinterBusy() || closing_) return;
  if (vanished_port_.empty() && Printer().com.DeviceGone()) vanished_port_ = Printer().port_name;
  const std::string vanished = std::exchange(vanished_port_, std::string());
  if (!vanished.empty() && resume_waits_) resume_waits_();
  if (ports_pending_) RebuildPortList();
  if (vanished.empty()) return;
  ShowMessage(this,
              FromUtf8(MsgUtf8("Port %1 zniknął. Czy drukarka została odłączona?",
                               "Port %1 has disappeared. Has the printer been disconnected?"))
                  .arg(FromCp1250(vanished)),
              Caption());
}

// The list as "Szukaj portów" builds it, without its messages; the port in
// use stays chosen while it is listed.
void TTavenaForm::RebuildPortList() {
  ports_pending_ = false;
  const std::vector<std::string> before = ListedPortNames();
  const std::vector<PortEntry> ports = link_->ListPorts();
  const int first = FirstListedPort();
  while (ui->ComboCom->count() > first) ui->ComboCom->removeItem(first);
  ui->ComboCom->setCurrentIndex(-1);
  if (ports.empty()) AddSimulatedPorts();
  AddPortEntries(ports);
  ShowCurrentPort();
  const std::vector<std::string> after = ListedPortNames();
  if (std::find(after.begin(), after.end(), usb_bar_port_) == after.end()) usb_bar_->hide();
  for (const std::string& name : after)
    if (std::find(before.begin(), before.end(), name) == before.end() && link_->IsUsbPort(name)) {
      OfferUsbSearch(name);
      break;
    }
}

void TTavenaForm::AddPortEntries(const std::vector<PortEntry>& ports) {
  for (const PortEntry& port : ports)
    ui->ComboCom->addItem(FromCp1250(port.description + " " + port.name));
}

// The simulated printer's entry, when there is one, stands before the ports.
int TTavenaForm::FirstListedPort() const {
  return simulated_port_.empty() ? 0 : 1;
}

std::vector<std::string> TTavenaForm::ListedPortNames() const {
  std::vector<std::string> names;
  for (int i = FirstListedPort(); i < ui->ComboCom->count(); ++i)
    names.push_back(PortNameFromEntry(ToCp1250(ui->ComboCom->itemText(i))));
  return names;
}

void TTavenaForm::OfferUsbSearch(const std::string& port) {
  usb_bar_port_ = port;
  usb_bar_->findChild<QLabel*>(QStringLiteral("UsbPrinterText"))
      ->setText(FromUtf8(MsgUtf8("Podłączono urządzenie TAVENA USB na porcie %1.",
                                 "A TAVENA USB device was plugged in on port %1."))
                    .arg(FromCp1250(port)));
  usb_bar_->show();
}

// One click: the printer search on the port just plugged in.
void TTavenaForm::UsbSearchClick() {
  if (PrinterBusy()) return;
  usb_bar_->hide();
  SetStartPort(usb_bar_port_);
  SearchPrinter();
}

}  // namespace tavena

#include "Serialportform.h"

#include <algorithm>

#include "app/Fonts.h"
#include "app/Texts.h"
#include "transport/Usbclass.h"
#include "ui_Serialportform.h"

namespace tavena {

namespace {

constexpr int kMargin = 5;

// 8-bit Windows-1250 text cut into lines at CR LF, CR or LF (no empty line
// after the last break).
QStringList SplitLines(const std::string& cp1250) {
  QStringList lines;
  size_t start = 0;
  while (start < cp1250.size()) {
    const size_t end = cp1250.find_first_of("\r\n", start);
    lines << FromCp1250(cp1250.substr(start, end == std::string::npos ? end : end - start));
    if (end == std::string::npos) break;
    start = end + (cp1250.compare(end, 2, "\r\n") == 0 ? 2 : 1);
  }
  return lines;
}

}  // namespace

TSerialPortsForm::TSerialPortsForm(QWidget* parent)
    : TBaseForm(parent), ui(new Ui::TSerialPortsForm) {
  ui->setupUi(this);
  connect(ui->Portyzainstalowane1, &QAction::triggered, this,
          &TSerialPortsForm::Portyzainstalowane1Click);
  connect(ui->Wszystkieporty1, &QAction::triggered, this, &TSerialPortsForm::Wszystkieporty1Click);
  connect(ui->Zakocz1, &QAction::triggered, this, &TSerialPortsForm::Zakocz1Click);
}

TSerialPortsForm::~TSerialPortsForm() = default;

// The shared window font's size and style, in Courier New.
void TSerialPortsForm::FormShow() {
  QFont font = Fonts().wind.font;
  font.setFamily(QStringLiteral("Courier New"));
  ui->ListBox1->setFont(font);
  ui->ListBox1->clear();
  FitListBox();
  CentreOnScreen(*this);
}

void TSerialPortsForm::FormResize() {
  FitListBox();
}

void TSerialPortsForm::FitListBox() {
  const QSize area = ui->centralwidget->size();
  ui->ListBox1->setGeometry(kMargin, kMargin, std::max(0, area.width() - 2 * kMargin),
                            std::max(0, area.height() - 2 * kMargin));
}

void TSerialPortsForm::Portyzainstalowane1Click() {
  ShowPorts(false);
}

void TSerialPortsForm::Wszystkieporty1Click() {
  ShowPorts(true);
}

void TSerialPortsForm::Zakocz1Click() {
  close();
}

// One discovery with fresh options. A failure is not shown: the list holds
// what was found before it.
void TSerialPortsForm::ShowPorts(bool all_devices) {
  UsbClass usb;
  usb.SetSysfsRoot(sysfs_root_);
  usb.all_devices = all_devices;
  usb.numbered_only = true;
  usb.Discover();
  std::string summary;
  for (const DeviceRecord& record : usb.Records()) summary += RecordSummary(record);
  ui->ListBox1->clear();
  ui->ListBox1->addItems(SplitLines(summary));
}

}  // namespace tavena

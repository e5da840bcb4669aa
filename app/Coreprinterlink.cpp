#include "Coreprinterlink.h"

#include <cerrno>

#include "protocol/Drukarka.h"
#include "sequence/Messagelanguage.h"
#include "transport/Fastcom.h"
#include "transport/Usbclass.h"

namespace tavena {

namespace {

// Control bytes of an answer shown as dots, so the field stays one line.
std::string Displayable(std::string text) {
  for (char& c : text)
    if (static_cast<unsigned char>(c) < 0x20) c = '.';
  return text;
}

bool SamePort(const DeviceRecord& record, const std::string& port) {
  const int number = PortNumberOf(port.c_str());
  if (number > 0) return record.port_number == number;
  return record.port_name == port;
}

class CorePrinterLink : public PrinterLink {
 public:
  int FindPrinter(std::string& port, int32_t& baud) override {
    const int result = printer_.FindPrinter(port, baud, 0, false);
    last_port_ = port;
    ShowAnswer();
    return result;
  }

  void FillStatusFields(FormFields& form, const std::string& port, int32_t baud) override {
    printer_.FillStatusFields(form, port, baud);
    ShowAnswer();
  }

  void SelectPort(const std::string& port, int32_t baud) override {
    if (printer_.com.IsOpen()) printer_.Close();
    printer_.SetPort(port, baud);
  }

  void Attach(MonitorSink* monitor, FormFields* answer_form) override {
    printer_.monitor = monitor;
    answer_form_ = answer_form;
  }

  void SetLogging(bool on) override { printer_.SetLogging(on); }

  bool UnderWine() override { return printer_.com.UnderWine(); }

  std::vector<PortEntry> ListPorts() override {
    usb_.vendor_filter = true;
    usb_.Discover();
    UsbClass serial;
    serial.numbered_only = true;
    serial.Discover();
    std::vector<PortEntry> ports;
    for (const DeviceRecord& record : serial.Records())
      ports.push_back({record.description, record.port_name});
    return ports;
  }

  bool IsUsbPort(const std::string& port) override {
    for (const DeviceRecord& record : usb_.Records())
      if (SamePort(record, port)) return true;
    return false;
  }

  std::string OpenFailureAdvice() override {
#ifdef _WIN32
    return {};
#else
    const int error = printer_.com.LastOpenError();
    const std::string port = Msg("Nie można otworzyć portu ", "Cannot open the port ") + last_port_;
    if (error == EBUSY)
      return port + Msg(": port jest zajęty przez inny program.",
                        ": the port is used by another program.");
    if (error != EACCES && error != EPERM) return {};
    return port + Msg(": brak uprawnień.\nDodaj użytkownika do grupy dialout:\n"
                      "sudo usermod -a -G dialout $USER\ni zaloguj się ponownie.",
                      ": permission denied.\nAdd the user to the dialout group:\n"
                      "sudo usermod -a -G dialout $USER\nand log in again.");
#endif
  }

  Drukarka& Printer() override {
    return printer_;
  }

  void ShowAnswer() override {
    if (answer_form_ && answer_form_->HasControl("Answer"))
      answer_form_->SetText("Answer", Displayable(printer_.answer));
  }

 private:
  Drukarka printer_;
  UsbClass usb_;
  FormFields* answer_form_ = nullptr;
  std::string last_port_;
};

}  // namespace

std::unique_ptr<PrinterLink> MakeCorePrinterLink() {
  return std::make_unique<CorePrinterLink>();
}

}  // namespace tavena

// "Informacje o portach szeregowych": the summary of every numbered serial
// port the system lists, the present ones or all it knows, one line per
// list entry. Nothing is searched until a menu item is chosen.
#pragma once

#include <memory>
#include <string>

#include "windows/Baseform.h"

namespace Ui {
class TSerialPortsForm;
}

namespace tavena {

class TSerialPortsForm : public TBaseForm {
  Q_OBJECT

 public:
  explicit TSerialPortsForm(QWidget* parent = nullptr);
  ~TSerialPortsForm() override;

  // Linux: the sysfs root the discovery reads (tests point it at a fixture).
  void SetSysfsRoot(std::string root) { sysfs_root_ = std::move(root); }

 public slots:
  void Portyzainstalowane1Click();
  void Wszystkieporty1Click();
  void Zakocz1Click();

 protected:
  void FormShow() override;
  void FormResize() override;

 private:
  void ShowPorts(bool all_devices);
  void FitListBox();

  std::unique_ptr<Ui::TSerialPortsForm> ui;
  std::string sysfs_root_ = "/sys";
};

}  // namespace tavena

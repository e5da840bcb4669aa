// Behaviour every window shares: the system's form events (FormShow,
// FormResize, FormDeactivate, FormCloseQuery, FormClose) mapped onto Qt's
// events, a kept place, the printer reached through the main window, and
// control look-up by name within the window itself.
#pragma once

#include <QAction>
#include <QMainWindow>
#include <functional>
#include <initializer_list>
#include <utility>

#include "app/Settings.h"

class QLabel;

namespace tavena {

class PrinterAccess;

class TBaseForm : public QMainWindow {
  Q_OBJECT

 public:
  explicit TBaseForm(QWidget* parent = nullptr);

  // Keeps the window's place in place: restored on show (without recording
  // while it moves there), recorded on resize, move and deactivation; the
  // showing flag is set on show and cleared on close.
  void KeepPlaceIn(WindowPlace* place) { place_ = place; }
  // The printer, as the main window lends it (null until set).
  void SetPrinterAccess(PrinterAccess* access) { printer_ = access; }
  PrinterAccess* Printer() const { return printer_; }

 protected:
  virtual void FormShow() {}
  virtual void FormResize() {}
  virtual void FormDeactivate() {}
  virtual bool FormCloseQuery() { return true; }
  virtual void FormClose() {}

  void showEvent(QShowEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void moveEvent(QMoveEvent* event) override;
  void changeEvent(QEvent* event) override;
  void closeEvent(QCloseEvent* event) override;

 private:
  void RecordPlace();

  WindowPlace* place_ = nullptr;
  PrinterAccess* printer_ = nullptr;
  bool restoring_ = false;
};

// Places the window at the kept place when a width and height are kept,
// otherwise centres it on its screen.
void RestorePlace(QWidget& window, WindowPlace place);
// Keeps top, left, width and height (the showing flag is left alone).
void KeepPlace(const QWidget& window, WindowPlace& place);
// (screen size - window size) / 2, truncated.
void CentreOnScreen(QWidget& window);
// Shows the window unless it is showing; then brings it forward.
void ShowWindow(QWidget* window);

// The control named name on form's own widget tree: other windows that are
// form's children (and menus) are not searched.
QWidget* FindControl(const QWidget* form, const QString& name);
template <typename T>
T* FindControl(const QWidget* form, const QString& name) {
  return qobject_cast<T*>(FindControl(form, name));
}

// Connects each menu action's triggered signal to its handler on form.
template <typename Form>
void ConnectActions(Form* form,
                    std::initializer_list<std::pair<QAction*, void (Form::*)()>> actions) {
  for (const auto& [action, handler] : actions)
    QObject::connect(action, &QAction::triggered, form, handler);
}

// Runs handler when the label is clicked with the left button.
void OnLabelClick(QLabel* label, std::function<void()> handler);

}  // namespace tavena

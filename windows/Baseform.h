// Behaviour every window shares: the system's form events (FormShow,
// FormResize, FormDeactivate, FormCloseQuery, FormClose) mapped onto Qt's
// events, and keeping a window's place.
#pragma once

#include <QMainWindow>

#include "app/Settings.h"

namespace tavena {

class TBaseForm : public QMainWindow {
  Q_OBJECT

 public:
  explicit TBaseForm(QWidget* parent = nullptr);

 protected:
  virtual void FormShow() {}
  virtual void FormResize() {}
  virtual void FormDeactivate() {}
  virtual bool FormCloseQuery() { return true; }
  virtual void FormClose() {}

  void showEvent(QShowEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void changeEvent(QEvent* event) override;
  void closeEvent(QCloseEvent* event) override;
};

// Places the window at the kept place when a width and height are kept,
// otherwise centres it on its screen.
void RestorePlace(QWidget& window, const WindowPlace& place);
// Keeps top, left, width and height (the showing flag is left alone).
void KeepPlace(const QWidget& window, WindowPlace& place);
// (screen size - window size) / 2, truncated.
void CentreOnScreen(QWidget& window);
// Shows the window unless it is showing; then brings it forward.
void ShowWindow(QWidget* window);

}  // namespace tavena

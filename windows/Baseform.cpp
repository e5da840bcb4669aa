#include "Baseform.h"

#include <QCloseEvent>
#include <QGuiApplication>
#include <QScreen>
#include <QShowEvent>

namespace tavena {

TBaseForm::TBaseForm(QWidget* parent) : QMainWindow(parent) {}

void TBaseForm::showEvent(QShowEvent* event) {
  QMainWindow::showEvent(event);
  if (!event->spontaneous()) FormShow();
}

void TBaseForm::resizeEvent(QResizeEvent* event) {
  QMainWindow::resizeEvent(event);
  FormResize();
}

void TBaseForm::changeEvent(QEvent* event) {
  QMainWindow::changeEvent(event);
  if (event->type() == QEvent::ActivationChange && !isActiveWindow()) FormDeactivate();
}

void TBaseForm::closeEvent(QCloseEvent* event) {
  if (!FormCloseQuery()) {
    event->ignore();
    return;
  }
  FormClose();
  event->accept();
}

void RestorePlace(QWidget& window, const WindowPlace& place) {
  if (place.width != 0 && place.height != 0) {
    window.resize(place.width, place.height);
    window.move(place.left, place.top);
  } else {
    CentreOnScreen(window);
  }
}

void KeepPlace(const QWidget& window, WindowPlace& place) {
  if (!window.isVisible()) return;  // not yet placed, or already gone
  place.top = window.y();
  place.left = window.x();
  place.width = window.width();
  place.height = window.height();
}

void CentreOnScreen(QWidget& window) {
  const QScreen* screen = window.screen() ? window.screen() : QGuiApplication::primaryScreen();
  if (!screen) return;
  const QRect area = screen->geometry();
  window.move(area.x() + (area.width() - window.width()) / 2,
              area.y() + (area.height() - window.height()) / 2);
}

void ShowWindow(QWidget* window) {
  if (!window) return;
  if (!window->isVisible()) window->show();
  window->raise();
  window->activateWindow();
}

}  // namespace tavena

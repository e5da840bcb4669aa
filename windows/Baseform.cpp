#include "Baseform.h"

#include <QCloseEvent>
#include <QGuiApplication>
#include <QLabel>
#include <QMouseEvent>
#include <QScreen>
#include <QShowEvent>

namespace tavena {

TBaseForm::TBaseForm(QWidget* parent) : QMainWindow(parent) {}

void TBaseForm::showEvent(QShowEvent* event) {
  QMainWindow::showEvent(event);
  if (event->spontaneous()) return;
  if (place_) {
    restoring_ = true;
    RestorePlace(*this, *place_);
    restoring_ = false;
    place_->showing = true;
  }
  FormShow();
}

void TBaseForm::resizeEvent(QResizeEvent* event) {
  QMainWindow::resizeEvent(event);
  FormResize();
  RecordPlace();
}

void TBaseForm::moveEvent(QMoveEvent* event) {
  QMainWindow::moveEvent(event);
  RecordPlace();
}

void TBaseForm::changeEvent(QEvent* event) {
  QMainWindow::changeEvent(event);
  if (event->type() != QEvent::ActivationChange || isActiveWindow()) return;
  FormDeactivate();
  RecordPlace();
}

void TBaseForm::closeEvent(QCloseEvent* event) {
  if (!FormCloseQuery()) {
    event->ignore();
    return;
  }
  FormClose();
  if (place_) place_->showing = false;
  event->accept();
}

void TBaseForm::RecordPlace() {
  if (place_ && !restoring_) KeepPlace(*this, *place_);
}

// The place is taken by value: resizing records into the kept place before
// the move reads it.
void RestorePlace(QWidget& window, WindowPlace place) {
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

QWidget* FindControl(const QWidget* form, const QString& name) {
  for (QObject* child : form->children()) {
    auto* widget = qobject_cast<QWidget*>(child);
    if (!widget || widget->isWindow()) continue;
    if (widget->objectName() == name) return widget;
    if (QWidget* found = FindControl(widget, name)) return found;
  }
  return nullptr;
}

namespace {

class LabelClick : public QObject {
 public:
  LabelClick(QLabel* label, std::function<void()> handler)
      : QObject(label), handler_(std::move(handler)) {}

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() == QEvent::MouseButtonRelease &&
        static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton) {
      const auto* label = static_cast<QLabel*>(watched);
      if (label->rect().contains(static_cast<QMouseEvent*>(event)->position().toPoint())) {
        handler_();
        return true;
      }
    }
    return QObject::eventFilter(watched, event);
  }

 private:
  std::function<void()> handler_;
};

}  // namespace

void OnLabelClick(QLabel* label, std::function<void()> handler) {
  label->installEventFilter(new LabelClick(label, std::move(handler)));
  label->setCursor(Qt::PointingHandCursor);
}

}  // namespace tavena

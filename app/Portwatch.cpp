#include "Portwatch.h"

#include <QCoreApplication>
#include <QTimer>

#ifdef _WIN32
#include <QAbstractNativeEventFilter>

#include <windows.h>

#include <dbt.h>
#elif defined(__linux__)
#include <sys/inotify.h>
#include <unistd.h>

#include <QFile>
#include <QSocketNotifier>
#endif

namespace tavena {

#ifdef _WIN32

// Windows broadcasts WM_DEVICECHANGE to every top-level window when a port
// arrives or leaves, or when the device tree changes.
class PortWatch::NativeFilter : public QAbstractNativeEventFilter {
 public:
  explicit NativeFilter(PortWatch& watch) : watch_(watch) {}

  bool nativeEventFilter(const QByteArray& type, void* message, qintptr*) override {
    if (type != "windows_generic_MSG") return false;
    const MSG* msg = static_cast<const MSG*>(message);
    if (msg->message == WM_DEVICECHANGE &&
        (msg->wParam == DBT_DEVICEARRIVAL || msg->wParam == DBT_DEVICEREMOVECOMPLETE ||
         msg->wParam == DBT_DEVNODES_CHANGED))
      watch_.Poke();
    return false;
  }

 private:
  PortWatch& watch_;
};

#else

class PortWatch::NativeFilter {};

#endif

PortWatch::PortWatch(QObject* parent) : QObject(parent), settle_(new QTimer(this)) {
  settle_->setSingleShot(true);
  settle_->setInterval(kSettleMs);
  connect(settle_, &QTimer::timeout, this, &PortWatch::Changed);
#ifdef _WIN32
  native_filter_ = std::make_unique<NativeFilter>(*this);
  QCoreApplication::instance()->installNativeEventFilter(native_filter_.get());
#else
  WatchFolder(QStringLiteral("/dev"));
#endif
}

PortWatch::~PortWatch() {
#ifdef _WIN32
  if (QCoreApplication* app = QCoreApplication::instance())
    app->removeNativeEventFilter(native_filter_.get());
#endif
  StopFolder();
}

bool PortWatch::Settling() const {
  return settle_->isActive();
}

void PortWatch::Poke() {
  settle_->start();
}

#ifdef __linux__

// Only entries coming and going count: a device node appears or leaves with
// its device; permission changes that follow are not ports changing.
bool PortWatch::WatchFolder(const QString& folder) {
  StopFolder();
  fd_ = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
  if (fd_ < 0) return false;
  const uint32_t mask = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO;
  if (inotify_add_watch(fd_, QFile::encodeName(folder).constData(), mask) < 0) {
    StopFolder();
    return false;
  }
  notifier_ = new QSocketNotifier(fd_, QSocketNotifier::Read, this);
  connect(notifier_, &QSocketNotifier::activated, this, &PortWatch::DrainEvents);
  return true;
}

void PortWatch::DrainEvents() {
  alignas(inotify_event) char buffer[4096];
  while (read(fd_, buffer, sizeof buffer) > 0) {
  }
  Poke();
}

void PortWatch::StopFolder() {
  delete notifier_;
  notifier_ = nullptr;
  if (fd_ >= 0) close(fd_);
  fd_ = -1;
}

#else

bool PortWatch::WatchFolder(const QString&) {
  return false;
}

void PortWatch::DrainEvents() {}

void PortWatch::StopFolder() {}

#endif

}  // namespace tavena

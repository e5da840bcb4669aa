// Tells when serial devices may have come or gone, without polling: on Linux
// through inotify on the device folder (/dev), read by a QSocketNotifier; on
// Windows through WM_DEVICECHANGE, seen by a native event filter. A burst of
// events (a node, its links, its permissions) is reported once, after the
// events have settled for kSettleMs; nothing runs while nothing changes.
#pragma once

#include <QObject>
#include <QString>
#include <memory>

class QSocketNotifier;
class QTimer;

namespace tavena {

class PortWatch : public QObject {
  Q_OBJECT

 public:
  static constexpr int kSettleMs = 500;

  // Starts watching the system's serial devices.
  explicit PortWatch(QObject* parent = nullptr);
  ~PortWatch() override;

  // Linux: watches entries coming and going in folder instead of /dev
  // (tests). False when the folder cannot be watched.
  bool WatchFolder(const QString& folder);
  // True while events wait for the settle time to pass.
  bool Settling() const;

 signals:
  // Devices may have come or gone; the receiver looks at the ports again.
  void Changed();

 public slots:
  // A device event: the report follows once events have settled.
  void Poke();

 private:
  void StopFolder();
  void DrainEvents();

  QTimer* settle_;
  int fd_ = -1;
  QSocketNotifier* notifier_ = nullptr;
  class NativeFilter;
  std::unique_ptr<NativeFilter> native_filter_;
};

}  // namespace tavena

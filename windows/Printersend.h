// The one "send through the printer" step of the editors and the sender:
// ready byte streams go to the main window's printer in blocks confirmed by
// ENQ, while a progress bar (bytes confirmed of the total) and a "Przerwij"
// button stand in the window's status bar. The channel lets the window run
// meanwhile; "Przerwij" ends the send after the block in flight, so the
// printer only ever gets whole blocks, which end with a frame's ESC \.
#pragma once

#include <QObject>
#include <functional>
#include <vector>

#include "sequence/Ibuffer.h"

class QProgressBar;
class QPushButton;

namespace tavena {

class Drukarka;
class TBaseForm;

enum class SendOutcome {
  kSent,     // every stream confirmed
  kFailed,   // the printer could not be opened, or a block was not confirmed
  kStopped,  // "Przerwij"
  kBusy,     // another exchange holds the printer; nothing was sent
};

class PrinterSend : public QObject {
  Q_OBJECT

 public:
  // Blocks are cut after the frame end that takes them over this many bytes.
  static constexpr int kBlockLimit = 512;

  explicit PrinterSend(TBaseForm& window);

  // Opens the printer, sends the streams in order until one is not
  // confirmed, runs after on the open printer once all were sent, and closes
  // it. A stream shorter than two bytes sends nothing and counts as sent.
  SendOutcome Send(const std::vector<iBuffer>& streams,
                   const std::function<void(Drukarka&)>& after = {});
  bool Sending() const { return sending_; }

 public slots:
  // "Przerwij": no further block after the one in flight.
  void Stop() { stop_ = true; }

 signals:
  // After each confirmed block: bytes confirmed so far of all streams.
  void Progress(qint64 done, qint64 total);

 private:
  SendOutcome SendAll(Drukarka& printer, const std::vector<iBuffer>& streams);
  void ShowProgress(qint64 done);
  void ShowBar(bool on);

  TBaseForm& window_;
  QProgressBar* bar_;
  QPushButton* stop_button_;
  qint64 total_ = 0;
  bool sending_ = false;
  bool stop_ = false;
};

// Waits 1000 ms, then reads into the cleared reply what the printer
// answered: at most count bytes (count < 1: as many as reply has room for),
// converted from Mazovia.
void ReadReply(Drukarka& printer, iBuffer& reply, int count);

}  // namespace tavena

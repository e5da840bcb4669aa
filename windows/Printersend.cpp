#include "Printersend.h"

#include <QProgressBar>
#include <QPushButton>
#include <QStatusBar>

#include "app/Printeraccess.h"
#include "app/Texts.h"
#include "sequence/Clock.h"
#include "sequence/Messagelanguage.h"
#include "windows/Baseform.h"

namespace tavena {

namespace {

constexpr int kStatusMs = 10000;

}  // namespace

PrinterSend::PrinterSend(TBaseForm& window)
    : QObject(&window),
      window_(window),
      bar_(new QProgressBar),
      stop_button_(new QPushButton(FromUtf8("Przerwij"))) {
  bar_->setObjectName(QStringLiteral("Postep"));
  bar_->setFormat(FromUtf8(MsgUtf8("%v z %m bajtów", "%v of %m bytes")));
  stop_button_->setObjectName(QStringLiteral("Przerwij"));
  window.statusBar()->addPermanentWidget(bar_, 1);
  window.statusBar()->addPermanentWidget(stop_button_);
  connect(stop_button_, &QPushButton::clicked, this, &PrinterSend::Stop);
  ShowBar(false);
}

SendOutcome PrinterSend::Send(const std::vector<iBuffer>& streams,
                              const std::function<void(Drukarka&)>& after) {
  PrinterAccess* access = window_.Printer();
  if (!access) return SendOutcome::kFailed;
  if (sending_ || access->PrinterBusy()) {
    window_.statusBar()->showMessage(
        FromUtf8(MsgUtf8("Drukarka jest zajęta.", "The printer is busy.")), kStatusMs);
    return SendOutcome::kBusy;
  }
  total_ = 0;
  for (const iBuffer& stream : streams) total_ += stream.Length();
  sending_ = true;
  stop_ = false;
  ShowBar(true);
  ShowProgress(0);
  SendOutcome outcome = SendOutcome::kFailed;
  {
    PrinterSession session(*access);
    if (session.IsOpen()) {
      outcome = SendAll(*session, streams);
      if (outcome == SendOutcome::kSent && after) after(*session);
    }
  }
  ShowBar(false);
  sending_ = false;
  if (outcome == SendOutcome::kStopped)
    window_.statusBar()->showMessage(
        FromUtf8(MsgUtf8("Przerwano: wysłano %1 z %2 bajtów.", "Stopped: %1 of %2 bytes sent."))
            .arg(bar_->value())
            .arg(total_),
        kStatusMs);
  return outcome;
}

// A stop closes the channel once a block is confirmed, so the next block
// cannot go out and the stream ends there.
SendOutcome PrinterSend::SendAll(Drukarka& printer, const std::vector<iBuffer>& streams) {
  qint64 before = 0;
  bool stopped = false;
  const auto kept = printer.stream_progress;
  printer.stream_progress = [&](size_t done, size_t total) {
    ShowProgress(before + static_cast<qint64>(done));
    if (stop_ && done < total) {
      stopped = true;
      printer.Close();
    }
  };
  SendOutcome outcome = SendOutcome::kSent;
  for (const iBuffer& stream : streams) {
    if (stop_) {
      outcome = SendOutcome::kStopped;
      break;
    }
    if (!printer.SendStreamConfirmed(stream, kBlockLimit)) {
      outcome = stopped ? SendOutcome::kStopped : SendOutcome::kFailed;
      break;
    }
    before += stream.Length();
    ShowProgress(before);
  }
  printer.stream_progress = kept;
  return outcome;
}

void PrinterSend::ShowProgress(qint64 done) {
  bar_->setMaximum(static_cast<int>(std::max<qint64>(total_, 1)));
  bar_->setValue(static_cast<int>(done));
  emit Progress(done, total_);
}

void PrinterSend::ShowBar(bool on) {
  bar_->setVisible(on);
  stop_button_->setVisible(on);
}

void ReadReply(Drukarka& printer, iBuffer& reply, int count) {
  SleepMs(1000);
  reply.Clear();
  printer.com.ReadCount(reply, count);
  reply.FromMazovia();
}

}  // namespace tavena

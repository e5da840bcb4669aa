#include "Simulator.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QFileInfo>
#include <QStandardPaths>

#ifdef __linux__
#include <sys/prctl.h>

#include <csignal>
#endif

namespace tavena {

SimulatorProcess::~SimulatorProcess() {
  Stop();
}

bool SimulatorProcess::Start(const QString& program, const QString& model, int timeout_ms) {
  QStringList arguments;
  if (!model.isEmpty()) arguments << QStringLiteral("--model") << model;
  // The simulator's exchange log is kept short in memory: it only matters
  // when the start fails, and an unread pipe would stall the simulator.
  process_.setProcessChannelMode(QProcess::SeparateChannels);
#ifdef __linux__
  // The simulator ends with the program, also when the program is killed.
  process_.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGTERM); });
#endif
  QObject::connect(&process_, &QProcess::readyReadStandardError, [this] { KeepLog(); });
  process_.start(program, arguments, QIODevice::ReadOnly);
  if (!process_.waitForStarted(timeout_ms)) {
    error_ = process_.errorString();
    return false;
  }
  const QDeadlineTimer deadline(timeout_ms);
  while (!process_.canReadLine() && !deadline.hasExpired() && process_.state() == QProcess::Running)
    process_.waitForReadyRead(static_cast<int>(deadline.remainingTime()));
  path_ = process_.readLine().trimmed().toStdString();
  if (path_.empty()) {
    KeepLog();
    error_ = QStringLiteral("tavena-sim printed no terminal path: ") + QString::fromLocal8Bit(log_);
    Stop();
    return false;
  }
  return true;
}

void SimulatorProcess::Stop() {
  if (process_.state() == QProcess::NotRunning) return;
  process_.terminate();
  if (!process_.waitForFinished(2000)) {
    process_.kill();
    process_.waitForFinished(2000);
  }
}

void SimulatorProcess::KeepLog() {
  log_ += process_.readAllStandardError();
  if (log_.size() > kLogLimit) log_.remove(0, log_.size() - kLogLimit);
}

QString SimulatorProcess::FindProgram() {
  const QString here = QCoreApplication::applicationDirPath();
  for (const QString& candidate :
       {here + QStringLiteral("/tavena-sim"), here + QStringLiteral("/../sim/tavena-sim")})
    if (QFileInfo(candidate).isExecutable()) return QFileInfo(candidate).canonicalFilePath();
  return QStandardPaths::findExecutable(QStringLiteral("tavena-sim"));
}

}  // namespace tavena

// The simulated printer of --simulate: tavena-sim run as a child process,
// serving a pseudo-terminal whose path is the first line of its output.
#pragma once

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <string>

namespace tavena {

class SimulatorProcess {
 public:
  SimulatorProcess() = default;
  // Stops the simulator.
  ~SimulatorProcess();
  SimulatorProcess(const SimulatorProcess&) = delete;
  SimulatorProcess& operator=(const SimulatorProcess&) = delete;

  // Starts program (with the model when not empty) and waits up to
  // timeout_ms for the terminal's path. False, with Error() set, when it
  // does not start or prints no path.
  bool Start(const QString& program, const QString& model, int timeout_ms = 5000);
  void Stop();
  const std::string& Path() const { return path_; }
  const QString& Error() const { return error_; }

  // The tavena-sim program: beside this program, in the build tree, or on
  // the PATH; empty when none is found.
  static QString FindProgram();

 private:
  static constexpr qsizetype kLogLimit = 4096;
  void KeepLog();

  QProcess process_;
  QByteArray log_;  // the end of the simulator's own log
  std::string path_;
  QString error_;
};

}  // namespace tavena

// What the command-line tool needs of the host: the arguments in UTF-8, a
// UTF-8 terminal, whether standard output is a terminal, the folder of
// language.tav, the advice for a port that cannot be opened, and a wait for
// serial devices to come or go.
#pragma once

#include <memory>
#include <string>
#include <vector>

namespace tavena {

// The program's arguments (argv[0] included) as UTF-8.
std::vector<std::string> Utf8Arguments(int argc, char** argv);
// A file name from the command line (UTF-8) as the C library opens it: the
// ANSI code page on Windows, unchanged elsewhere.
std::string NativePath(const std::string& utf8);
// Makes the terminal show UTF-8 (Windows console); nothing elsewhere.
void PrepareTerminal();
bool StdoutIsTerminal();
// Folder of config.tav and language.tav: $XDG_CONFIG_HOME/tavena (default
// ~/.config/tavena) on Linux, the program's folder on Windows.
std::string ConfigFolder();
// One UTF-8 sentence on why a port could not be opened, from the system's
// error number of the open; empty when there is nothing to add.
std::string OpenFailureAdvice(int system_error);

// Waits for serial devices to come or go, until Ctrl+C (or SIGTERM). Linux:
// inotify on /dev, or on <sysfs_root>/class/tty when a sysfs root is given
// (tests), reported once events have settled. Windows: once a second (a
// console program has no window for WM_DEVICECHANGE).
class DeviceChanges {
 public:
  explicit DeviceChanges(const std::string& sysfs_root);
  ~DeviceChanges();
  DeviceChanges(const DeviceChanges&) = delete;
  DeviceChanges& operator=(const DeviceChanges&) = delete;
  // False when the devices cannot be watched.
  bool Watching() const;
  // True when devices may have changed; false once interrupted.
  bool Wait();

 private:
  struct Host;
  std::unique_ptr<Host> host_;
};

}  // namespace tavena

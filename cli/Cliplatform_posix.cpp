#include <poll.h>
#include <signal.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>

#include "Cliplatform.h"
#include "sequence/Messagelanguage.h"

namespace tavena {

namespace {

constexpr int kSettleMs = 500;

volatile std::sig_atomic_t g_interrupted = 0;

void OnInterrupt(int) {
  g_interrupted = 1;
}

// Reads what inotify has; true when there was something.
bool DrainEvents(int fd) {
  alignas(inotify_event) char buffer[4096];
  bool any = false;
  while (read(fd, buffer, sizeof buffer) > 0) any = true;
  return any;
}

// Waits up to ms (-1: no limit) for events; true when some came. SIGINT and
// SIGTERM are blocked but while waiting, so none is lost between the check
// of the flag and the wait.
bool EventsWithin(int fd, int ms, const sigset_t& waiting_mask) {
  pollfd p{fd, POLLIN, 0};
  timespec limit{ms / 1000, (ms % 1000) * 1000000L};
  return ppoll(&p, 1, ms < 0 ? nullptr : &limit, &waiting_mask) > 0 && DrainEvents(fd);
}

}  // namespace

struct DeviceChanges::Host {
  int fd = -1;
  sigset_t waiting_mask;
};

DeviceChanges::DeviceChanges(const std::string& sysfs_root) : host_(std::make_unique<Host>()) {
  struct sigaction action {};
  action.sa_handler = OnInterrupt;
  sigemptyset(&action.sa_mask);
  sigaction(SIGINT, &action, nullptr);
  sigaction(SIGTERM, &action, nullptr);
  sigset_t stops;
  sigemptyset(&stops);
  sigaddset(&stops, SIGINT);
  sigaddset(&stops, SIGTERM);
  sigprocmask(SIG_BLOCK, &stops, &host_->waiting_mask);
  const std::string folder = sysfs_root.empty() ? "/dev" : sysfs_root + "/class/tty";
  host_->fd = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
  const uint32_t mask = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO;
  if (host_->fd >= 0 && inotify_add_watch(host_->fd, folder.c_str(), mask) < 0) {
    close(host_->fd);
    host_->fd = -1;
  }
}

DeviceChanges::~DeviceChanges() {
  if (host_->fd >= 0) close(host_->fd);
}

bool DeviceChanges::Watching() const {
  return host_->fd >= 0;
}

// A burst of events (a node, its links, its permissions) counts once.
bool DeviceChanges::Wait() {
  while (!g_interrupted) {
    if (!EventsWithin(host_->fd, -1, host_->waiting_mask)) continue;
    while (!g_interrupted && EventsWithin(host_->fd, kSettleMs, host_->waiting_mask)) {
    }
    return !g_interrupted;
  }
  return false;
}

std::vector<std::string> Utf8Arguments(int argc, char** argv) {
  return std::vector<std::string>(argv, argv + argc);
}

std::string NativePath(const std::string& utf8) {
  return utf8;
}

void PrepareTerminal() {}

bool StdoutIsTerminal() {
  return isatty(STDOUT_FILENO) == 1;
}

std::string ConfigFolder() {
  const char* xdg = std::getenv("XDG_CONFIG_HOME");
  if (xdg != nullptr && *xdg != '\0') return std::string(xdg) + "/tavena";
  const char* home = std::getenv("HOME");
  return std::string(home != nullptr ? home : ".") + "/.config/tavena";
}

std::string OpenFailureAdvice(int system_error) {
  if (system_error == EACCES || system_error == EPERM)
    return MsgUtf8(
        "Brak uprawnień do portu: dodaj użytkownika do grupy dialout "
        "(sudo usermod -aG dialout $USER) i zaloguj się ponownie.",
        "No permission for the port: add the user to the dialout group "
        "(sudo usermod -aG dialout $USER) and log in again.");
  if (system_error == ENOENT || system_error == ENXIO || system_error == ENODEV)
    return MsgUtf8("Nie ma takiego portu.", "There is no such port.");
  if (system_error == EBUSY) return MsgUtf8("Port jest zajęty.", "The port is busy.");
  return {};
}

}  // namespace tavena

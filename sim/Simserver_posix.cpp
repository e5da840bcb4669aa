#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <string>

#include "Simserver.h"
#include "sequence/Clock.h"
#include "sequence/Codepage.h"

namespace tavena {

namespace {

volatile std::sig_atomic_t g_stop = 0;

void OnStopSignal(int) {
  g_stop = 1;
}

void InstallSignals() {
  struct sigaction action {};
  action.sa_handler = OnStopSignal;
  sigemptyset(&action.sa_mask);
  sigaction(SIGINT, &action, nullptr);
  sigaction(SIGTERM, &action, nullptr);
  signal(SIGPIPE, SIG_IGN);
}

int BaudOf(speed_t s) {
  static const std::pair<speed_t, int> table[] = {
      {B1200, 1200},     {B2400, 2400},     {B4800, 4800},     {B9600, 9600},
      {B19200, 19200},   {B38400, 38400},   {B57600, 57600},   {B115200, 115200},
      {B230400, 230400}, {B460800, 460800}, {B921600, 921600},
  };
  for (const auto& [code, baud] : table)
    if (code == s) return baud;
  return 0;
}

speed_t SpeedOf(int baud) {
  switch (baud) {
    case 1200:
      return B1200;
    case 2400:
      return B2400;
    case 4800:
      return B4800;
    case 19200:
      return B19200;
    case 38400:
      return B38400;
    case 57600:
      return B57600;
    case 115200:
      return B115200;
    default:
      return B9600;
  }
}

// The pseudo-terminal pair. The server keeps a slave descriptor of its own
// open, so a client may close and reopen the slave without the master
// seeing a hang-up.
class Pty {
 public:
  ~Pty() {
    if (slave_ >= 0) close(slave_);
    if (master_ >= 0) close(master_);
  }
  bool Open(int baud, std::string& error) {
    master_ = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK);
    char name[256] = {};
    if (master_ < 0 || grantpt(master_) != 0 || unlockpt(master_) != 0 ||
        ptsname_r(master_, name, sizeof name) != 0) {
      error = std::string("cannot open a pseudo-terminal: ") + std::strerror(errno);
      return false;
    }
    path_ = name;
    slave_ = open(name, O_RDWR | O_NOCTTY | O_NONBLOCK);
    termios t{};
    if (slave_ < 0 || tcgetattr(slave_, &t) != 0) {
      error = "cannot open " + path_ + ": " + std::strerror(errno);
      return false;
    }
    cfmakeraw(&t);
    t.c_cflag |= CLOCAL | CREAD;
    cfsetispeed(&t, SpeedOf(baud));
    cfsetospeed(&t, SpeedOf(baud));
    tcsetattr(slave_, TCSANOW, &t);
    return true;
  }
  int ClientBaud() const {
    termios t{};
    return tcgetattr(slave_, &t) == 0 ? BaudOf(cfgetospeed(&t)) : 0;
  }
  int Master() const { return master_; }
  const std::string& Path() const { return path_; }

 private:
  int master_ = -1;
  int slave_ = -1;
  std::string path_;
};

bool MakeLink(const std::string& link, const std::string& target, std::string& error) {
  struct stat st {};
  if (lstat(link.c_str(), &st) == 0) {
    if (!S_ISLNK(st.st_mode)) {
      error = link + " exists and is not a symbolic link";
      return false;
    }
    unlink(link.c_str());
  }
  if (symlink(target.c_str(), link.c_str()) != 0) {
    error = "cannot make the link " + link + ": " + std::strerror(errno);
    return false;
  }
  return true;
}

// The raw copy of what the client sent: written unbuffered, so a reader sees
// every byte as soon as the printer has it.
class RecordFile {
 public:
  ~RecordFile() {
    if (fd_ >= 0) close(fd_);
  }
  bool Open(const std::string& path, std::string& error) {
    if (path.empty()) return true;
    fd_ = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd_ >= 0) return true;
    error = "cannot open the record file " + path + ": " + std::strerror(errno);
    return false;
  }
  // False when the file took fewer bytes than it was given.
  bool Write(const char* bytes, size_t n) {
    while (fd_ >= 0 && n > 0) {
      const ssize_t done = write(fd_, bytes, n);
      if (done < 0 && errno == EINTR) continue;
      if (done <= 0) return false;
      bytes += done;
      n -= static_cast<size_t>(done);
    }
    return true;
  }

 private:
  int fd_ = -1;
};

class Server {
 public:
  Server(SimPrinter& printer, const SimServerOptions& options, std::FILE* log)
      : printer_(printer), options_(options), log_(log) {}

  int Run(std::FILE* out) {
    std::string error;
    if (!record_.Open(options_.record, error)) return Fail(error);
    if (!pty_.Open(printer_.Baud(), error)) return Fail(error);
    if (!options_.link.empty() && !MakeLink(options_.link, pty_.Path(), error)) return Fail(error);
    std::fprintf(out, "%s\n", pty_.Path().c_str());
    std::fflush(out);
    printer_.SetLogSink([this](const std::string& line) { Log(Cp1250ToUtf8(line)); });
    Log("serving " + printer_.Model().name + " at " + std::to_string(printer_.Baud()) + " bd on " +
        pty_.Path() + (options_.link.empty() ? "" : " (" + options_.link + ")"));
    InstallSignals();
    KeepLogFromBlocking();
    while (!g_stop && !printer_.LineClosed()) {
      if (!Step()) break;
    }
    Log(g_stop ? "stopped" : "line closed");
    if (!options_.link.empty()) unlink(options_.link.c_str());
    return 0;
  }

 private:
  int Fail(const std::string& error) {
    std::fprintf(log_, "tavena-sim: %s\n", error.c_str());
    return 1;
  }

  // A log on a pipe nobody reads must not stall the printer: lines are
  // dropped instead. (A terminal or file is left as it is.)
  void KeepLogFromBlocking() {
    struct stat st {};
    const int fd = fileno(log_);
    if (fstat(fd, &st) == 0 && S_ISFIFO(st.st_mode))
      fcntl(fd, F_SETFL, fcntl(fd, F_GETFL) | O_NONBLOCK);
  }

  void Log(const std::string& line) {
    if (options_.quiet) return;
    std::fprintf(log_, "%s%s\n", SimLogStamp().c_str(), line.c_str());
    std::fflush(log_);
  }

  // One round: wait for input or the next answer byte, pass input to the
  // printer, write what has arrived at the client's end.
  bool Step() {
    pollfd p{pty_.Master(), POLLIN, 0};
    const int rc = poll(&p, 1, WaitMs());
    if (rc < 0 && errno != EINTR) return false;
    if (rc > 0 && (p.revents & POLLIN)) ReadInput();
    WriteOutput();
    return true;
  }

  int WaitMs() {
    const int64_t next = printer_.NextReadyMs();
    if (!pending_.empty()) return 5;
    if (next < 0) return 50;
    const int64_t wait = next - NowMs();
    return static_cast<int>(wait < 0 ? 0 : wait > 50 ? 50 : wait);
  }

  void ReadInput() {
    char buffer[4096];
    const ssize_t n = read(pty_.Master(), buffer, sizeof buffer);
    if (n <= 0) return;
    if (!record_.Write(buffer, static_cast<size_t>(n)) && !record_failed_) {
      record_failed_ = true;
      std::fprintf(log_, "tavena-sim: cannot write the record file %s: %s\n",
                   options_.record.c_str(), std::strerror(errno));
    }
    if (options_.enforce_baud) {
      const int baud = pty_.ClientBaud();
      if (baud != client_baud_) Log("client speed " + std::to_string(baud) + " bd");
      client_baud_ = baud;
      printer_.SetClientBaud(baud);
    }
    Log("received " + Cp1250ToUtf8(SimReadable(std::string(buffer, static_cast<size_t>(n)))));
    printer_.Receive(std::string_view(buffer, static_cast<size_t>(n)), NowMs());
  }

  void WriteOutput() {
    pending_ += printer_.Take(NowMs());
    if (pending_.empty()) return;
    const ssize_t n = write(pty_.Master(), pending_.data(), pending_.size());
    if (n > 0) pending_.erase(0, static_cast<size_t>(n));
    if (pending_.size() > kMaxPending) pending_.erase(0, pending_.size() - kMaxPending);
  }

  static constexpr size_t kMaxPending = 65536;
  SimPrinter& printer_;
  const SimServerOptions& options_;
  std::FILE* log_;
  Pty pty_;
  RecordFile record_;
  bool record_failed_ = false;
  std::string pending_;
  int client_baud_ = -1;
};

}  // namespace

int ServeOnPty(SimPrinter& printer, const SimServerOptions& options, std::FILE* out,
               std::FILE* log) {
  g_stop = 0;
  Server server(printer, options, log);
  return server.Run(out);
}

}  // namespace tavena

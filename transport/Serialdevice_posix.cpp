// termios backend: raw 8N1, no flow control in the driver, non-blocking
// descriptor with poll() so no read or write outlives its time-out.
#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>

#include "Serialdevice.h"

namespace tavena {

namespace {

int64_t MonotonicMs() {
  timespec ts{};
  clock_gettime(CLOCK_MONOTONIC, &ts);
  return static_cast<int64_t>(ts.tv_sec) * 1000 + ts.tv_nsec / 1000000;
}

speed_t SpeedOf(int32_t baud) {
  struct Entry {
    int32_t baud;
    speed_t speed;
  };
  static constexpr Entry kSpeeds[] = {
      {1200, B1200},       {2400, B2400},       {4800, B4800},       {9600, B9600},
      {19200, B19200},     {38400, B38400},     {57600, B57600},     {115200, B115200},
      {230400, B230400},   {460800, B460800},   {500000, B500000},   {576000, B576000},
      {921600, B921600},   {1000000, B1000000}, {1152000, B1152000}, {1500000, B1500000},
      {2000000, B2000000}, {300, B300},         {600, B600},
  };
  for (const Entry& e : kSpeeds)
    if (e.baud == baud) return e.speed;
  return B0;
}

// The errors of a device that is no longer there: a hung-up terminal answers
// EIO, a removed driver ENODEV or ENXIO.
bool VanishedError(int error) {
  return error == EIO || error == ENODEV || error == ENXIO;
}

enum class Readiness { kReady, kTimedOut, kHungUp };

// Waits for the descriptor to become ready for events.
Readiness WaitReady(int fd, short events, int64_t wait_ms) {
  if (wait_ms < 0) wait_ms = 0;
  pollfd p{fd, events, 0};
  int r;
  do r = poll(&p, 1, static_cast<int>(wait_ms));
  while (r < 0 && errno == EINTR);
  if (r > 0 && (p.revents & (POLLHUP | POLLERR | POLLNVAL)) != 0) return Readiness::kHungUp;
  return r > 0 && (p.revents & events) != 0 ? Readiness::kReady : Readiness::kTimedOut;
}

class PosixSerialDevice : public SerialDevice {
 public:
  explicit PosixSerialDevice(int fd) : fd_(fd) {}
  ~PosixSerialDevice() override { Close(); }

  // Only the receive queue is cleared. Writes have drained before they
  // return, and tcflush(TCOFLUSH) would also throw away what the other end
  // of a pseudo-terminal has not read yet. Aborts: no request is ever pending.
  bool Purge(uint32_t flags) override {
    if ((flags & kPurgeRxClear) == 0) return true;
    return tcflush(fd_, TCIFLUSH) == 0;
  }

  bool ClearErrors(uint32_t& in_queue, uint32_t& out_queue) override {
    int in = 0, out = 0;
    if (ioctl(fd_, FIONREAD, &in) != 0) return Failed();
    if (ioctl(fd_, TIOCOUTQ, &out) != 0) out = 0;
    in_queue = static_cast<uint32_t>(in > 0 ? in : 0);
    out_queue = static_cast<uint32_t>(out > 0 ? out : 0);
    return true;
  }

  bool Configure(const LineSettings& line, const SerialTimeouts& timeouts) override {
    timeouts_ = timeouts;
    termios t{};
    if (tcgetattr(fd_, &t) != 0) return false;
    cfmakeraw(&t);
    t.c_cflag |= CLOCAL | CREAD;
    t.c_cflag &= ~(CRTSCTS | PARENB | CSTOPB | CSIZE);
    t.c_cflag |= CS8;
    t.c_iflag &= ~(IXON | IXOFF | IXANY);
    t.c_cc[VMIN] = 0;
    t.c_cc[VTIME] = 0;
    const speed_t speed = SpeedOf(line.baud_rate);
    if (speed != B0) cfsetspeed(&t, speed);
    const bool ok = tcsetattr(fd_, TCSANOW, &t) == 0 && speed != B0;
    ClearModemLines();
    return ok;
  }

  bool Read(uint8_t* dest, uint32_t max, uint32_t& got) override {
    got = 0;
    const int64_t deadline =
        MonotonicMs() + int64_t{timeouts_.read_multiplier} * max + timeouts_.read_constant;
    while (got < max) {
      const int64_t now = MonotonicMs();
      int64_t wait = deadline - now;
      if (got > 0 && timeouts_.read_interval > 0 && timeouts_.read_interval < wait)
        wait = timeouts_.read_interval;
      const ssize_t r = read(fd_, dest + got, max - got);
      if (r > 0) {
        got += static_cast<uint32_t>(r);
        continue;
      }
      // Raw mode with VMIN 0 answers 0 when nothing waits.
      if (r < 0 && errno != EAGAIN && errno != EINTR) return Failed() || got > 0;
      if (wait <= 0 || !IsReady(WaitReady(fd_, POLLIN, wait))) break;
    }
    return true;
  }

  bool Write(const uint8_t* bytes, uint32_t n, uint32_t& written) override {
    written = 0;
    const int64_t deadline =
        MonotonicMs() + int64_t{timeouts_.write_multiplier} * n + timeouts_.write_constant;
    while (written < n) {
      const ssize_t r = write(fd_, bytes + written, n - written);
      if (r > 0) {
        written += static_cast<uint32_t>(r);
        continue;
      }
      if (r < 0 && errno != EAGAIN && errno != EINTR) return Failed();
      if (!IsReady(WaitReady(fd_, POLLOUT, deadline - MonotonicMs()))) break;
    }
    return Drain(deadline, written) && written == n;
  }

  bool WaitTransmitEmpty() override {
    uint32_t written = 0;
    return Drain(MonotonicMs() + timeouts_.write_constant, written);
  }

  void Close() override {
    if (fd_ < 0) return;
    close(fd_);
    fd_ = -1;
  }

  // Waits until the transmit queue is empty, then for the last bytes to
  // leave the hardware (tcdrain). At the deadline the bytes still queued are
  // dropped, as a timed-out WriteFile leaves them unsent, and taken off
  // written.
  bool Drain(int64_t deadline, uint32_t& written) {
    for (;;) {
      int out = 0;
      if (ioctl(fd_, TIOCOUTQ, &out) != 0) return Failed();
      if (out <= 0) break;
      if (MonotonicMs() >= deadline) {
        tcflush(fd_, TCOFLUSH);
        written -= std::min(written, static_cast<uint32_t>(out));
        return false;
      }
      const timespec pause{0, 1000000};
      nanosleep(&pause, nullptr);
    }
    int r;
    do r = tcdrain(fd_);
    while (r != 0 && errno == EINTR);
    return r == 0 || Failed();
  }

  bool Gone() const override { return gone_; }

  // Notes a device that has vanished (from errno); always false.
  bool Failed() {
    if (VanishedError(errno)) gone_ = true;
    return false;
  }

  // True when ready; a hang-up marks the device gone.
  bool IsReady(Readiness readiness) {
    if (readiness == Readiness::kHungUp) gone_ = true;
    return readiness == Readiness::kReady;
  }

  // DTR and RTS off; a pseudo-terminal refuses, which is harmless.
  void ClearModemLines() {
    int lines = TIOCM_DTR | TIOCM_RTS;
    ioctl(fd_, TIOCMBIC, &lines);
  }

 private:
  int fd_;
  SerialTimeouts timeouts_;
  bool gone_ = false;
};

}  // namespace

std::unique_ptr<SerialDevice> OpenHostSerialDevice(const std::string& port_name, int& error) {
  const std::string path = HostDevicePath(port_name);
  if (path.empty()) {
    error = ENOENT;
    return nullptr;
  }
  const int fd = open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
  if (fd < 0) {
    error = errno;
    return nullptr;
  }
  auto device = std::make_unique<PosixSerialDevice>(fd);
  if (!isatty(fd)) {
    error = ENOTTY;
    return nullptr;
  }
  device->ClearModemLines();
  // Nobody else may use the port while it is open (as on Windows).
  if (flock(fd, LOCK_EX | LOCK_NB) != 0) {
    error = errno == EWOULDBLOCK ? EBUSY : errno;
    return nullptr;
  }
  return device;
}

bool DetectWineHost() {
  return false;
}

}  // namespace tavena

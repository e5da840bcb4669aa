// End to end: the tavena-sim program on a real pseudo-terminal, in real time.
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

#include "TestSupport.h"
#include "sequence/Clock.h"
#include "transport/Fastcom.h"

extern char** environ;

namespace tavena {
namespace {

using Steady = std::chrono::steady_clock;

const std::string kProgram = std::string(TAVENA_BINARY_DIR) + "/sim/tavena-sim";

// The program with its standard output and error on pipes.
class SimProcess {
 public:
  explicit SimProcess(std::vector<std::string> args) {
    args.insert(args.begin(), kProgram);
    int out[2], err[2];
    if (pipe(out) != 0 || pipe(err) != 0) return;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, out[1], 1);
    posix_spawn_file_actions_adddup2(&actions, err[1], 2);
    std::vector<char*> argv;
    for (std::string& a : args) argv.push_back(a.data());
    argv.push_back(nullptr);
    if (posix_spawn(&pid_, kProgram.c_str(), &actions, nullptr, argv.data(), environ) != 0)
      pid_ = -1;
    posix_spawn_file_actions_destroy(&actions);
    close(out[1]);
    close(err[1]);
    out_ = out[0];
    err_ = err[0];
  }
  ~SimProcess() {
    if (pid_ > 0) {
      kill(pid_, SIGKILL);
      waitpid(pid_, nullptr, 0);
    }
    if (out_ >= 0) close(out_);
    if (err_ >= 0) close(err_);
  }
  bool Started() const { return pid_ > 0; }
  // The most memory the process has held so far, in kB (-1: unknown).
  long PeakKb() const {
    const std::string status = test::ReadFile("/proc/" + std::to_string(pid_) + "/status");
    const size_t at = status.find("VmHWM:");
    return at == std::string::npos ? -1 : std::atol(status.c_str() + at + 6);
  }
  // The first line of standard output, waiting at most timeout_ms.
  std::string FirstLine(int timeout_ms) {
    std::string line;
    char c;
    const auto end = Steady::now() + std::chrono::milliseconds(timeout_ms);
    while (Steady::now() < end) {
      pollfd p{out_, POLLIN, 0};
      if (poll(&p, 1, 50) <= 0) continue;
      if (read(out_, &c, 1) != 1 || c == '\n') break;
      line += c;
    }
    return line;
  }
  // Sends a signal and returns the exit status (-1 when it does not end in 5 s).
  int Stop(int signal_number) {
    kill(pid_, signal_number);
    for (int i = 0; i < 500; ++i) {
      int status = 0;
      if (waitpid(pid_, &status, WNOHANG) == pid_) {
        pid_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
      }
      usleep(10000);
    }
    return -1;
  }
  int Wait(int timeout_ms) {
    for (int i = 0; i < timeout_ms / 10; ++i) {
      int status = 0;
      if (waitpid(pid_, &status, WNOHANG) == pid_) {
        pid_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
      }
      usleep(10000);
    }
    return -1;
  }
  std::string ErrorText() {
    std::string text;
    char buffer[4096];
    pollfd p{err_, POLLIN, 0};
    while (poll(&p, 1, 100) > 0) {
      const ssize_t n = read(err_, buffer, sizeof buffer);
      if (n <= 0) break;
      text.append(buffer, static_cast<size_t>(n));
    }
    return text;
  }

 private:
  pid_t pid_ = -1;
  int out_ = -1;
  int err_ = -1;
};

// A client end of the terminal, raw, like a serial port.
class Client {
 public:
  explicit Client(const std::string& path, speed_t speed = B9600)
      : fd_(open(path.c_str(), O_RDWR | O_NOCTTY)) {
    termios t{};
    if (fd_ >= 0 && tcgetattr(fd_, &t) == 0) {
      cfmakeraw(&t);
      cfsetispeed(&t, speed);
      cfsetospeed(&t, speed);
      tcsetattr(fd_, TCSANOW, &t);
    }
  }
  ~Client() {
    if (fd_ >= 0) close(fd_);
  }
  bool Ok() const { return fd_ >= 0; }
  bool Send(const std::string& bytes) {
    return write(fd_, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
  }
  // Sends bytes and collects the answer until it ends with end, or the time is up.
  std::string Ask(const std::string& bytes, const std::string& end, int timeout_ms = 3000) {
    if (write(fd_, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) return "";
    std::string got;
    const auto deadline = Steady::now() + std::chrono::milliseconds(timeout_ms);
    while (Steady::now() < deadline &&
           (got.size() < end.size() || got.compare(got.size() - end.size(), end.size(), end))) {
      pollfd p{fd_, POLLIN, 0};
      if (poll(&p, 1, 50) <= 0) continue;
      char buffer[256];
      const ssize_t n = read(fd_, buffer, sizeof buffer);
      if (n > 0) got.append(buffer, static_cast<size_t>(n));
    }
    return got;
  }

 private:
  int fd_;
};

TEST(SimServerTest, ServesThePrinterOnThePrintedPath) {
  ASSERT_EQ(access(kProgram.c_str(), X_OK), 0) << "build the tavena-sim target first";
  test::TempDir dir;
  const std::string link = dir.file("printer");
  SimProcess sim({"--model", "QX-1:4", "--link", link, "--fixed-clock", "2012-05-31 23:59"});
  ASSERT_TRUE(sim.Started());
  const std::string path = sim.FirstLine(5000);
  ASSERT_EQ(path.rfind("/dev/pts/", 0), 0u) << path;
  char target[256] = {};
  ASSERT_GT(readlink(link.c_str(), target, sizeof target - 1), 0);
  EXPECT_EQ(std::string(target), path);

  // A client may close and open the port again and again.
  for (int round = 0; round < 3; ++round) {
    Client client(round == 1 ? link : path);
    ASSERT_TRUE(client.Ok());
    EXPECT_EQ(test::Hex(client.Ask("\x05", "\x65")), "65") << round;
    EXPECT_EQ(client.Ask("\x10\x1BP#v\x1B\\", "\x1B\\"), "\x74\x1BP4#RTAVENA QX-1/4.10\x1B\\");
    EXPECT_EQ(client.Ask("\x1BP0#c\x1B\\", "\x1B\\"), "\x1BP1#C12;05;31;23;59;00;A7\x1B\\");
  }
  EXPECT_EQ(sim.Stop(SIGTERM), 0);
  struct stat st {};
  EXPECT_NE(lstat(link.c_str(), &st), 0) << "the link is removed at the end";
  const std::string log = sim.ErrorText();
  EXPECT_NE(log.find("ENQ -> 0x65"), std::string::npos) << log;
  EXPECT_NE(log.find("frame #v -> <1B>P4#RTAVENA QX-1/4.10<1B>\\"), std::string::npos) << log;
  EXPECT_NE(log.find("stopped"), std::string::npos) << log;
}

TEST(SimServerTest, FastComOverThePseudoTerminal) {
  ASSERT_EQ(access(kProgram.c_str(), X_OK), 0) << "build the tavena-sim target first";
  SimProcess sim({"--model", "TM410", "--baud", "19200", "--line-rate"});
  const std::string path = sim.FirstLine(5000);
  ASSERT_FALSE(path.empty());
  for (int round = 0; round < 2; ++round) {
    FastCom com;
    com.baud_rate = 19200;
    ASSERT_TRUE(com.Open(path.c_str(), 1)) << com.LastOpenError();
    ASSERT_TRUE(com.Send(iBuffer("\x05")));
    iBuffer reply;
    for (int i = 0; i < 100 && reply.Empty(); ++i) {
      SleepMs(10);
      com.ReadCount(reply, 10);
    }
    EXPECT_EQ(test::Hex(reply.ToString()), "65");
    ASSERT_TRUE(com.Send(iBuffer("\x1BP#v\x1B\\")));
    com.ReadUntil(reply, 500, "\x1B\\");
    EXPECT_EQ(reply.ToString(), "\x1BP0#RTAVENA TM410/7.00\x1B\\");
    EXPECT_TRUE(com.Close());
  }
  EXPECT_EQ(sim.Stop(SIGINT), 0);
}

// Reads path until it holds want or 3 s have passed.
std::string WaitForFile(const std::string& path, const std::string& want) {
  std::string got;
  for (int i = 0; i < 300 && (got = test::ReadFile(path)) != want; ++i) usleep(10000);
  return got;
}

TEST(SimServerTest, RecordHoldsEveryReceivedByteAsItComes) {
  ASSERT_EQ(access(kProgram.c_str(), X_OK), 0) << "build the tavena-sim target first";
  test::TempDir dir;
  const std::string record = dir.file("record.bin");
  test::WriteFile(record, "old contents");
  SimProcess sim({"--record", record, "--quiet"});
  const std::string path = sim.FirstLine(5000);
  ASSERT_FALSE(path.empty());
  EXPECT_EQ(test::ReadFile(record), "") << "emptied at the start";
  std::string sent;
  {
    Client client(path);
    // Answered bytes are in the file by the time their answer is back.
    const std::string first = "\x05\x1BP#v\x1B\\";
    EXPECT_EQ(client.Ask(first, "\x1B\\"), "\x65\x1BP0#RTAVENA LUMEN/1.05\x1B\\");
    sent += first;
    EXPECT_EQ(test::Hex(test::ReadFile(record)), test::Hex(sent));
    // Bytes the printer ignores, every byte value, half a frame: all kept, raw.
    std::string all(256, '\0');
    for (int i = 0; i < 256; ++i) all[static_cast<size_t>(i)] = static_cast<char>(i);
    const std::string rest = all + "\r\n\x1BP0$e";
    ASSERT_TRUE(client.Send(rest));
    sent += rest;
    EXPECT_EQ(test::Hex(WaitForFile(record, sent)), test::Hex(sent));
  }
  {
    Client again(path);  // a second client appends to the same record
    ASSERT_TRUE(again.Send("\x10\x10"));
    sent += "\x10\x10";
    EXPECT_EQ(test::Hex(WaitForFile(record, sent)), test::Hex(sent));
  }
  EXPECT_EQ(sim.Stop(SIGTERM), 0);
  EXPECT_EQ(test::Hex(test::ReadFile(record)), test::Hex(sent));

  SimProcess bad({"--record", dir.file("no-such-folder/record.bin")});
  EXPECT_EQ(bad.Wait(5000), 1);
  EXPECT_NE(bad.ErrorText().find("tavena-sim: cannot open the record file "), std::string::npos);
}

TEST(SimServerTest, FloodsAndHalfFramesNeitherStallNorGrowThePrinter) {
  ASSERT_EQ(access(kProgram.c_str(), X_OK), 0) << "build the tavena-sim target first";
  SimProcess sim({"--quiet"});
  const std::string path = sim.FirstLine(5000);
  ASSERT_FALSE(path.empty());
  Client client(path);
  // 16 MiB of bytes the printer ignores, with ENQs whose answers nobody reads.
  const std::string chunk = std::string(65536 - 64, 'a') + std::string(64, '\x05');
  for (int i = 0; i < 256; ++i) ASSERT_TRUE(client.Send(chunk)) << i;
  // Half a frame, then more than 2 s of silence: the next ENQ is answered.
  // Before it come the 16384 answers to the flood's ENQs, all of them.
  ASSERT_TRUE(client.Send("\x1BP0#"));
  usleep(2100 * 1000);
  const std::string identity = "\x1BP0#RTAVENA LUMEN/1.05\x1B\\";
  const std::string got = client.Ask("\x05\x1BP#v\x1B\\", identity, 5000);
  EXPECT_EQ(got.size(), 16385 + identity.size());
  EXPECT_EQ(got.find_first_not_of('\x65'), 16385u);
  EXPECT_EQ(got.substr(got.size() - std::min(got.size(), identity.size())), identity);
#if !defined(__SANITIZE_ADDRESS__)  // the sanitizer's own memory would blur the figure
  EXPECT_GT(sim.PeakKb(), 0);
  EXPECT_LT(sim.PeakKb(), 12 * 1024) << "the record of received bytes is bounded";
#endif
  EXPECT_EQ(sim.Stop(SIGTERM), 0);
}

TEST(SimServerTest, AFullLogPipeDoesNotStallThePrinter) {
  ASSERT_EQ(access(kProgram.c_str(), X_OK), 0) << "build the tavena-sim target first";
  SimProcess sim({});  // standard error goes to a pipe this test never reads
  const std::string path = sim.FirstLine(5000);
  ASSERT_FALSE(path.empty());
  Client client(path);
  const std::string batch(200, '\x05');
  size_t answered = 0;
  for (int i = 0; i < 60; ++i) {  // about 200 kB of log lines
    const size_t got = client.Ask(batch, std::string(200, '\x65')).size();
    answered += got;
    if (got != batch.size()) break;  // stalled
  }
  EXPECT_EQ(answered, 60u * 200u);
}

TEST(SimServerTest, ClosedLineEndsTheServerAndBadOptionsAreRefused) {
  ASSERT_EQ(access(kProgram.c_str(), X_OK), 0) << "build the tavena-sim target first";
  SimProcess sim({"--close-after", "1", "--baud", "19200"});
  const std::string path = sim.FirstLine(5000);
  ASSERT_FALSE(path.empty());
  {
    Client client(path);  // at 9600: not understood
    EXPECT_EQ(client.Ask("\x05", "\x65", 500), "");
  }
  {
    Client client(path, B19200);
    EXPECT_EQ(test::Hex(client.Ask("\x05", "\x65")), "65");
    EXPECT_EQ(client.Ask("\x1BP0$e8E\x1B\\", "", 0), "");
  }
  EXPECT_EQ(sim.Wait(5000), 0);
  EXPECT_NE(sim.ErrorText().find("line closed"), std::string::npos);

  for (const std::vector<std::string>& args : {std::vector<std::string>{"--model", "KASA"},
                                               {"--fixed-clock", "2012-13-01 00:00"},
                                               {"--delay"},
                                               {"--answers", "x"},
                                               {"--what"}}) {
    SimProcess bad(args);
    EXPECT_EQ(bad.Wait(5000), 2) << args[0];
    EXPECT_NE(bad.ErrorText().find("tavena-sim: "), std::string::npos);
  }
}

}  // namespace
}  // namespace tavena

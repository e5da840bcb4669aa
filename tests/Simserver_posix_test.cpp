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

#include <chrono>
#include <string>
#include <vector>

#include "TestSupport.h"

extern char** environ;

namespace tavena {
namespace {

using Steady = std::chrono::steady_clock;
using test::Hex;

const std::string kProgram = std::string(TAVENA_BINARY_DIR) + "/sim/tavena-sim";
const std::string kLumen = "\x1BP0#RTAVENA LUMEN/1.05\x1B\\";

// Reads fd until the text read ends with end or timeout_ms pass.
std::string ReadUntil(int fd, const std::string& end, int timeout_ms) {
  std::string got;
  char buffer[4096];
  const auto deadline = Steady::now() + std::chrono::milliseconds(timeout_ms);
  while (Steady::now() < deadline &&
         (got.size() < end.size() || got.compare(got.size() - end.size(), end.size(), end))) {
    pollfd p{fd, POLLIN, 0};
    if (poll(&p, 1, 50) <= 0) continue;
    const ssize_t n = read(fd, buffer, end == "\n" ? 1 : sizeof buffer);
    if (n <= 0) break;
    got.append(buffer, static_cast<size_t>(n));
  }
  return got;
}

// The program with its standard output and error on pipes; Path() is the
// first line it printed (its terminal).
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
    const std::string line = ReadUntil(out_, "\n", 5000);
    path_ = line.substr(0, line.size() - 1);
  }
  ~SimProcess() {
    if (pid_ > 0) {
      kill(pid_, SIGKILL);
      waitpid(pid_, nullptr, 0);
    }
    close(out_);
    close(err_);
  }
  const std::string& Path() const { return path_; }
  // The most memory the process has held so far, in kB (-1: unknown).
  long PeakKb() const {
    const std::string status = test::ReadFile("/proc/" + std::to_string(pid_) + "/status");
    const size_t at = status.find("VmHWM:");
    return at == std::string::npos ? -1 : std::atol(status.c_str() + at + 6);
  }
  // Sends a signal (0: none) and returns the exit status, -1 when the
  // program does not end within 5 s.
  int Stop(int signal_number = 0) {
    if (signal_number) kill(pid_, signal_number);
    for (int i = 0; i < 500; ++i, usleep(10000)) {
      int status = 0;
      if (waitpid(pid_, &status, WNOHANG) != pid_) continue;
      pid_ = -1;
      return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }
    return -1;
  }
  std::string ErrorText() const { return ReadUntil(err_, std::string(1, '\0'), 300); }

 private:
  pid_t pid_ = -1;
  int out_ = -1;
  int err_ = -1;
  std::string path_;
};

// A client end of the terminal, raw, like a serial port.
class Client {
 public:
  explicit Client(const std::string& path, speed_t speed = B9600)
      : fd_(open(path.c_str(), O_RDWR | O_NOCTTY)) {
    termios t{};
    if (fd_ >= 0 && tcgetattr(fd_, &t) == 0) {
      cfmakeraw(&t);
      cfsetspeed(&t, speed);
      tcsetattr(fd_, TCSANOW, &t);
    }
  }
  ~Client() { close(fd_); }
  bool Send(const std::string& bytes) {
    return write(fd_, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
  }
  // Sends bytes and collects the answer until it ends with end, or the time is up.
  std::string Ask(const std::string& bytes, const std::string& end, int timeout_ms = 3000) {
    return Send(bytes) ? ReadUntil(fd_, end, timeout_ms) : "";
  }

 private:
  int fd_;
};

class SimServerTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(access(kProgram.c_str(), X_OK), 0) << "build the tavena-sim target first";
  }
};

TEST_F(SimServerTest, ServesThePrinterOnThePrintedPathAndItsLinkAndRecordsWhatItHears) {
  test::TempDir dir;
  const std::string link = dir.file("printer");
  const std::string record = dir.file("record.bin");
  test::WriteFile(record, "old contents");
  SimProcess sim({"--model", "QX-1:4", "--link", link, "--fixed-clock", "2012-05-31 23:59",
                  "--record", record});
  ASSERT_EQ(sim.Path().rfind("/dev/pts/", 0), 0u) << sim.Path();
  char target[256] = {};
  ASSERT_GT(readlink(link.c_str(), target, sizeof target - 1), 0);
  EXPECT_EQ(std::string(target), sim.Path());
  EXPECT_EQ(test::ReadFile(record), "") << "emptied at the start";
  // A client may close and open the port again; every byte the printer
  // heard is in the record by the time its answer is back.
  std::string sent;
  for (const std::string& path : {sim.Path(), link}) {
    Client client(path);
    EXPECT_EQ(Hex(client.Ask("\x05", "\x65")), "65");
    EXPECT_EQ(client.Ask("\x10\x1BP#v\x1B\\", "\x1B\\"), "\x74\x1BP4#RTAVENA QX-1/4.10\x1B\\");
    EXPECT_EQ(client.Ask("\x1BP0#c\x1B\\", "\x1B\\"), "\x1BP1#C12;05;31;23;59;00;A7\x1B\\");
    sent += "\x05\x10\x1BP#v\x1B\\\x1BP0#c\x1B\\";
    EXPECT_EQ(Hex(test::ReadFile(record)), Hex(sent));
  }
  // Bytes the printer ignores, every byte value, half a frame: all kept, raw.
  std::string rest;
  for (int i = 0; i < 256; ++i) rest += static_cast<char>(i);
  rest += "\r\n\x1BP0$e";
  ASSERT_TRUE(Client(link).Send(rest));
  sent += rest;
  std::string got;
  for (int i = 0; i < 300 && (got = test::ReadFile(record)) != sent; ++i) usleep(10000);
  EXPECT_EQ(Hex(got), Hex(sent));

  EXPECT_EQ(sim.Stop(SIGTERM), 0);
  struct stat st {};
  EXPECT_NE(lstat(link.c_str(), &st), 0) << "the link is removed at the end";
  const std::string log = sim.ErrorText();
  EXPECT_NE(log.find("ENQ -> 0x65"), std::string::npos) << log;
  EXPECT_NE(log.find("frame #v -> <1B>P4#RTAVENA QX-1/4.10<1B>\\"), std::string::npos) << log;
  EXPECT_NE(log.find("stopped"), std::string::npos) << log;

  SimProcess bad({"--record", dir.file("no-such-folder/record.bin")});
  EXPECT_EQ(bad.Stop(), 1);
  EXPECT_NE(bad.ErrorText().find("tavena-sim: cannot open the record file "), std::string::npos);
}

TEST_F(SimServerTest, FloodsHalfFramesAndAFullLogPipeNeitherStallNorGrowThePrinter) {
  SimProcess sim({"--quiet"});
  Client client(sim.Path());
  // 16 MiB of bytes the printer ignores, with ENQs whose answers nobody reads.
  const std::string chunk = std::string(65536 - 64, 'a') + std::string(64, '\x05');
  for (int i = 0; i < 256; ++i) ASSERT_TRUE(client.Send(chunk)) << i;
  // Half a frame, then more than 2 s of silence: the next ENQ is answered.
  // Before it come the 16384 answers to the flood's ENQs, all of them.
  ASSERT_TRUE(client.Send("\x1BP0#"));
  usleep(2100 * 1000);
  const std::string got = client.Ask("\x05\x1BP#v\x1B\\", kLumen, 5000);
  EXPECT_EQ(got.size(), 16385 + kLumen.size());
  EXPECT_EQ(got.find_first_not_of('\x65'), 16385u);
  EXPECT_EQ(got.substr(got.size() - std::min(got.size(), kLumen.size())), kLumen);
#if !defined(__SANITIZE_ADDRESS__)  // the sanitizer's own memory would blur the figure
  EXPECT_GT(sim.PeakKb(), 0);
  EXPECT_LT(sim.PeakKb(), 12 * 1024) << "the record of received bytes is bounded";
#endif
  EXPECT_EQ(sim.Stop(SIGTERM), 0);

  // Logging to a pipe this test never reads: about 200 kB of log lines.
  SimProcess logging({});
  Client talker(logging.Path());
  const std::string answers(200, '\x65');
  int rounds = 0;
  while (rounds < 60 && talker.Ask(std::string(200, '\x05'), answers) == answers) ++rounds;
  EXPECT_EQ(rounds, 60) << "stalled";
}

TEST_F(SimServerTest, ClosedLineEndsTheServerAndBadOptionsAreRefused) {
  SimProcess sim({"--close-after", "1", "--baud", "19200"});
  ASSERT_FALSE(sim.Path().empty());
  EXPECT_EQ(Client(sim.Path()).Ask("\x05", "\x65", 500), "");  // at 9600: not understood
  {
    Client client(sim.Path(), B19200);
    EXPECT_EQ(Hex(client.Ask("\x05", "\x65")), "65");
    EXPECT_TRUE(client.Send("\x1BP0$e8E\x1B\\"));
  }
  EXPECT_EQ(sim.Stop(), 0);
  EXPECT_NE(sim.ErrorText().find("line closed"), std::string::npos);

  for (const std::vector<std::string>& args : {std::vector<std::string>{"--model", "KASA"},
                                               {"--fixed-clock", "2012-13-01 00:00"},
                                               {"--delay"},
                                               {"--answers", "x"},
                                               {"--what"}}) {
    SimProcess bad(args);
    EXPECT_EQ(bad.Stop(), 2) << args[0];
    EXPECT_NE(bad.ErrorText().find("tavena-sim: "), std::string::npos);
  }
}

}  // namespace
}  // namespace tavena

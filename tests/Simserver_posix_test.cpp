// End to end, in real time: the simulator program on a real pseudo-terminal, with a raw
// client, with the printer object and with the tool; and the tool watching ports. Floods, closed
// lines, wrong speeds and the tool's send and log are checked in process (Simprinter_test,
// Simport_test, Cli_test).
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>

#include "TestSupport.h"
#include "protocol/Drukarka.h"
#include "transport/Fastcom.h"

extern char** environ;

namespace tavena {
namespace {

using test::Hex;

const std::string kTool = TAVENA_BINARY_DIR "/cli/tavena";

// "tavena" with args, its standard output read line by line.
class ToolProcess {
 public:
  explicit ToolProcess(std::vector<std::string> args) {
    args.insert(args.begin(), kTool);
    int out[2], err[2];
    if (pipe(out) != 0 || pipe(err) != 0) return;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, out[1], 1);
    posix_spawn_file_actions_adddup2(&actions, err[1], 2);
    std::vector<char*> argv;
    for (std::string& a : args) argv.push_back(a.data());
    argv.push_back(nullptr);
    if (posix_spawn(&pid_, argv[0], &actions, nullptr, argv.data(), environ) != 0) pid_ = -1;
    posix_spawn_file_actions_destroy(&actions);
    close(out[1]);
    close(err[1]);
    out_ = out[0];
    err_ = err[0];
  }
  ~ToolProcess() {
    if (pid_ > 0) kill(pid_, SIGKILL), waitpid(pid_, nullptr, 0);
    close(out_);
    close(err_);
  }
  // The next line of standard output, without its end; what came within the time.
  std::string Line(int timeout_ms = 5000) {
    std::string line;
    pollfd p{out_, POLLIN, 0};
    for (char c; poll(&p, 1, timeout_ms) > 0 && read(out_, &c, 1) == 1 && c != '\n';) line += c;
    return line;
  }
  // Sends a signal (0: none); the exit status, or -1 if not ended within 5 s.
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
  // Its standard error, once it has stopped.
  std::string ErrorText() const {
    std::string all;
    char buffer[4096];
    for (ssize_t n; pid_ < 0 && (n = read(err_, buffer, sizeof buffer)) > 0;) all.append(buffer, n);
    return all;
  }

 private:
  pid_t pid_ = -1;
  int out_ = -1;
  int err_ = -1;
};

// "tavena sim" with args; Path() is its first output line.
class SimProcess : public ToolProcess {
 public:
  explicit SimProcess(std::vector<std::string> args)
      : ToolProcess(WithSim(std::move(args))), path_(Line()) {}
  const std::string& Path() const { return path_; }

 private:
  static std::vector<std::string> WithSim(std::vector<std::string> args) {
    args.insert(args.begin(), "sim");
    return args;
  }
  std::string path_;
};

class SimServerTest : public ::testing::Test {
 protected:
  void SetUp() override {
    if (access(kTool.c_str(), X_OK) != 0) GTEST_SKIP() << "build the tavena target first";
  }
  test::TempDir dir_;
};

// "tavena sim" serves on a terminal and a link to it and records every byte it hears.
TEST_F(SimServerTest, ServesAndRecordsEveryByte) {
  const std::string link = dir_.file("printer"), record = dir_.file("record.bin");
  test::WriteFile(record, "old contents");
  SimProcess sim({"--model", "QX-1:4", "--link", link, "--record", record});
  ASSERT_EQ(sim.Path().rfind("/dev/pts/", 0), 0u) << sim.Path();
  char target[256] = {};
  ASSERT_GT(readlink(link.c_str(), target, sizeof target - 1), 0);
  EXPECT_EQ(std::string(target), sim.Path());
  EXPECT_EQ(test::ReadFile(record), "");  // emptied at the start
  // The record holds every byte heard by the time the answer is back.
  const std::string sent = "\x05\x10\x1BP#v\x1B\\";
  FastCom com;
  iBuffer reply;
  ASSERT_TRUE(com.Open(link.c_str(), 1) && com.Send(iBuffer(sent)));
  com.ReadUntil(reply, 500, "\x1B\\");
  EXPECT_EQ(reply.ToString(), "\x65\x74\x1BP4#RTAVENA QX-1/4.10\x1B\\");
  EXPECT_EQ(Hex(test::ReadFile(record)), Hex(sent));
  // Bytes the printer ignores, every byte value, half a frame: all kept, raw.
  std::string rest;
  for (int i = 0; i < 256; ++i) rest += static_cast<char>(i);
  rest += "\r\n\x1BP0$e";
  ASSERT_TRUE(com.Send(iBuffer(rest)));
  std::string got;
  for (int i = 0; i < 300 && !(got = test::ReadFile(record)).ends_with(rest); ++i) usleep(10000);
  EXPECT_EQ(Hex(got), Hex(sent + rest));

  EXPECT_EQ(sim.Stop(SIGTERM), 0);
  struct stat st {};
  EXPECT_NE(lstat(link.c_str(), &st), 0) << "the link is removed at the end";
  const std::string log = sim.ErrorText();
  EXPECT_NE(log.find("frame #v -> <1B>P4#RTAVENA QX-1/4.10<1B>\\"), std::string::npos) << log;
  EXPECT_NE(log.find("stopped"), std::string::npos) << log;

  SimProcess bad({"--record", dir_.file("no-such-folder/record.bin")});
  EXPECT_EQ(bad.Stop(), 1);
  EXPECT_NE(bad.ErrorText().find("tavena-sim: cannot open the record file "), std::string::npos);
}

// The printer object finds and programs the simulator over the terminal.
TEST_F(SimServerTest, PrinterFindsAndProgramsIt) {
  SimProcess sim(
      {"--model", "QX-1", "--baud", "19200", "--fixed-clock", "2012-05-14 09:03", "--quiet"});
  ASSERT_FALSE(sim.Path().empty());
  Drukarka printer;
  std::string port = sim.Path();
  int32_t speed = 19200;
  ASSERT_EQ(printer.FindPrinter(port, speed, 0, false), kFindPrinter);
  EXPECT_EQ(printer.type_code, 4);
  EXPECT_EQ(printer.subtype, 3);
  ASSERT_TRUE(printer.Open());
  ASSERT_TRUE(printer.SetVatRates({22, 8, 5, 0, kVatExempt, kVatInactive, kVatInactive}));
  EXPECT_EQ(printer.QueryENQ(), 0x65);
  EXPECT_EQ(printer.ReadStatus(23, 6), "22.00;8.00;5.00;0.00;zw;-1;-1;");
  printer.Close();
}

// The simulator's line closes after the first frame, before its late answer:
// the read on the hung-up terminal ends at once, and the tool names the port
// after its own failure.
TEST_F(SimServerTest, LineClosedMidExchangeEndsWithinASecond) {
  using Clock = std::chrono::steady_clock;
  SimProcess sim({"--close-after", "1", "--delay", "300", "--quiet"});
  Drukarka printer;
  printer.SetPort(sim.Path(), 9600);
  ASSERT_TRUE(printer.Open());
  const Clock::time_point start = Clock::now();
  ASSERT_TRUE(printer.SendFramed("#v"));
  EXPECT_FALSE(printer.ReadAnswer(2000));
  EXPECT_LT(Clock::now() - start, std::chrono::seconds(1));
  EXPECT_TRUE(printer.com.DeviceGone());
  printer.Close();

  const std::string link = dir_.file("printer");
  SimProcess tool_sim({"--close-after", "1", "--delay", "300", "--quiet", "--link", link});
  const Clock::time_point tool_start = Clock::now();
  FILE* tool = popen((kTool + " --port " + link + " vat 2>&1").c_str(), "r");
  ASSERT_NE(tool, nullptr);
  std::string output;
  char buffer[512];
  for (size_t n; (n = fread(buffer, 1, sizeof buffer, tool)) > 0;) output.append(buffer, n);
  const int status = pclose(tool);
  EXPECT_LT(Clock::now() - tool_start, std::chrono::seconds(1));
  EXPECT_EQ(WEXITSTATUS(status), 1);
  EXPECT_TRUE(
      output.ends_with("\ntavena: Port " + link + " zniknął. Czy drukarka została odłączona?\n"))
      << output;
}

// "ports --watch" prints the ports, then a line for each that goes or comes,
// until interrupted.
TEST_F(SimServerTest, PortsWatchFollowsUnplugAndPlug) {
  namespace fs = std::filesystem;
  const fs::path sysfs = dir_.file("sys"), usb = sysfs / "class/tty/ttyUSB0";
  fs::copy(TAVENA_SOURCE_DIR "/tests/fixtures/sysfs", sysfs,
           fs::copy_options::recursive | fs::copy_options::copy_symlinks);
  const fs::path target = fs::read_symlink(usb);
  ToolProcess watch({"ports", "--watch", "--sysfs", sysfs.string()});
  EXPECT_EQ(watch.Line(), "/dev/ttyACM0  TAVENA LUMEN USB  [drukarka TAVENA USB]");
  EXPECT_EQ(watch.Line(), "/dev/ttyS0  Communications Port");
  EXPECT_EQ(watch.Line(), "/dev/ttyUSB0  FT232R USB UART");
  EXPECT_EQ(watch.Line(), "Czekam na zmiany portów (Ctrl+C kończy).");
  fs::remove(usb);
  EXPECT_EQ(watch.Line(2000).substr(8), " - /dev/ttyUSB0  FT232R USB UART");
  fs::create_directory_symlink(target, usb);
  EXPECT_EQ(watch.Line(2000).substr(8), " + /dev/ttyUSB0  FT232R USB UART");
  EXPECT_EQ(watch.Stop(SIGINT), 0);
}

}  // namespace
}  // namespace tavena

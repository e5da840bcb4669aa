// End to end, in real time: the printer object finds and programs the tavena-sim
// program over a real pseudo-terminal.
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "protocol/Drukarka.h"

extern char** environ;

namespace tavena {
namespace {

const std::string kSimProgram = std::string(TAVENA_BINARY_DIR) + "/sim/tavena-sim";

// tavena-sim running for the life of the object; Path() is its terminal.
class SimServer {
 public:
  explicit SimServer(std::vector<std::string> args) {
    args.insert(args.begin(), kSimProgram);
    int out[2];
    if (pipe(out) != 0) return;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, out[1], 1);
    std::vector<char*> argv;
    for (std::string& a : args) argv.push_back(a.data());
    argv.push_back(nullptr);
    if (posix_spawn(&pid_, kSimProgram.c_str(), &actions, nullptr, argv.data(), environ) != 0)
      pid_ = -1;
    posix_spawn_file_actions_destroy(&actions);
    close(out[1]);
    char c;  // the first line it prints is the terminal's path
    pollfd p{out[0], POLLIN, 0};
    while (poll(&p, 1, 5000) > 0 && read(out[0], &c, 1) == 1 && c != '\n') path_ += c;
    close(out[0]);
  }
  ~SimServer() {
    if (pid_ <= 0) return;
    kill(pid_, SIGTERM);
    waitpid(pid_, nullptr, 0);
  }
  const std::string& Path() const { return path_; }

 private:
  pid_t pid_ = -1;
  std::string path_;
};

TEST(DrukarkaPtyTest, FindAndProgramOverAPseudoTerminal) {
  ASSERT_EQ(access(kSimProgram.c_str(), X_OK), 0) << "build the tavena-sim target first";
  SimServer sim(
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

}  // namespace
}  // namespace tavena

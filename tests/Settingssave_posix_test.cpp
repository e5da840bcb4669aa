// A config.tav writer killed by SIGKILL anywhere leaves the old or the new file, whole.
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <random>

#include "TestSupport.h"
#include "app/Settings.h"

namespace tavena {
namespace {

TEST(SettingsSavePosix, AWriterKilledAnywhereLeavesAWholeFile) {
  test::TempDir dir;
  const std::string path = dir.file("config.tav");
  SettingsRecord small, large;
  large.list_path = std::string(20000, 'n');  // a save long enough to be cut
  ASSERT_TRUE(SaveSettings(dir.file("large"), large) && SaveSettings(path, small));
  const std::string old_text = test::ReadFile(path);
  const std::string new_text = test::ReadFile(dir.file("large"));
  std::mt19937 pick(14);
  for (int i = 0; i < 200; ++i) {
    const pid_t writer = fork();
    if (writer == 0)
      for (int n = 0;; ++n) SaveSettings(path, n % 2 ? small : large);
    usleep(pick() % 4000);
    kill(writer, SIGKILL);
    waitpid(writer, nullptr, 0);
    const std::string text = test::ReadFile(path);
    ASSERT_TRUE(text == old_text || text == new_text) << i << ": " << text.size() << " bytes";
  }
}

}  // namespace
}  // namespace tavena

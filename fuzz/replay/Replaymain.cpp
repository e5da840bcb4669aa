// Replays a fuzz target's corpus folders through its LLVMFuzzerTestOneInput
// without libFuzzer: the regression pass of the test suite. An input that
// fails a check stops the program; a missing or empty corpus is a failure.
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

int main(int argc, char** argv) {
  namespace fs = std::filesystem;
  std::set<fs::path> files;  // in name order
  std::error_code error;
  for (int i = 1; i < argc; ++i)
    for (const fs::directory_entry& e : fs::directory_iterator(argv[i], error))
      if (e.is_regular_file()) files.insert(e.path());
  for (const fs::path& file : files) {
    std::ifstream in(file, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
  }
  return files.empty() || error ? 1 : 0;
}

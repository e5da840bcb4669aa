// The frame editor's readers on any input: ".bin" and ".sek" files read
// back the same lines after writing them, readable lines are printable, and
// the readable form decodes to the bytes it encodes.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "protocol/Framefile.h"

namespace {

void Check(bool condition) {
  if (!condition) __builtin_trap();
}

bool Printable(const std::string& line) {
  for (const char c : line)
    if (c < 0x20 || c > 0x7E) return false;
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  const auto frames = tavena::ReadFrameFile(input);
  for (const std::string& line : frames) Check(Printable(line));
  Check(tavena::ReadFrameFile(tavena::WriteFrameFile(frames)) == frames);

  const auto text = tavena::ReadSekText(input);
  for (const std::string& line : text) Check(!line.empty() && line.find('\n') == std::string::npos);
  Check(tavena::ReadSekText(tavena::WriteSekText(text)) == text);

  Check(tavena::DecodeReadable(tavena::EncodeReadable(input)) == input);
  return 0;
}

// The frame editor's readers on any input: readable lines are printable,
// ".sek" files read back the lines written, and so do ".bin" files and the
// readable form when the bytes hold no "[" (text such as "[x41]" written
// as it stands is read back as the byte it spells).
#include <algorithm>
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
  for (const std::string& line : tavena::ReadFrameFile(input)) Check(Printable(line));
  std::string plain(input);
  std::replace(plain.begin(), plain.end(), '[', '{');
  const auto frames = tavena::ReadFrameFile(plain);
  Check(tavena::ReadFrameFile(tavena::WriteFrameFile(frames)) == frames);
  Check(tavena::DecodeReadable(tavena::EncodeReadable(plain)) == plain);
  Check(tavena::DecodeReadable(input).size() <= input.size());

  const auto text = tavena::ReadSekText(input);
  for (const std::string& line : text) Check(!line.empty() && line.find('\n') == std::string::npos);
  Check(tavena::ReadSekText(tavena::WriteSekText(text)) == text);

  return 0;
}

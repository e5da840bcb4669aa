// Any input compiles, in both languages, to a bounded list of "<line>: <text>" messages
// closed by the success message or the summary, and the same bytes recompiled silently.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "sequence/Clock.h"
#include "sequence/Messagelanguage.h"
#include "sequence/Seqcompileclass.h"

namespace {

using tavena::SeqCompileClass;

void Check(bool condition) {
  if (!condition) __builtin_trap();
}

bool WellFormed(const std::string& message) {
  size_t digits = 0;
  while (digits < message.size() && message[digits] >= '0' && message[digits] <= '9') ++digits;
  return digits > 0 && message.compare(digits, 2, ": ") == 0 && message.size() > digits + 2;
}

std::string CompileChecked(const std::vector<std::string>& lines, int language) {
  tavena::MessageLanguage = language;
  SeqCompileClass compiler;
  std::vector<std::string> messages;
  const bool ok = compiler.Compile(lines, &messages);
  Check(!messages.empty() && messages.size() <= SeqCompileClass::kMessageLimit + 2);
  for (const std::string& m : messages) Check(WellFormed(m));
  const std::string success =
      tavena::Msg("Koniec przetwarzania. Brak błędów.", "End of compile. No errors.");
  Check(ok == messages.back().ends_with(success));
  Check(ok == (messages.size() == 1));
  if (!ok)
    Check(messages.back().find(language ? ": There is " : ": Wykryto: ") != std::string::npos);
  if (ok) Check(!compiler.output.Empty());
  const std::string bytes = compiler.output.ToString();
  Check(compiler.Compile(nullptr, nullptr) == ok);
  Check(compiler.output.ToString() == bytes);
  return bytes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static tavena::VirtualClock clock(tavena::LocalTime{2009, 3, 5, 7, 4, 33, 0});
  tavena::SetCurrentClock(&clock);
  const auto lines =
      SeqCompileClass::SplitLines(std::string_view(reinterpret_cast<const char*>(data), size));
  Check(CompileChecked(lines, 0) == CompileChecked(lines, 1));
  return 0;
}

// Any identity, clock, status or report answer reads within bounds, and the results
// keep their limits: names and versions of at most 39 characters, a unique number of at
// most 11, a raw record of 184 bytes.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "protocol/Answerparse.h"

namespace {

void Check(bool condition) {
  if (!condition) __builtin_trap();
}

void ReadIdentity(std::string_view answer) {
  const tavena::IdentityAnswer id = tavena::ParseIdentity(answer);
  Check(id.name.size() <= 39 && id.version.size() <= 39);
  Check(id.has_command || (id.type_code == 0 && id.name.empty() && id.version.empty()));
}

void ReadStatus(std::string_view answer) {
  tavena::StatusRecord record;
  if (!tavena::ParseStatus(answer, record)) return;
  Check(record.unique_number.size() <= 11);
  for (int selector = 0; selector <= 12; ++selector) {
    const std::string text = tavena::FormatStatusField(record, selector);
    if (selector == tavena::kStatusRaw) Check(text.size() == tavena::kStatusRawSize);
    if (selector == tavena::kStatusRates) Check(text.size() >= 14);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view answer(reinterpret_cast<const char*>(data), size);
  ReadIdentity(answer);
  Check(!tavena::ParseClock(answer).empty());
  ReadStatus(answer);
  int year = 0, month = 0, day = 0;
  if (tavena::FindReportDate(answer, year, month, day))
    Check(month >= 1 && month <= 12 && day >= 1 && day <= 31);
  return 0;
}

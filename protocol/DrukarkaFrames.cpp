// Frame building: pure, no channel.
#include "Drukarka.h"
#include "sequence/Codepage.h"

namespace tavena {

uint8_t ControlSum(std::string_view mazovia_body) {
  uint8_t sum = 0xFF;
  for (const char c : mazovia_body) sum ^= static_cast<uint8_t>(c);
  return sum;
}

std::string BuildFrame(std::string_view body_cp1250, bool with_sum) {
  const std::string body = ToMazovia(std::string(body_cp1250));
  std::string frame = "\x1bP" + body;
  if (with_sum) frame += TextF("%02X", ControlSum(body));
  return frame + "\x1b\\";
}

}  // namespace tavena

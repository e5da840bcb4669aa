// Arbitrary bytes and frames reach the simulated printer on a virtual time line with some
// faults on: nothing crashes or hangs, output and record keep their limits, and the next
// answer byte is never in the past. Input: 4 setup bytes, then steps (kind, length, time).
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "sequence/Clock.h"
#include "sim/Simprinter.h"

namespace {

using tavena::SimPrinter;

void Check(bool condition) {
  if (!condition) __builtin_trap();
}

// Reads the input front to back; past the end every read gives 0.
struct Input {
  const uint8_t* data;
  size_t size;
  size_t pos = 0;
  uint8_t Byte() { return pos < size ? data[pos++] : 0; }
  std::string_view Bytes(size_t n) {
    n = std::min(n, size - pos);
    pos += n;
    return std::string_view(reinterpret_cast<const char*>(data + pos - n), n);
  }
};

std::unique_ptr<SimPrinter> MakePrinter(Input& in, const int64_t& now_ms) {
  const std::vector<std::string> names = tavena::SimModelNames();
  const std::string& name = names[in.Byte() % names.size()];
  static const int64_t base = tavena::EpochMsOf(tavena::LocalTime{2012, 5, 14, 9, 3, 7, 0});
  auto printer = std::make_unique<SimPrinter>(
      *tavena::FindSimModel(name), [&now_ms] { return tavena::CivilFromEpochMs(base + now_ms); });
  const uint8_t bits = in.Byte(), parameter = in.Byte(), speeds = in.Byte();
  tavena::SimFaults& f = printer->Faults();
  f.line_rate = bits & 1;
  f.silent = bits & 2;
  f.xoff = bits & 4;
  f.bad_answer_sum = bits & 8;
  if (bits & 16) f.noise_every_ms = 20 + parameter * 4;
  if (bits & 32) f.answers_before_silence = parameter % 8;
  if (bits & 64) f.close_after_frames = parameter % 32;
  if (bits & 128) f.enq_answers = "\x4C\x68";
  static const int bauds[] = {0, 1200, 9600, 19200, 115200};
  printer->SetBaud(bauds[speeds % 5]);
  printer->SetClientBaud(bauds[(speeds / 5) % 5]);
  f.answer_delay_ms = (speeds / 25) * 50;
  return printer;
}

// The client reads: what it takes has arrived, nothing older stays behind.
void ClientReads(SimPrinter& p, uint8_t action, int64_t now_ms) {
  const tavena::SimFaults& f = p.Faults();
  if (action % 4 == 0) {
    p.DropArrived(now_ms);
  } else {
    const std::string got = p.Take(now_ms, action % 4 == 1 ? 1 : SIZE_MAX);
    if (f.silent && f.noise_every_ms == 0 && !f.xoff) Check(got.empty());
    if (action % 4 == 1) return Check(got.size() <= 1);
  }
  Check(p.Available(now_ms) == 0);
  const int64_t next = p.NextReadyMs();
  Check(next == -1 || next > now_ms);
}

// Bodies the printer takes, so that the commands' deeper checks are reached.
const char* const kKnownBodies[] = {
    "#v",
    "0#c",
    "23#s",
    "0#e",
    "12;5;31;23;59;0$c",
    "7;0;0;0;0;1;1;2$p23.00/8.00/5.00/0.00/0.00/0.00/0.00/",
    "7$p23.00/8.00/5.00/0.00/101/101/100/",
    "0$f\x0E   TAVENA\x14\r  Sklep\r\xFF",
    "1$fNIP 123-45-67-890\xFF",
    "12;5;1;12;5;14;0#o",
    "1;12;05;14#r",
    "2;0;0;1#r",
    "0$h",
    "1;2$lX\r3\rB/0.10/0.30/5/",
    "1;0;0;0;1$eK\r0.30/1.00/0.70",
    "0;3$eb\rc\ra\r",
    "1#bTEXT\r\x03/",
    "5&c",
};

std::string Framed(std::string_view body, bool with_sum) {
  return "\x1BP" + std::string(body) + (with_sum ? tavena::ControlSumHex(body) : "") + "\x1B\\";
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Input in{data, size};
  int64_t now_ms = 1000;
  const std::unique_ptr<SimPrinter> p = MakePrinter(in, now_ms);
  while (in.pos < in.size) {
    const uint8_t kind = in.Byte() % 6, length = in.Byte(), step = in.Byte();
    now_ms += int64_t{step} * step;  // up to 65 s, mostly short
    if (kind == 0) {
      p->Receive(in.Bytes(length), now_ms);
    } else if (kind < 3) {
      p->Receive(Framed(in.Bytes(length), kind == 1), now_ms);
    } else if (kind == 3) {
      ClientReads(*p, length, now_ms);
    } else {
      std::string body = kKnownBodies[length % std::size(kKnownBodies)];
      if (kind == 5) body[in.Byte() % body.size()] = static_cast<char>(in.Byte());
      p->Receive(Framed(body, true), now_ms);
    }
    Check(p->Available(now_ms) <= tavena::kSimMaxOutput);
    Check(p->Record().received.size() <= 2 * tavena::kSimRecordBytes);
    Check(p->Record().garbled.size() <= 2 * tavena::kSimRecordBytes);
    Check(p->Record().frames.size() <= 2 * tavena::kSimRecordFrames);
  }
  return 0;
}

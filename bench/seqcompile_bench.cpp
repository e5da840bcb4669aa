// Compile speed of the sequence compiler on generated sources of 1, 10 and
// 100 MB that mix every construct of the notation.
#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "sequence/Clock.h"
#include "sequence/Seqcompileclass.h"

namespace {

using tavena::SeqCompileClass;

// One block of commentary and sequences; text is Windows-1250. A comment
// block inside a sequence is left out: it swallows the rest of the source.
const char* const kBlock[] = {
    "Receipt header for the shop counter, sent after the daily report.",
    "\\<comment> seq = skipped with the whole block \\<end> \\<end_comment>",
    "seq = \\<ESC>P0#h\\<check_start>Header line\\<CR>\\<LF> \\; line comment",
    "  'Za\xBF\xF3\xB3\xE6 g\xEA\x9Cl\xB9 ja\x9F\xF1 \xA3\xD3"
    "DZ' kept in Mazovia",
    "  \\<D>.\\<M>.\\<LY> \\<H>:\\<MIN> \\<y>\\<Ly>",
    "  \\x1B\\x5c\\xf \\<65>\\<300>\\<0> \\E\\R\\N\\F\\\\ \\e\\r\\n\\f \\<SPC>\\<FF>\\<ff>",
    "  ABC 123 $%& () *+,-./ :;<=>? @[]^_` {|}~ \\<esc>\tTAB\t\xB1\xBF dropped",
    "  \\<check_insert>\\<ESC>\\\\",
    "\\<end>",
    "seq=A\\<end>",
    "",
    "\\<C> text hidden from the compiler \\<E> sEQ =\\<check_start>A\\<check_insert>\\<END>",
};

std::vector<std::string> GenerateSource(size_t target_bytes, size_t* total) {
  std::vector<std::string> lines;
  *total = 0;
  for (int block = 0; *total < target_bytes; ++block) {
    for (const char* line : kBlock) {
      lines.emplace_back(line);
      *total += lines.back().size() + 1;
    }
    lines.emplace_back("seq = 'Receipt " + std::to_string(block) + "'\\<end>");
    *total += lines.back().size() + 1;
  }
  return lines;
}

void BM_Compile(benchmark::State& state) {
  size_t total = 0;
  const auto lines = GenerateSource(static_cast<size_t>(state.range(0)) << 20, &total);
  tavena::VirtualClock clock;
  tavena::ScopedClock scoped(&clock);
  SeqCompileClass compiler;
  compiler.Compile(lines, nullptr);  // buffers reach their size once, as in the editor
  for (auto _ : state) {
    if (!compiler.Compile(lines, nullptr)) {
      state.SkipWithError("the generated source does not compile");
      return;
    }
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * total));
  state.counters["source_MB"] = static_cast<double>(total) / (1 << 20);
  state.counters["output_MB"] = static_cast<double>(compiler.output.Length()) / (1 << 20);
}
BENCHMARK(BM_Compile)->Arg(1)->Arg(10)->Arg(100)->Unit(benchmark::kMillisecond);

}  // namespace

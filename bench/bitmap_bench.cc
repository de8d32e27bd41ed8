// What every check does several times: VLAN bitmaps as text and in comparison. Each measurement has a
// floor or a peer beside it in the same run, since absolute times mean little.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>
#include <random>

#include "draimiofaf/check.h"
#include "draimiofaf/foundation.h"
#include "standin.h"

namespace {

// A set in which each VLAN is set with a chance of `percent` in a hundred.
bmp4096_t record_of(int64_t percent) {
  bmp4096_t record{512, {}};
  std::mt19937 random(7);
  for (unsigned vlan = 0; vlan < 4096; ++vlan) {
    if (static_cast<int64_t>(random() % 100) < percent) {
      record.bmp[vlan / 8] = static_cast<uint8_t>(record.bmp[vlan / 8] | 0x80U >> vlan % 8);
    }
  }
  return record;
}

bool is_set(const bmp4096_t &record, int vlan) {
  return vlan < 4096 && (record.bmp[vlan / 8] & 0x80U >> vlan % 8) != 0;
}

void RangeText(benchmark::State &state) {
  const bmp4096_t record = record_of(state.range(0));
  for (auto _ : state) benchmark::DoNotOptimize(stp_mcec_lib_bmp4096_to_str(&record));
}

// The peer: bit by bit, a printf for each run.
void RangeTextByPrintf(benchmark::State &state) {
  const bmp4096_t record = record_of(state.range(0));
  static char text[16384];
  for (auto _ : state) {
    char *out = text;
    *out = '\0';
    for (int first = 0; first < 4096; ++first) {
      if (!is_set(record, first)) continue;
      int last = first;
      while (is_set(record, last + 1)) ++last;
      const char *comma = out != text ? "," : "";
      const auto room = static_cast<std::size_t>(text + sizeof text - out);
      out += first == last ? std::snprintf(out, room, "%s%d", comma, first)
                           : std::snprintf(out, room, "%s%d-%d", comma, first, last);
      first = last;
    }
    benchmark::DoNotOptimize(out);
  }
}

void TwinComparison(benchmark::State &state) {
  bmp4096_t local = record_of(state.range(0));
  bmp4096_t remote = record_of(state.range(0) / 2);
  const bmp4096_t twins = record_of(50);
  bmp4096_t pass{};
  bmp4096_t fail{};
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        stp_mcec_pvrst_endis_check_for_twin_vlans(2, &local, &remote, &twins, &pass, &fail));
    standin_history_clear();
  }
}

// The floor: the five texts that a comparison logs.
void FiveTexts(benchmark::State &state) {
  const bmp4096_t record = record_of(state.range(0));
  for (auto _ : state) {
    for (int i = 0; i < 5; ++i) benchmark::DoNotOptimize(stp_mcec_lib_bmp4096_to_str(&record));
  }
}

BENCHMARK(RangeText)->Arg(1)->Arg(10)->Arg(50);
BENCHMARK(RangeTextByPrintf)->Arg(1)->Arg(10)->Arg(50);
BENCHMARK(TwinComparison)->Arg(10)->Arg(50);
BENCHMARK(FiveTexts)->Arg(10)->Arg(50);

}  // namespace

BENCHMARK_MAIN();

// Rows of the table that scripts/bench prints: a work of ours, and beside it its floor (the same
// calls of the platform, the same lines by vsnprintf, the same bytes read and written, and nothing
// else) or a peer (what one would have used otherwise).
#pragma once

#include <benchmark/benchmark.h>

#include <string>

namespace bench {

// Register a work, which counts `per` things. prepare() sets up what it needs; a work whose result
// is not right is not measured.
template <class Prepare, class Work>
void measure(const std::string &name, bool right, Prepare prepare, Work work, double per = 1) {
  benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State &state) {
    if (!right) return state.SkipWithError("the result is not right");
    prepare();
    for (auto _ : state) benchmark::DoNotOptimize(work());
    state.counters["per"] = per;
  });
}

// Register NAME/ours and NAME/other; agree() runs both and compares what comes of them.
template <class Prepare, class Agree, class Ours, class Other>
void row(const std::string &name, Prepare prepare, Agree agree, Ours ours, Other other,
         double ours_per = 1, double other_per = 1) {
  prepare();
  const bool right = agree();
  measure(name + "/ours", right, prepare, ours, ours_per);
  measure(name + "/other", right, prepare, other, other_per);
}

// What the files register.
void calls();
void texts();

}  // namespace bench

// Data and yardsticks that the benchmarks share.
#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "oak/base/Text.h"

namespace bench {

/// Directory of $OAK_BENCH_FOLDER, else a generated one of 100,000 files
/// ($OAK_BENCH_FILES changes the number, $OAK_BENCH_SMOKE makes it small). Generated data is kept
/// for later runs.
std::string Folder();
/// Directory of $OAK_BENCH_TREE, else a generated tree of twice as many files in
/// folders up to 8 deep.
std::string Tree();
/// A generated folder of a tenth as many small pictures.
std::string Pictures();
/// File names as people make them: words, numbers, dates, some beyond ASCII.
const std::vector<oak::TString>& Names();

/// Time of the fastest of five runs, in seconds. Run beside the measured code, so
/// that both see the same machine.
template <class TRun>
double Yardstick(TRun&& run) {
  double best = 1e9;
  for (int i = 0; i < 5; ++i) {
    const auto start = std::chrono::steady_clock::now();
    run();
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
    best = std::min(best, time.count());
  }
  return best;
}

/// Measures `run` as the benchmark and reports `ratio`: its fastest run divided by
/// the yardstick's.
template <class TRun, class TYardstick>
void Compare(benchmark::State& state, TRun&& run, TYardstick&& yardstick) {
  const double reference = Yardstick(yardstick);
  double best = 1e9;
  for (auto _ : state) {
    const auto start = std::chrono::steady_clock::now();
    run();
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
    best = std::min(best, time.count());
  }
  state.counters["yardstick_ms"] = reference * 1e3;
  state.counters["best_ms"] = best * 1e3;
  state.counters["ratio"] = best / reference;
}

}  // namespace bench

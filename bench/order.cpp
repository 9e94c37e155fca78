// Sorting names in the order of the shell, and matching them against patterns.
#include <fnmatch.h>

#include <numeric>
#include <regex>

#include "bench/common/BenchData.h"
#include "oak/base/LogicalOrder.h"
#include "oak/base/PatternMatch.h"

#ifdef OAK_BENCH_ICU
#include <unicode/coll.h>
#endif

namespace {

using namespace oak;

#ifdef OAK_BENCH_ICU
/// Digit-aware, case-insensitive order with sort keys of a well-kept library.
void SortWithIcu(const std::vector<TString>& names) {
  UErrorCode status = U_ZERO_ERROR;
  const std::unique_ptr<icu::Collator> collator(icu::Collator::createInstance("en", status));
  collator->setAttribute(UCOL_NUMERIC_COLLATION, UCOL_ON, status);
  collator->setStrength(icu::Collator::SECONDARY);
  std::vector<std::pair<std::string, std::size_t>> keys(names.size());
  std::uint8_t buffer[1024];
  for (std::size_t i = 0; i < names.size(); ++i) {
    const int length = collator->getSortKey(names[i].data(), static_cast<int>(names[i].size()),
                                            buffer, sizeof(buffer));
    keys[i] = {std::string(reinterpret_cast<char*>(buffer), static_cast<std::size_t>(length)), i};
  }
  std::sort(keys.begin(), keys.end());
  benchmark::DoNotOptimize(keys.data());
}
#endif

/// The plain way: a comparison that looks at both texts each time.
void SortByComparing(const std::vector<TString>& names) {
  std::vector<std::uint32_t> order(names.size());
  std::iota(order.begin(), order.end(), 0u);
  std::sort(order.begin(), order.end(), [&](std::uint32_t a, std::uint32_t b) {
    return CompareLogical(names[a], names[b]) < 0;
  });
  benchmark::DoNotOptimize(order.data());
}

void SortNames(benchmark::State& state) {
  const std::vector<TString>& names = bench::Names();
  bench::Compare(
      state, [&] { benchmark::DoNotOptimize(SortLogical(names).data()); },
      [&] {
#ifdef OAK_BENCH_ICU
        SortWithIcu(names);
#else
        SortByComparing(names);
#endif
      });
}
BENCHMARK(SortNames)->Unit(benchmark::kMillisecond);

void SortNamesByComparing(benchmark::State& state) {
  for (auto _ : state) SortByComparing(bench::Names());
}
BENCHMARK(SortNamesByComparing)->Unit(benchmark::kMillisecond);

constexpr std::size_t MatchCount = 1'000'000;

template <class TMatch>
std::size_t MatchMillion(const std::vector<TString>& names, TMatch&& match) {
  std::size_t hits = 0;
  for (std::size_t i = 0, n = 0; i < MatchCount; ++i, n = n + 1 == names.size() ? 0 : n + 1)
    hits += match(n) ? 1u : 0u;
  return hits;
}

/// One million matches of the compiled list, held against a regular expression.
void MatchNames(benchmark::State& state, const std::vector<TString>& patterns,
                const char* expression) {
  const std::vector<TString>& names = bench::Names();
  TPatternList list;
  for (const TString& pattern : patterns) list.Add(pattern);
  std::vector<std::string> plain;
  for (const TString& name : names) plain.push_back(ToUtf8(name));
  const std::regex regex(expression, std::regex::icase | std::regex::optimize);
  bench::Compare(
      state,
      [&] {
        benchmark::DoNotOptimize(
            MatchMillion(names, [&](std::size_t i) { return list.Matches(names[i]); }));
      },
      [&] {
        // A tenth is enough to know the rate of a regular expression.
        std::size_t hits = 0;
        for (std::size_t i = 0; i < MatchCount / 10; ++i)
          hits += std::regex_match(plain[i % plain.size()], regex) ? 1u : 0u;
        benchmark::DoNotOptimize(hits);
      });
  state.counters["ratio"] = state.counters["ratio"] / 10;
  state.counters["yardstick_ms"] = state.counters["yardstick_ms"] * 10;
}

void MatchSuffixes(benchmark::State& state) {
  MatchNames(state, {u"*.cpp", u"*.h"}, ".*\\.(cpp|h)");
}
BENCHMARK(MatchSuffixes)->Unit(benchmark::kMillisecond);

void MatchGeneral(benchmark::State& state) {
  MatchNames(state, {u"*re?ort*(1?)*.t*", u"d*-*7*.c??"},
             "(.*re.ort.*\\(1.\\).*\\.t.*|d.*-.*7.*\\.c..)");
}
BENCHMARK(MatchGeneral)->Unit(benchmark::kMillisecond);

/// The hand loop of the C library over the same patterns.
void MatchGeneralByFnmatch(benchmark::State& state) {
  std::vector<std::string> plain;
  for (const TString& name : bench::Names()) plain.push_back(ToUtf8(name));
  for (auto _ : state)
    benchmark::DoNotOptimize(MatchMillion(bench::Names(), [&](std::size_t i) {
      return fnmatch("*re?ort*(1?)*.t*", plain[i].c_str(), FNM_CASEFOLD) == 0 ||
             fnmatch("d*-*7*.c??", plain[i].c_str(), FNM_CASEFOLD) == 0;
    }));
}
BENCHMARK(MatchGeneralByFnmatch)->Unit(benchmark::kMillisecond);

}  // namespace

// The matcher's cost on ordinary names and on its worst case: a pattern of
// many stars whose last letter never occurs, against a long text, which a
// plain backtracking matcher would need exponential time for.
#include <benchmark/benchmark.h>

#include <string>

#include "fileops/wild_match.h"

namespace {

void BM_ExtensionPattern(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(wild_match("index.php", "*.php"));
}
BENCHMARK(BM_ExtensionPattern);

void BM_ListOfPatterns(benchmark::State& state) {
  for (auto _ : state) {
    benchmark::DoNotOptimize(wild_list_match_nocase("README.TXT", "*.bak, *.tmp, CVS, *.txt"));
  }
}
BENCHMARK(BM_ListOfPatterns);

// 2 * stars pattern characters ("*a*a...*b") against text_length "a"s.
void BM_WorstCaseStars(benchmark::State& state) {
  const auto stars = static_cast<size_t>(state.range(0));
  const std::string text(static_cast<size_t>(state.range(1)), 'a');
  std::string pattern;
  for (size_t i = 1; i < stars; ++i) pattern += "*a";
  pattern += "*b";
  for (auto _ : state) benchmark::DoNotOptimize(wild_match(text.c_str(), pattern.c_str()));
  state.SetComplexityN(state.range(1));
}
BENCHMARK(BM_WorstCaseStars)->Args({10, 1000})->Args({20, 1000})->Args({10, 10000})->Complexity();

}  // namespace

BENCHMARK_MAIN();

// The store's cost per look-up and per expansion as it grows from 100 to
// 10,000 settings. Names go through a hash index, so with the installer's
// access pattern (the same few dozen names read again and again, wherever
// they sit in the table) both stay flat: the fitted complexity reads O(1).
// The "Scattered" variants read every setting in turn: no scan either, but
// once the store outgrows the CPU's caches each read waits on memory, so
// their times rise with the table's size in bytes, not with a walk over it.
// The replaceable pass is linear in the number of settings.
#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <vector>

#include "settings/ini_expand.h"
#include "settings/ini_store.h"

namespace {

constexpr int kOperations = 1000000;

// A store of `count` settings named "setting_<i>", each replaceable, each
// value after the first referring to the first (spelt in capitals) and to a
// name no setting bears.
struct bench_store {
  explicit bench_store(int count) {
    for (int i = 0; i < count; ++i) {
      names.push_back("setting_" + std::to_string(i));
      values.push_back(i == 0 ? std::string("/root")
                              : "$(SETTING_0)/" + std::to_string(i) + "/$(nobody)");
    }
    for (int i = 0; i < count; ++i) {
      defs.push_back({names[i].c_str(), values[i].c_str(), INI_REPLACEABLE});
    }
    defs.push_back({nullptr, nullptr, 0});
    ini_setup(store, defs.data(), nullptr, 1);
  }
  ~bench_store() { ini_destroy(&store); }
  bench_store(const bench_store&) = delete;
  bench_store& operator=(const bench_store&) = delete;

  // The names of `hot` settings spread evenly over the table.
  std::vector<std::string> spread(size_t hot) const {
    std::vector<std::string> picked;
    for (size_t i = 0; i < hot; ++i) picked.push_back(names[i * names.size() / hot]);
    return picked;
  }

  std::vector<std::string> names;
  std::vector<std::string> values;
  std::vector<ini_setting_def> defs;
  ini_store* store = ini_create();
};

constexpr size_t kHotNames = 64;
constexpr size_t kStride = 7919;  // a prime stride visits every setting

void lookups(benchmark::State& state, const bench_store& bench,
             const std::vector<std::string>& names, size_t stride) {
  size_t next = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(ini_get(bench.store, names[next].c_str()));
    next = (next + stride) % names.size();
  }
  state.SetComplexityN(state.range(0));
}

void expansions(benchmark::State& state, const bench_store& bench,
                const std::vector<std::string>& names, size_t stride) {
  std::vector<std::string> texts;
  for (size_t i = 0; i < names.size(); ++i) {
    texts.push_back("$(" + names[i] + ")/$(" + names[names.size() - 1 - i] +
                    ")/$(unknown)/index.php");
  }
  char out[1000];
  size_t next = 0;
  for (auto _ : state) {
    ini_expand(bench.store, texts[next].c_str(), out, sizeof out);
    benchmark::DoNotOptimize(out);
    next = (next + stride) % texts.size();
  }
  state.SetComplexityN(state.range(0));
}

void BM_Lookup(benchmark::State& state) {
  const bench_store bench(static_cast<int>(state.range(0)));
  lookups(state, bench, bench.spread(kHotNames), 1);
}
BENCHMARK(BM_Lookup)
    ->RangeMultiplier(10)
    ->Range(100, 10000)
    ->Iterations(kOperations)
    ->Complexity(benchmark::o1);

void BM_LookupScattered(benchmark::State& state) {
  const bench_store bench(static_cast<int>(state.range(0)));
  lookups(state, bench, bench.names, kStride);
}
BENCHMARK(BM_LookupScattered)->RangeMultiplier(10)->Range(100, 10000)->Iterations(kOperations);

void BM_LookupIgnoringCase(benchmark::State& state) {
  const bench_store bench(static_cast<int>(state.range(0)));
  std::vector<std::string> names = bench.spread(kHotNames);
  for (std::string& name : names) name[0] = 'S';
  size_t next = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(ini_index_of_nocase(bench.store, names[next].c_str()));
    next = (next + 1) % names.size();
  }
  state.SetComplexityN(state.range(0));
}
BENCHMARK(BM_LookupIgnoringCase)
    ->RangeMultiplier(10)
    ->Range(100, 10000)
    ->Iterations(kOperations)
    ->Complexity(benchmark::o1);

void BM_Expand(benchmark::State& state) {
  const bench_store bench(static_cast<int>(state.range(0)));
  expansions(state, bench, bench.spread(kHotNames), 1);
}
BENCHMARK(BM_Expand)
    ->RangeMultiplier(10)
    ->Range(100, 10000)
    ->Iterations(kOperations)
    ->Complexity(benchmark::o1);

void BM_ExpandScattered(benchmark::State& state) {
  const bench_store bench(static_cast<int>(state.range(0)));
  expansions(state, bench, bench.names, kStride);
}
BENCHMARK(BM_ExpandScattered)->RangeMultiplier(10)->Range(100, 10000)->Iterations(kOperations);

// One replaceable pass over the whole store; the cost per setting stays flat.
void BM_ReplaceablePass(benchmark::State& state) {
  for (auto _ : state) {
    state.PauseTiming();
    auto bench = std::make_unique<bench_store>(static_cast<int>(state.range(0)));
    state.ResumeTiming();
    ini_process_replaceable(bench->store);
    state.PauseTiming();
    bench.reset();
    state.ResumeTiming();
  }
  state.SetComplexityN(state.range(0));
}
BENCHMARK(BM_ReplaceablePass)->RangeMultiplier(10)->Range(10, 1000)->Complexity();

}  // namespace

BENCHMARK_MAIN();

// The two containers against the standard library doing the same job.
#include <benchmark/benchmark.h>

#include <mutex>
#include <string>
#include <thread>
#include <unordered_map>
#include <vector>

#include "korutl.h"

namespace {

struct Record {
  const char *key;
  int64_t value;
};

const std::vector<std::string> &keys() {
  static const std::vector<std::string> k = [] {
    std::vector<std::string> v;
    for (int i = 0; i < 100000; ++i) v.push_back("host-" + std::to_string(i * 7919) + ".example");
    return v;
  }();
  return k;
}

// The same texts in memory of their own, for the lookups: the table holds
// the caller's key pointers, so looking up with those very pointers would
// compare each text with itself.
const std::vector<std::string> &probes() {
  static const std::vector<std::string> p = [] {
    std::vector<std::string> v;
    for (const auto &k : keys()) v.push_back(std::string(k.data(), k.size()));
    return v;
  }();
  return p;
}

void BM_HashTblCreate100k(benchmark::State &state) {
  for (auto _ : state) {
    KORVOHashTbl t;
    KORVOHashTblInit(&t);
    for (const auto &k : keys())
      benchmark::DoNotOptimize(KORVOHashTblLookup(&t, k.c_str(), sizeof(Record)));
    KORVOHashTblDestroy(&t);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(keys().size()));
}
BENCHMARK(BM_HashTblCreate100k)->Unit(benchmark::kMillisecond);

void BM_UnorderedMapCreate100k(benchmark::State &state) {
  for (auto _ : state) {
    std::unordered_map<std::string, Record> m;
    for (const auto &k : keys()) benchmark::DoNotOptimize(&m[k]);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(keys().size()));
}
BENCHMARK(BM_UnorderedMapCreate100k)->Unit(benchmark::kMillisecond);

void BM_HashTblFind1M(benchmark::State &state) {
  KORVOHashTbl t;
  KORVOHashTblInit(&t);
  for (const auto &k : keys()) KORVOHashTblLookup(&t, k.c_str(), sizeof(Record));
  for (auto _ : state) {
    for (size_t i = 0; i < 1000000; ++i) {
      benchmark::DoNotOptimize(KORVOHashTblLookup(&t, probes()[i % probes().size()].c_str(), 0));
    }
  }
  KORVOHashTblDestroy(&t);
  state.SetItemsProcessed(state.iterations() * 1000000);
}
BENCHMARK(BM_HashTblFind1M)->Unit(benchmark::kMillisecond);

void BM_UnorderedMapFind1M(benchmark::State &state) {
  std::unordered_map<std::string, Record> m;
  for (const auto &k : keys()) m[k];
  for (auto _ : state) {
    for (size_t i = 0; i < 1000000; ++i)
      benchmark::DoNotOptimize(m.find(probes()[i % probes().size()]));
  }
  state.SetItemsProcessed(state.iterations() * 1000000);
}
BENCHMARK(BM_UnorderedMapFind1M)->Unit(benchmark::kMillisecond);

// Push/pop pairs; with two threads both work on the one shared stack.
KORVOStack *shared_stack = nullptr;

void BM_StackPushPop(benchmark::State &state) {
  if (state.thread_index() == 0) KORVOStackInit(&shared_stack);
  for (auto _ : state) {
    KORVOStackPush(shared_stack, 1);
    benchmark::DoNotOptimize(KORVOStackPop(shared_stack));
  }
  if (state.thread_index() == 0) {
    KORVOStackFinite(&shared_stack);
    shared_stack = nullptr;
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_StackPushPop)->Threads(1)->Threads(2)->UseRealTime();

std::mutex vector_mutex;
std::vector<intptr_t> shared_vector;

void BM_MutexVectorPushPop(benchmark::State &state) {
  for (auto _ : state) {
    {
      std::lock_guard g(vector_mutex);
      shared_vector.push_back(1);
    }
    std::lock_guard g(vector_mutex);
    benchmark::DoNotOptimize(shared_vector.back());
    shared_vector.pop_back();
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_MutexVectorPushPop)->Threads(1)->Threads(2)->UseRealTime();

}  // namespace

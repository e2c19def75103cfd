// Runs every registered candidate at n = 1024 and 1048576 (and n = 16 for our
// kernels, to show the frame's fixed cost), then prints ns/element and, for our
// kernels, the speed-up over the fastest peer of the same accuracy class.
//   build/default/bench/vector_math/bench_vector_math [--benchmark_filter=...]
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "oxa/service.h"
#include "vector_math/vml_bench_harness.hpp"

namespace oxa::bench {
namespace {

std::vector<Candidate>& candidates() {
  static std::vector<Candidate> all;
  return all;
}

struct Result {
  const Candidate* c;
  int64_t n;
  double ns_per_element;
};

class Collector : public benchmark::ConsoleReporter {
 public:
  std::map<std::string, std::pair<const Candidate*, int64_t>> index;
  std::vector<Result> results;
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& r : runs) {
      const auto it = index.find(r.run_name.function_name);
      if (it == index.end() || r.iterations == 0) continue;
      // CPU time: on a shared machine wall time also counts other processes.
      const double ns = r.GetAdjustedCPUTime() / static_cast<double>(it->second.second);
      results.push_back({it->second.first, it->second.second, ns});
    }
    ConsoleReporter::ReportRuns(runs);
  }
};

void print_table(const std::vector<Result>& results) {
  std::printf("\n%-14s %-8s %-22s %9s %12s %14s\n", "function", "class", "implementation", "n",
              "ns/element", "vs best peer");
  for (const Result& r : results) {
    double best = 0;
    for (const Result& p : results)
      if (!p.c->ours && p.n == r.n && p.c->function == r.c->function && p.c->accuracy == r.c->accuracy)
        best = best == 0 ? p.ns_per_element : std::min(best, p.ns_per_element);
    char ratio[32] = "";
    if (r.c->ours && best > 0) std::snprintf(ratio, sizeof ratio, "%.2fx faster", best / r.ns_per_element);
    std::printf("%-14s %-8s %-22s %9lld %12.3f %14s\n", r.c->function.c_str(), r.c->accuracy.c_str(),
                r.c->name.c_str(), static_cast<long long>(r.n), r.ns_per_element, ratio);
  }
}

}  // namespace

void add(Candidate c) { candidates().push_back(std::move(c)); }

}  // namespace oxa::bench

int main(int argc, char** argv) {
  using namespace oxa::bench;
  Collector collector;
  for (const Candidate& c : candidates()) {
    std::vector<int64_t> sizes = c.sizes.empty() ? std::vector<int64_t>{1024, 1048576} : c.sizes;
    if (c.ours) sizes.insert(sizes.begin(), 16);
    for (int64_t n : sizes) {
      const std::string name = c.function + "/" + c.name + "/" + std::to_string(n);
      collector.index[name] = {&c, n};
      benchmark::RegisterBenchmark(name.c_str(), [&c, n](benchmark::State& state) {
        const size_t bytes = static_cast<size_t>(n) * (c.is_float ? 4 : 8);
        void* a = oxa_serv_allocate(bytes * c.inputs, 128);
        void* r = oxa_serv_allocate(bytes * c.outputs, 128);
        c.fill(n * c.inputs, a);
        for (auto _ : state) {
          c.run(n, a, r);
          benchmark::DoNotOptimize(r);
          benchmark::ClobberMemory();
        }
        state.SetItemsProcessed(state.iterations() * n);
        oxa_serv_deallocate(a);
        oxa_serv_deallocate(r);
      });
    }
  }
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks(&collector);
  print_table(collector.results);
  benchmark::Shutdown();
  return 0;
}

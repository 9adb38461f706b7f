// Times every operation. --benchmark_filter picks, as with any program of the benchmark library.
#include <benchmark/benchmark.h>

#include "bench/operations.h"

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  for (const Operation& operation : operations()) {
    benchmark::RegisterBenchmark(operation.name.c_str(),
                                 [run = operation.run](benchmark::State& state) {
                                   for (auto _ : state) {
                                     run();
                                     benchmark::ClobberMemory();
                                   }
                                 });
  }
  benchmark::RunSpecifiedBenchmarks();
}

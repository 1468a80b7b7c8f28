// The benchmark program: Google Benchmark's usual entry, unless the whole-run
// benchmark started it again to collect one phone in a fresh process.
#include "CollectPhoneChild.hpp"

#include <benchmark/benchmark.h>

int main(int argc, char** argv) {
  if (const int status = tavrin::bench::collectPhoneChild(argc, argv); status >= 0) return status;
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}

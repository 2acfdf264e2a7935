#pragma once
// A console reporter that also keeps the CPU time per iteration of every run,
// for benchmarks that print ratios of two runs at the end: on a shared
// machine the CPU time varies less than the wall clock.
#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

namespace vostan::bench {

class RatioReporter : public benchmark::ConsoleReporter {
 public:
  std::map<std::string, double> perIteration;
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& r : runs)
      if (r.iterations > 0 && r.run_type == Run::RT_Iteration)
        perIteration[r.benchmark_name()] = r.GetAdjustedCPUTime();
    ConsoleReporter::ReportRuns(runs);
  }
};

}  // namespace vostan::bench

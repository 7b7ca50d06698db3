#include "table.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <iterator>
#include <map>
#include <vector>

namespace {

/// In the order in which they were taken.
using Seconds = std::vector<double>;

/// Keeps what each run took, by the benchmark's name.
class Collector : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context& /*context*/) override { return true; }

  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.run_type != Run::RT_Iteration) continue;
      seconds_[run.run_name.function_name].push_back(run.real_accumulated_time /
                                                     static_cast<double>(run.iterations));
    }
  }

  const Seconds& Of(const std::string& name) { return seconds_[name]; }

 private:
  std::map<std::string, Seconds> seconds_;
};

void Register(const char* name, const Side& side) {
  benchmark::RegisterBenchmark(name, [&side](benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state) {
      if (side.prepare) {
        state.PauseTiming();
        side.prepare();
        state.ResumeTiming();
      }
      side.work();
    }
  })->UseRealTime();
}

Seconds Ratios(const Seconds& one, const Seconds& other) {
  Seconds ratios;
  std::transform(one.begin(), one.end(), other.begin(), std::back_inserter(ratios),
                 std::divides<double>());
  return ratios;
}

/// What the sides took at one size. The ratios are those of runs that were made at about the same
/// time.
struct Measured {
  int items = 0;
  Seconds library;
  Seconds alternative;
  Seconds ratios;
  Seconds process_ratios;  ///< of the library in a process of its own
};

Measured Measure(const Line& line, int size) {
  std::fprintf(stderr, "%s, %s: %d\n", line.library.c_str(), line.items.c_str(), size);
  const Pair pair = line.make(size);
  Register("library", pair.library);
  Register("alternative", pair.alternative);
  if (pair.process.work) Register("process", pair.process);
  Collector collector;
  benchmark::RunSpecifiedBenchmarks(&collector);
  benchmark::ClearRegisteredBenchmarks();
  const Seconds& library = collector.Of("library");
  const Seconds& alternative = collector.Of("alternative");
  return {pair.items, library, alternative, Ratios(library, alternative),
          Ratios(collector.Of("process"), alternative)};
}

/// The value below which `part` of the values lie, between two of them if need be.
double Quantile(Seconds values, double part) {
  std::sort(values.begin(), values.end());
  const double place = part * static_cast<double>(values.size() - 1);
  const auto below = static_cast<size_t>(place);
  const size_t above = std::min(below + 1, values.size() - 1);
  return values[below] + (values[above] - values[below]) * (place - static_cast<double>(below));
}

double Median(const Seconds& values) { return Quantile(values, 0.5); }

std::string Number(double number, int decimals) {
  std::array<char, 32> text;
  std::snprintf(text.data(), text.size(), "%.*f", decimals, number);
  return text.data();
}

std::string Milliseconds(const Seconds& values) {
  const double milliseconds = Median(values) * 1e3;
  return Number(milliseconds, milliseconds < 10 ? 2 : 0) + " ms";
}

std::string Ratio(const Seconds& ratios) {
  if (ratios.empty()) return "—";
  return Number(Median(ratios), 2) + " (" + Number(Quantile(ratios, 0.25), 2) + "–" +
         Number(Quantile(ratios, 0.75), 2) + ")";
}

/// How much more an item costs at each larger size than at the smallest.
std::string Growth(const std::array<Measured, 3>& sizes, Seconds Measured::*side) {
  const auto per_item = [side](const Measured& measured) {
    return Median(measured.*side) / measured.items;
  };
  return Number(per_item(sizes[1]) / per_item(sizes[0]), 2) + ", " +
         Number(per_item(sizes[2]) / per_item(sizes[0]), 2);
}

/// The cells of a row.
std::string Row(const std::vector<std::string>& cells) {
  std::string row = "|";
  for (const std::string& cell : cells) row += ' ' + cell + " |";
  return row + '\n';
}

}  // namespace

std::string TableHead() {
  const std::vector<std::string> titles = {
      "Library", "Beside",           "Size",         "Time",   "Beside it",       "Ratio",
      "Goal",    "Ratio at 1×, 10×", "As processes", "Growth", "Growth beside it"};
  return Row(titles) + Row(std::vector<std::string>(titles.size(), "---"));
}

std::string TableRow(const Line& line) {
  std::array<Measured, 3> sizes;
  std::transform(line.sizes.begin(), line.sizes.end(), sizes.begin(),
                 [&line](int size) { return Measure(line, size); });
  const Measured& largest = sizes[2];
  return Row({line.library, line.alternative, std::to_string(largest.items) + ' ' + line.items,
              Milliseconds(largest.library), Milliseconds(largest.alternative),
              Ratio(largest.ratios), line.goal > 0 ? "≤ " + Number(line.goal, 2) : "—",
              Ratio(sizes[0].ratios) + ", " + Ratio(sizes[1].ratios), Ratio(largest.process_ratios),
              Growth(sizes, &Measured::library), Growth(sizes, &Measured::alternative)});
}

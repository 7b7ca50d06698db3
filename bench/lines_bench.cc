// How long it takes to prune a control file, to drop lines of a text file (beside sed) and to list
// the tasks of a tree (beside ps).

#include <benchmark/benchmark.h>
#include <kwinstutil/files.h>
#include <kwinstutil/processes.h>
#include <kwinstutil/spk.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <string>

namespace {

/// A file of `lines` lines, one in ten of which goes, that lasts as long as the object.
class Lines {
 public:
  explicit Lines(int64_t lines) {
    if (mkdtemp(dir_) == nullptr) std::abort();
    for (int64_t i = 0; i < lines; ++i) {
      content_ += i % 10 == 0 ? "code:SPK:SP3:level=3\n"
                              : "code:PRD:Package" + std::to_string(i) + ":os=aix:ga=R12\n";
    }
    Write();
  }
  Lines(const Lines&) = delete;
  Lines& operator=(const Lines&) = delete;
  ~Lines() {
    unlink(path().c_str());
    unlink(pruned().c_str());
    rmdir(dir_);
  }

  void Write() const { std::ofstream(path()) << content_; }
  std::string path() const { return std::string(dir_) + "/PRESENT"; }
  std::string pruned() const { return std::string(dir_) + "/pruned"; }

 private:
  char dir_[32] = "/tmp/kwinst-bench-XXXXXX";
  std::string content_;
};

void Run(benchmark::State& state, const std::string& command) {
  if (std::system(command.c_str()) != 0) state.SkipWithError(command.c_str());
}

void Prune(benchmark::State& state) {
  const Lines lines(state.range(0));
  char name[] = "SP3";
  for ([[maybe_unused]] auto _ : state) {
    TEVInsResetPresent reset;
    reset.InitSource(lines.path().data());
    reset.InitDest(lines.pruned().data());
    if (reset.Remove(name, code) != 0) state.SkipWithError("not pruned");
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(Prune)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMillisecond);

template <typename Function>
void DropLines(benchmark::State& state, Function drop) {
  const Lines lines(100'000);
  for ([[maybe_unused]] auto _ : state) {
    state.PauseTiming();
    lines.Write();
    state.ResumeTiming();
    drop(lines.path());
  }
}
void SuppressLine(benchmark::State& state) {
  char text[] = "code:SPK:";
  DropLines(state, [&](std::string file) { TEVInsSuppressLine(file.data(), text, nullptr, 1); });
}
void Sed(benchmark::State& state) {
  DropLines(state, [&](const std::string& file) { Run(state, "sed -i '/^code:SPK:/d' " + file); });
}
BENCHMARK(SuppressLine)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(Sed)->Unit(benchmark::kMillisecond)->UseRealTime();

void CheckTask(benchmark::State& state) {
  for ([[maybe_unused]] auto _ : state) {
    TEVInsTaskList tasks;
    benchmark::DoNotOptimize(tasks.TEVInsCheckTask("/nowhere", nullptr));
  }
}
void Ps(benchmark::State& state) {
  for ([[maybe_unused]] auto _ : state) Run(state, "ps -ef >/dev/null");
}
BENCHMARK(CheckTask)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(Ps)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

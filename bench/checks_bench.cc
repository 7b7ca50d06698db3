// How long it takes to ask for what is left to install, beside opening the two tables.

#include <benchmark/benchmark.h>
#include <kwinstutil/checks.h>
#include <unistd.h>

#include <fstream>
#include <string>

namespace {

/// A table file with packages 0 to `count` - 1, as long as the object lives.
struct TableFile {
  TableFile(const std::string& name, int count) : path("/tmp/kwinst-bench-" + name) {
    path += std::to_string(getpid());
    std::ofstream file(path);
    for (int i = 0; i < count; ++i) file << "code:PRD:Package" << i << '\n';
  }
  TableFile(const TableFile&) = delete;
  TableFile& operator=(const TableFile&) = delete;
  ~TableFile() { unlink(path.c_str()); }

  std::string path;
};

const TableFile& MediumFile() {
  static const TableFile file("medium", 4096);
  return file;
}

const TableFile& TreeFile() {
  static const TableFile file("tree", 40'000);
  return file;
}

void OpenBothTables(benchmark::State& state) {
  for ([[maybe_unused]] auto _ : state) {
    const TEVINSMediaToc medium(MediumFile().path.c_str());
    const TEVINSInstToc tree(TreeFile().path.c_str());
    benchmark::DoNotOptimize(medium.GetNbToc() + tree.GetNbToc());
  }
}
BENCHMARK(OpenBothTables)->Unit(benchmark::kMicrosecond);

void CheckInstall(benchmark::State& state) {
  for ([[maybe_unused]] auto _ : state) {
    state.PauseTiming();
    TEVINSMediaToc medium(MediumFile().path.c_str());
    TEVINSInstToc tree(TreeFile().path.c_str());
    TEVUnicodeString message;
    state.ResumeTiming();
    // Everything is installed: the answer that takes longest.
    if (TEVInsCheckInstall(code, &tree, &medium, &message) != 0) state.SkipWithError("not all");
  }
}
BENCHMARK(CheckInstall)->Unit(benchmark::kMicrosecond);

}  // namespace

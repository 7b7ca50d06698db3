// How long it takes to read a table of contents and to check a tree against its manifests.

#include <benchmark/benchmark.h>
#include <qtoclib/TEVINSToc.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace {

namespace fs = std::filesystem;

/// A directory that lasts as long as the object.
class TempDir {
 public:
  TempDir() {
    std::string name = fs::temp_directory_path() / "kwinst-bench-XXXXXX";
    if (mkdtemp(name.data()) == nullptr) std::abort();
    path_ = name;
  }
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;
  ~TempDir() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
  }

  std::string Write(const std::string& relative, const std::string& content) const {
    const fs::path path = path_ / relative;
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << content;
    chmod(path.c_str(), 0644);
    return path;
  }

  std::string path() const { return path_; }

 private:
  fs::path path_;
};

void ReadTable(benchmark::State& state) {
  const TempDir dir;
  std::string table;
  for (int64_t i = 0; i < state.range(0); ++i) {
    table += "code:PRD:Package" + std::to_string(i) + ":os=aix:ga=R12\n";
  }
  const std::string path = dir.Write("TOC", table);
  for ([[maybe_unused]] auto _ : state) {
    const TEVINSMediaToc toc(path.c_str());
    benchmark::DoNotOptimize(toc.GetNbToc());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(ReadTable)->Arg(4'000)->Arg(40'000)->Unit(benchmark::kMicrosecond);

/// The argument is the number of files, of 50 KB each.
void CheckIntegrity(benchmark::State& state) {
  const TempDir dir;
  const std::string content(50'000, '\0');
  std::string manifest;
  for (int64_t i = 0; i < state.range(0); ++i) {
    const std::string file = "code/" + std::to_string(i % 100) + "/file" + std::to_string(i);
    dir.Write(file, content);
    manifest += file + "\n0644 50000 4263624416\n";  // what cksum prints for 50,000 zero bytes
  }
  dir.Write("control/PRESENT", "code:PRD:P\n");
  dir.Write("control/P", manifest);
  const TEVINSInstToc toc(dir.path().c_str());
  for ([[maybe_unused]] auto _ : state) {
    std::ostringstream report;
    if (toc.CheckIntegrity(report, dir.path().c_str(), 0, 0) != 1) {
      state.SkipWithError("the tree is not intact");
      break;
    }
  }
  state.SetBytesProcessed(state.iterations() * state.range(0) * 50'000);
}
BENCHMARK(CheckIntegrity)->Arg(100)->Arg(2'000)->Unit(benchmark::kMillisecond);

}  // namespace

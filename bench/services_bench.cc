// How long it takes to replace the product's three entries in a services file of 20,000 lines, and
// what sed needs for the same replacements.

#include <benchmark/benchmark.h>
#include <kwinstutil/services.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <string>

namespace {

constexpr int kLines = 20'000;

/// A services file with the three entries in its middle, which lasts as long as the object.
class ServicesFile {
 public:
  ServicesFile() {
    std::ofstream file(path_);
    for (int i = 0; i < kLines; ++i) {
      if (i == kLines / 2) file << "morvelk7bb 1/tcp\nmorvelk7run 2/tcp\nTEVDeviceBroker 3/tcp\n";
      file << "service" << i << "\t\t" << i << "/tcp\t\talias" << i << "  # a comment\n";
    }
  }
  ServicesFile(const ServicesFile&) = delete;
  ServicesFile& operator=(const ServicesFile&) = delete;
  ~ServicesFile() { unlink(path_.c_str()); }

  char* path() { return path_.data(); }

 private:
  std::string path_ = "/tmp/kwinst-bench-services-" + std::to_string(getpid());
};

void ReplaceWithLibrary(benchmark::State& state) {
  ServicesFile file;
  for ([[maybe_unused]] auto _ : state) {
    if (UpdateNewPorts(1, 2, 3, file.path(), nullptr) != 1) state.SkipWithError("failed");
  }
}
BENCHMARK(ReplaceWithLibrary)->UseRealTime()->Unit(benchmark::kMillisecond);

void ReplaceWithSed(benchmark::State& state) {
  ServicesFile file;
  std::string script =
      "s|^morvelk7bb.*|morvelk7bb       1/tcp   #Brovik Communication ports|;"
      "s|^morvelk7run.*|morvelk7run      2/tcp   #Brovik Communication ports|;"
      "s|^TEVDeviceBroker.*|TEVDeviceBroker 3/tcp     #Brovik Communication ports|";
  std::string program = "sed";
  std::string in_place = "-i";
  char* const arguments[] = {program.data(), in_place.data(), script.data(), file.path(), nullptr};
  for ([[maybe_unused]] auto _ : state) {
    pid_t child = 0;
    int status = 1;
    if (posix_spawnp(&child, "sed", nullptr, nullptr, arguments, environ) != 0 ||
        waitpid(child, &status, 0) != child || status != 0) {
      state.SkipWithError("sed failed");
    }
  }
}
BENCHMARK(ReplaceWithSed)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace

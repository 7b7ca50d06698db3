// Calls a fuzz target once with each file of the directories that are named: what libFuzzer's own
// main does with files, for any compiler.

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>

#include "fuzz.h"

int main(int argc, char** argv) {
  int inputs = 0;
  for (int i = 1; i < argc; ++i) {
    for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
      const std::string input = fuzz::Read(entry.path());
      // A target that ends the process leaves the name of its input as the last line.
      std::printf("%s\n", entry.path().c_str());
      std::fflush(stdout);
      LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(input.data()), input.size());
      ++inputs;
    }
  }
  std::printf("%d inputs\n", inputs);
  return inputs > 0 ? 0 : 1;
}

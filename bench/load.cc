// Loads a library, calls its first function, and prints how many microseconds that took. Without an
// argument it does nothing.

#include <dlfcn.h>

#include <cstdio>
#include <ctime>

namespace {

double Microseconds() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<double>(now.tv_sec) * 1e6 + static_cast<double>(now.tv_nsec) / 1e3;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 1) return 0;
  const double start = Microseconds();
  void* library = dlopen(argv[1], RTLD_NOW);
  if (library == nullptr) return 1;
  void* function = dlsym(library, "BROVIK_ZEB2_INTERNAL_KWINSTUTIL");
  if (function == nullptr || reinterpret_cast<int (*)()>(function)() != 1) return 1;
  std::printf("%.0f\n", Microseconds() - start);
  return 0;
}

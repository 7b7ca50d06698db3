// One call of the library as a process of its own, to be compared with a program that does the same
// work.

#include <cstdio>
#include <exception>

#include "calls.h"

int main(int argc, char** argv) try {
  if (argc > 1) Call({argv + 1, argv + argc});
  return 0;
} catch (const std::exception& error) {
  std::fprintf(stderr, "%s\n", error.what());
  return 1;
}

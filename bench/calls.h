#ifndef BENCH_CALLS_H_
#define BENCH_CALLS_H_

#include <string>
#include <vector>

/// Makes the call of the library that the first word names, with the words behind it, as
/// benchmarks.cc does. Throws when it fails.
///
/// "write-line-by-line" calls no function of the library. It makes only the writes that Remove must
/// make.
void Call(const std::vector<std::string>& words);

#endif  // BENCH_CALLS_H_

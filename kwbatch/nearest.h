#ifndef KWBATCH_NEAREST_H_
#define KWBATCH_NEAREST_H_

#include <string>
#include <vector>

/// "; did you mean ...?" with `prefix` and the candidate closest to the word; empty when none is
/// close.
std::string DidYouMean(const std::string& prefix, const std::string& word,
                       const std::vector<std::string>& candidates);

#endif  // KWBATCH_NEAREST_H_

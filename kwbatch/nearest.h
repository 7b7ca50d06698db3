#ifndef KWBATCH_NEAREST_H_
#define KWBATCH_NEAREST_H_

#include <string>
#include <vector>

/// "; did you mean ...?" with the candidate that is next to the word and `prefix` before it, or
/// nothing when none is near.
std::string DidYouMean(const std::string& prefix, const std::string& word,
                       const std::vector<std::string>& candidates);

#endif  // KWBATCH_NEAREST_H_

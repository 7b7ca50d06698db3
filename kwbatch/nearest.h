#ifndef KWBATCH_NEAREST_H_
#define KWBATCH_NEAREST_H_

#include <string>
#include <vector>

/// The text that refuses the word, and the question whether the candidate closest to it is meant,
/// with `prefix` before it, if there is one.
std::string DidYouMean(const std::string& text, const std::string& prefix, const std::string& word,
                       const std::vector<std::string>& candidates);

#endif  // KWBATCH_NEAREST_H_

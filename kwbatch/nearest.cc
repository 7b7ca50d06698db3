#include "nearest.h"

#include <algorithm>
#include <numeric>

#include "texts.h"

namespace {

/// How many letters must be put in, left out or changed to make one word the other.
size_t EditDistance(const std::string& one, const std::string& other) {
  std::vector<size_t> row(other.size() + 1);
  std::iota(row.begin(), row.end(), size_t{0});
  for (size_t i = 0; i < one.size(); ++i) {
    size_t diagonal = row[0];
    row[0] = i + 1;
    for (size_t j = 0; j < other.size(); ++j) {
      const size_t changed = diagonal + (one[i] == other[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({row[j] + 1, diagonal + 1, changed});
    }
  }
  return row.back();
}

}  // namespace

std::string DidYouMean(const std::string& text, const std::string& prefix, const std::string& word,
                       const std::vector<std::string>& candidates) {
  constexpr size_t kTelling = 3;  // so many letters of a name say which is meant
  const std::string* nearest = nullptr;
  size_t least = std::max<size_t>(1, word.size() / 3) + 1;
  for (const std::string& candidate : candidates) {
    const bool part = word.size() >= kTelling && candidate.find(word) != std::string::npos;
    const size_t distance = part ? 0 : EditDistance(word, candidate);
    if (distance >= least) continue;
    least = distance;
    nearest = &candidate;
  }
  if (nearest == nullptr) return text;
  return Text("DidYouMean", "{1}; did you mean {2}?", {text, prefix + *nearest});
}

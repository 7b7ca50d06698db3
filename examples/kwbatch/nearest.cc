#include "nearest.h"

#include <algorithm>
#include <numeric>

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

std::string DidYouMean(const std::string& word, const std::vector<std::string>& candidates) {
  const std::string* nearest = nullptr;
  size_t least = std::max<size_t>(2, word.size() / 3) + 1;
  for (const std::string& candidate : candidates) {
    const size_t distance = EditDistance(word, candidate);
    if (distance >= least) continue;
    least = distance;
    nearest = &candidate;
  }
  return nearest == nullptr ? "" : "; did you mean " + *nearest + "?";
}

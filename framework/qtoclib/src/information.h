#ifndef QTOCLIB_INFORMATION_H_
#define QTOCLIB_INFORMATION_H_

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace kwinst {

/// The information text, which the whole process shares. Each line of it ends with a newline.
std::string& InformationText();

/// What is wrong with the lines of one file. The first twenty wrong lines are reported one by one.
/// The others are only counted: all lines of a file of another kind are wrong.
class LineProblems {
 public:
  explicit LineProblems(std::string file) : file_(std::move(file)) {}

  void Add(size_t line, const char* what);

  /// The report, a string for each line of it. Empty if nothing is wrong.
  std::vector<std::string> Report() const;

 private:
  std::string file_;
  std::vector<std::string> reported_;
  size_t unreported_ = 0;
};

}  // namespace kwinst

#endif  // QTOCLIB_INFORMATION_H_

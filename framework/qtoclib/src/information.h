#ifndef QTOCLIB_INFORMATION_H_
#define QTOCLIB_INFORMATION_H_

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace kwinst {

/// The information text, which the whole process shares. Each line of it ends with a newline.
std::string& InformationText();

/// What is wrong with the lines of one file. The first twenty wrong lines are told one by one, and
/// the others counted, since a file that is something else altogether has nothing but wrong lines.
class LineProblems {
 public:
  explicit LineProblems(std::string file) : file_(std::move(file)) {}

  void Add(size_t line, const char* what);

  /// The report, a string for each line of it. Empty when nothing is wrong.
  std::vector<std::string> Report() const;

 private:
  std::string file_;
  std::vector<std::string> told_;
  size_t untold_ = 0;
};

}  // namespace kwinst

#endif  // QTOCLIB_INFORMATION_H_

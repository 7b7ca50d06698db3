#ifndef KWINSTUTIL_TESTS_FIXTURE_H_
#define KWINSTUTIL_TESTS_FIXTURE_H_

#include <gtest/gtest.h>
#include <kb0core/TEVUnicodeString.h>

#include <functional>
#include <initializer_list>
#include <map>
#include <optional>
#include <string>
#include <string_view>

/// A message that no function has assigned.
constexpr const char* kUntouched = "untouched";

/// A test with a temporary directory of its own and an environment that is put back afterwards.
/// Its message catalog has KEY|{1}|{2}|{3}|{4} for each key of the English one: see Message().
class Fixture : public ::testing::Test {
 protected:
  Fixture();
  ~Fixture() override;

  /// The full path of `relative` in the test's directory.
  std::string Path(const std::string& relative) const { return dir_ + "/" + relative; }

  /// Makes a file or a directory, and the directories above it. Returns its full path.
  std::string Write(const std::string& relative, std::string_view content = "") const;
  std::string MakeDir(const std::string& relative) const;

  /// Makes a shell script that can be executed. Returns its full path.
  std::string Program(const std::string& relative, const std::string& commands) const;

  /// What functions have put into message_ since the last call.
  std::string Told();

  /// Messages have their default texts from here on: the catalog has no keys.
  void UseDefaultTexts();

  /// Sets a variable until the test ends; a null `value` unsets it.
  void SetEnv(const std::string& name, const char* value);

  std::string dir_;  ///< the test's directory, readable by everyone
  TEVUnicodeString message_ = kUntouched;

 private:
  std::map<std::string, std::optional<std::string>> environment_;  ///< values before the test
};

/// The content of a file, or "(no file)".
std::string Read(const std::string& path);
bool Exists(const std::string& path);

/// The values of the variables `prefix`NAME, each with a ";" behind it; "-" for one that is not
/// set.
std::string Env(std::initializer_list<const char*> names, const std::string& prefix = "");

/// The message that the test catalog makes of a key and up to four parameters.
std::string Message(const std::string& key, const std::string& p1 = "", const std::string& p2 = "",
                    const std::string& p3 = "", const std::string& p4 = "");

/// Runs `body` in a child process, as `nobody` instead of root. Its expectations count.
void AsNobody(const std::function<void()>& body);

/// What `body` prints on a standard stream (1 or 2).
std::string Captured(int descriptor, const std::function<void()>& body);

/// A path as the exported functions take it; some shorten it in place.
class CharPath {
 public:
  explicit CharPath(std::string text) : text_(std::move(text)) {}
  operator char*() { return text_.data(); }  // NOLINT(google-explicit-constructor)
  std::string str() const { return text_.c_str(); }

 private:
  std::string text_;
};

#endif  // KWINSTUTIL_TESTS_FIXTURE_H_

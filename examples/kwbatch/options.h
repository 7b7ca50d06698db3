#ifndef KWBATCH_OPTIONS_H_
#define KWBATCH_OPTIONS_H_

#include <map>
#include <stdexcept>
#include <string>
#include <vector>

/// Ends the program with exit status 2.
struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// A command line: its words, and its options by name, without the dashes.
class Options {
 public:
  /// Throws a UsageError.
  Options(int count, char** arguments);

  bool Has(const std::string& name) const { return values_.count(name) != 0; }

  /// The value of an option; empty when it was not given.
  std::string Text(const std::string& name) const;

  /// The number that an option has for its value, or `otherwise`. Throws a UsageError.
  int Number(const std::string& name, int otherwise) const;

  /// Throws a UsageError when one of the `others` was given without the option `lead`, without
  /// which it means nothing.
  void RequireWith(const std::string& lead, const std::vector<std::string>& others) const;

  const std::vector<std::string>& words() const { return words_; }

  /// The lines of the help about options.
  static std::string Help();

 private:
  std::map<std::string, std::string> values_;
  std::vector<std::string> words_;
};

#endif  // KWBATCH_OPTIONS_H_

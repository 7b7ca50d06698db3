#ifndef KWBATCH_OPTIONS_H_
#define KWBATCH_OPTIONS_H_

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "names.h"

class Options;

/// What kwbatch can do.
struct Command {
  CommandName name;
  std::vector<WordName> words;  ///< what must follow the name
  void (*run)(const Options& options);
  std::string help;
  const char* examples;  ///< command lines
};

/// A command line: its command, the words after it, and its options by name, without the dashes.
class Options {
 public:
  /// Returns no value after it has printed the help or the version. Options that the command line
  /// does not give are taken from the file of answers, and all are written to that of
  /// --save-answers. The paths do not depend on the current directory. Throws a UsageError, or a
  /// Refusal when the answers cannot be written.
  static std::optional<Options> Parse(int count, char** arguments,
                                      const std::vector<Command>& commands);

  /// Does the command take this option? All other questions about an option that it does not take
  /// throw a logic_error: a table and the code differ.
  bool Takes(OptionName name) const;

  bool Has(OptionName name) const;
  bool Has(WordName name) const { return words_.count(name.text) != 0; }

  /// The value of an option; empty when it was not given.
  std::string Text(OptionName name) const;

  /// The number that an option gives, or `otherwise`. Throws a UsageError.
  int Number(OptionName name, int otherwise) const;

  /// The word with this name after the command, which must take such a word.
  const std::string& Word(WordName name) const { return words_.at(name.text); }

  /// The words that end the command line: absolute paths, but those relative ones that do not exist
  /// stay as they are.
  const std::vector<std::string>& Files() const { return files_; }

  /// The same options for one medium.
  Options ForMedium(const std::string& medium, const std::string& target) const;

  const Command& command() const { return *command_; }

 private:
  explicit Options(const Command* command) : command_(command) {}

  /// Takes the values that the command has, except a flag's "no". Throws a UsageError if one must
  /// be a number and is not, or needs another option that is not given.
  void Take(const std::map<std::string, std::string>& values);

  /// Makes the paths absolute that a user may give otherwise.
  void MakePathsAbsolute();

  const Command* command_;
  std::map<std::string, std::string> words_;
  std::vector<std::string> files_;
  std::map<std::string, std::string> values_;
};

#endif  // KWBATCH_OPTIONS_H_

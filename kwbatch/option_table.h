#ifndef KWBATCH_OPTION_TABLE_H_
#define KWBATCH_OPTION_TABLE_H_

#include <string>
#include <vector>

#include "names.h"

/// An option that a command line or a file of answers may give.
struct OptionSpec {
  OptionName name;
  const char* value;  ///< what its value is, "N" for a number; null for an option without one
  std::string help;
  OptionName needs = {nullptr};  ///< the option without which it means nothing
};

/// Options that the help shows together, and the commands that take them.
struct OptionGroup {
  std::string title;
  std::vector<CommandName> commands;  ///< none means every command
  std::vector<OptionSpec> options;

  bool IsFor(const std::string& command) const;
};

/// All groups, in the order of the help.
const std::vector<OptionGroup>& OptionGroups();

/// What the help says of a word behind a command.
const std::string& HelpOf(WordName word);

#endif  // KWBATCH_OPTION_TABLE_H_

#ifndef KWBATCH_OPTION_TABLE_H_
#define KWBATCH_OPTION_TABLE_H_

#include <string>
#include <vector>

#include "names.h"

/// An option that a command line or a file of answers may give.
struct OptionSpec {
  OptionName name;
  const char* value;  ///< what its value is, "N" for a number; null for an option without one
  const char* help;
  OptionName needs = {nullptr};  ///< the option without which it means nothing
};

/// Options that the help shows together, and the commands that take them.
struct OptionGroup {
  const char* title;
  std::vector<CommandName> commands;  ///< none means every command
  std::vector<OptionSpec> options;

  bool IsFor(const std::string& command) const;
};

/// All groups, in the order of the help.
const std::vector<OptionGroup>& OptionGroups();

#endif  // KWBATCH_OPTION_TABLE_H_

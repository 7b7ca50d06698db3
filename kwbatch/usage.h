#ifndef KWBATCH_USAGE_H_
#define KWBATCH_USAGE_H_

#include <string>
#include <vector>

namespace CLI {
class App;
}
struct Command;

/// \file
/// What is wrong with a command line, in the user's words.

/// Says that an option, which is named with its dashes, has no value.
std::string NeedsValue(const std::string& option);

/// Throws a UsageError for the first option, or else the first word, that CLI11 had no use for.
void RejectUnknown(const CLI::App& app);

/// Writes "help COMMAND" as "COMMAND --help". Throws a UsageError for an unknown one.
std::vector<std::string> WithoutHelpWord(std::vector<std::string> arguments,
                                         const std::vector<Command>& commands);

/// Throws a UsageError for "--option=": CLI11 would take the next word for its value.
void RejectEmptyValues(const std::vector<std::string>& arguments);

#endif  // KWBATCH_USAGE_H_

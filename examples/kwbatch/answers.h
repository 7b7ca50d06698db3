#ifndef KWBATCH_ANSWERS_H_
#define KWBATCH_ANSWERS_H_

#include <map>
#include <string>

/// \file
/// Files of answers: ini files of options, `name = value` a line, in sections that mean nothing.

using OptionValues = std::map<std::string, std::string>;  ///< by name, without the dashes

/// The answers of a file that are options of the command. Throws a UsageError when the file cannot
/// be read or has a key that is no option of any command.
OptionValues ReadAnswers(const std::string& path, const std::string& command);

/// Writes a file with these values, and with all other options as comments. Only its owner may read
/// it, for it may hold a password. Throws a Refusal.
void SaveAnswers(const std::string& path, const OptionValues& values);

#endif  // KWBATCH_ANSWERS_H_

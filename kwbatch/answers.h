#ifndef KWBATCH_ANSWERS_H_
#define KWBATCH_ANSWERS_H_

#include <map>
#include <string>

/// \file
/// Files of answers: ini files with lines `name = value`. Their sections have no meaning.

/// By name, without the dashes. The value of a flag is "yes" or "no".
using OptionValues = std::map<std::string, std::string>;

/// The answers of a file that are options of the command. Throws a UsageError when the file cannot
/// be read, has a key that is no option of any command, or a flag that is neither yes nor no.
OptionValues ReadAnswers(const std::string& path, const std::string& command);

/// Writes a file with these values of the command's options, and with all other options as
/// comments. Only its owner may read it, for it may hold a password. Throws a Refusal, and leaves
/// what was there, when it cannot be written or a value could not be read back.
void SaveAnswers(const std::string& path, const std::string& command, const OptionValues& values);

#endif  // KWBATCH_ANSWERS_H_

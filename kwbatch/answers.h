#ifndef KWBATCH_ANSWERS_H_
#define KWBATCH_ANSWERS_H_

#include <map>
#include <string>

/// \file
/// Files of answers: lines `name = value`, comments that begin with # or ;, and [sections], which
/// have no meaning. A value goes to the end of its line; of all characters in it, only blanks and
/// one pair of quotes around the whole of it are taken off.

/// By name, without the dashes. The value of a flag is "yes" or "no".
using OptionValues = std::map<std::string, std::string>;

/// The answers of a file or a pipe, for all commands. Throws a UsageError when it cannot be read,
/// and for a line that has no "=", names no option or the option of an earlier line, or sets a
/// flag to neither yes nor no.
OptionValues ReadAnswers(const std::string& path);

/// Writes a file with these values, and with all other options as comments. Only its owner may
/// read it, for it may hold a password. Throws a Refusal, and leaves what was there, when it cannot
/// be written or a value does not fit in a line.
void SaveAnswers(const std::string& path, const OptionValues& values);

#endif  // KWBATCH_ANSWERS_H_

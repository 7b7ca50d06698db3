#ifndef KWBATCH_PATHS_H_
#define KWBATCH_PATHS_H_

#include <string>

/// \file
/// Paths and names from outside, brought into a form that the library accepts. It hands paths to
/// the shell unquoted, so each must be one plain word.

/// Throws a Refusal for a path that the shell would read as anything but one plain word. `what`
/// says in the message what the path is, in the language of the message.
void RequirePlainPath(const std::string& what, const std::string& path);

/// The same for a name from a medium, which must not lead out of its directory either.
void RequirePlainName(const std::string& what, const std::string& name);

/// The same for the path of a medium, the name of a package and that of an operating system, which
/// must not be too long either.
void RequireMediumPath(const std::string& medium);
void RequirePackageName(const std::string& name);
void RequireSystemName(const std::string& name);

/// The full path of a medium. Throws a Refusal.
std::string MediumPath(const std::string& medium);

/// The path of a target: absolute, without blanks and repeated slashes. Throws a Refusal.
std::string TargetPath(const std::string& target);

#endif  // KWBATCH_PATHS_H_

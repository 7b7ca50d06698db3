#ifndef KWBATCH_REFUSAL_H_
#define KWBATCH_REFUSAL_H_

#include <kb0core/TEVUnicodeString.h>

#include <stdexcept>

/// \file
/// The ways in which a command can end early. Each kind has its exit status, which main() returns.

/// Exit status 2: the command line or the file of answers is wrong.
struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// Exit status 1: the command cannot be done. what() is the text for the user, with its newline.
struct Refusal : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// The refusal of a medium that has nothing more to install.
struct NothingToInstall : Refusal {
  using Refusal::Refusal;
};

/// A refusal in the library's own words.
inline Refusal Refused(const TEVUnicodeString& message) { return Refusal(message.ConvertToChar()); }

#endif  // KWBATCH_REFUSAL_H_

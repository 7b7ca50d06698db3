#ifndef KWBATCH_REFUSAL_H_
#define KWBATCH_REFUSAL_H_

#include <kb0core/TEVUnicodeString.h>

#include <stdexcept>
#include <string>

/// \file
/// The ways in which a command can end early, each with its exit status.

enum ExitStatus { kDone, kRefused, kWrongUsage, kNothingToDo, kProgramFailed, kBusy };

/// The command line or the file of answers is wrong: kWrongUsage.
struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// The command cannot be done, or not wholly. what() is the text for the user, with its newline.
struct Refusal : std::runtime_error {
  explicit Refusal(const std::string& text, ExitStatus ended = kRefused)
      : std::runtime_error(text), status(ended) {}

  ExitStatus status;
};

/// What the command is to bring about is there already.
struct NothingToDo : Refusal {
  explicit NothingToDo(const std::string& text) : Refusal(text, kNothingToDo) {}
};

/// A refusal in the library's own words.
inline Refusal Refused(const TEVUnicodeString& message) { return Refusal(message.ConvertToChar()); }

#endif  // KWBATCH_REFUSAL_H_

#ifndef KWBATCH_CONSOLE_H_
#define KWBATCH_CONSOLE_H_

#include <kb0core/TEVUnicodeString.h>

#include <stdexcept>
#include <string>

/// Ends the command with exit status 1; what() is told to the user.
struct Refusal : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// A refusal in the library's own words.
inline Refusal Refused(const TEVUnicodeString& message) { return Refusal(message.ConvertToChar()); }

/// Refuses a path that the shell would read as more than one plain word: the library hands paths to
/// the shell unquoted.
void RequirePlainPath(const std::string& what, const std::string& path);

/// Refuses a name from a medium that is not a plain word too, or would lead out of its directory.
void RequirePlainName(const std::string& what, const std::string& name);

/// Adds `text` to the end of a file, which is made when missing. False when it cannot be stored.
bool AppendToFile(const std::string& path, const std::string& text);

/// From now on nothing reaches standard output, not from programs that are run either, but by Show.
void BeQuiet();

/// Prints a library message or a line of our own, with a newline at its end.
void Say(const std::string& text);

/// The same for what the user has asked for, quiet or not.
void Show(const std::string& text);

/// False when something that was printed is lost, on a full disk for example.
bool AllIsPrinted();

/// The same on standard error, in red on a terminal.
void Complain(const std::string& text);

/// How far a number of steps has come: a bar on a terminal, a line for each step elsewhere.
class Progress {
 public:
  explicit Progress(size_t steps);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  /// The next step begins.
  void Begin(const std::string& step);

 private:
  size_t steps_;
  size_t begun_ = 0;
  bool terminal_;
};

#endif  // KWBATCH_CONSOLE_H_

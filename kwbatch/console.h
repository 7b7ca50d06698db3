#ifndef KWBATCH_CONSOLE_H_
#define KWBATCH_CONSOLE_H_

#include <string>

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

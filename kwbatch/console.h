#ifndef KWBATCH_CONSOLE_H_
#define KWBATCH_CONSOLE_H_

#include <functional>
#include <string>

/// From now on, whatever is printed or logged names `given` where a text has `path`.
void ShowAs(const std::string& path, const std::string& given);

/// The text as the user is to see it: see ShowAs.
std::string AsShown(std::string text);

/// From now on only Show writes to standard output. The output of programs is discarded too.
void BeQuiet();

/// Prints a library message or a line of our own, with a newline at its end.
void Say(const std::string& text);

/// Like Say, even after BeQuiet: for what the user asked for.
void Show(const std::string& text);

/// From now on `take` gets every text in the place of standard output, and errors too; without a
/// function they are printed again.
void CollectTexts(const std::function<void(const std::string&)>& take);

/// False when something that was printed is lost, on a full disk for example.
bool AllIsPrinted();

/// Like Say, but on standard error, in red on a terminal.
void Complain(const std::string& text);

/// Shows the progress of some steps: a bar on a terminal, a line for each step elsewhere.
class Progress {
 public:
  explicit Progress(size_t steps);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  /// Shows the next step.
  void Begin(const std::string& step);

 private:
  size_t steps_;
  size_t begun_ = 0;
  bool terminal_;
};

#endif  // KWBATCH_CONSOLE_H_

#ifndef KWBATCH_INTERRUPTION_H_
#define KWBATCH_INTERRUPTION_H_

#include <functional>

/// \file
/// The signals INT, TERM and HUP, and a reader of the output that has gone away, end a command at
/// its next safe point: where the same command can go on, or the step can be undone.

/// Does the work in a thread of its own, and returns what it returns. From now on the signals above
/// only set a flag. A signal that was ignored before, as nohup does, stays ignored.
int RunInterruptibly(const std::function<int()>& work);

/// Throws a Refusal after such a signal.
void SafePoint();

/// The same after a program has run. It gets Ctrl-C too, and may end before the flag is set.
void SafePointAfterProgram();

/// Is an interruption the reason of a failure?
bool IsInterrupted();

/// The same as SafePointAfterProgram when a program has failed that this one writes to: its end
/// looks like that of a reader of the output, and is no reason to call it an interruption.
void SafePointAfterFedProgram();

#endif  // KWBATCH_INTERRUPTION_H_

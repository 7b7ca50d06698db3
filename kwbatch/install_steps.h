#ifndef KWBATCH_INSTALL_STEPS_H_
#define KWBATCH_INSTALL_STEPS_H_

class Options;

/// "install" with several media: each is installed as if it were given alone to the command for it,
/// in their order; with --commit, a service pack is committed then. What is installed already is
/// left out, so a repeated command goes on where the first one stopped. Throws a NothingToDo when
/// that is everything.
void InstallSteps(const Options& options);

#endif  // KWBATCH_INSTALL_STEPS_H_

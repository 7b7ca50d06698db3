#ifndef KWBATCH_INSTALL_H_
#define KWBATCH_INSTALL_H_

#include "options.h"

/// The command "install": a medium of products, SDK packages or samples, every package of it that
/// the target does not have yet. Throws a Refusal.
void Install(const Options& options);

/// The command "check": says whether a medium of any kind may be installed, or what it would
/// change. Throws a Refusal.
void Check(const Options& options);

#endif  // KWBATCH_INSTALL_H_

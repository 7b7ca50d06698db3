#ifndef KWBATCH_SETUP_H_
#define KWBATCH_SETUP_H_

#include <string>

#include "log.h"

/// \file
/// The programs of the product that run at the end of a transfer. What they print goes to the log.
/// Each is run, whatever becomes of the others. A failure is reported and logged, and the result is
/// false then.

/// Runs the setup programs of a system directory, where it has any.
bool RunSetup(std::string system_dir, Log& log);

/// Runs the post-install programs of a service pack, where it has any. Throws a Refusal for a name
/// that the shell would not take for one plain word.
bool RunPostInstall(const std::string& system_dir, const std::string& pack, Log& log);

#endif  // KWBATCH_SETUP_H_

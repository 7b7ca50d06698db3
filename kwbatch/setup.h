#ifndef KWBATCH_SETUP_H_
#define KWBATCH_SETUP_H_

#include <string>

#include "log.h"

/// Runs the product's setup programs in a system directory, where it has any. A failure is reported
/// and logged, and the result is false then.
bool RunSetup(std::string system_dir, Log& log);

#endif  // KWBATCH_SETUP_H_

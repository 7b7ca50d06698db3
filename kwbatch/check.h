#ifndef KWBATCH_CHECK_H_
#define KWBATCH_CHECK_H_

#include <string>

#include "console.h"
#include "medium.h"
#include "options.h"

/// Asks the library whether the medium may be installed on the target, whose path is in the form of
/// TargetPath. `code_tree` is the code that an SDK belongs to. Throws a Refusal in the library's
/// own words. Writes nothing to the trees.
void RequireInstallable(const Medium& medium, const std::string& target,
                        const std::string& code_tree);

/// The command "verify": reports each missing or damaged file of the target, and throws a Refusal
/// when there is one.
void Verify(const Options& options);

#endif  // KWBATCH_CHECK_H_

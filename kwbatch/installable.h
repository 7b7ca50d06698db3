#ifndef KWBATCH_INSTALLABLE_H_
#define KWBATCH_INSTALLABLE_H_

#include <string>

#include "medium.h"

/// Asks the library whether the medium may be installed on the target. `code_tree` is the code that
/// an SDK belongs to. Throws a Refusal in the library's own words, a NothingToDo when the
/// target has everything. Writes nothing to the trees.
void RequireInstallable(const Medium& medium, const std::string& target,
                        const std::string& code_tree);

/// Can the package of a development kit be installed: is the code there that it extends? The table
/// may be null.
bool HasCode(const TEVINSInstToc* code_table, const std::string& name);

#endif  // KWBATCH_INSTALLABLE_H_

#ifndef KWBATCH_INSTALL_H_
#define KWBATCH_INSTALL_H_

#include <string>

#include "medium.h"
#include "options.h"

/// Refuses a medium of products, SDK packages or samples of which an archive is missing, or for
/// which the target has no room.
void RequireRoom(const Medium& medium, const std::string& target, const std::string& code_tree);

/// The command "install": a medium of products, SDK packages or samples, every package of it that
/// the target does not have yet. Throws a Refusal.
void Install(const Options& options);

#endif  // KWBATCH_INSTALL_H_

#ifndef KWBATCH_TREE_H_
#define KWBATCH_TREE_H_

#include <kwinstutil/kwinstutil.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "medium.h"
#include "options.h"

/// Does what comes from the medium go into an SDK tree?
bool IsSdk(const Medium& medium);

/// The names of the operating systems in DIR/OSUNIX; none for an SDK tree.
std::vector<std::string> SystemsOf(const std::string& dir);

/// The directory in the target that holds what comes from the medium: that of its operating system,
/// or the target itself for the SDK.
std::string SystemDir(const Medium& medium, const std::string& target);

/// The system directories of a target, or the target itself when it is an SDK tree; with the option
/// --os, only that one. Throws a Refusal when there is none.
std::vector<std::string> SystemDirs(const Options& options, const std::string& target);

/// The name of an operating system that is installed in the target, or an empty text.
std::string InstalledSystem(const std::string& target);

/// Opens the table of a system directory; null when there is nothing. Throws a Refusal.
std::unique_ptr<TEVINSInstToc> OpenInstalled(const std::string& system_dir);

/// Throws a Refusal unless something is installed in a target or a system directory.
void RequireTree(const std::string& dir);

/// Has an append to the table of a system directory been interrupted?
bool HasFragment(const std::string& system_dir);

/// Says that an interrupted run of the medium may be taken up again.
void TellInterrupted(const Medium& medium, const std::string& target);

/// Cuts off what an append that was interrupted has left at the end of the table of a system
/// directory, which had `before` bytes (0 when that is not known).
void CutFragment(const std::string& system_dir, int64_t before);

/// The code tree that an SDK medium's target belongs to: `given`, or else the one that the target
/// names. Empty for other media. Throws a Refusal when there is none.
std::string CodeTreeFor(const Medium& medium, const std::string& target, const std::string& given);

#endif  // KWBATCH_TREE_H_

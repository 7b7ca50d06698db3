#ifndef KWBATCH_TREE_H_
#define KWBATCH_TREE_H_

#include <kwinstutil/kwinstutil.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "medium.h"

/// The directory in the target that holds what comes from the medium: that of its operating system,
/// or the target itself for the SDK.
std::string SystemDir(const Medium& medium, const std::string& target);

/// The system directories of a target, or the target itself when it is an SDK tree; with
/// `os`, only the one of that name. Throws a Refusal when there is none.
std::vector<std::string> SystemDirs(const std::string& target, const std::string& os);

/// The same, and none at all when there is none.
std::vector<std::string> SystemDirsIfAny(const std::string& target, const std::string& os);

/// The name of an operating system that is installed in the target, or an empty text.
std::string InstalledSystem(const std::string& target);

/// Opens the table of a system directory; null if nothing is installed. Throws a Refusal.
std::unique_ptr<TEVINSInstToc> OpenInstalled(const std::string& system_dir);

/// Says that nothing is installed in a target or a system directory.
std::string NothingInstalled(const std::string& dir);

/// Throws a Refusal unless something is installed in a target or a system directory.
void RequireTree(const std::string& dir);

/// Has an append to the table of a system directory been interrupted?
bool HasFragment(const std::string& system_dir);

/// Cuts off what an append that was interrupted has left at the end of the table of a system
/// directory, which had `before` bytes (0 when that is not known).
void CutFragment(const std::string& system_dir, int64_t before);

/// Throws a Refusal for a medium of another level: its files are not those of the tree.
void RequireSameLevel(const Medium& medium, const std::string& system_dir);

/// The code tree that an SDK medium's target belongs to: `given`, or else the one that the target
/// names. Empty for other media. Throws a Refusal when there is none.
std::string CodeTreeFor(const Medium& medium, const std::string& target, const std::string& given);

#endif  // KWBATCH_TREE_H_

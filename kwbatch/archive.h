#ifndef KWBATCH_ARCHIVE_H_
#define KWBATCH_ARCHIVE_H_

#include <string>
#include <vector>

/// \file
/// What is in the archives of a medium.

/// The paths of everything in an archive, below the tree in which it is unpacked; those of
/// directories end in a slash. Throws a Refusal for an archive that is damaged or cut off.
std::vector<std::string> MembersOf(const std::string& archive);

/// Unpacks members of an archive below `dir`. Throws a Refusal.
void Unpack(const std::string& archive, const std::vector<std::string>& members,
            const std::string& dir);

/// Refuses members below a directory of the tree that is a symbolic link: unpacking would put a
/// real directory in its place, and what it leads to would be gone from the tree.
void RequireRealDirectories(const std::vector<std::string>& members, const std::string& tree);

#endif  // KWBATCH_ARCHIVE_H_

#ifndef KWBATCH_ARCHIVE_H_
#define KWBATCH_ARCHIVE_H_

#include <cstdint>
#include <string>
#include <vector>

/// \file
/// What is in the archives of a medium.

struct Member {
  std::string
      path;       ///< below the tree in which it is unpacked; that of a directory ends in a slash
  uint64_t size;  ///< of its content
};

/// What is to be unpacked of a package's archive.
struct Part {
  std::string package;
  std::string archive;
  std::vector<Member> members;
};

/// Everything in an archive, which is read once only. Throws a Refusal for an archive that is
/// damaged or cut off, and when a program is missing that it needs.
const std::vector<Member>& MembersOf(const std::string& archive);

/// Unpacks members of an archive below `dir`. Throws a Refusal.
void Unpack(const std::string& archive, const std::vector<std::string>& members,
            const std::string& dir);
void Unpack(const Part& part, const std::string& dir);

/// Refuses members below a directory of the tree that is a symbolic link: unpacking would put a
/// real directory in its place, and what it leads to would be gone from the tree.
void RequireRealDirectories(const std::vector<Member>& members, const std::string& tree);

#endif  // KWBATCH_ARCHIVE_H_

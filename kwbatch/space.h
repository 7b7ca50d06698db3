#ifndef KWBATCH_SPACE_H_
#define KWBATCH_SPACE_H_

#include <sys/types.h>

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "archive.h"

/// The free space of the file system where the target is or will be, in KB. Throws a Refusal.
unsigned int FreeSpace(const std::string& target);

/// Throws a Refusal when the path is, or would be, on a file system that is read-only.
void RequireReadWrite(const std::string& path);

/// The space and the inodes that files take on each file system below a target.
class Demand {
 public:
  explicit Demand(std::string target) : target_(std::move(target)) {}

  /// Adds the members of an archive, in the place of what is there; the files in `kept`, paths
  /// below the target, stay beside the new ones.
  void Add(const std::vector<Member>& members, const std::set<std::string>& kept = {});

  /// Says what is needed and what is free. Throws a Refusal when that is not enough.
  void Require() const;

 private:
  struct Volume {
    std::string dir;  ///< a directory on it
    int64_t block;    ///< its size in bytes
    int64_t blocks;   ///< that are needed
    int64_t inodes;   ///< likewise
  };

  Volume& VolumeOf(const std::string& dir);
  void AddDirectory(const std::string& dir);

  std::string target_;
  std::map<dev_t, Volume> volumes_;
  std::map<std::string, Volume*> known_;  ///< by directory
  std::set<std::string> new_dirs_;
};

#endif  // KWBATCH_SPACE_H_

#ifndef KWBATCH_ARCHIVE_CHECK_H_
#define KWBATCH_ARCHIVE_CHECK_H_

#include <set>
#include <string>
#include <vector>

/// What a check has found.
struct Findings {
  std::vector<std::string> faults;    ///< what an installation would refuse, or do wrong
  std::vector<std::string> warnings;  ///< what may be meant
};

/// An archive of a medium, and what the medium says of it.
struct ArchiveToCheck {
  std::string path;
  std::string component;
  std::string root;             ///< the system directory in it with a slash, or nothing
  bool update;                  ///< a service pack or a hot fix
  std::set<std::string> table;  ///< the lines that its own table must have
};

/// Reads the archive to its end, and compares its members with its manifest.
void CheckArchive(const ArchiveToCheck& archive, Findings& findings);

/// Reads an archive that has no manifest to its end: nothing of it may go elsewhere.
void CheckMembers(const std::string& path, Findings& findings);

#endif  // KWBATCH_ARCHIVE_CHECK_H_

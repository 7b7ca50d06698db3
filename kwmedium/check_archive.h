#ifndef KWMEDIUM_CHECK_ARCHIVE_H_
#define KWMEDIUM_CHECK_ARCHIVE_H_

#include <set>
#include <string>

#include "findings.h"

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

#endif  // KWMEDIUM_CHECK_ARCHIVE_H_

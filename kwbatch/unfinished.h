#ifndef KWBATCH_UNFINISHED_H_
#define KWBATCH_UNFINISHED_H_

#include <string>

#include "medium.h"

/// \file
/// The record of an installation that has not come to its end: a file in the system directory of
/// the medium. While it exists, the same command takes the installation up again.

bool IsUnfinished(const Medium& medium, const std::string& target);

/// Makes the record durably; the directory `control` must exist. Throws a Refusal.
void BeginInstallation(const Medium& medium, const std::string& target,
                       const std::string& medium_path);

/// Deletes the record once the disk has everything. Throws a Refusal when it stays.
void EndInstallation(const Medium& medium, const std::string& target);

#endif  // KWBATCH_UNFINISHED_H_

#ifndef KWBATCH_SYSTEM_FILES_H_
#define KWBATCH_SYSTEM_FILES_H_

#include <string>

/// \file
/// The system's services and inetd files, whose paths SystemFile gives.

/// From now on copies of them in `dir` are used. They are made if missing. Throws a Refusal.
void UseScratch(const std::string& dir);

/// Throws a Refusal unless the system file at this path can be written.
void RequireWritable(const std::string& path);

/// Renames FILE.tmp to FILE if the system file FILE is missing: an interrupted run of kwbatch was
/// rewriting it. Throws a Refusal when inetd.conf and inetd.conf.tmp both exist: only the user can
/// tell which is good.
void RestoreSystemFiles();

#endif  // KWBATCH_SYSTEM_FILES_H_

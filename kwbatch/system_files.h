#ifndef KWBATCH_SYSTEM_FILES_H_
#define KWBATCH_SYSTEM_FILES_H_

#include <string>

/// \file
/// The system's services and inetd files, whose paths SystemFile tells.

/// Works on copies of them in `dir` from now on, which are made when missing. Throws a Refusal.
void UseScratch(const std::string& dir);

/// Throws a Refusal unless the system file at this path can be written.
void RequireWritable(const std::string& path);

/// Gives the system files their names again that an interrupted run of kwbatch was rewriting: their
/// content has the name FILE.tmp then. Throws a Refusal when inetd.conf exists beside it: only the
/// user can tell which of the two is good.
void RestoreSystemFiles();

#endif  // KWBATCH_SYSTEM_FILES_H_

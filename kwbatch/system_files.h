#ifndef KWBATCH_SYSTEM_FILES_H_
#define KWBATCH_SYSTEM_FILES_H_

#include <string>
#include <vector>

/// \file
/// The system's services and inetd files, whose paths SystemFile gives.

/// From now on copies of them in `dir` are used. They are made if missing. Throws a Refusal.
void UseScratch(const std::string& dir);

/// Throws a Refusal unless the system file at this path can be written.
void RequireWritable(const std::string& path);

/// Writes the new content of a system file, which the library has left in FILE.tmp, over the old
/// one: a file that is a mount cannot be replaced, as in a container. FILE.whole has the content
/// meanwhile. Throws a Refusal.
void Overwrite(const std::string& path);

/// Ends an Overwrite that was interrupted. Throws a Refusal.
void FinishOverwrite(const std::string& path);

/// Has the system files, those that exist, written to the disk. Throws a Refusal.
void SyncSystemFiles();

/// Says how to make inetd read its file.
void TellHowInetdReads();

/// Takes lines, which are given without their newlines, out of a system file. Every other byte, the
/// mode, the owner and a symbolic link stay. Whatever ends the process, the old file or the whole
/// new one is there; in the place of a mount, Overwrite's FILE.whole. Throws a Refusal.
void RemoveLines(const std::string& path, const std::vector<std::string>& lines);

/// Says that the lines of the tree are taken out of a file.
std::string LinesTakenOut(const std::string& path);

/// Ends an interrupted Overwrite, and gives the system files their names again that an interrupted
/// run of kwbatch was rewriting: their content has the name FILE.tmp then. Throws a Refusal when
/// inetd.conf beside it has something else than a beginning of it: only the user can tell which of
/// the two is good.
void RestoreSystemFiles();

#endif  // KWBATCH_SYSTEM_FILES_H_

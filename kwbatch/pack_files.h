#ifndef KWBATCH_PACK_FILES_H_
#define KWBATCH_PACK_FILES_H_

#include <sys/stat.h>

#include <string>
#include <utility>
#include <vector>

#include "pack.h"

/// \file
/// What a service pack does to the files of a system directory. All functions may be repeated after
/// an interruption, and throw a Refusal.

/// Refuses symbolic links in the place of directories of the pack's files, and of those that are
/// kept for its undo.
void RequireRealParents(const Pack& pack);

/// Sets aside what the pack replaces.
void Save(const Pack& pack);

/// Puts back what was set aside, and removes what was not there before.
void Restore(const Pack& pack);

/// Gives the files that the site had changed the names that SitePath chooses, and returns these.
/// `suffix` is behind the names that they have.
std::vector<std::string> KeepSiteFiles(const Pack& pack, const std::string& suffix);

/// Likewise of the files of an installed pack that are not as it brought them.
std::vector<std::string> KeepLaterChanges(const Pack& pack);

/// Deletes what was set aside.
void DeleteSaved(const Pack& pack);

/// Takes the pack's lines out of the tree's table, which keeps its mode and owner.
void PruneTable(const Pack& pack);

/// Marks the pack as interrupted until it is wholly installed.
void MarkInterrupted(const Pack& pack);

/// Records the pack as pending.
void RecordPending(const Pack& pack);

/// Deletes the mark, the record and, last, the journal.
void DeleteRecords(const Pack& pack);

/// Deletes what an interrupted step may have left beside the tree's table, and the messages of a
/// transfer.
void DeleteLeftovers(const Pack& pack);

/// Remembers the mode and owner of each existing directory of the pack. The destructor restores
/// them after the unpacking, whatever the archive says.
class DirectoryModes {
 public:
  explicit DirectoryModes(const Pack& pack);
  ~DirectoryModes();
  DirectoryModes(const DirectoryModes&) = delete;
  DirectoryModes& operator=(const DirectoryModes&) = delete;

 private:
  std::vector<std::pair<std::string, struct stat>> before_;
};

#endif  // KWBATCH_PACK_FILES_H_

#ifndef KWBATCH_PACK_H_
#define KWBATCH_PACK_H_

#include <kwinstutil/kwinstutil.h>

#include <string>
#include <vector>

#include "journal.h"
#include "medium.h"
#include "request.h"

/// A service pack to put into or take out of a system directory of a tree.
struct Pack {
  std::string system_dir;
  std::string os;  ///< the system's name
  TEVINSType type;
  Journal journal;

  /// The path of a file of the system directory.
  std::string In(const std::string& file) const { return system_dir + "/" + file; }

  /// Sets and writes the phase of its journal. Throws a Refusal.
  void Enter(Journal::Phase phase);
};

/// The one medium of `media`: a hot fix if `hot_fix`, otherwise a service pack. Throws a Refusal,
/// also when the library does not allow it. An earlier try may have been interrupted while it added
/// lines to the tree's table: the part of a line that it left is cut off.
Medium InstallableUpdate(std::vector<Medium> media, const Request& request, bool hot_fix);

/// The name of the service pack or hot fix, which must have an archive. Throws a Refusal.
std::string UpdateName(const Medium& medium);

/// The pack that a medium puts into a system directory: a new one, or one that is put there again.
/// Throws a Refusal.
Pack PackToInstall(const Medium& medium, const std::string& target);

/// Throws a Refusal when there is no room for the files of the pack beside those that it replaces.
void RequireSpace(const Medium& medium, const std::string& target, const Pack& pack);

/// The uncommitted packs of a target. Throws a NothingToDo when there is none.
std::vector<Pack> UncommittedPacks(const Request& request);

#endif  // KWBATCH_PACK_H_

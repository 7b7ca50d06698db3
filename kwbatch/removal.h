#ifndef KWBATCH_REMOVAL_H_
#define KWBATCH_REMOVAL_H_

#include <map>
#include <string>
#include <vector>

/// \file
/// Takes the files of the product out of a tree. Without --purge nothing else is deleted. No
/// symbolic link is followed below a system directory.

/// The files of one directory that go: paths below it.
struct RemovalFrom {
  std::string dir;
  std::vector<std::string> files;                 ///< go first
  std::vector<std::string> records;               ///< go when the files are gone, in this order
  std::map<std::string, std::string> site_files;  ///< stay: changed here; by their new paths

  /// The directories of the files, inner ones first.
  std::vector<std::string> Directories() const;
};

struct Removal {
  std::vector<RemovalFrom> systems;  ///< system directories; the last one may be the satellite's
  RemovalFrom tree;                  ///< the target itself, after them
  std::vector<std::string> kept;     ///< full paths of what is not the product's
  std::vector<std::string> renamed;  ///< full paths that site files will have
};

/// What goes from a target, as the manifests, tables and records there say; with `purge` also what
/// the site has changed. Throws a Refusal when one of them is damaged, or names a path that leads
/// out of its directory, with ".." or through a symbolic link.
Removal PlanRemoval(const std::string& target, bool purge);

/// The full paths of all files that go and are there.
std::vector<std::string> FilesToRemove(const Removal& removal);

/// Deletes the files, and directories of theirs that are empty then; gives the site files their new
/// names. With `purge` also what else is in the system directories, but nothing that is mounted
/// there. What is gone already is no failure. Throws a Refusal when a file of the product stays.
void Remove(const Removal& removal, bool purge);

/// Is the target being taken away? An empty record, as a power cut may leave one that nothing has
/// followed yet, does not say so.
bool IsBeingRemoved(const std::string& target);

/// Is it being taken away with all that is in it?
bool IsBeingPurged(const std::string& target);

/// Writes the record that says that a tree is being taken away, durably. It goes last. Throws a
/// Refusal.
void BeginRemoval(const std::string& target, bool purge);

/// Throws a Refusal when the target is being taken away.
void RequireNoRemoval(const std::string& target);

#endif  // KWBATCH_REMOVAL_H_

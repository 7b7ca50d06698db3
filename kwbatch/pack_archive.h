#ifndef KWBATCH_PACK_ARCHIVE_H_
#define KWBATCH_PACK_ARCHIVE_H_

#include <string>

#include "journal.h"
#include "medium.h"

/// What the archive of the service pack `name` will do to the system directory. Throws a Refusal
/// for an archive whose installation could not be undone. Changes nothing.
Journal JournalOf(const Medium& medium, const std::string& name, const std::string& system_dir);

/// Refuses the medium of a pack that was begun with another one: the files that it adds have not
/// been set aside. Refuses symbolic links in the place of directories, too.
void RequireFilesOf(const Journal& journal, const Medium& medium, const std::string& system_dir);

#endif  // KWBATCH_PACK_ARCHIVE_H_

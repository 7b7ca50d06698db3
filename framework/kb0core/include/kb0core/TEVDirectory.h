#ifndef KB0CORE_TEVDIRECTORY_H_
#define KB0CORE_TEVDIRECTORY_H_

#include "kb0core/export.h"

/// An open directory.
using TEVDirectory = struct TEVDirectoryHandle*;

/// One entry of a directory.
struct TEVDirectoryEntry {
  char name[256];  ///< without its directory; room for the longest name of the system
};

/// Opens `path` for reading and stores the handle in `*directory`. 0, or -1 when `path` is no
/// directory that can be read.
KB0CORE_EXPORT int TEVOpenDirectory(const char* path, TEVDirectory* directory);

/// Reads the next entry, "." and ".." among them. Returns 0 when `entry` was filled. Otherwise
/// returns -1, with `*end` set to 1 when there are no more entries and left as it is on an error.
KB0CORE_EXPORT int TEVReadDirectory(TEVDirectory directory, TEVDirectoryEntry* entry, int* end);

/// Closes the directory. 0, or -1 on failure.
KB0CORE_EXPORT int TEVCloseDirectory(TEVDirectory directory);

#endif  // KB0CORE_TEVDIRECTORY_H_

#ifndef KB0CORE_TEVDIRECTORY_H_
#define KB0CORE_TEVDIRECTORY_H_

#include "kb0core/export.h"

/// An open directory.
using TEVDirectory = struct TEVDirectoryHandle*;

/// One entry of a directory.
struct TEVDirectoryEntry {
  char name[256];  ///< without its directory; room for the longest name of the system
};

/// Opens `path` for reading and stores the handle in `*directory`. Returns 0, or -1 if `path` is
/// not a directory that can be read.
KB0CORE_EXPORT int TEVOpenDirectory(const char* path, TEVDirectory* directory);

/// Reads the next entry; "." and ".." are entries too.
///
/// Returns
///    0  `entry` was filled;
///   -1  there are no more entries (`*end` becomes 1), or an error (`*end` is untouched).
KB0CORE_EXPORT int TEVReadDirectory(TEVDirectory directory, TEVDirectoryEntry* entry, int* end);

/// Closes the directory. Returns 0, or -1 on failure.
KB0CORE_EXPORT int TEVCloseDirectory(TEVDirectory directory);

#endif  // KB0CORE_TEVDIRECTORY_H_

#ifndef KB0CORE_TEVFILE_H_
#define KB0CORE_TEVFILE_H_

#include <cstdio>

#include "kb0core/export.h"

/// What TEVGetFileInfo tells of a file.
struct TEVFileInfo {
  unsigned int mode = 0;  ///< file type and permission bits, as in st_mode
  // NOLINTNEXTLINE(google-runtime-int): as wide on every system, printed with %lld
  long long size = 0;  ///< bytes
};

/// 0 when `path` passes the test, -1 when not. `mode` as for access(2): 0 exists, 1 may be
/// executed, 2 written, 4 read, or a sum of these.
KB0CORE_EXPORT int TEVFileAccess(const char* path, int mode);

/// Fills `info` and returns 0, or returns -1 and leaves it. A symbolic link is not followed: the
/// information is its own.
KB0CORE_EXPORT int TEVGetFileInfo(const char* path, TEVFileInfo* info);

/// Removes a file or a symbolic link. 0, or -1 on failure (a directory included).
KB0CORE_EXPORT int TEVDeleteFile(const char* path);

/// Renames `from` to `to`, in the place of an existing `to`. 0, or -1 on failure.
KB0CORE_EXPORT int TEVRenameFile(const char* from, const char* to);

/// Opens `path` with an fopen `mode` and stores the stream in `*file`. Returns 0, or the system's
/// error number, with `*file` null.
KB0CORE_EXPORT int TEVFOpen(const char* path, const char* mode, std::FILE** file);

/// Reads a line of at most `size` - 1 characters, its newline included, as fgets does. Returns 0,
/// or -1 when nothing was read: the file has ended or cannot be read.
KB0CORE_EXPORT int TEVFGets(char* buffer, int size, std::FILE* file);

/// 1 when a read has met the end of the file, 0 otherwise.
KB0CORE_EXPORT int TEVFEof(std::FILE* file);

/// Closes the stream. 0, or -1 when what was written could not all be stored or a read has failed.
KB0CORE_EXPORT int TEVFClose(std::FILE* file);

#endif  // KB0CORE_TEVFILE_H_

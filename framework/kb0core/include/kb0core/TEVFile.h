#ifndef KB0CORE_TEVFILE_H_
#define KB0CORE_TEVFILE_H_

#include <cstdio>

#include "kb0core/export.h"

/// What TEVGetFileInfo finds out about a file.
struct TEVFileInfo {
  unsigned int mode = 0;  ///< file type and permission bits, as in st_mode
  // NOLINTNEXTLINE(google-runtime-int): 64 bits on every system, printed with %lld
  long long size = 0;  ///< bytes
};

/// Tests `path` as access(2) does. `mode` is 0 (it exists) or a sum of 1 (it may be executed),
/// 2 (written) and 4 (read). Returns 0 if it passes the test, and -1 otherwise.
KB0CORE_EXPORT int TEVFileAccess(const char* path, int mode);

/// Fills `info`. A symbolic link is not followed: the information is that of the link. Returns 0,
/// or -1 on failure, and `info` is untouched.
KB0CORE_EXPORT int TEVGetFileInfo(const char* path, TEVFileInfo* info);

/// Removes a file or a symbolic link. Returns 0, or -1 on failure, also for a directory.
KB0CORE_EXPORT int TEVDeleteFile(const char* path);

/// Renames `from` to `to`, and replaces an existing `to`. Returns 0, or -1 on failure.
KB0CORE_EXPORT int TEVRenameFile(const char* from, const char* to);

/// Opens `path` with a `mode` of fopen and stores the stream in `*file`. Returns 0, or the system's
/// error number on failure, and `*file` is null then.
KB0CORE_EXPORT int TEVFOpen(const char* path, const char* mode, std::FILE** file);

/// Reads a line with its newline, and at most `size` - 1 characters of it, as fgets does. Returns
/// 0, or -1 if nothing was read: the file has ended or cannot be read.
KB0CORE_EXPORT int TEVFGets(char* buffer, int size, std::FILE* file);

/// Has a read reached the end of the file? Returns 1 for yes, 0 for no.
KB0CORE_EXPORT int TEVFEof(std::FILE* file);

/// Closes the stream. Returns 0, or -1 if not everything that was written could be stored, or if a
/// read has failed.
KB0CORE_EXPORT int TEVFClose(std::FILE* file);

#endif  // KB0CORE_TEVFILE_H_

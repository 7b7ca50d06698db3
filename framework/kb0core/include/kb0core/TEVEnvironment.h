#ifndef KB0CORE_TEVENVIRONMENT_H_
#define KB0CORE_TEVENVIRONMENT_H_

#include "kb0core/TEVUnicodeString.h"
#include "kb0core/export.h"

/// The value of an environment variable, or null if it is not set.
KB0CORE_EXPORT const char* TEVGetEnv(const char* name);

/// Puts `entry`, a text KEY=VALUE, into the environment. The text is not copied, so it must live as
/// long as the process. Returns 0, or -1 on failure.
KB0CORE_EXPORT int TEVPutEnv(char* entry);

/// Looks for an executable regular file of the name `file` in the directories of `searchPath`,
/// which are separated by colons. An empty directory means the current one.
///
/// Returns the path of the first such file, or an empty text if there is none or an argument is
/// null.
KB0CORE_EXPORT TEVUnicodeString TEVFindPath(const char* file, const char* searchPath);

#endif  // KB0CORE_TEVENVIRONMENT_H_

#ifndef KB0CORE_TEVENVIRONMENT_H_
#define KB0CORE_TEVENVIRONMENT_H_

#include "kb0core/TEVUnicodeString.h"
#include "kb0core/export.h"

/// The value of an environment variable, or null when it is not set.
KB0CORE_EXPORT const char* TEVGetEnv(const char* name);

/// Puts `entry`, a text KEY=VALUE, into the environment: the text itself and not a copy, so it must
/// live as long as the process. 0, or -1 on failure.
KB0CORE_EXPORT int TEVPutEnv(char* entry);

/// The full path of the first `file` that is an executable regular file in the directories of
/// `searchPath` (one, or several separated by colons; an empty one is the current directory), or
/// an empty text. Null arguments find nothing.
KB0CORE_EXPORT TEVUnicodeString TEVFindPath(const char* file, const char* searchPath);

#endif  // KB0CORE_TEVENVIRONMENT_H_

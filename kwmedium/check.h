#ifndef KWMEDIUM_CHECK_H_
#define KWMEDIUM_CHECK_H_

#include <string>

#include "findings.h"

/// Reads everything on a medium, each archive to its end, and compares the archives with the table
/// and with their manifests. Throws a Refusal only when the directory does not exist.
Findings CheckMedium(const std::string& dir);

/// Is there a signature, genuine or not?
bool IsSigned(const std::string& dir);

#endif  // KWMEDIUM_CHECK_H_

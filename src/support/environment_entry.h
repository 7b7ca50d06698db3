#ifndef KWINSTUTIL_SUPPORT_ENVIRONMENT_ENTRY_H_
#define KWINSTUTIL_SUPPORT_ENVIRONMENT_ENTRY_H_

#include <kb0core/TEVEnvironment.h>

#include <string>

#include "support/format.h"

namespace kwinst {

/// Writes `entry`, a text KEY=VALUE, into a buffer that lives as long as the process, and puts that
/// buffer into the environment, which keeps the pointer. False, with buffer and environment as they
/// were, when the entry does not fit.
template <size_t Size>
bool Publish(char (&buffer)[Size], const std::string& entry) {
  return CopyWhole(entry, buffer, Size) && TEVPutEnv(buffer) == 0;
}

}  // namespace kwinst

#endif  // KWINSTUTIL_SUPPORT_ENVIRONMENT_ENTRY_H_

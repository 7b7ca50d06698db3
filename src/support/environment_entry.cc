#include "support/environment_entry.h"

#include <kb0core/TEVEnvironment.h>

#include <algorithm>

#include "support/format.h"

namespace kwinst {

namespace {

bool PublishOne(const EnvironmentEntry& entry) {
  if (entry.size > 0) {
    if (entry.text.empty()) return true;
    CopyWhole(entry.text, entry.buffer, entry.size);
  }
  return TEVPutEnv(entry.buffer) == 0;
}

}  // namespace

bool Publish(const std::vector<EnvironmentEntry>& entries) {
  return std::all_of(entries.begin(), entries.end(),
                     [](const EnvironmentEntry& e) { return e.fits(); }) &&
         std::all_of(entries.begin(), entries.end(), PublishOne);
}

}  // namespace kwinst

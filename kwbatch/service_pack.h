#ifndef KWBATCH_SERVICE_PACK_H_
#define KWBATCH_SERVICE_PACK_H_

#include <string>

#include "log.h"
#include "medium.h"
#include "pack.h"

/// Installs a pack, or finishes its installation, and says so. False when a post-install program
/// has failed; the pack is not finished then. The same call may follow, after a Refusal too.
bool InstallPack(const Medium& medium, const std::string& target, Pack& pack, Log& log);

#endif  // KWBATCH_SERVICE_PACK_H_

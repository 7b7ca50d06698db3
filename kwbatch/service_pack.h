#ifndef KWBATCH_SERVICE_PACK_H_
#define KWBATCH_SERVICE_PACK_H_

#include <string>

#include "log.h"
#include "medium.h"
#include "pack.h"

/// Installs a pack, or brings its installation to its end, and says so. Throws a Refusal; the same
/// call may follow then.
void InstallPack(const Medium& medium, const std::string& target, Pack& pack, Log& log);

#endif  // KWBATCH_SERVICE_PACK_H_

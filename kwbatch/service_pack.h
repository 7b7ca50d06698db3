#ifndef KWBATCH_SERVICE_PACK_H_
#define KWBATCH_SERVICE_PACK_H_

#include <vector>

#include "medium.h"
#include "options.h"

/// The command "service-pack": sets aside the files that a service pack replaces, installs it and
/// runs its post-install programs. It is pending then. Throws a Refusal.
void InstallServicePack(const Options& options);

/// The command "check" for the media of a service pack or a hot fix. Throws a Refusal.
void CheckUpdate(const Options& options, std::vector<Medium> media);

/// The command "commit": ends the pending state of the target's service packs, which can not be
/// undone after that. Throws a Refusal.
void Commit(const Options& options);

/// The command "undo-service-pack": takes the latest service pack out of the target, which is then
/// as it was before. An undo that was interrupted is completed by another. Throws a Refusal.
void UndoServicePack(const Options& options);

/// The command "hot-fix": installs a hot fix. Throws a Refusal.
void InstallHotFix(const Options& options);

#endif  // KWBATCH_SERVICE_PACK_H_

#ifndef KWBATCH_SERVICE_PACK_H_
#define KWBATCH_SERVICE_PACK_H_

#include <string>

#include "log.h"
#include "medium.h"
#include "pack.h"

/// Writes the journal of a pack. The files that the site has changed are kept at once when it goes
/// on again, and at its commit otherwise; says which they are.
void BeginPack(Pack& pack, Log& log);

/// Sets aside what a pack or hot fix replaces, and unpacks its archive. It must have been begun.
void ReplaceFiles(const Medium& medium, const std::string& target, Pack& pack, Log& log);

/// Ends what is installed: a service pack can no longer be taken back. Says which files of the site
/// are kept.
void CommitPack(Pack& pack, Log& log);

/// Takes it out, so that the system directory is as it was before. Of one that was wholly
/// installed, the files that the site has changed since are kept; says which they are.
void TakeBack(Pack& pack, Log& log);

/// Installs a pack, or finishes its installation, and says so. False when a post-install program
/// has failed; the pack is not finished then. The same call may follow, after a Refusal too.
bool InstallPack(const Medium& medium, const std::string& target, Pack& pack, Log& log);

#endif  // KWBATCH_SERVICE_PACK_H_

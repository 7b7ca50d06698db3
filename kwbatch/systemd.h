#ifndef KWBATCH_SYSTEMD_H_
#define KWBATCH_SYSTEMD_H_

#include <string>
#include <vector>

#include "log.h"

/// \file
/// Lets systemd listen for the services of a tree, in the place of inetd.

/// Throws a Refusal when there is no directory for units, when a unit there is not this tree's or
/// was changed, or when inetd starts another tree's daemon.
void RequireSystemd(const std::string& target);

/// Are the units missing, or not those of the tree and its ports, or has inetd lines of the tree?
bool LacksUnits(const std::string& target, const std::string& system_dir);

/// Writes the units, and takes the lines of the tree out of the inetd file. The ports of the
/// product are registered. Throws a Refusal.
void RegisterForSystemd(const std::string& target, const std::string& system_dir, Log& log);

/// Deletes units, and says how to make systemd forget them. Throws a Refusal.
void TakeOutUnits(const std::vector<std::string>& names, Log& log);

#endif  // KWBATCH_SYSTEMD_H_

#ifndef KWBATCH_SATELLITE_H_
#define KWBATCH_SATELLITE_H_

#include <string>
#include <vector>

#include "archive.h"

/// Throws a Refusal when the rendering satellite of the medium `medium` cannot be installed, and
/// `registered` if that is wanted.
void RequireSatellite(const std::string& medium, const std::string& target, bool registered);

/// Is there a directory of the satellite in the target?
bool HasSatellite(const std::string& target);

/// What its archive unpacks, with paths below the target. Throws a Refusal.
std::vector<Member> SatelliteMembers(const std::string& medium);

/// Installs the rendering satellite of the medium `medium` in TARGET/satellite, and registers it if
/// that is wanted. Throws a Refusal.
void InstallSatellite(const std::string& medium, const std::string& target, bool registered);

/// Registers the satellite in the directory `dir`. Throws a Refusal.
void RegisterSatellite(std::string dir);

/// Registers its port only. Throws a Refusal.
void RegisterSatellitePort();

#endif  // KWBATCH_SATELLITE_H_

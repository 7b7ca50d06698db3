#ifndef KWBATCH_SATELLITE_H_
#define KWBATCH_SATELLITE_H_

#include <string>

/// Throws a Refusal when the rendering satellite of the medium `medium` cannot be installed.
void RequireSatellite(const std::string& medium, const std::string& target);

/// Installs the rendering satellite of the medium `medium` in TARGET/satellite, and registers it.
/// Throws a Refusal.
void InstallSatellite(const std::string& medium, const std::string& target);

#endif  // KWBATCH_SATELLITE_H_

#ifndef KWBATCH_PORTS_H_
#define KWBATCH_PORTS_H_

#include <string>

#include "log.h"
#include "options.h"

/// The product's ports. One that is 0 is left alone.
struct Ports {
  int bulletin_board = 0;
  int run = 0;
  int broker = 0;
};

/// Takes the ports that the options give, or the usual ones, each or else the next free one; says
/// which were replaced. None when nothing is to be registered: with --no-services, or when all are
/// registered already and no option asks for others. Throws a Refusal.
Ports ChoosePorts(const Options& options);

/// Gives the system files their names again that an interrupted run of kwbatch was rewriting: their
/// content has the name FILE.tmp then. Throws a Refusal when inetd.conf is there beside it, for
/// which is good only the user can tell.
void RestoreSystemFiles();

/// Registers the ports, and the daemon of the system directory, in the system's files; says and
/// logs what has changed. Throws a Refusal.
void RegisterPorts(const Ports& ports, const std::string& system_dir, Log& log);

/// Says what RegisterPorts would change.
void TellRegistration(const Ports& ports, const std::string& system_dir);

/// Exports the ORB daemon's and the meta-search settings that the options give. Throws a Refusal.
void ExportPortSettings(const Options& options);

/// Throws a Refusal when the rendering satellite of the medium `medium` cannot be installed.
void RequireSatellite(const std::string& medium, const std::string& target);

/// Installs the rendering satellite of the medium `medium` in TARGET/satellite, and registers it.
/// Throws a Refusal.
void InstallSatellite(const std::string& medium, const std::string& target);

#endif  // KWBATCH_PORTS_H_

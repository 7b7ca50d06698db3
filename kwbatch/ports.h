#ifndef KWBATCH_PORTS_H_
#define KWBATCH_PORTS_H_

#include <set>
#include <string>

#include "log.h"
#include "registration.h"

class Options;

/// The product's ports. They are all 0 when the services file stays as it is.
struct Ports {
  int bulletin_board = 0;
  int run = 0;
  int broker = 0;
};

ServicePorts ByService(const Ports& ports);

/// What the user wants of the ports.
struct PortWishes {
  bool registered = true;  ///< false with --no-services
  bool next_free = false;  ///< in the place of a given one that is taken
  Ports given;             ///< the ports that options name; 0 for the others
};

/// A port of a server that the services file will not name: the wanted one, or the next one that
/// nobody has and that is not in `chosen`, to which it is added. Says when it is replaced. Throws a
/// Refusal when the user has given it and does not want another one. An illegal one is returned as
/// it is.
int UsablePort(int wanted, bool given, bool next_free, std::set<int>& chosen);

/// For a command that takes the options of ports. Throws a UsageError.
PortWishes PortWishesOf(const Options& options);

/// What is to be written into the system's files.
struct Registration {
  Ports ports;
  std::string daemon;  ///< path of the program; empty when inetd knows it already
};

/// Takes the given ports, and for the others those that are registered or else the usual ones, or
/// the next free ones; a port that its service has already stays. Says which were replaced. No
/// ports when all are registered already and no option names others, and nothing at all when that
/// is not wanted. Throws a Refusal, for a given port that is taken too.
Registration PlanRegistration(const PortWishes& wishes, const std::string& system_dir);

/// Is there something to register, in a tree that has all its products? Not while inetd starts the
/// daemon of another tree, which exists: two trees would take the service from each other.
bool LacksRegistration(const PortWishes& wishes, const std::string& system_dir);

/// Registers the ports and the daemon; says and logs what has changed. Throws a Refusal.
void Register(const Registration& registration, Log& log);

/// Says what Register would change.
void TellRegistration(const Registration& registration);

#endif  // KWBATCH_PORTS_H_

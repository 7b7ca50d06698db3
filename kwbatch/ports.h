#ifndef KWBATCH_PORTS_H_
#define KWBATCH_PORTS_H_

#include <string>

#include "log.h"
#include "options.h"

/// The product's ports. They are all 0 when nothing is to be registered.
struct Ports {
  int bulletin_board = 0;
  int run = 0;
  int broker = 0;
};

/// What the user wants of the ports.
struct PortWishes {
  bool registered = true;  ///< false with --no-services
  bool given = false;      ///< an option names a port
  Ports ports;             ///< the ports that options name, and the usual ones for the others
};

PortWishes PortWishesOf(const Options& options);

/// Chooses each wanted port, or the next free one; says which were replaced. All are 0 when nothing
/// is to be registered: the user does not want it, or all are registered and no option names a
/// port. Throws a Refusal.
Ports ChoosePorts(const PortWishes& wishes);

/// Registers the ports, and the daemon of the system directory, in the system's files; says and
/// logs what has changed. Throws a Refusal.
void RegisterPorts(const Ports& ports, const std::string& system_dir, Log& log);

/// Says what RegisterPorts would change.
void TellRegistration(const Ports& ports, const std::string& system_dir);

#endif  // KWBATCH_PORTS_H_

#ifndef KWBATCH_REGISTRATION_H_
#define KWBATCH_REGISTRATION_H_

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "refusal.h"

/// \file
/// What the system's files say of a tree, and the tree's own record of it.

/// The port of each service of the product, by the name of the service.
using ServicePorts = std::map<std::string, int>;

/// What was registered for a system directory: the file control/Registered.
struct Registered {
  /// What the system's files say now. The daemon is the one of whichever tree.
  static Registered InSystem();

  /// Reads the record of a system directory; no value without one, or when it is not whole: then
  /// nobody knows what was registered.
  static std::optional<Registered> Read(const std::string& system_dir);

  /// Writes the record durably. Throws a Refusal.
  void Write(const std::string& system_dir) const;

  /// Do the system's files still say so?
  bool IsCurrent() const;

  ServicePorts ports;
  bool wrote_ports = false;  ///< this tree's registration wrote them; otherwise it found them there
  std::string daemon;        ///< the program of morvelk7run in the inetd file; may be empty
  std::string satellite;     ///< likewise of mi-ray
};

/// Lines of the system's files, without their newlines.
struct SystemLines {
  std::vector<std::string> services;
  std::vector<std::string> inetd;
};

/// The lines that are the tree's: in the inetd file those of its programs, and in the services file
/// those of the product when its daemon is the tree's, or there is none and the tree's installation
/// wrote these ports. Lines that somebody has changed are not among the services.
SystemLines LinesOfTree(const std::string& target, const std::vector<std::string>& system_dirs);

/// Records, before it is done, that a registration writes these ports: after a kill, nothing else
/// tells whose they are.
void RecordIntent(const std::string& system_dir, const ServicePorts& ports);

/// Records what the system's files say after a registration. `wrote_ports`: it wrote them.
void RecordRegistration(const std::string& system_dir, bool wrote_ports);

#endif  // KWBATCH_REGISTRATION_H_

#ifndef KWBATCH_REGISTRATION_H_
#define KWBATCH_REGISTRATION_H_

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

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
  std::string daemon;        ///< the program of morvelk7run for inetd or systemd; may be empty
  std::string satellite;     ///< likewise of mi-ray
  /// The unit files of systemd that the registration wrote, with the checksums of their texts; of
  /// one that is being replaced, that of the old text too.
  std::set<std::pair<std::string, uint32_t>> units;
};

/// The port of a service in the services file, or 0.
int PortInServices(const std::string& service);

/// The program that inetd starts for a service, or an empty text.
std::string InetdProgram(const std::string& service);

/// What the system's files have of a tree.
struct SystemLines {
  std::vector<std::string> services;       ///< lines without their newlines
  std::vector<std::string> inetd;          ///< likewise
  std::vector<std::string> units;          ///< names of unit files
  std::vector<std::string> changed_units;  ///< that are not as they were written
};

/// The lines that are the tree's: in the inetd file those of its programs, and in the services file
/// those of the product when its daemon is the tree's, or there is none and the tree's installation
/// wrote these ports. Lines that somebody has changed are not among the services.
SystemLines LinesOfTree(const std::string& target, const std::vector<std::string>& system_dirs);

/// Records, before it is done, that a registration writes these ports: after a kill, nothing else
/// tells whose they are.
void RecordIntent(const std::string& system_dir, const ServicePorts& ports);

/// Records the unit files by their names: before they are written beside those that are recorded
/// already, and then in their place.
void RecordUnits(const std::string& system_dir, const std::map<std::string, std::string>& units,
                 bool written);

/// Records what the system's files say after a registration. `wrote_ports`: it wrote them.
void RecordRegistration(const std::string& system_dir, bool wrote_ports);

#endif  // KWBATCH_REGISTRATION_H_

#ifndef KWBATCH_UNITS_H_
#define KWBATCH_UNITS_H_

#include <map>
#include <string>

/// \file
/// systemd units, in the place of the product's lines in the inetd file: a socket, and the program
/// that is started for each connection.

/// The directory of the machine's own units.
std::string UnitDirectory();

/// The texts of the unit files, by their names, that let systemd listen on a port for a service of
/// the inetd file. `program` is the product's daemon, or the satellite's program.
std::map<std::string, std::string> UnitTexts(const std::string& service, const std::string& program,
                                             int port);

/// The program that a unit file starts for a service, or an empty text.
std::string UnitProgram(const std::string& service);

/// Does the unit file have this text?
bool HasUnitText(const std::string& name, const std::string& text);

/// Deletes a unit file, and the link with which systemd starts it at boot. Throws a Refusal.
void DeleteUnit(const std::string& name);

#endif  // KWBATCH_UNITS_H_

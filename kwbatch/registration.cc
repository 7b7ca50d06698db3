#include "registration.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <sstream>

#include "files.h"
#include "formats.h"

namespace {

constexpr const char* kEndOfRegistered = "end";

/// The program that inetd starts for a service, or an empty text.
std::string InetdProgram(const std::string& service) {
  for (const std::string& line : LinesOf(SystemFile(kInetd))) {
    std::istringstream words(line);
    std::string name;
    std::string skipped;
    std::string program;
    if (words >> name && name == service &&
        words >> skipped >> skipped >> skipped >> skipped >> program) {
      return program;
    }
  }
  return "";
}

}  // namespace

Registered Registered::InSystem() {
  Registered now;
  for (const std::string& line : LinesOf(SystemFile(kServices))) {
    std::istringstream words(line);
    std::string name;
    int port = 0;
    const bool read = static_cast<bool>(words >> name >> port);
    if (read && std::count(std::begin(kOurServices), std::end(kOurServices), name) > 0) {
      now.ports.emplace(name, port);
    }
  }
  now.daemon = InetdProgram(kDaemonService);
  now.satellite = InetdProgram(kSatelliteService);
  return now;
}

std::optional<Registered> Registered::Read(const std::string& system_dir) {
  Registered record;
  const std::vector<std::string> lines = LinesOf(system_dir + "/" + kRegistered);
  if (lines.empty() || lines.back() != kEndOfRegistered) return std::nullopt;
  for (const std::string& line : lines) {
    std::istringstream words(line);
    std::string word;
    std::string rest;
    words >> word >> rest;
    if (word == "ports") record.wrote_ports = rest == "written";
    if (word == "daemon") record.daemon = rest;
    if (word == "satellite") record.satellite = rest;
    if (word == "port") {
      const auto number = std::strtol((words >> word, word.c_str()), nullptr, 10);
      record.ports[rest] = static_cast<int>(number);
    }
  }
  return record;
}

void Registered::Write(const std::string& system_dir) const {
  std::ostringstream text;
  text << "ports " << (wrote_ports ? "written" : "found") << '\n';
  for (const auto& [service, port] : ports) text << "port " << service << ' ' << port << '\n';
  if (!daemon.empty()) text << "daemon " << daemon << '\n';
  if (!satellite.empty()) text << "satellite " << satellite << '\n';
  text << kEndOfRegistered << '\n';
  WriteDurably(system_dir + "/" + kRegistered, text.str());
}

bool Registered::IsCurrent() const {
  const Registered now = InSystem();
  return ports == now.ports && (daemon.empty() || daemon == now.daemon) &&
         (satellite.empty() || satellite == now.satellite);
}

void RecordRegistration(const std::string& system_dir, bool wrote_ports) {
  Registered now = Registered::InSystem();
  const auto before = Registered::Read(system_dir);
  now.wrote_ports = wrote_ports || (before && before->wrote_ports && before->ports == now.ports);
  // Those of other trees are none of this one's business.
  const std::string tree = system_dir.substr(0, system_dir.rfind('/') + 1);
  if (now.daemon.compare(0, tree.size(), tree) != 0) now.daemon.clear();
  if (now.satellite.compare(0, tree.size(), tree) != 0) now.satellite.clear();
  now.Write(system_dir);
}

#include "registration.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <iterator>
#include <sstream>
#include <utility>

#include "checksum.h"
#include "files.h"
#include "formats.h"
#include "units.h"

namespace {

constexpr const char* kEndOfRegistered = "end";

/// The service of a line of the inetd file, and its program.
std::pair<std::string, std::string> InetdEntry(const std::string& line) {
  std::istringstream words(line);
  std::string service;
  std::string program;
  words >> service;
  for (int i = 0; i < 5; ++i) words >> program;
  return {service, words ? program : ""};
}

/// The program that is started for a service, by inetd or by systemd, or an empty text.
std::string ProgramOf(const std::string& service) {
  const std::string program = InetdProgram(service);
  return program.empty() ? UnitProgram(service) : program;
}

uint32_t ChecksumOf(const std::string& text) {
  const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
  return kwinst::FinishedCrc(kwinst::UpdateCrc(0, bytes, text.size()), text.size());
}

/// Are the units of a service, if there are any, those of the program and of the service's port?
bool AreCurrent(const std::set<std::pair<std::string, uint32_t>>& units, const std::string& service,
                const std::string& program) {
  const std::string socket = service + ".socket";
  const bool has_units = std::any_of(units.begin(), units.end(),
                                     [&](const auto& unit) { return unit.first == socket; });
  if (!has_units) return true;
  const auto texts = UnitTexts(service, program, PortInServices(service));
  return std::all_of(texts.begin(), texts.end(),
                     [](const auto& unit) { return HasUnitText(unit.first, unit.second); });
}

/// Is the program in the tree, or is it one that was registered for the tree and is gone, since the
/// tree was moved?
bool IsOfTree(const std::string& program, const std::string& target,
              const std::vector<Registered>& records) {
  if (program.compare(0, target.size() + 1, target + "/") == 0) return true;
  return std::any_of(records.begin(), records.end(), [&program](const Registered& record) {
    return (program == record.daemon || program == record.satellite) && !Exists(program);
  });
}

using IsOurPort = std::function<bool(const std::string& service, int64_t port)>;

/// Which lines of the services file belong to a service of the product or to the satellite, as the
/// library writes them.
std::vector<std::string> ServicesLines(const IsOurPort& is_our_port, bool satellite) {
  std::vector<std::string> lines;
  for (const std::string& line : LinesOf(SystemFile(kServices))) {
    const std::string name = line.substr(0, line.find_first_of(" \t"));
    const bool is_port = std::count(std::begin(kOurServices), std::end(kOurServices), name) > 0 &&
                         line.find(kServiceComment) != std::string::npos &&
                         is_our_port(name, std::strtol(line.c_str() + name.size(), nullptr, 10));
    const bool is_satellite =
        name == kSatelliteService && line.find(kSatelliteComment) != std::string::npos;
    if (is_port || (satellite && is_satellite)) lines.push_back(line);
  }
  return lines;
}

/// Takes the unit files of a tree: those that its records name, and those of its programs.
void TakeUnits(const std::string& target, const std::vector<Registered>& records,
               SystemLines& lines) {
  for (const std::string service : {kDaemonService, kSatelliteService}) {
    const bool is_ours = IsOfTree(UnitProgram(service), target, records);
    for (const std::string& name : {service + ".socket", service + "@.service"}) {
      const std::string path = UnitDirectory() + "/" + name;
      if (!IsThere(path)) continue;
      const std::pair unit(name, ChecksumOf(TextOf(path)));
      const auto writes = [&](const Registered& r) { return r.units.count(unit) != 0; };
      if (std::any_of(records.begin(), records.end(), writes)) {
        lines.units.push_back(name);
      } else if (is_ours) {
        lines.changed_units.push_back(name);
      }
    }
  }
}

}  // namespace

std::string InetdProgram(const std::string& service) {
  for (const std::string& line : LinesOf(SystemFile(kInetd))) {
    const auto [name, program] = InetdEntry(line);
    if (name == service && !program.empty()) return program;
  }
  return "";
}

int PortInServices(const std::string& service) {
  for (const std::string& line : LinesOf(SystemFile(kServices))) {
    std::istringstream words(line);
    std::string name;
    int port = 0;
    if (words >> name >> port && name == service) return port;
  }
  return 0;
}

Registered Registered::InSystem() {
  Registered now;
  for (const char* service : kOurServices) {
    if (const int port = PortInServices(service)) now.ports.emplace(service, port);
  }
  now.daemon = ProgramOf(kDaemonService);
  now.satellite = ProgramOf(kSatelliteService);
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
    if (word == "unit") {
      const auto checksum = std::strtoul((words >> word, word.c_str()), nullptr, 10);
      record.units.emplace(rest, static_cast<uint32_t>(checksum));
    }
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
  for (const auto& [name, checksum] : units) text << "unit " << name << ' ' << checksum << '\n';
  text << kEndOfRegistered << '\n';
  WriteDurably(system_dir + "/" + kRegistered, text.str());
}

bool Registered::IsCurrent() const {
  const Registered now = InSystem();
  return ports == now.ports && (daemon.empty() || daemon == now.daemon) &&
         (satellite.empty() || satellite == now.satellite) &&
         AreCurrent(units, kDaemonService, daemon) &&
         AreCurrent(units, kSatelliteService, satellite);
}

SystemLines LinesOfTree(const std::string& target, const std::vector<std::string>& system_dirs) {
  std::vector<Registered> records;
  bool satellite = false;
  for (const std::string& dir : system_dirs) {
    const auto record = Registered::Read(dir);
    if (!record) continue;
    records.push_back(*record);
    satellite = satellite || !record->satellite.empty();
  }
  SystemLines lines;
  TakeUnits(target, records, lines);
  std::map<std::string, bool> ours;  // by service
  for (const char* service : {kDaemonService, kSatelliteService}) {
    const std::string program = UnitProgram(service);
    if (!program.empty()) ours[service] = IsOfTree(program, target, records);
  }
  for (const std::string& line : LinesOf(SystemFile(kInetd))) {
    const auto [service, program] = InetdEntry(line);
    if ((service != kDaemonService && service != kSatelliteService) || program.empty()) continue;
    const bool is_ours = IsOfTree(program, target, records);
    ours[service] = ours[service] || is_ours;
    if (is_ours) lines.inetd.push_back(line);
  }
  const bool any_daemon = ours.count(kDaemonService) != 0;
  const auto is_our_port = [&](const std::string& service, int64_t port) {
    if (any_daemon) return ours[kDaemonService];
    return std::any_of(records.begin(), records.end(), [&](const Registered& record) {
      const auto written = record.ports.find(service);
      return record.wrote_ports && written != record.ports.end() && written->second == port;
    });
  };
  if (ours.count(kSatelliteService) != 0) satellite = ours[kSatelliteService];
  lines.services = ServicesLines(is_our_port, satellite);
  return lines;
}

void RecordIntent(const std::string& system_dir, const ServicePorts& ports) {
  Registered record = Registered::Read(system_dir).value_or(Registered());
  record.ports = ports;
  record.wrote_ports = true;
  record.Write(system_dir);
}

void RecordUnits(const std::string& system_dir, const std::map<std::string, std::string>& units,
                 bool written) {
  Registered record = Registered::Read(system_dir).value_or(Registered());
  if (written) record.units.clear();
  for (const auto& [name, text] : units) record.units.emplace(name, ChecksumOf(text));
  record.Write(system_dir);
}

void RecordRegistration(const std::string& system_dir, bool wrote_ports) {
  Registered now = Registered::InSystem();
  const auto before = Registered::Read(system_dir);
  now.wrote_ports = wrote_ports || (before && before->wrote_ports && before->ports == now.ports);
  if (before) now.units = before->units;
  // Those of other trees are none of this one's business.
  const std::string tree = system_dir.substr(0, system_dir.rfind('/') + 1);
  if (now.daemon.compare(0, tree.size(), tree) != 0) now.daemon.clear();
  if (now.satellite.compare(0, tree.size(), tree) != 0) now.satellite.clear();
  now.Write(system_dir);
}

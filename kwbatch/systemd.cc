#include "systemd.h"

#include <algorithm>
#include <map>

#include "console.h"
#include "files.h"
#include "formats.h"
#include "interruption.h"
#include "refusal.h"
#include "registration.h"
#include "satellite.h"
#include "system_files.h"
#include "texts.h"
#include "tree.h"
#include "units.h"

namespace {

SystemLines LinesNow(const std::string& target) {
  return LinesOfTree(target, SystemDirsIfAny(target, ""));
}

/// The program of the satellite, or an empty text without one.
std::string SatelliteOf(const std::string& target) {
  const std::string program = target + "/" + kSatelliteDirectory + "/" + kSatelliteProgram;
  return Exists(program) ? program : "";
}

/// The units as they should be.
std::map<std::string, std::string> WantedUnits(const std::string& target,
                                               const std::string& system_dir) {
  auto units =
      UnitTexts(kDaemonService, system_dir + "/" + kDaemon, PortInServices(kDaemonService));
  const std::string satellite = SatelliteOf(target);
  if (!satellite.empty()) {
    units.merge(UnitTexts(kSatelliteService, satellite, PortInServices(kSatelliteService)));
  }
  return units;
}

/// Names the sockets among the units.
std::string SocketsOf(const std::vector<std::string>& names) {
  const std::string suffix = ".socket";
  std::string sockets;
  for (const std::string& name : names) {
    const size_t end = name.size() - std::min(name.size(), suffix.size());
    if (name.substr(end) == suffix) sockets += (sockets.empty() ? "" : " ") + name;
  }
  return sockets;
}

}  // namespace

void RequireSystemd(const std::string& target) {
  if (!Exists(UnitDirectory())) {
    throw Refusal(Text("NoSystemd",
                       "There is no systemd on this machine: the directory {1} does not exist.\n",
                       {UnitDirectory()}));
  }
  const SystemLines lines = LinesNow(target);
  const bool has_lines = !lines.inetd.empty();
  if (has_lines) RequireWritable(SystemFile(kInetd));
  for (const std::string service : {kDaemonService, kSatelliteService}) {
    if (service == kSatelliteService && SatelliteOf(target).empty()) continue;
    const std::string program = InetdProgram(service);
    const bool is_ours =
        std::any_of(lines.inetd.begin(), lines.inetd.end(), [&service](const std::string& line) {
          return line.compare(0, service.size(), service) == 0;
        });
    if (!program.empty() && !is_ours) {
      throw Refusal(Text("InetdStarts",
                         "inetd starts {1} for {2}. Take that line out of {3} first.\n",
                         {program, service, SystemFile(kInetd)}));
    }
    for (const std::string& name : {service + ".socket", service + "@.service"}) {
      const auto& ours = lines.units;
      if (!IsThere(UnitDirectory() + "/" + name)) continue;
      if (std::find(ours.begin(), ours.end(), name) != ours.end()) continue;
      throw Refusal(Text("UnitOfOthers",
                         "The unit {1} was changed, or is not this tree's. Move it away first.\n",
                         {UnitDirectory() + "/" + name}));
    }
  }
}

bool LacksUnits(const std::string& target, const std::string& system_dir) {
  if (!LinesNow(target).inetd.empty()) return true;
  const auto wanted = WantedUnits(target, system_dir);
  return std::any_of(wanted.begin(), wanted.end(),
                     [](const auto& unit) { return !HasUnitText(unit.first, unit.second); });
}

void RegisterForSystemd(const std::string& target, const std::string& system_dir, Log& log) {
  if (!SatelliteOf(target).empty()) RegisterSatellitePort();
  const std::vector<std::string> lines = LinesNow(target).inetd;
  if (!lines.empty()) {
    RemoveLines(SystemFile(kInetd), lines);
    Tell(LinesTakenOut(SystemFile(kInetd)), log);
    TellHowInetdReads();
  }
  const auto units = WantedUnits(target, system_dir);
  // After a kill, nothing else tells whose they are.
  RecordUnits(system_dir, units, false);
  std::vector<std::string> names;
  for (const auto& [name, text] : units) {
    SafePoint();
    names.push_back(name);
    if (HasUnitText(name, text)) continue;
    WriteDurably(UnitDirectory() + "/" + name, text);
    Tell("  " + UnitDirectory() + "/" + name, log);
  }
  RecordUnits(system_dir, units, true);
  Say("  " + Text("SystemdListens",
                  "systemd listens after: systemctl daemon-reload && systemctl enable --now {1}",
                  {SocketsOf(names)}));
}

void TakeOutUnits(const std::vector<std::string>& names, Log& log) {
  if (names.empty()) return;
  for (const std::string& name : names) {
    SafePoint();
    DeleteUnit(name);
    Tell(Text("UnitDeleted", "The unit {1} is deleted.", {UnitDirectory() + "/" + name}), log);
  }
  Say("  " + Text("SystemdEnds",
                  "systemd stops using them after: systemctl daemon-reload; systemctl stop {1}",
                  {SocketsOf(names)}));
}

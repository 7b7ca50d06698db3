#include <filesystem>
#include <optional>
#include <string>

#include "commands.h"
#include "console.h"
#include "files.h"
#include "formats.h"
#include "json.h"
#include "lock.h"
#include "log.h"
#include "ports.h"
#include "refusal.h"
#include "registration.h"
#include "request.h"
#include "satellite.h"
#include "system_files.h"
#include "texts.h"
#include "tree.h"

namespace {

/// The first system directory with the product's daemon. Throws a Refusal when there is none.
std::string SystemWithDaemon(const Request& request) {
  for (const std::string& dir : SystemDirs(request.target, request.os)) {
    if (Exists(dir + "/" + kDaemon)) return dir;
  }
  throw Refusal(Text("NothingToRegister",
                     "There is no {1} in {2}, so there is nothing to register.\n",
                     {kDaemon, request.target}));
}

}  // namespace

void RegisterTree(const Options& options) {
  const Request request = RequestOf(options);
  const std::string& target = request.target;
  const Lock tree(target, Lock::Kind::kWriting, request);
  const Lock system(std::filesystem::path(SystemFile(kServices)).parent_path(),
                    Lock::Kind::kWritingAlone, request);
  const std::string system_dir = SystemWithDaemon(request);
  RestoreSystemFiles();
  const Registration registration = PlanRegistration(request.ports, system_dir);
  const bool has_ports = registration.ports.run != 0;
  const bool has_daemon = !registration.daemon.empty() && Exists(SystemFile(kInetd));
  const std::string satellite = target + "/" + kSatelliteDirectory;
  const bool has_satellite =
      Exists(satellite + "/" + kSatelliteProgram) &&
      Registered::InSystem().satellite != satellite + "/" + kSatelliteProgram;
  const auto record = Registered::Read(system_dir);
  if (!has_ports && !has_daemon && !has_satellite && record && record->IsCurrent()) {
    throw NothingToDo(
        Text("RegisteredAlready", "The tree in {1} is registered already.\n", {target}));
  }
  Log log(request.log, Text("LogRegistration", "registration of {1}", {target}));
  NoteChange();
  if (has_ports) RecordIntent(system_dir, ByService(registration.ports));
  Register(registration, log);
  if (has_satellite) RegisterSatellite(satellite);
  RecordRegistration(system_dir, has_ports);
  SayDone(Text("TreeRegistered", "The tree in {1} is registered.", {target}));
  log.Succeeded();
}

#include <filesystem>
#include <string>

#include "commands.h"
#include "files.h"
#include "formats.h"
#include "json.h"
#include "lock.h"
#include "log.h"
#include "paths.h"
#include "pointers.h"
#include "ports.h"
#include "refusal.h"
#include "registration.h"
#include "request.h"
#include "satellite.h"
#include "system_files.h"
#include "systemd.h"
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

/// Registers the services for inetd or systemd. False when there is nothing to do.
bool RegisterServices(const Request& request, Log& log) {
  const std::string& target = request.target;
  const std::string system_dir = SystemWithDaemon(request);
  RestoreSystemFiles();
  DeleteUnwritten(system_dir + "/" + kRegistered);
  const auto record = Registered::Read(system_dir);
  // A tree that systemd knows stays with systemd.
  const bool systemd = request.systemd || (record && !record->units.empty());
  Registration registration = PlanRegistration(request.ports, system_dir);
  if (systemd) {
    RequireSystemd(target);
    registration.daemon.clear();
  }
  const bool has_ports = registration.ports.run != 0;
  const bool has_daemon = !registration.daemon.empty() && Exists(SystemFile(kInetd));
  const std::string satellite = target + "/" + kSatelliteDirectory;
  const std::string program = satellite + "/" + kSatelliteProgram;
  const bool has_satellite =
      Exists(program) && Registered::InSystem().satellite != program && !systemd;
  const bool has_units = systemd && LacksUnits(target, system_dir);
  if (!has_ports && !has_daemon && !has_satellite && !has_units && record && record->IsCurrent()) {
    return false;
  }
  NoteChange();
  if (has_ports) RecordIntent(system_dir, ByService(registration.ports));
  Register(registration, log);
  if (has_satellite) RegisterSatellite(satellite);
  if (systemd) RegisterForSystemd(target, system_dir, log);
  RecordRegistration(system_dir, has_ports);
  SayDone(Text("TreeRegistered", "The tree in {1} is registered.", {target}));
  return true;
}

}  // namespace

void RegisterTree(const Options& options) {
  const Request request = RequestOf(options);
  const std::string& target = request.target;
  const bool sdk = IsSdkTree(target);
  const std::string code_tree = request.code_tree.empty() ? "" : TargetPath(request.code_tree);
  const std::string other = !sdk                ? PointedTree(target, kSdkPointer)
                            : code_tree.empty() ? PointedTree(target, kCodePointer)
                                                : code_tree;
  const Lock tree(target, Lock::Kind::kWriting, request);
  const Lock other_tree(other, Lock::Kind::kWriting, request);
  const Lock system(std::filesystem::path(SystemFile(kServices)).parent_path(),
                    Lock::Kind::kWritingAlone, request);
  RequireTree(target);
  Log log(request.log, Text("LogRegistration", "registration of {1}", {target}));
  const bool mended = MendPointers(target, code_tree);
  const bool registered = !sdk && RegisterServices(request, log);
  log.Succeeded();
  if (!mended && !registered) {
    throw NothingToDo(
        Text("RegisteredAlready", "The tree in {1} is registered already.\n", {target}));
  }
}

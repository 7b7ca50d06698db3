#include <filesystem>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "archive.h"
#include "commands.h"
#include "console.h"
#include "files.h"
#include "formats.h"
#include "integrity.h"
#include "interruption.h"
#include "journal.h"
#include "json.h"
#include "lock.h"
#include "log.h"
#include "medium.h"
#include "paths.h"
#include "refusal.h"
#include "request.h"
#include "space.h"
#include "tree.h"

namespace fs = std::filesystem;

namespace {

/// The damaged files of a system directory, by the package that they should be of: the last one in
/// the table that lists them.
std::map<std::string, std::set<std::string>> DamagedFiles(const std::string& system_dir, bool sdk) {
  std::map<std::string, std::string> packages;
  for (const std::string& line : LinesOf(system_dir + "/" + kPresent)) {
    const std::string name = TableLine(line).name;
    for (const std::string& file : ListedBy({name}, system_dir)) packages[file] = name;
  }
  std::map<std::string, std::set<std::string>> damaged;
  const auto installed = OpenInstalled(system_dir);
  if (installed == nullptr) throw Refusal("Nothing is installed in " + system_dir + ".\n");
  std::istringstream report(CheckIntegrity(installed.get(), system_dir, sdk).report);
  for (std::string line; std::getline(report, line);) {
    const std::string file = DamagedFileIn(line, packages);
    if (!file.empty()) damaged[packages[file]].insert(file);
  }
  return damaged;
}

/// Puts back what the archive of a package has of the files.
void PutBack(const Medium& medium, const std::string& package, const std::set<std::string>& files,
             const std::string& target, Log& log) {
  RequirePlainName("package name", package);
  const std::string archive = ArchiveOf(medium.dir, package);
  if (archive.empty()) {
    throw Refusal("The archive " + medium.dir + "/" + package + " is missing.\n");
  }
  const std::string root = IsSdk(medium) ? "" : medium.os + "/";
  std::vector<std::string> members;
  for (const Member& member : MembersOf(archive)) {
    const std::string path = fs::path(member.path).lexically_normal();
    if (path.compare(0, root.size(), root) != 0 || files.count(path.substr(root.size())) == 0) {
      continue;
    }
    members.push_back(member.path);
    log.Write("put back: " + path + "\n");
    SayDone("  " + path);
  }
  if (!members.empty()) Unpack(archive, members, target);
}

void RepairSystem(const Medium& medium, const std::string& target, Log& log) {
  const std::string system_dir = SystemDir(medium, target);
  const auto journal = Journal::Read(system_dir);
  if (journal && journal->phase != Journal::Phase::kPending) throw journal->NotFinished(system_dir);
  RequireSameLevel(medium, system_dir);
  const auto damaged = DamagedFiles(system_dir, IsSdk(medium));
  Say("Put back in " + system_dir + ":");
  std::vector<std::string> repaired;
  const Content content = ContentOf(medium.kind);
  for (const TEVINSPkg kind : content.kinds) {
    for (const std::string& package : PackagesOf(*medium.toc, content.type, kind)) {
      if (damaged.count(package) == 0) continue;
      SafePoint();
      PutBack(medium, package, damaged.at(package), target, log);
      repaired.push_back(package);
    }
  }
  SafePoint();
  RequireWritten(system_dir, IsSdk(medium), repaired, log);
  SyncFileSystem(system_dir);
}

}  // namespace

void Repair(const Options& options) {
  const Request request = RequestOf(options);
  const Lock lock(request.target, Lock::Kind::kWriting, request);
  const std::vector<Medium> media = OpenMedium(request.medium, request.os);
  RequireTree(request.target);
  RequireReadWrite(request.target);
  Log log(request.log, " repair of " + request.target + " from " + request.medium + "\n");
  for (const Medium& medium : media) {
    const bool is_there = Exists(SystemDir(medium, request.target) + "/" + kPresent);
    if (is_there || media.size() == 1) RepairSystem(medium, request.target, log);
  }
  log.Succeeded();
}

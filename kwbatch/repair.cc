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
#include "refusal.h"
#include "request.h"
#include "space.h"
#include "texts.h"
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
  if (installed == nullptr) throw Refusal(NothingInstalled(system_dir));
  std::istringstream report(CheckIntegrity(installed.get(), system_dir, sdk).report);
  for (std::string line; std::getline(report, line);) {
    const std::string file = DamagedFileIn(line, packages);
    if (!file.empty()) damaged[packages[file]].insert(file);
  }
  return damaged;
}

/// What the archive of a package has of the files.
Part PartWith(const Medium& medium, const std::string& package,
              const std::set<std::string>& files) {
  Part part{package, RequireArchive(medium, package), {}};
  const std::string root = IsSdk(medium) ? "" : medium.os + "/";
  for (const Member& member : MembersOf(part.archive)) {
    const std::string path = fs::path(member.path).lexically_normal();
    const bool is_inside = path.compare(0, root.size(), root) == 0;
    if (is_inside && files.count(path.substr(root.size())) != 0) part.members.push_back(member);
  }
  return part;
}

/// What is to be put back in one system directory.
struct SystemRepair {
  std::string system_dir;
  bool sdk;
  std::vector<Part> parts;
};

/// Throws a Refusal when the medium is not for what is installed.
SystemRepair PlanRepair(const Medium& medium, const std::string& target) {
  SystemRepair repair{SystemDir(medium, target), IsSdk(medium), {}};
  const auto journal = Journal::Read(repair.system_dir);
  if (journal && journal->phase != Journal::Phase::kPending) {
    throw journal->NotFinished(repair.system_dir);
  }
  RequireSameLevel(medium, repair.system_dir);
  const auto damaged = DamagedFiles(repair.system_dir, repair.sdk);
  const Content content = ContentOf(medium.kind);
  for (const TEVINSPkg kind : content.kinds) {
    for (const std::string& package : PackagesOf(*medium.toc, content.type, kind)) {
      if (damaged.count(package) == 0) continue;
      repair.parts.push_back(PartWith(medium, package, damaged.at(package)));
    }
  }
  return repair;
}

/// Throws a Refusal when there is not enough space for all that is to be put back.
void RequireSpaceFor(const std::vector<SystemRepair>& repairs, const std::string& target) {
  Demand demand(target);
  for (const SystemRepair& repair : repairs) {
    for (const Part& part : repair.parts) demand.Add(part.members);
  }
  demand.Require();
}

void PutBack(const SystemRepair& repair, const std::string& target, Log& log) {
  Say(Text("PutBackIn", "Put back in {1}:", {repair.system_dir}));
  std::vector<std::string> repaired;
  for (const Part& part : repair.parts) {
    SafePoint();
    for (const Member& member : part.members) {
      const std::string path = fs::path(member.path).lexically_normal();
      log.Write(Text("PutBack", "put back: {1}\n", {path}));
      SayDone("  " + path);
    }
    if (!part.members.empty()) Unpack(part, target);
    repaired.push_back(part.package);
  }
  SafePoint();
  RequireWritten(repair.system_dir, repair.sdk, repaired, log);
  SyncFileSystem(repair.system_dir);
}

}  // namespace

void Repair(const Options& options) {
  const Request request = RequestOf(options);
  const Lock lock(request.target, Lock::Kind::kWriting, request);
  const std::vector<Medium> media = OpenMedium(request.medium, request.os);
  RequireTree(request.target);
  RequireReadWrite(request.target);
  std::vector<SystemRepair> repairs;
  for (const Medium& medium : media) {
    const bool is_there = Exists(SystemDir(medium, request.target) + "/" + kPresent);
    if (is_there || media.size() == 1) repairs.push_back(PlanRepair(medium, request.target));
  }
  RequireSpaceFor(repairs, request.target);
  Log log(request.log,
          Text("LogRepair", "repair of {1} from {2}", {request.target, request.medium}));
  for (const SystemRepair& repair : repairs) PutBack(repair, request.target, log);
  log.Succeeded();
}

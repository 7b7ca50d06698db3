#include <kwinstutil/kwinstutil.h>

#include <filesystem>
#include <set>
#include <string>
#include <system_error>

#include "archive.h"
#include "commands.h"
#include "console.h"
#include "files.h"
#include "formats.h"
#include "integrity.h"
#include "interruption.h"
#include "languages.h"
#include "lock.h"
#include "log.h"
#include "medium.h"
#include "pack.h"
#include "refusal.h"
#include "request.h"
#include "site_files.h"
#include "transfer.h"
#include "tree.h"
#include "unfinished.h"

namespace fs = std::filesystem;

namespace {

/// Keeps the files that the site has changed and the hot fix replaces: tar makes new files, and
/// the old ones have a second name then.
void KeepSiteFiles(const Medium& medium, const std::string& name, const std::string& system_dir,
                   Log& log) {
  const std::string root = medium.os + "/";
  std::set<std::string> files;
  for (const Member& member : MembersOf(ArchiveOf(medium.dir, name))) {
    if (member.path.compare(0, root.size(), root) == 0) {
      files.insert(member.path.substr(root.size()));
    }
  }
  for (const std::string& file : ChangedFiles(system_dir, false, files)) {
    const std::string path = system_dir + "/" + file;
    std::error_code failed;
    // An interrupted try has kept it.
    if (fs::equivalent(path, path + kSiteSuffix, failed)) continue;
    const std::string kept = SitePath(path);
    fs::create_hard_link(path, kept, failed);
    if (failed) fs::copy(path, kept, fs::copy_options::copy_symlinks, failed);
    if (failed) throw Refusal("The file " + kept + " cannot be made.\n");
    const std::string text = "A file that was changed here is kept as " + kept + ".\n";
    Say(text);
    log.Write(text);
  }
}

/// Takes a hot fix that is not whole out of the tree's table.
void TakeOutOfTable(const std::string& name, const std::string& system_dir) {
  CutFragment(system_dir, 0);
  std::string present = system_dir + "/" + kPresent;
  TEVUnicodeString message;
  for (std::string line : LinesOf(system_dir + "/" + kControl + "/" + name + kPackTableSuffix)) {
    if (!TableLine(line).IsHotFix()) continue;
    if (TEVInsSuppressLine(present.data(), (line += '\n').data(), &message, 1) != 1) {
      throw Refused(message);
    }
  }
}

void RequireWhole(const std::string& name, const std::string& system_dir, Log& log) {
  try {
    RequireWritten(system_dir, false, {name}, log);
  } catch (const Refusal&) {
    TakeOutOfTable(name, system_dir);
    throw;
  }
}

}  // namespace

void HotFix(const Options& options) {
  const Request request = RequestOf(options);
  const Lock lock(request.target, Lock::Kind::kWriting, request);
  const std::string& target = request.target;
  const Medium medium = InstallableUpdate(OpenMedium(request.medium, request.os), request, true);
  const std::string name = UpdateName(medium);
  const std::string system_dir = SystemDir(medium, target);
  Log log(request.log, " hot fix " + name + " in " + target + "\n");
  if (Unfinished::Read(system_dir)) {
    TakeOutOfTable(name, system_dir);
  } else {
    KeepSiteFiles(medium, name, system_dir, log);
    Unfinished{medium.dir, std::nullopt, {name}}.Write(system_dir);
  }
  Transfer(medium, name, target, InstalledLanguages(medium, target), log);
  SafePoint();
  RequireWhole(name, system_dir, log);
  Unfinished::Delete(system_dir);
  log.Succeeded();
  Say("Hot fix " + name + " is installed in " + system_dir + ".");
}

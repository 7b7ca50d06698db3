#include <algorithm>
#include <filesystem>
#include <iterator>
#include <string>
#include <vector>

#include "archive.h"
#include "commands.h"
#include "console.h"
#include "files.h"
#include "formats.h"
#include "interruption.h"
#include "journal.h"
#include "json.h"
#include "languages.h"
#include "lock.h"
#include "log.h"
#include "medium.h"
#include "options.h"
#include "refusal.h"
#include "request.h"
#include "space.h"
#include "texts.h"
#include "tree.h"
#include "unfinished.h"

namespace fs = std::filesystem;

namespace {

/// The bit of the language, or of the fonts, that a file of a system directory is for; 0 for one
/// that is always there.
int LanguageBitOf(const fs::path& file) {
  const auto* const fonts = std::end(kIndexedFontFiles);
  if (std::find(std::begin(kIndexedFontFiles), fonts, file.string()) != fonts) {
    return kIndexedFonts;
  }
  for (const Language& language : kLanguages) {
    if (file.parent_path() == fs::path(kCatalogs) / language.name) return language.bit;
  }
  return 0;
}

/// The files for the languages that the medium has for packages that are installed.
std::vector<Part> FilesForLanguages(const Medium& medium, const std::string& system_dir,
                                    int languages) {
  const auto installed = OpenInstalled(system_dir);
  if (installed == nullptr) throw Refusal(NothingInstalled(system_dir));
  const Content content = ContentOf(medium.kind);
  const std::string root = medium.os + "/";
  std::vector<Part> parts;
  for (const TEVINSPkg kind : content.kinds) {
    for (const std::string& package : PackagesOf(*medium.toc, content.type, kind)) {
      if (installed->IsInstalled(package.c_str(), content.type) != 0) continue;
      Part part{package, RequireArchive(medium, package), {}};
      for (const Member& member : MembersOf(part.archive)) {
        const std::string path = fs::path(member.path).lexically_normal();
        // tar takes a directory for all that is in it.
        if (path.back() == '/' || path.compare(0, root.size(), root) != 0) continue;
        if ((LanguageBitOf(path.substr(root.size())) & languages) == 0) continue;
        part.members.push_back(member);
      }
      if (!part.members.empty()) parts.push_back(std::move(part));
    }
  }
  return parts;
}

bool AreAllThere(const std::vector<Part>& parts, const std::string& target) {
  return std::all_of(parts.begin(), parts.end(), [&target](const Part& part) {
    return std::all_of(part.members.begin(), part.members.end(), [&target](const Member& member) {
      return IsThere(target + "/" + member.path);
    });
  });
}

/// Throws a Refusal unless the tree is at rest.
void RequireFinishedSystem(const std::string& system_dir) {
  const auto unfinished = Unfinished::Forbidding(system_dir, false);
  if (unfinished) throw unfinished->NotFinished(system_dir);
  const auto journal = Journal::Read(system_dir);
  if (journal && journal->phase != Journal::Phase::kPending) throw journal->NotFinished(system_dir);
}

/// Adds the languages for one system. False when there is nothing to do.
bool AddLanguages(const Medium& medium, const std::string& target, int languages, Log& log) {
  const std::string system_dir = SystemDir(medium, target);
  RequireFinishedSystem(system_dir);
  RequireSameLevel(medium, system_dir);
  const int before = InstalledLanguages(medium, target);
  const auto parts = FilesForLanguages(medium, system_dir, languages);
  // The files of a service pack replace those of the products, which are there.
  const bool is_there = parts.empty() || (!IsUpdate(medium.kind) && AreAllThere(parts, target));
  if ((before | languages) == before && is_there) return false;
  Demand demand(target);
  for (const Part& part : parts) {
    RequireRealDirectories(part.members, target);
    demand.Add(part.members);
  }
  demand.Require();
  NoteChange();
  for (const Part& part : parts) {
    SafePoint();
    Unpack(part, target);
    Tell(Text("LanguageFilesInstalled", "{1} ({2}): the files of the languages are installed.",
              {part.package, medium.os}),
         log);
  }
  RecordLanguages(medium, target, before | languages);
  SyncFileSystem(system_dir);
  if (!IsUpdate(medium.kind) && OpenInstalled(system_dir)->GetSPKLevel(1) > 0) {
    Say(Text("LanguagesOfPack",
             "A service pack is installed in {1}. If it brings catalogs too, repeat the command "
             "with its medium.",
             {system_dir}));
  }
  return true;
}

}  // namespace

void Languages(const Options& options) {
  Request request = RequestOf(options);
  request.languages = options.Text(option::kAdd);
  if (request.languages.empty()) {
    throw UsageError(Text("LanguagesNeedsAdd", "languages needs --add"));
  }
  const int languages = *ChosenLanguages(request);
  const Lock lock(request.target, Lock::Kind::kWriting, request);
  const std::vector<Medium> media = OpenMedium(request.medium, request.os);
  RequireTree(request.target);
  if (IsSdk(media.front())) {
    throw Refusal(Text("SdkWithoutLanguages", "A development kit has no languages.\n"));
  }
  Log log(request.log,
          Text("LogLanguages", "languages {1} in {2}", {request.languages, request.target}));
  bool added = false;
  for (const Medium& medium : media) {
    const bool is_there = Exists(SystemDir(medium, request.target) + "/" + kPresent);
    if (!is_there && media.size() > 1) continue;
    added = AddLanguages(medium, request.target, languages, log) || added;
  }
  log.Succeeded();
  if (!added) {
    throw NothingToDo(Text("LanguagesInstalled", "The languages are installed already.\n"));
  }
}

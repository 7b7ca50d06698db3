#include "edition.h"

#include <algorithm>
#include <filesystem>
#include <set>
#include <utility>

#include "kwbatch/archive_reader.h"
#include "kwbatch/console.h"
#include "kwbatch/files.h"
#include "kwbatch/formats.h"
#include "kwbatch/medium.h"
#include "kwbatch/package_line.h"
#include "kwbatch/refusal.h"

namespace fs = std::filesystem;

namespace {

bool EndsWith(const std::string& text, const std::string& end) {
  return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

/// Is the file one that installations write, and no product brings?
bool IsOfInstallation(const std::string& path) {
  static const std::set<std::string> names = {kLanguageRecord, kCodePointer, kSdkPointer,
                                              kTarErrors,      kSystemList,  kTransferErrors};
  return names.count(path) != 0 || path.rfind(std::string(kControl) + "/", 0) == 0 ||
         path == kControl || EndsWith(path, kSavedSuffix);
}

/// The lines of a table; bad ones are refused.
std::vector<PackageLine> ReadTable(const std::string& path) {
  std::vector<PackageLine> lines;
  size_t number = 0;
  RequireRegular(path);
  for (const std::string& text : LinesOf(path)) {
    ++number;
    try {
      if (auto line = ParsePackageLine(text)) lines.push_back(std::move(*line));
    } catch (const Refusal& refusal) {
      throw Refusal(path + ":" + std::to_string(number) + ": " + refusal.what());
    }
  }
  return lines;
}

/// Notes the files of a package, as its manifest lists them: two lines for each.
void NoteOwner(const std::string& package, const std::string& system_dir, Edition& edition) {
  const std::vector<std::string> lines =
      LinesOf(system_dir + "/" + std::string(kControl) + "/" + package);
  for (size_t i = 0; i < lines.size(); i += 2) edition.owners[lines[i]] = package;
}

Edition OpenSystem(const std::string& system_dir, const std::string& table,
                   const EditionRequest& request) {
  Edition edition;
  edition.ga = request.ga;
  edition.os = request.os;
  for (const PackageLine& line : ReadTable(table)) {
    if (line.Has("os") && request.os.empty()) edition.os = line.Value("os");
    if (line.Has("ga") && request.ga.empty()) edition.ga = line.Value("ga");
    edition.sdk = edition.sdk || line.type == zeb2;
    if (line.kind == SPK) edition.pack_level = std::max(edition.pack_level, LevelOf(line));
    if (line.kind != SPK && line.kind != FSP && line.kind != HFX) {
      NoteOwner(line.name, system_dir, edition);
    }
  }
  if (edition.os.empty() || edition.ga.empty()) {
    throw Refusal(request.path + " does not tell its operating system and its level: give --os " +
                  "and --ga.\n");
  }
  for (Source& source : SourcesBelow(system_dir)) {
    if (S_ISDIR(source.info.st_mode) || IsOfInstallation(source.path)) continue;
    edition.files.push_back(std::move(source));
  }
  return edition;
}

void UnpackInto(const std::string& archive, const std::string& dir) {
  ArchiveReader reader(archive);
  for (ArchiveMember member; reader.Next(member);) reader.Unpack(dir);
}

/// Unpacks one system of a medium as an installation does.
Edition OpenMediumSystem(const std::string& medium, const std::string& dir,
                         const EditionRequest& request) {
  const std::string table = medium + "/" + kMediumTable;
  std::string os = request.os;
  bool sdk = false;
  for (const PackageLine& line : ReadTable(table)) {
    const std::string archive = ArchiveOf(medium, line.name);
    if (line.Has("os")) os = line.Value("os");
    sdk = line.type == zeb2;
    if (line.kind == FSP) continue;
    if (archive.empty()) {
      throw Refusal("The archive " + medium + "/" + line.name + " is missing.\n");
    }
    Say("Unpacking " + archive);
    UnpackInto(archive, dir);
  }
  return OpenSystem(sdk ? dir : dir + "/" + os, table, request);
}

}  // namespace

std::vector<Edition> OpenEditions(const EditionRequest& request, const Staging& staging,
                                  const std::string& name) {
  std::string path = fs::absolute(request.path).lexically_normal();
  if (path.size() > 1 && path.back() == '/') path.pop_back();
  if (!fs::is_directory(path)) throw Refusal("The directory " + path + " does not exist.\n");
  const std::string unpacked = staging.MakeWorkDirectory(name);
  ShowAs(unpacked, request.path);
  const std::string table = std::string("/") + kMediumTable;
  const auto open = [&](const std::string& dir, const std::string& os) {
    const EditionRequest part = {request.path, os, request.ga};
    if (Exists(dir + table)) return OpenMediumSystem(dir, unpacked, part);
    return OpenSystem(dir, dir + "/" + kPresent, part);
  };
  std::vector<Edition> editions;
  RequireRegular(path + "/" + kSystemList);
  const std::vector<std::string> systems = SystemsOf(path);
  if (systems.empty()) editions.push_back(open(path, request.os));
  for (const std::string& os : systems) {
    if (request.os.empty() || os == request.os) editions.push_back(open(path + "/" + os, os));
  }
  if (editions.empty()) throw Refusal(path + " has no system " + request.os + ".\n");
  return editions;
}

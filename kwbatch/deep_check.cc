#include "deep_check.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <map>
#include <set>
#include <sstream>
#include <vector>

#include "archive_check.h"
#include "console.h"
#include "files.h"
#include "formats.h"
#include "genuine.h"
#include "medium.h"
#include "package_line.h"
#include "refusal.h"
#include "texts.h"

namespace fs = std::filesystem;

namespace {

std::string ReasonOf(const Refusal& refusal) {
  const std::string text = refusal.what();
  return text.substr(0, text.find_last_not_of('\n') + 1);
}

/// The check of a medium, or of a part of it that is for one system.
class MediumCheck {
 public:
  MediumCheck(std::string dir, std::string os, Findings& findings)
      : dir_(std::move(dir)), os_(std::move(os)), findings_(findings) {}

  void Run();
  void CheckTable();

 private:
  void ReadTable();
  void CheckLines();
  void CheckLevels();
  void CheckKinds();
  void CheckComponent(const PackageLine& line);
  void FindStrayFiles();

  void Fault(const std::string& what) { findings_.faults.push_back(Printable(dir_ + "/" + what)); }
  void Warn(const std::string& what) { findings_.warnings.push_back(Printable(dir_ + "/" + what)); }

  const std::string dir_;
  std::string os_;  ///< as the list of systems says, or else the table
  Findings& findings_;
  std::vector<PackageLine> lines_;
  std::map<std::string, std::string> texts_;  ///< the lines as they are, by name
  std::set<std::string> known_ = {kMediumTable, kSystemList, kChecksums, kSignature};
};

void MediumCheck::CheckTable() {
  ReadTable();
  if (lines_.empty()) {
    return Fault(Text("FaultNoLines", "{1}: no line can be used", {kMediumTable}));
  }
  CheckLines();
  CheckLevels();
  CheckKinds();
}

void MediumCheck::Run() {
  CheckTable();
  if (lines_.empty()) return;
  for (const PackageLine& line : lines_) CheckComponent(line);
  FindStrayFiles();
}

void MediumCheck::ReadTable() {
  size_t number = 0;
  RequireRegular(dir_ + "/" + kMediumTable);
  for (const std::string& text : LinesOf(dir_ + "/" + kMediumTable)) {
    ++number;
    const std::string place = std::string(kMediumTable) + ":" + std::to_string(number) + ": ";
    try {
      const auto line = ParsePackageLine(text);
      if (!line) continue;
      if (!texts_.emplace(line->name, text).second) {
        throw Refusal(Text("NameTwice", "The name is there twice.\n"));
      }
      lines_.push_back(*line);
    } catch (const Refusal& refusal) {
      Fault(place + ReasonOf(refusal));
    }
  }
}

/// The operating system and the level must be there, and the same in all lines.
void MediumCheck::CheckLines() {
  for (const char* key : {"os", "ga"}) {
    std::set<std::string> values;
    for (const PackageLine& line : lines_) {
      if (line.Has(key)) values.insert(line.Value(key));
    }
    if (values.empty() || values.begin()->empty()) {
      Fault(Text("FaultNoKey", "{1}: no line has {2}=", {kMediumTable, key}));
    } else if (values.size() > 1) {
      Fault(Text("FaultKeysDiffer", "{1}: the lines differ in {2}=", {kMediumTable, key}));
    } else if (std::string(key) == "os") {
      if (os_.empty()) os_ = *values.begin();
      if (os_ != *values.begin()) {
        Fault(Text("FaultOtherSystem", "{1}: is for {2}, not {3}",
                   {kMediumTable, *values.begin(), os_}));
      }
    }
  }
}

/// Levels rise; the parts of a pack, and the hot fixes for it, follow it.
void MediumCheck::CheckLevels() {
  std::map<TEVINSPkg, int> levels;
  for (const PackageLine& line : lines_) {
    const std::string place = std::string(kMediumTable) + ": " + line.name;
    if (line.kind == SPK || line.kind == HFX) {
      int& level = levels[line.kind];
      if (LevelOf(line) <= level) {
        Fault(Text("FaultLevelOrder", "{1}: its level is not above that of the line before",
                   {place}));
      }
      level = std::max(level, LevelOf(line));
    }
    if ((line.kind == FSP || line.kind == HFX) && levels.count(SPK) == 0) {
      Fault(Text("FaultNoPackBefore", "{1}: there is no service pack before it", {place}));
    }
  }
}

/// Asks the library what the medium is, and names what is never installed from such a one.
void MediumCheck::CheckKinds() {
  try {
    const std::vector<Medium> media = OpenMedium(dir_, "");
    const Content content = ContentOf(media.front().kind);
    for (const PackageLine& line : lines_) {
      const bool part = IsUpdate(media.front().kind) && (line.kind == FSP || line.kind == SPK);
      const bool taken = line.type == content.type &&
                         std::count(content.kinds.begin(), content.kinds.end(), line.kind) > 0;
      if (part || taken) continue;
      Fault(Text("FaultOtherKind", "{1}: {2}: is not installed from a medium of this kind",
                 {kMediumTable, line.name}));
    }
  } catch (const Refusal& refusal) {
    Fault(Text("FaultRefused", "{1}: an installation refuses it: {2}",
               {kMediumTable, ReasonOf(refusal)}));
  }
}

void MediumCheck::CheckComponent(const PackageLine& line) {
  const bool header =
      line.kind == SPK &&
      std::any_of(lines_.begin(), lines_.end(), [](const PackageLine& l) { return l.kind == HFX; });
  const std::string path = ArchiveOf(dir_, line.name);
  if (path.empty() && line.kind != FSP && !header) {
    return Fault(Text("FaultMissing", "{1}: is missing", {line.name}));
  }
  if (path.empty()) return;
  known_.insert(fs::path(path).filename());
  if (line.kind == FSP || header) {
    return Warn(Text("WarningNotUnpacked", "{1}: is never unpacked", {line.name}));
  }
  Say("  " + path);
  ArchiveToCheck archive{path,
                         line.name,
                         line.type == zeb2 ? "" : os_ + "/",
                         line.kind == SPK || line.kind == HFX,
                         {texts_[line.name]}};
  for (const PackageLine& part : lines_) {
    if (line.kind == SPK && part.kind == FSP) archive.table.insert(texts_[part.name]);
  }
  CheckArchive(archive, findings_);
}

void MediumCheck::FindStrayFiles() {
  std::set<std::string> names;
  for (const auto& entry : fs::directory_iterator(dir_)) names.insert(entry.path().filename());
  for (const std::string& name : names) {
    if (known_.count(name) == 0) Warn(Text("WarningStray", "{1}: is not in the table", {name}));
  }
}

/// A satellite has no table: an archive, and the space that it needs.
void CheckSatellite(const std::string& dir, Findings& findings) {
  const std::string space = dir + "/LFSFS";
  uint64_t kilobytes = 0;
  RequireRegular(space);
  std::istringstream text(TextOf(space));
  if (!(text >> kilobytes)) {
    findings.faults.push_back(Text("FaultNoSpace", "{1}: does not begin with a number", {space}));
  }
  CheckMembers(dir + "/" + kSatelliteArchive, findings);
}

/// The systems of a medium; an empty name when it is for one only.
std::vector<std::string> SystemsToCheck(const std::string& dir, Findings& findings) {
  const std::string list = dir + "/" + kSystemList;
  if (!Exists(list)) return {""};
  RequireRegular(list);
  std::vector<std::string> systems;
  std::istringstream words(TextOf(list));
  for (std::string word; words >> word;) {
    if (word.size() > kSystemNameLength || word.find('/') != std::string::npos || !IsText(word)) {
      findings.faults.push_back(
          Text("FaultNoSystemName", "{1}: {2} is no name of a system", {list, Printable(word)}));
    } else if (!fs::is_directory(dir + "/" + word)) {
      findings.faults.push_back(
          Text("FaultNoSystemDirectory", "{1}: there is no directory {2}", {list, word}));
    } else {
      systems.push_back(word);
    }
  }
  if (systems.size() > kMostSystems) {
    findings.faults.push_back(Text("FaultManySystems", "{1}: more than four systems", {list}));
  }
  if (systems.empty()) {
    findings.faults.push_back(Text("FaultNoSystems", "{1}: there is nothing to install", {list}));
  }
  return systems;
}

Findings CheckMedium(const std::string& dir) {
  RequireDirectory(dir);
  Findings findings;
  if (Exists(dir + "/" + kSignature)) {
    try {
      RequireChecksums(dir);
    } catch (const Refusal& refusal) {
      findings.faults.push_back(Printable(ReasonOf(refusal)));
    }
  }
  if (!Exists(dir + "/" + kMediumTable) && Exists(dir + "/" + kSatelliteArchive)) {
    CheckSatellite(dir, findings);
    return findings;
  }
  for (const std::string& os : SystemsToCheck(dir, findings)) {
    MediumCheck(os.empty() ? dir : dir + "/" + os, os, findings).Run();
  }
  return findings;
}

}  // namespace

void RequireUsableTable(const std::string& dir) {
  Findings findings;
  MediumCheck(dir, "", findings).CheckTable();
  if (findings.faults.empty()) return;
  const std::string& fault = findings.faults.front();
  throw Refusal(fault + (fault.back() == '.' ? "\n" : ".\n"));
}

void RequireNoFaults(const std::string& dir) {
  const Findings findings = CheckMedium(dir);
  for (const std::string& warning : findings.warnings) {
    Show(Text("MediumWarning", "warning: {1}", {warning}));
  }
  for (const std::string& fault : findings.faults) {
    Show(Text("MediumFault", "fault: {1}", {fault}));
  }
  const size_t count = findings.faults.size();
  if (count == 0) return Say(Text("NoFaults", "{1} has no faults.", {dir}));
  throw Refusal(count == 1 ? Text("OneFault", "{1} has 1 fault.\n", {dir})
                           : Text("Faults", "{1} has {2} faults.\n", {dir, count}));
}

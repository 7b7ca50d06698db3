#include "archive_check.h"

#include <sys/stat.h>

#include <cstring>
#include <filesystem>
#include <map>
#include <sstream>

#include "archive_reader.h"
#include "checksum.h"
#include "formats.h"
#include "package_line.h"
#include "refusal.h"
#include "texts.h"

namespace fs = std::filesystem;

namespace {

constexpr mode_t kPermissions = 07777;

/// A file of the archive, or what its manifest says of it.
struct File {
  mode_t mode;
  uint64_t size;
  uint32_t checksum;
};

bool IsInside(const fs::path& path) {
  return !path.empty() && path.is_relative() && *path.lexically_normal().begin() != "..";
}

class ArchiveCheck {
 public:
  ArchiveCheck(const ArchiveToCheck& archive, Findings& findings)
      : archive_(archive),
        findings_(findings),
        list_(std::string(kControl) + "/" + archive.component),
        table_(list_ + kPackTableSuffix) {}

  void Run();
  bool ReadMembers();

 private:
  void Take(ArchiveReader& reader, const ArchiveMember& member);
  bool IsWellPlaced(const ArchiveMember& member);
  void TakeLink(const ArchiveMember& member);
  void TakeHardLink(const ArchiveMember& member);
  void WarnOfMode(const std::string& path, mode_t mode);
  void ReadManifest();
  void CompareFiles();
  void CheckControl();
  void CheckTable();
  void CheckPrograms();

  void Fault(const std::string& what) {
    findings_.faults.push_back(Printable(archive_.path + ": " + what));
  }
  void Warn(const std::string& what) {
    findings_.warnings.push_back(Printable(archive_.path + ": " + what));
  }

  const ArchiveToCheck& archive_;
  Findings& findings_;
  const std::string list_;
  const std::string table_;
  std::set<std::string> seen_;
  std::map<std::string, File> files_;         ///< by their path below the system directory
  std::map<std::string, File> listed_;        ///< in the manifest
  std::map<std::string, std::string> texts_;  ///< of the files in control
};

/// False when it cannot be read to its end.
bool ArchiveCheck::ReadMembers() {
  try {
    ArchiveReader reader(archive_.path);
    if (IsCompressed(archive_.path) && !reader.IsMadeByCompress()) {
      Fault(Text("FaultNotCompressed", "not made with compress, as its name says"));
    }
    for (ArchiveMember member; reader.Next(member);) Take(reader, member);
  } catch (const Refusal& refusal) {
    const std::string text = refusal.what();
    findings_.faults.push_back(text.substr(0, text.size() - 1));
    return false;
  }
  return true;
}

void ArchiveCheck::Run() {
  if (!ReadMembers()) return;
  ReadManifest();
  CompareFiles();
  CheckControl();
  CheckTable();
  CheckPrograms();
}

/// Does the member go where its component's files belong?
bool ArchiveCheck::IsWellPlaced(const ArchiveMember& member) {
  const std::string& path = member.path;
  const std::string& root = archive_.root;
  if (!IsText(path)) {
    Fault(Text("FaultNameNoText", "{1}: the name is not UTF-8, or has control characters", {path}));
  } else if (!IsInside(path)) {
    Fault(Text("FaultLeadsOut", "{1}: leads out of the target", {path}));
  } else if (path.compare(0, root.size(), root) != 0) {
    Fault(Text("FaultNotBelow", "{1}: is not below {2}", {path, root}));
  } else if (!S_ISDIR(member.mode) && !seen_.insert(path).second) {
    Fault(Text("FaultTwice", "{1}: is there twice", {path}));
  } else {
    return true;
  }
  return false;
}

void ArchiveCheck::TakeLink(const ArchiveMember& member) {
  const fs::path below = member.path.substr(archive_.root.size());
  if (!IsInside(below.parent_path() / member.link)) {
    Fault(Text("FaultLinkLeadsOut", "{1}: a link to {2}, which leads out of the target",
               {member.path, member.link}));
  } else {
    Warn(Text("WarningLink", "{1}: a link to {2}", {member.path, member.link}));
  }
}

/// It is the file that it leads to, which stands before it.
void ArchiveCheck::TakeHardLink(const ArchiveMember& member) {
  const std::string& root = archive_.root;
  const bool below = member.link.compare(0, root.size(), root) == 0;
  const auto file = files_.find(below ? member.link.substr(root.size()) : "");
  if (file == files_.end()) {
    return Fault(Text("FaultLinkUnknown", "{1}: a link to {2}, which is not before it",
                      {member.path, member.link}));
  }
  files_[member.path.substr(root.size())] = file->second;
}

void ArchiveCheck::WarnOfMode(const std::string& path, mode_t mode) {
  constexpr mode_t kReadable = S_IRUSR | S_IRGRP | S_IROTH;
  if ((mode & (S_ISUID | S_ISGID)) != 0) {
    Warn(Text("WarningSetId", "{1}: runs with the rights of its owner or group", {path}));
  }
  if ((mode & S_IWOTH) != 0) Warn(Text("WarningWritable", "{1}: everybody may write it", {path}));
  if ((mode & kReadable) != kReadable) {
    Warn(Text("WarningUnreadable", "{1}: not everybody may read it", {path}));
  }
}

void ArchiveCheck::Take(ArchiveReader& reader, const ArchiveMember& member) {
  if (!IsWellPlaced(member) || S_ISDIR(member.mode)) return;
  const std::string path = member.path.substr(archive_.root.size());
  const std::string reason = archive_.update ? WhyNotInUpdate(path, member.mode) : "";
  if (!reason.empty()) Fault(path + ": " + reason);
  if (S_ISLNK(member.mode)) return TakeLink(member);
  if (!member.link.empty()) return TakeHardLink(member);
  if (!S_ISREG(member.mode)) return Warn(Text("WarningDevice", "{1}: a device or a pipe", {path}));
  WarnOfMode(path, member.mode);
  const bool control = path.rfind(std::string(kControl) + "/", 0) == 0;
  const uint32_t crc = reader.ReadContent(control ? &texts_[path] : nullptr);
  files_[path] = {member.mode & kPermissions, member.size, kwinst::FinishedCrc(crc, member.size)};
}

/// Two lines for each file: its path; its mode, size and checksum.
void ArchiveCheck::ReadManifest() {
  if (files_.count(list_) == 0) {
    return Fault(Text("FaultNoManifest", "the manifest {1} is missing", {list_}));
  }
  std::istringstream text(texts_[list_]);
  std::string path;
  std::string numbers;
  for (size_t line = 1; std::getline(text, path); line += 2) {
    const std::string place = list_ + ":" + std::to_string(line);
    File file{};
    std::string rest;
    std::getline(text, numbers);
    std::istringstream fields(numbers);
    fields >> std::oct >> file.mode >> std::dec >> file.size >> file.checksum;
    if (!fields || fields >> rest) {
      return Fault(Text("FaultNoNumbers", "{1}: the mode, size and checksum of {2} do not follow",
                        {place, path}));
    }
    if (!IsInside(path)) {
      Fault(Text("FaultListedLeadsOut", "{1}: {2} leads out of the target", {place, path}));
    } else if (!listed_.emplace(path, file).second) {
      Fault(Text("FaultListedTwice", "{1}: {2} is listed twice", {place, path}));
    }
  }
  if (listed_.empty()) Fault(Text("FaultEmptyManifest", "{1}: lists no file", {list_}));
}

void ArchiveCheck::CompareFiles() {
  for (const auto& [path, listed] : listed_) {
    const auto file = files_.find(path);
    if (file == files_.end()) {
      Fault(Text("FaultNotInArchive", "{1}: is in the manifest, but not in the archive", {path}));
    } else if (file->second.size != listed.size) {
      Fault(Text("FaultSize", "{1}: the size is not that of the manifest", {path}));
    } else if (file->second.mode != (listed.mode & kPermissions)) {
      Fault(Text("FaultMode", "{1}: the mode is not that of the manifest", {path}));
    } else if (file->second.checksum != listed.checksum) {
      Fault(Text("FaultContent", "{1}: the content is not that of the manifest", {path}));
    }
    if (!archive_.root.empty() && IsOfLanguage(path)) {
      Fault(Text("FaultOfLanguage",
                 "{1}: is in the manifest, but installations may leave out its language", {path}));
    }
  }
  if (files_.count(list_) == 0) return;
  for (const auto& [path, file] : files_) {
    const bool own =
        path == list_ || (archive_.update && (path == table_ || path == kPackPrograms));
    const bool of_language = !archive_.root.empty() && !archive_.update && IsOfLanguage(path);
    if (own || of_language || listed_.count(path) != 0) continue;
    Fault(Text("FaultNotListed", "{1}: is not in the manifest", {path}));
  }
}

void ArchiveCheck::CheckControl() {
  const std::string directory = std::string(kControl) + "/";
  for (const auto& [path, file] : files_) {
    const bool own = path == list_ || path == table_ || path == kPackPrograms;
    if (own || path.rfind(directory, 0) != 0) continue;
    Fault(Text("FaultInControl", "{1}: installations use the directory {2}", {path, kControl}));
  }
}

void ArchiveCheck::CheckTable() {
  if (files_.count(table_) == 0) {
    return Fault(Text("FaultNoTable", "the table {1} is missing", {table_}));
  }
  std::set<std::string> lines;
  std::istringstream text(texts_[table_]);
  for (std::string line; std::getline(text, line);) {
    if (!line.empty() && line[0] != '#') lines.insert(line);
  }
  if (lines != archive_.table) {
    Fault(Text("FaultOtherTable", "{1}: is not what the medium's table says", {table_}));
  }
}

void ArchiveCheck::CheckPrograms() {
  std::istringstream words(texts_[kPackPrograms]);
  for (std::string word; words >> word;) {
    const std::string program = "code/bin/" + word + "_" + archive_.component;
    const auto file = files_.find(program);
    if (file == files_.end()) {
      Fault(Text("FaultNoProgram", "{1}: there is no {2}", {kPackPrograms, program}));
    } else if ((file->second.mode & S_IXUSR) == 0) {
      Fault(Text("FaultNotExecutable", "{1}: may not be run", {program}));
    }
  }
}

}  // namespace

void CheckMembers(const std::string& path, Findings& findings) {
  const ArchiveToCheck archive{path, "", "", false, {}};
  ArchiveCheck(archive, findings).ReadMembers();
}

void CheckArchive(const ArchiveToCheck& archive, Findings& findings) {
  ArchiveCheck(archive, findings).Run();
}

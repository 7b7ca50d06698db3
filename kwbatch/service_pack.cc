#include "service_pack.h"

#include <kb0core/TEVFile.h>
#include <kwinstutil/kwinstutil.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "check.h"
#include "console.h"
#include "files.h"
#include "journal.h"
#include "log.h"
#include "medium.h"
#include "paths.h"
#include "refusal.h"
#include "transfer.h"
#include "tree.h"

namespace fs = std::filesystem;

namespace {

using Phase = Journal::Phase;

/// The directory below the library's temporary one in which it unpacks and looks for the list of a
/// pack. It must be ours alone, since its name can be guessed.
class ListDirectory {
 public:
  ListDirectory(const std::string& os, TEVINSType type) {
    char temp[1024] = "";
    TEVInsGetTempDir(temp);
    if (type != zeb2) Add(std::string(temp) + "/" + os);
    Add((type == zeb2 ? std::string(temp) : path()) + "/control");
  }
  ~ListDirectory() {
    for (auto level = levels_.rbegin(); level != levels_.rend(); ++level) rmdir(level->c_str());
  }
  ListDirectory(const ListDirectory&) = delete;
  ListDirectory& operator=(const ListDirectory&) = delete;

  const std::string& path() const { return levels_.back(); }

 private:
  void Add(const std::string& level) {
    struct stat info {};
    mkdir(level.c_str(), 0700);
    if (lstat(level.c_str(), &info) != 0 || !S_ISDIR(info.st_mode) || info.st_uid != geteuid() ||
        (info.st_mode & 022) != 0) {
      throw Refusal("The directory " + level + " is not ours alone. Remove it and try again.\n");
    }
    levels_.push_back(level);
  }

  std::vector<std::string> levels_;
};

/// A service pack that goes on or comes off a system directory of a tree.
struct Pack {
  std::string system_dir;
  std::string os;  ///< the system's name
  TEVINSType type;
  Journal journal;

  std::string In(const std::string& file) const { return system_dir + "/" + file; }
  std::string Control(const std::string& file) const { return In("control/" + file); }
  void Enter(Phase phase) {
    journal.phase = phase;
    journal.Write(system_dir);
  }
};

/// The one system of a medium of this kind, once the library says that it may be installed.
Medium Installable(std::vector<Medium> media, const Options& options, bool hot_fix,
                   const std::string& target) {
  Medium& medium = media.front();
  if (!IsUpdate(medium.kind) || (medium.kind == MediumKind::kHotFix) != hot_fix) {
    throw Refusal("The medium " + medium.dir + " is no " +
                  (hot_fix ? "hot fix.\n" : "service pack.\n"));
  }
  if (media.size() > 1) throw Refusal("The medium is for several systems: choose one with --os.\n");
  const std::string system_dir = SystemDir(medium, target);
  if (const auto journal = Journal::Read(system_dir)) CutFragment(system_dir, journal->table_size);
  RequireInstallable(medium, target, CodeTreeFor(medium, target, options.Text("code")));
  return std::move(medium);
}

/// The package of the medium that has an archive: the service pack or hot fix itself.
std::string NameOf(const Medium& medium) {
  const Content content = ContentOf(medium.kind);
  const std::vector<std::string> names =
      PackagesOf(*medium.toc, content.type, content.kinds.front());
  RequirePlainName("package name", names.front());
  if (ArchiveOf(medium, names.front()).empty()) {
    throw Refusal("The archive " + medium.dir + "/" + names.front() + " is missing.\n");
  }
  return names.front();
}

/// A directory of the pack's that exists keeps its mode and owner, whatever the archive says.
class DirectoryModes {
 public:
  explicit DirectoryModes(const Pack& pack) {
    std::set<std::string> dirs;
    for (const auto* files : {&pack.journal.saved_files, &pack.journal.new_files}) {
      for (const std::string& file : *files) {
        for (fs::path dir = fs::path(file).parent_path();; dir = dir.parent_path()) {
          dirs.insert(pack.In(dir.string()));
          if (dir.empty()) break;
        }
      }
    }
    for (const std::string& dir : dirs) {
      struct stat info {};
      if (lstat(dir.c_str(), &info) == 0) before_.emplace_back(dir, info);
    }
  }
  ~DirectoryModes() {
    for (const auto& [dir, info] : before_) {
      if (geteuid() == 0 && lchown(dir.c_str(), info.st_uid, info.st_gid) != 0) continue;
      chmod(dir.c_str(), info.st_mode & 07777);
    }
  }
  DirectoryModes(const DirectoryModes&) = delete;
  DirectoryModes& operator=(const DirectoryModes&) = delete;

 private:
  std::vector<std::pair<std::string, struct stat>> before_;
};

/// Refuses a path of a pack's list that leads out of the tree, or that the library would not save.
void RequireListedPath(const std::string& path, const std::string& numbers) {
  if (numbers.empty() || numbers[0] < '1' || numbers[0] > '7') {
    throw Refusal("The pack's list says nothing of the file " + path + ".\n");
  }
  const fs::path parts(path);
  const bool leads_out = parts.is_absolute() || std::count(parts.begin(), parts.end(), "..") > 0;
  const bool not_saved = path.empty() || path.find(' ') != std::string::npos ||
                         std::isdigit(static_cast<unsigned char>(path[0])) != 0 || path[0] == '-' ||
                         path[0] == '+';
  if (leads_out || not_saved) {
    throw Refusal("The pack lists the path \"" + path + "\", which cannot be replaced safely.\n");
  }
}

/// Notes a file of the pack, and the directories that are made for it. Refuses what the archive or
/// an earlier pack would not let come back.
void NoteFile(const std::string& file, const std::string& system_dir, Journal& journal) {
  for (fs::path dir = fs::path(file).parent_path(); !dir.empty(); dir = dir.parent_path()) {
    if (!fs::is_symlink(system_dir + "/" + dir.string())) continue;
    throw Refusal("The directory " + system_dir + "/" + dir.string() +
                  " is a symbolic link, which the pack would replace.\n");
  }
  const std::string saved = system_dir + "/" + file + ".beforeSPK";
  if (IsThere(saved)) throw Refusal("Move the file " + saved + " away: it would be lost.\n");
  if (IsThere(system_dir + "/" + file)) {
    journal.saved_files.push_back(file);
    return;
  }
  journal.new_files.push_back(file);
  std::vector<std::string> made;
  for (fs::path dir = fs::path(file).parent_path();
       !dir.empty() && !IsThere(system_dir + "/" + dir.string()); dir = dir.parent_path()) {
    made.insert(made.begin(), dir.string());
  }
  for (const std::string& dir : made) {
    auto& known = journal.new_directories;
    if (std::count(known.begin(), known.end(), dir) == 0) known.push_back(dir);
  }
}

/// What is in the archive of a pack.
struct Contents {
  std::vector<std::string> list;     ///< lines of the pack's list, two for each file
  std::vector<std::string> table;    ///< lines of its table of contents
  std::vector<std::string> members;  ///< paths of all files, below the tree
};

/// `root` is the system directory's path in the archive, with its slash.
Contents ReadArchive(const std::string& archive, const std::string& root, const std::string& name) {
  const TemporaryDirectory temp;
  const std::string list = root + "control/" + name;
  const bool compressed = fs::path(archive).extension() == ".Z";
  const std::string tar = compressed ? "compress -d -c " + archive + " | tar -" : "tar -";
  const std::string file = compressed ? "f - " : "f " + archive + " ";
  std::string command = "cd " + temp.path() + " && " + tar + "x" + file + list + " " + list +
                        ".toc && " + tar + "t" + file + "> members";
  TEVUnicodeString message;
  if (TEVInsCommande(command.data(), &message) != 1) throw Refused(message);
  return {LinesOf(temp.path() + "/" + list), LinesOf(temp.path() + "/" + list + ".toc"),
          LinesOf(temp.path() + "/members")};
}

/// What the archive of a pack will do to the system directory. Nothing is changed.
Journal JournalOf(const Medium& medium, const std::string& name, const std::string& system_dir) {
  const std::string root = IsSdk(medium) ? "" : medium.os + "/";
  const Contents contents = ReadArchive(ArchiveOf(medium, name), root, name);
  Journal journal;
  journal.pack = name;
  journal.table_size = static_cast<int64_t>(fs::file_size(system_dir + "/control/PRESENT"));
  journal.table_lines = contents.table;

  std::set<std::string> files;
  const std::vector<std::string>& lines = contents.list;
  for (size_t i = 0; i < lines.size(); i += 2) {
    RequireListedPath(lines[i], i + 1 < lines.size() ? lines[i + 1] : "");
    files.insert(lines[i]);
  }
  for (const std::string& own : {name, name + ".toc", std::string("CAFPost.list")}) {
    files.insert("control/" + own);
  }
  for (const std::string& member : contents.members) {
    const bool listed =
        member.compare(0, root.size(), root) == 0 && files.count(member.substr(root.size())) != 0;
    if (listed || member.empty() || member.back() == '/') continue;
    throw Refusal("The pack's list does not name the file " + member + " of its archive.\n");
  }
  for (const std::string& file : files) NoteFile(file, system_dir, journal);
  return journal;
}

/// The pack that a medium puts into a system directory: a new one, or one that is taken up again.
Pack PackToInstall(const Medium& medium, const std::string& target) {
  Pack pack{SystemDir(medium, target), medium.os, ContentOf(medium.kind).type, {}};
  const std::string name = NameOf(medium);
  const std::optional<Journal> journal = Journal::Read(pack.system_dir);
  if (journal && (journal->pack != name || journal->phase == Phase::kUndoing ||
                  journal->phase == Phase::kCommitting)) {
    throw journal->NotFinished(pack.system_dir);
  }
  pack.journal = journal ? *journal : JournalOf(medium, name, pack.system_dir);
  const bool installed =
      OpenInstalled(pack.system_dir)->GetSPKLevel(1) == medium.toc->GetSPKLevel(1);
  // A committed pack stays committed: there is nothing to go back to.
  if (!journal && installed) pack.journal.phase = Phase::kRepairing;
  if (journal && journal->phase == Phase::kPending) pack.journal.phase = Phase::kInstalling;
  return pack;
}

/// Sets aside what the pack replaces. What an earlier try has put in the place of a file that is
/// set aside already is removed first: to save that would lose the saved one.
void Save(const Medium& medium, const Pack& pack) {
  for (const std::string& file : pack.journal.new_files) Delete(pack.In(file));
  for (const std::string& file : pack.journal.saved_files) {
    if (IsThere(pack.In(file) + ".beforeSPK")) Delete(pack.In(file));
  }
  const ListDirectory list(pack.os, pack.type);
  std::string name = pack.journal.pack;
  std::string source = medium.dir;
  std::string system_dir = pack.system_dir;
  TEVUnicodeString message;
  if (TEVInsSaveFilesBeforeInstall(name.data(), source.data(), system_dir.data(), pack.os.c_str(),
                                   pack.type, message) != 0) {
    throw Refused(message);
  }
  // The library saves what the list names, which its own control files are not.
  for (const std::string& file : pack.journal.saved_files) {
    const std::string path = pack.In(file);
    if (IsThere(path) && TEVRenameFile(path.c_str(), (path + ".beforeSPK").c_str()) != 0) {
      throw Refusal("The file " + path + " cannot be set aside.\n");
    }
  }
}

/// Puts the saved files back.
void Restore(const Pack& pack) {
  const ListDirectory list(pack.os, pack.type);
  std::string text;
  for (const std::string& file : pack.journal.saved_files) text += file + "\n";
  Write(list.path() + "/" + pack.journal.pack, text);
  std::string system_dir = pack.system_dir;
  std::string name = pack.journal.pack;
  TEVUnicodeString message;
  if (TEVInsRestoreFiles(system_dir.data(), name.data(), pack.os.c_str(), pack.type, message) !=
      0) {
    throw Refused(message);
  }
}

/// Takes the pack's lines out of the tree's table, which keeps its mode and owner.
void PruneTable(const Pack& pack) {
  std::string present = pack.Control("PRESENT");
  std::string pruned = present + ".new";
  std::string name = pack.journal.pack;
  struct stat info {};
  TEVInsResetPresent reset;
  if (stat(present.c_str(), &info) != 0 || reset.InitSource(present.data()) != 0 ||
      reset.InitDest(pruned.data()) != 0 || reset.Remove(name.data(), pack.type) != 0 ||
      chmod(pruned.c_str(), info.st_mode & 07777) != 0 ||
      (geteuid() == 0 && chown(pruned.c_str(), info.st_uid, info.st_gid) != 0) ||
      TEVRenameFile(pruned.c_str(), present.c_str()) != 0) {
    throw Refusal("The file " + present + " cannot be rewritten.\n");
  }
  TEVUnicodeString unused;
  for (const std::string& line : pack.journal.table_lines) {
    // With its newline the text is a whole line.
    if (TEVInsSuppressLine(present.data(), (line + "\n").data(), &unused, 1) != 1) {
      throw Refusal("The file " + present + " cannot be rewritten.\n");
    }
  }
}

/// Runs the pack's post-install programs, whose output goes to the log.
void RunPostInstall(const Pack& pack, Log& log) {
  std::string suffix = pack.journal.pack;
  std::string system_dir = pack.system_dir;
  if (TEVInsSPK(suffix.data(), system_dir.data(), log.FileName()) != 0) {
    Complain("A post-install program has failed: see the log.");
  }
  // The list has served its purpose.
  Delete(pack.Control("CAFPost.list"));
}

/// Deletes what an interrupted step may have left beside the tree's table, and the messages of a
/// transfer.
void DeleteLeftovers(const Pack& pack) {
  for (const auto& entry : fs::directory_iterator(pack.Control(""))) {
    const std::string name = entry.path().filename();
    if (name.compare(0, 8, "PRESENT.") == 0) Delete(entry.path());
  }
  const fs::path system_dir = pack.system_dir;
  const fs::path tree = pack.type == zeb2 ? system_dir : system_dir.parent_path();
  for (const char* name : {"ErrorTar.log", "TEVInsErrorTransfer.log"}) Delete(tree / name);
}

void Undo(Pack& pack) {
  pack.Enter(Phase::kUndoing);
  CutFragment(pack.system_dir, pack.journal.table_size);
  Restore(pack);
  for (const std::string& file : pack.journal.new_files) Delete(pack.In(file));
  const std::vector<std::string>& dirs = pack.journal.new_directories;
  for (auto dir = dirs.rbegin(); dir != dirs.rend(); ++dir) rmdir(pack.In(*dir).c_str());
  PruneTable(pack);
  DeleteLeftovers(pack);
  for (const char* file : {"SPKInterrupted.txt", "SPK.list", "SPK.journal"}) {
    Delete(pack.Control(file));
  }
}

/// The uncommitted packs of a target. Throws a Refusal when there is none.
std::vector<Pack> UncommittedPacks(const Options& options) {
  const std::string target = TargetPath(options.words()[1]);
  std::vector<Pack> packs;
  for (const std::string& dir : SystemDirs(options, target)) {
    const TEVINSType type = dir == target ? zeb2 : code;
    if (const auto journal = Journal::Read(dir)) {
      packs.push_back({dir, fs::path(dir).filename(), type, *journal});
    } else {
      Delete(JournalPath(dir) + ".new");
    }
  }
  if (packs.empty()) throw Refusal("No service pack in " + target + " is waiting for a commit.\n");
  return packs;
}

}  // namespace

void CheckUpdate(const Options& options, std::vector<Medium> media) {
  const std::string target = TargetPath(options.words()[2]);
  const bool hot_fix = media.front().kind == MediumKind::kHotFix;
  const std::string system_dir = SystemDir(media.front(), target);
  if (media.size() == 1 && Journal::Read(system_dir) && HasFragment(system_dir)) {
    return TellInterrupted(media.front(), target);
  }
  const Medium medium = Installable(std::move(media), options, hot_fix, target);
  if (hot_fix) {
    NameOf(medium);
  } else {
    PackToInstall(medium, target);
  }
  Say(medium.dir + " may be installed in " + SystemDir(medium, target) + ".");
}

void InstallServicePack(const Options& options) {
  const std::string target = TargetPath(options.words()[2]);
  const Medium medium = Installable(OpenMedium(options), options, false, target);
  Pack pack = PackToInstall(medium, target);
  Log log(options, " service pack " + pack.journal.pack + " in " + pack.system_dir + "\n");
  const bool repair = pack.journal.phase == Phase::kRepairing;

  pack.Enter(pack.journal.phase);
  Write(pack.Control("SPKInterrupted.txt"), "1 MANUAL_COMMIT\n");
  if (!repair) {
    Write(pack.Control("SPK.list"), pack.journal.pack + "\n");
    Save(medium, pack);
  }
  PruneTable(pack);
  std::string tree = target;
  const int languages = IsSdk(medium) ? 127 : TEVInsInitChosenLang(tree.data(), pack.os.c_str());
  {
    const DirectoryModes kept(pack);
    Transfer(medium, pack.journal.pack, target, languages, log);
  }
  RunPostInstall(pack, log);
  DeleteLeftovers(pack);
  Delete(pack.Control("SPKInterrupted.txt"));
  if (repair) {
    Delete(JournalPath(pack.system_dir));
  } else {
    pack.Enter(Phase::kPending);
  }
  log.Succeeded();
  Say("Service pack " + pack.journal.pack + " is installed in " + pack.system_dir +
      (repair ? "." : ", and waits for a commit."));
}

void Commit(const Options& options) {
  for (Pack& pack : UncommittedPacks(options)) {
    if (pack.journal.phase != Phase::kPending && pack.journal.phase != Phase::kCommitting) {
      throw pack.journal.NotFinished(pack.system_dir);
    }
    pack.Enter(Phase::kCommitting);
    for (const std::string& file : pack.journal.saved_files) Delete(pack.In(file) + ".beforeSPK");
    for (const char* file : {"SPKInterrupted.txt", "SPK.list", "SPK.journal"}) {
      Delete(pack.Control(file));
    }
    Say("Service pack " + pack.journal.pack + " in " + pack.system_dir + " is committed.");
  }
}

void UndoServicePack(const Options& options) {
  for (Pack& pack : UncommittedPacks(options)) {
    if (pack.journal.phase == Phase::kRepairing || pack.journal.phase == Phase::kCommitting) {
      throw pack.journal.NotFinished(pack.system_dir);
    }
    Log log(options,
            " undo of service pack " + pack.journal.pack + " in " + pack.system_dir + "\n");
    Undo(pack);
    log.Succeeded();
    Say("Service pack " + pack.journal.pack + " is taken out of " + pack.system_dir + ".");
  }
}

void InstallHotFix(const Options& options) {
  const std::string target = TargetPath(options.words()[2]);
  const Medium medium = Installable(OpenMedium(options), options, true, target);
  const std::string name = NameOf(medium);
  Log log(options, " hot fix " + name + " in " + target + "\n");
  std::string tree = target;
  const int languages = TEVInsInitChosenLang(tree.data(), medium.os.c_str());
  Transfer(medium, name, target, languages, log);
  log.Succeeded();
  Say("Hot fix " + name + " is installed in " + SystemDir(medium, target) + ".");
}

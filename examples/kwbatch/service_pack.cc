#include "service_pack.h"

#include <kb0core/TEVFile.h>
#include <kwinstutil/kwinstutil.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <vector>

#include "check.h"
#include "console.h"
#include "log.h"
#include "medium.h"
#include "transfer.h"
#include "tree.h"

namespace fs = std::filesystem;

namespace {

bool Exists(const std::string& path) { return TEVFileAccess(path.c_str(), 0) == 0; }

/// The lines of a text file; none when it cannot be read.
std::vector<std::string> Lines(const std::string& path) {
  std::vector<std::string> lines;
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) lines.push_back(line);
  return lines;
}

/// A service pack in the system directory of a tree, and the files that tell about it.
class Pack {
 public:
  Pack(std::string system_dir, std::string name)
      : system_dir_(std::move(system_dir)), name_(std::move(name)) {}

  const std::string& name() const { return name_; }
  const std::string& system_dir() const { return system_dir_; }

  std::string Control(const std::string& file) const { return system_dir_ + "/control/" + file; }

  /// The list of the pack's files, with two lines for each.
  std::string List() const { return Control(name_); }
  std::string Table() const { return Control(name_ + ".toc"); }
  /// Which of the files were new. Without this list the pack cannot be undone.
  std::string New() const { return Control(name_ + ".new"); }
  /// Is there while the pack is taken out.
  std::string Undoing() const { return Control(name_ + ".undo"); }

 private:
  std::string system_dir_;
  std::string name_;
};

/// Opens the one system of a medium of this kind, and asks the library whether it may be installed.
Medium OpenInstallable(const Options& options, MediumKind kind, const std::string& target) {
  std::vector<Medium> media = OpenMedium(MediumPath(options.words()[1]), options.Text("os"));
  Medium& medium = media.front();
  const bool right = medium.kind == kind || (kind == MediumKind::kServicePack &&
                                             medium.kind == MediumKind::kSdkServicePack);
  if (!right || media.size() > 1) {
    throw Refusal("The medium " + medium.dir + " is not of the kind that the command needs.\n");
  }
  RequireInstallable(medium, target, CodeTreeFor(medium, target, options.Text("code")));
  return std::move(medium);
}

/// The only package of the medium that has an archive: the service pack or hot fix itself.
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

/// The languages that a tree keeps; all, where it has no record or none.
int LanguagesOf(const Medium& medium, std::string target) {
  return IsSdk(medium) ? 127 : TEVInsInitChosenLang(target.data(), medium.os.c_str());
}

/// A directory that lasts as long as the object.
class TemporaryDirectory {
 public:
  TemporaryDirectory() {
    std::string name = fs::temp_directory_path() / "kwbatch-XXXXXX";
    if (mkdtemp(name.data()) == nullptr) throw Refusal("No temporary directory can be made.\n");
    path_ = name;
  }
  ~TemporaryDirectory() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
  }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  std::string path() const { return path_; }

 private:
  fs::path path_;
};

/// The paths in a list of files that has two lines for each.
std::vector<std::string> ReadList(const std::string& path) {
  std::vector<std::string> files;
  std::ifstream list(path);
  std::string numbers;
  for (std::string file; std::getline(list, file) && std::getline(list, numbers);) {
    files.push_back(file);
  }
  return files;
}

/// The files of a pack that is still in its archive.
std::vector<std::string> FilesInArchive(const Medium& medium, const std::string& name) {
  const TemporaryDirectory temp;
  const std::string archive = ArchiveOf(medium, name);
  const std::string list = (IsSdk(medium) ? "control/" : medium.os + "/control/") + name;
  const bool compressed = fs::path(archive).extension() == ".Z";
  std::string command = "cd " + temp.path() + " && " +
                        (compressed ? "compress -d -c " + archive + " | tar -xf - " + list
                                    : "tar -xf " + archive + " " + list);
  TEVUnicodeString message;
  if (TEVInsCommande(command.data(), &message) != 1) throw Refused(message);
  return ReadList(temp.path() + "/" + list);
}

/// Notes which files of the pack are new, before anything is changed.
void NoteNewFiles(const Pack& pack, const std::vector<std::string>& files) {
  std::ofstream list(pack.New());
  for (const std::string& file : files) {
    if (!Exists(pack.system_dir() + "/" + file)) list << file << '\n';
  }
  if (!list.flush()) throw Refusal("The file " + pack.New() + " cannot be written.\n");
}

/// Removes what an installation of the pack that did not come to its end, or that is to be
/// repeated, has put in the place of saved files: to save that would lose the saved ones.
void RemoveReplacements(const Pack& pack, const std::vector<std::string>& files) {
  const std::vector<std::string> added = Lines(pack.New());
  const std::set<std::string> is_new(added.begin(), added.end());
  for (const std::string& file : files) {
    const std::string path = pack.system_dir() + "/" + file;
    if (is_new.count(file) != 0 || Exists(path + ".beforeSPK")) TEVDeleteFile(path.c_str());
  }
}

/// Sets aside what the pack replaces.
void Save(const Medium& medium, const Pack& pack) {
  std::string name = pack.name();
  std::string source = medium.dir;
  std::string system_dir = pack.system_dir();
  TEVUnicodeString message;
  if (TEVInsSaveFilesBeforeInstall(name.data(), source.data(), system_dir.data(), medium.os.c_str(),
                                   ContentOf(medium.kind).type, message) != 0) {
    throw Refused(message);
  }
}

/// Runs the pack's post-install programs, whose output goes to the log.
void RunPostInstall(const Pack& pack, Log& log) {
  std::string suffix = pack.name();
  std::string system_dir = pack.system_dir();
  const int status = TEVInsSPK(suffix.data(), system_dir.data(), log.get()->GetLogFileName());
  if (status != 0) Say("A post-install program has failed: see the log.");
  // The list has served its purpose.
  TEVDeleteFile(pack.Control("CAFPost.list").c_str());
}

/// The latest service pack of a system directory.
Pack LatestPack(const std::string& system_dir, TEVINSType type) {
  const auto installed = OpenInstalled(system_dir);
  std::vector<std::string> names;
  if (installed != nullptr) names = PackagesOf(*installed, type, SPK);
  if (names.empty()) throw Refusal("No service pack is installed in " + system_dir + ".\n");
  RequirePlainName("package name", names.back());
  return {system_dir, names.back()};
}

/// The system directories that a command is for: those of a code tree, or an SDK tree itself.
std::vector<std::string> SystemDirs(const Options& options, const std::string& target) {
  std::vector<std::string> dirs;
  for (const std::string& os : SystemsOf(target)) {
    if (!options.Has("os") || options.Text("os") == os) dirs.push_back(target + "/" + os);
  }
  if (SystemsOf(target).empty()) dirs.push_back(target);
  return dirs;
}

/// Refuses an undo that would leave files of the pack behind: after a commit, or when a later pack
/// has been set over the saved files.
void RequireUndoable(const Pack& pack) {
  if (Exists(pack.Undoing())) return;
  if (!Exists(pack.New())) throw Refusal(pack.name() + " is committed and cannot be undone.\n");
  const std::vector<std::string> added = Lines(pack.New());
  const std::set<std::string> is_new(added.begin(), added.end());
  for (const std::string& file : ReadList(pack.List())) {
    const std::string path = pack.system_dir() + "/" + file;
    if (is_new.count(file) != 0 || Exists(path + ".beforeSPK")) continue;
    throw Refusal(pack.name() + " cannot be undone: the former " + path + " is gone.\n");
  }
}

/// Puts the saved files back. The library looks for the list in the temporary directory.
void Restore(const Pack& pack, const std::string& os, TEVINSType type) {
  char temp[1024] = "";
  TEVInsGetTempDir(temp);
  const std::string control =
      type == zeb2 ? std::string(temp) + "/control" : std::string(temp) + "/" + os + "/control";
  TEVUnicodeString message;
  std::string from = pack.List();
  std::string to = control + "/" + pack.name();
  std::string dir = control;
  if (TEVInsCreateDirectory(dir.data()) != 0 ||
      TEVInsCopyInstall(from.data(), to.data(), &message) != 1) {
    throw Refusal("The directory " + control + " cannot be written.\n");
  }
  std::string system_dir = pack.system_dir();
  std::string name = pack.name();
  if (TEVInsRestoreFiles(system_dir.data(), name.data(), os.c_str(), type, message) != 0) {
    throw Refused(message);
  }
}

/// Takes the pack's lines out of the tree's table: its own, and those of its fix packages.
void PruneTable(const Pack& pack, TEVINSType type) {
  std::string present = pack.Control("PRESENT");
  std::string pruned = present + ".new";
  std::string name = pack.name();
  {
    TEVInsResetPresent reset;
    if (reset.InitSource(present.data()) != 0 || reset.InitDest(pruned.data()) != 0 ||
        reset.Remove(name.data(), type) != 0) {
      throw Refusal("The file " + pruned + " cannot be written.\n");
    }
  }
  if (TEVRenameFile(pruned.c_str(), present.c_str()) != 0) {
    throw Refusal("The file " + present + " cannot be replaced.\n");
  }
  std::string fixes = std::string(kTEVINSNames[type]) + ":FSP:" + name + "-";
  TEVUnicodeString message;
  if (TEVInsSuppressLine(present.data(), fixes.data(), &message, 1) != 1) {
    throw Refusal("The file " + present + " cannot be written.\n");
  }
}

void Undo(const Pack& pack, const std::string& os, TEVINSType type) {
  RequireUndoable(pack);
  AppendToFile(pack.Undoing(), "");
  Restore(pack, os, type);
  for (const std::string& file : Lines(pack.New())) {
    TEVDeleteFile((pack.system_dir() + "/" + file).c_str());
  }
  TEVDeleteFile(pack.Control("SPK.list").c_str());
  TEVDeleteFile(pack.Control("SPKInterrupted.txt").c_str());
  PruneTable(pack, type);
  for (const std::string& file : {pack.List(), pack.Table(), pack.New(), pack.Undoing()}) {
    TEVDeleteFile(file.c_str());
  }
}

}  // namespace

void InstallServicePack(const Options& options) {
  const std::string target = TargetPath(options.words()[2]);
  const Medium medium = OpenInstallable(options, MediumKind::kServicePack, target);
  const Pack pack(SystemDir(medium, target), NameOf(medium));
  const TEVINSType type = ContentOf(medium.kind).type;
  const bool installed =
      OpenInstalled(pack.system_dir())->GetSPKLevel(1) == medium.toc->GetSPKLevel(1);
  // A committed pack that is set over damaged files stays committed: nothing is left to undo.
  const bool pending = !installed || Exists(pack.New());
  const std::vector<std::string> files = FilesInArchive(medium, pack.name());
  Log log(" service pack " + pack.name() + " in " + pack.system_dir() + "\n");

  // Tells the next installation, should this one not come to its end.
  if (!Exists(pack.Control("SPKInterrupted.txt")) &&
      !AppendToFile(pack.Control("SPKInterrupted.txt"), "1 MANUAL_COMMIT\n")) {
    throw Refusal("The directory " + pack.Control("") + " cannot be written.\n");
  }
  if (installed) PruneTable(pack, type);
  if (pending && !Exists(pack.New())) NoteNewFiles(pack, files);
  if (pending) {
    RemoveReplacements(pack, files);
    Save(medium, pack);
  }
  Transfer(medium, pack.name(), target, LanguagesOf(medium, target), log);
  if (pending && !AppendToFile(pack.Control("SPK.list"), pack.name() + "\n")) {
    throw Refusal("The file " + pack.Control("SPK.list") + " cannot be written.\n");
  }
  TEVDeleteFile(pack.Control("SPKInterrupted.txt").c_str());
  RunPostInstall(pack, log);
  log.Succeeded();
  Say("Service pack " + pack.name() + " is installed in " + pack.system_dir() +
      (pending ? ", and pending." : "."));
}

void Commit(const Options& options) {
  const std::string target = TargetPath(options.words()[1]);
  for (const std::string& dir : SystemDirs(options, target)) {
    if (!Exists(dir + "/control/SPK.list")) continue;
    const Pack pack = LatestPack(dir, dir == target ? zeb2 : code);
    TEVDeleteFile(pack.New().c_str());
    for (const std::string& file : ReadList(pack.List())) {
      TEVDeleteFile((dir + "/" + file + ".beforeSPK").c_str());
    }
    if (TEVDeleteFile(pack.Control("SPK.list").c_str()) != 0) {
      throw Refusal("The file " + pack.Control("SPK.list") + " cannot be deleted.\n");
    }
    Say("Service pack " + pack.name() + " in " + dir + " is committed.");
  }
}

void UndoServicePack(const Options& options) {
  const std::string target = TargetPath(options.words()[1]);
  bool undone = false;
  for (const std::string& dir : SystemDirs(options, target)) {
    const TEVINSType type = dir == target ? zeb2 : code;
    const auto installed = OpenInstalled(dir);
    if (installed == nullptr || PackagesOf(*installed, type, SPK).empty()) continue;
    const Pack pack = LatestPack(dir, type);
    Log log(" undo of service pack " + pack.name() + " in " + dir + "\n");
    Undo(pack, fs::path(dir).filename(), type);
    log.Succeeded();
    Say("Service pack " + pack.name() + " is taken out of " + dir + ".");
    undone = true;
  }
  if (!undone) throw Refusal("No service pack is installed in " + target + ".\n");
}

void InstallHotFix(const Options& options) {
  const std::string target = TargetPath(options.words()[2]);
  const Medium medium = OpenInstallable(options, MediumKind::kHotFix, target);
  const std::string name = NameOf(medium);
  Log log(" hot fix " + name + " in " + target + "\n");
  Transfer(medium, name, target, LanguagesOf(medium, target), log);
  log.Succeeded();
  Say("Hot fix " + name + " is installed in " + SystemDir(medium, target) + ".");
}

#include "pack_archive.h"

#include <algorithm>
#include <filesystem>
#include <set>
#include <vector>

#include "archive.h"
#include "files.h"
#include "formats.h"
#include "refusal.h"
#include "site_files.h"
#include "texts.h"

namespace fs = std::filesystem;

namespace {

/// Refuses a path of a pack's list that leads out of the tree.
void RequireListedPath(const std::string& path, const std::string& numbers) {
  if (numbers.empty() || numbers[0] < '1' || numbers[0] > '7') {
    throw Refusal(
        Text("PackFileUnknown", "The pack's list says nothing of the file {1}.\n", {path}));
  }
  const fs::path parts(path);
  const bool leads_out = parts.is_absolute() || std::count(parts.begin(), parts.end(), "..") > 0;
  if (leads_out || !parts.has_filename()) {
    throw Refusal(Text("PackPathUnsafe",
                       "The pack lists the path \"{1}\", which cannot be replaced safely.\n",
                       {path}));
  }
}

/// Notes a file of the pack, and the directories that are made for it. Refuses what the archive or
/// an earlier pack would not let come back.
void NoteFile(const std::string& file, const std::string& system_dir, Journal& journal) {
  const std::string saved = system_dir + "/" + file + kSavedSuffix;
  if (IsThere(saved)) {
    throw Refusal(Text("SavedFileInWay", "Move the file {1} away: it would be lost.\n", {saved}));
  }
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
  std::vector<std::string> list;   ///< lines of the pack's list, two for each file
  std::vector<std::string> table;  ///< lines of its table of contents
  std::vector<Member> members;     ///< all files
};

/// `root` is the system directory's path in the archive, with its slash.
Contents ReadArchive(const std::string& archive, const std::string& root, const std::string& name) {
  const TemporaryDirectory temp;
  const std::string list = root + kControl + "/" + name;
  Unpack(archive, {list, list + kPackTableSuffix}, temp.path());
  return {LinesOf(temp.path() + "/" + list), LinesOf(temp.path() + "/" + list + kPackTableSuffix),
          MembersOf(archive)};
}

/// The files that the pack brings, below the system directory. Refuses a list that does not name
/// all of them.
std::set<std::string> FilesOf(const Contents& contents, const std::string& root,
                              const std::string& name) {
  std::set<std::string> files;
  const std::vector<std::string>& lines = contents.list;
  for (size_t i = 0; i < lines.size(); i += 2) {
    RequireListedPath(lines[i], i + 1 < lines.size() ? lines[i + 1] : "");
    files.insert(lines[i]);
  }
  const std::string list = std::string(kControl) + "/" + name;
  files.insert({list, list + kPackTableSuffix, kPackPrograms});
  for (const Member& member : contents.members) {
    const std::string& path = member.path;
    const bool listed =
        path.compare(0, root.size(), root) == 0 && files.count(path.substr(root.size())) != 0;
    if (listed || path.empty() || path.back() == '/') continue;
    throw Refusal(Text("PackFileNotListed",
                       "The pack's list does not name the file {1} of its archive.\n", {path}));
  }
  return files;
}

/// The directory in which the archive is unpacked.
std::string TreeOf(const std::string& system_dir, const std::string& root) {
  return root.empty() ? system_dir : fs::path(system_dir).parent_path().string();
}

}  // namespace

void RequireFilesOf(const Journal& journal, const Medium& medium, const std::string& system_dir) {
  const std::string root = IsSdk(medium) ? "" : medium.os + "/";
  const Contents contents = ReadArchive(ArchiveOf(medium.dir, journal.pack), root, journal.pack);
  RequireRealDirectories(contents.members, TreeOf(system_dir, root));
  std::set<std::string> known(journal.saved_files.begin(), journal.saved_files.end());
  known.insert(journal.new_files.begin(), journal.new_files.end());
  for (const std::string& file : FilesOf(contents, root, journal.pack)) {
    if (known.count(file) != 0) continue;
    throw Refusal(Text("OtherPackFiles",
                       "The medium {1} has other files than the one that was begun with, {2} for "
                       "example. Take that back first with undo-service-pack.\n",
                       {medium.dir, file}));
  }
}

Journal JournalOf(const Medium& medium, const std::string& name, const std::string& system_dir) {
  const std::string root = IsSdk(medium) ? "" : medium.os + "/";
  const Contents contents = ReadArchive(ArchiveOf(medium.dir, name), root, name);
  RequireRealDirectories(contents.members, TreeOf(system_dir, root));
  Journal journal;
  journal.pack = name;
  journal.table_size = static_cast<int64_t>(fs::file_size(system_dir + "/" + kPresent));
  journal.table_lines = contents.table;
  for (const std::string& file : FilesOf(contents, root, name)) NoteFile(file, system_dir, journal);
  const std::set<std::string> saved(journal.saved_files.begin(), journal.saved_files.end());
  journal.site_files = ChangedFiles(system_dir, IsSdk(medium), saved);
  return journal;
}

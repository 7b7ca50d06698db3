#include "files.h"

#include <fcntl.h>
#include <kb0core/TEVFile.h>
#include <kwinstutil/kwinstutil.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <system_error>

#include "refusal.h"
#include "texts.h"

namespace {

/// A file that does not exist reads as an empty one. Throws a Refusal for one that cannot be
/// opened.
std::ifstream OpenToRead(const std::string& path) {
  errno = 0;
  std::ifstream file(path, std::ios::binary);
  if (!file.is_open() && errno != ENOENT && errno != ENOTDIR) throw CannotRead(path);
  return file;
}

/// Opens what is there and has it written to the disk by `sync`.
bool Sync(const std::string& path, int (*sync)(int)) {
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  const bool synced = file >= 0 && sync(file) == 0;
  if (file >= 0) close(file);
  return synced;
}

constexpr char kTemporary[] = "/tmp/kwbatch-private-";

/// Opens and locks a directory. Negative when it cannot be locked, or no directory is there.
int LockDirectory(const std::string& path) {
  const int file = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
  if (file < 0 || flock(file, LOCK_EX | LOCK_NB) == 0) return file;
  close(file);
  return -1;
}

}  // namespace

bool Exists(const std::string& path) { return TEVFileAccess(path.c_str(), 0) == 0; }

bool IsThere(const std::string& path) {
  TEVFileInfo info;
  if (TEVGetFileInfo(path.c_str(), &info) == 0) return true;
  if (errno == ENOENT || errno == ENOTDIR) return false;
  throw Refusal(Text("FileNotExamined", "The file {1} cannot be looked at.\n", {path}));
}

void RequireReadable(const std::string& path) {
  if (TEVFileAccess(path.c_str(), 4) == 0 || errno == ENOENT || errno == ENOTDIR) return;
  throw Refusal(
      Text("FileNotReadFor", "The file {1} cannot be read: {2}.\n", {path, std::strerror(errno)}));
}

void RequireRegular(const std::string& path) {
  std::error_code error;
  if (std::filesystem::is_regular_file(path, error) || !Exists(path)) return;
  throw Refusal(Text("NotRegular", "{1} is no regular file.\n", {path}));
}

void RequireDirectory(const std::string& path) {
  if (std::filesystem::is_directory(path)) return;
  throw Refusal(Text("NoDirectory", "The directory {1} does not exist.\n", {path}));
}

Refusal CannotRead(const std::string& path) {
  return Refusal(Text("FileNotRead", "The file {1} cannot be read.\n", {path}));
}

Refusal CannotWrite(const std::string& path) {
  return Refusal(Text("FileNotWritten", "The file {1} cannot be written.\n", {path}));
}

void RequireProgram(const std::string& name) {
  const char* path = std::getenv("PATH");
  std::istringstream dirs(path == nullptr ? "/bin:/usr/bin" : path);
  for (std::string dir; std::getline(dirs, dir, ':');) {
    if (TEVFileAccess((dir.empty() ? name : dir + "/" + name).c_str(), 1) == 0) return;
  }
  if (name == "compress") {
    throw Refusal(
        Text("CompressMissing",
             "The program compress is missing, which the archives need (package ncompress).\n"));
  }
  throw Refusal(
      Text("ProgramMissing", "The program {1} is missing, which the archives need.\n", {name}));
}

void Delete(const std::string& path) {
  if (IsThere(path) && TEVDeleteFile(path.c_str()) != 0) {
    throw Refusal(Text("FileNotDeleted", "The file {1} cannot be deleted.\n", {path}));
  }
}

void DeleteTree(const std::string& dir) {
  std::error_code failed;
  std::filesystem::remove_all(dir, failed);
  if (!failed) return;
  throw Refusal(Text("DirectoryNotDeleted", "The directory {1} cannot be deleted: {2}.\n",
                     {dir, failed.message()}));
}

void Rename(const std::string& from, const std::string& to) {
  if (TEVRenameFile(from.c_str(), to.c_str()) == 0) return;
  throw Refusal(Text("FileNotRenamed", "The file {1} cannot be renamed.\n", {from}));
}

void Write(const std::string& path, const std::string& text) {
  Delete(path);
  if (!AppendToFile(path, text)) throw CannotWrite(path);
}

void SyncFile(const std::string& path) {
  if (Sync(path, fsync) && Sync(std::filesystem::path(path).parent_path(), fsync)) return;
  throw CannotWrite(path);
}

void WriteDurably(const std::string& path, const std::string& text) {
  const std::string fresh = path + ".new";
  Delete(fresh);
  if (AppendToFile(fresh, text) && Sync(fresh, fsync) &&
      TEVRenameFile(fresh.c_str(), path.c_str()) == 0 &&
      Sync(std::filesystem::path(path).parent_path(), fsync)) {
    return;
  }
  TEVDeleteFile(fresh.c_str());
  throw CannotWrite(path);
}

void DeleteUnwritten(const std::string& path) { Delete(path + ".new"); }

void SyncFileSystem(const std::string& dir) {
  if (!Sync(dir, syncfs)) {
    throw Refusal(
        Text("DiskNotWritten", "The disk of {1} does not take what is written.\n", {dir}));
  }
}

bool AppendToFile(const std::string& path, const std::string& text) {
  std::ofstream file(path, std::ios::app);
  file << text;
  return static_cast<bool>(file.flush());
}

void MakeDirectories(const std::string& path) {
  std::string dir = path;
  if (TEVInsCreateDirectory(dir.data()) == 0) return;
  throw Refusal(Text("DirectoryNotMade", "The directory {1} cannot be made.\n", {path}));
}

void WriteLine(std::string path, std::string text) {
  TEVUnicodeString message;
  if (TEVInsCreateFile(path.data(), text.data(), &message) != 1) throw Refused(message);
}

std::string TextOf(const std::string& path) {
  std::ifstream file = OpenToRead(path);
  std::string text;
  char part[4096];
  while (file.read(part, sizeof(part)) || file.gcount() > 0) {
    text.append(part, static_cast<size_t>(file.gcount()));
  }
  if (file.bad()) throw CannotRead(path);
  return text;
}

std::vector<std::string> LinesOf(const std::string& path) {
  std::vector<std::string> lines;
  std::ifstream file = OpenToRead(path);
  for (std::string line; std::getline(file, line);) lines.push_back(line);
  if (file.bad()) throw CannotRead(path);
  return lines;
}

int OpenDirectoryOf(const std::string& dir, const std::filesystem::path& file) {
  int at = open(dir.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  for (const std::filesystem::path& name : file.parent_path()) {
    if (at < 0) break;
    const int next = openat(at, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    const int error = errno;
    close(at);
    errno = error;
    at = next;
  }
  if (at < 0 && errno != ENOENT) {
    throw Refusal(Text("DirectoryNotOpened", "The directory of {1} cannot be opened: {2}.\n",
                       {(dir / file).string(), std::strerror(errno)}));
  }
  return at;
}

void TemporaryDirectory::DeleteLeftovers() {
  constexpr time_t kMinute = 60;
  std::error_code ignored;
  for (const auto& entry : std::filesystem::directory_iterator("/tmp", ignored)) {
    const std::string path = entry.path();
    struct stat info {};
    if (path.rfind(kTemporary, 0) != 0 || lstat(path.c_str(), &info) != 0) continue;
    // One that was just made may not be locked yet.
    const bool ours = info.st_uid == geteuid() && (info.st_mode & 07777) == 0700;
    if (!ours || std::time(nullptr) - info.st_mtime < kMinute) continue;
    const int lock = LockDirectory(path);
    if (lock < 0) continue;
    std::filesystem::remove_all(path, ignored);
    close(lock);
  }
}

TemporaryDirectory::TemporaryDirectory() : path_(std::string(kTemporary) + "XXXXXX") {
  if (mkdtemp(path_.data()) == nullptr) {
    throw Refusal(Text("NoTemporaryDirectory", "No temporary directory can be made.\n"));
  }
  lock_ = LockDirectory(path_);
}

TemporaryDirectory::~TemporaryDirectory() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
  if (lock_ >= 0) close(lock_);
}

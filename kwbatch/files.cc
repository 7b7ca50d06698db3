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
#include <iterator>
#include <system_error>

#include "refusal.h"

namespace {

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
  throw Refusal("The file " + path + " cannot be looked at.\n");
}

void RequireReadable(const std::string& path) {
  if (TEVFileAccess(path.c_str(), 4) == 0 || errno == ENOENT || errno == ENOTDIR) return;
  throw Refusal("The file " + path + " cannot be read: " + std::strerror(errno) + ".\n");
}

void Delete(const std::string& path) {
  if (IsThere(path) && TEVDeleteFile(path.c_str()) != 0) {
    throw Refusal("The file " + path + " cannot be deleted.\n");
  }
}

void Write(const std::string& path, const std::string& text) {
  Delete(path);
  if (!AppendToFile(path, text)) throw Refusal("The file " + path + " cannot be written.\n");
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
  throw Refusal("The file " + path + " cannot be written.\n");
}

void SyncFileSystem(const std::string& dir) {
  if (!Sync(dir, syncfs)) throw Refusal("The disk of " + dir + " does not take what is written.\n");
}

bool AppendToFile(const std::string& path, const std::string& text) {
  std::ofstream file(path, std::ios::app);
  file << text;
  return static_cast<bool>(file.flush());
}

void WriteLine(std::string path, std::string text) {
  TEVUnicodeString message;
  if (TEVInsCreateFile(path.data(), text.data(), &message) != 1) throw Refused(message);
}

std::string TextOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::vector<std::string> LinesOf(const std::string& path) {
  std::vector<std::string> lines;
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) lines.push_back(line);
  return lines;
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
  if (mkdtemp(path_.data()) == nullptr) throw Refusal("No temporary directory can be made.\n");
  lock_ = LockDirectory(path_);
}

TemporaryDirectory::~TemporaryDirectory() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
  if (lock_ >= 0) close(lock_);
}

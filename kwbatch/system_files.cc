#include "system_files.h"

#include <kb0core/TEVFile.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <system_error>

#include "console.h"
#include "files.h"
#include "formats.h"
#include "paths.h"
#include "refusal.h"
#include "texts.h"

namespace fs = std::filesystem;

namespace {

/// The file that a path leads to, also when that is not there.
std::string RealFile(fs::path path) {
  for (int links = 0; fs::is_symlink(path) && links < 10; ++links) {
    path = path.parent_path() / fs::read_symlink(path);
  }
  return path;
}

/// The text of an inetd file without the lines of the services that the product registers, and
/// without such a line that was cut off at its end.
std::string WithoutOurs(const std::string& text) {
  std::string others;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    const auto is_of = [&](const std::string& service) {
      return line.compare(0, service.size(), service) == 0 ||
             (lines.eof() && service.compare(0, line.size(), line) == 0);
    };
    if (is_of(kDaemonService) || is_of(kSatelliteService)) continue;
    others += lines.eof() ? line : line + '\n';
  }
  return others;
}

/// Is the new inetd file nothing but a beginning of the old one that was being rewritten?
bool IsBegunCopy(const std::string& path, const std::string& old) {
  const std::string begun = WithoutOurs(TextOf(path));
  return WithoutOurs(TextOf(old)).compare(0, begun.size(), begun) == 0;
}

Refusal CannotReplace(const std::string& path) {
  return Refusal(Text("FileNotReplaced", "The file {1} cannot be replaced.\n", {path}));
}

}  // namespace

void UseScratch(const std::string& dir) {
  RequirePlainPath(Text("NounDirectory", "directory"), dir);
  RequireDirectory(dir);
  for (const std::string name : {kServices, kInetd}) {
    // An interrupted run has left the file under this name.
    const std::string copy = dir + "/" + name;
    if (!Exists(copy) && Exists(copy + kRewritten)) continue;
    std::error_code ignored;
    if (!Exists(copy)) fs::copy_file("/etc/" + name, copy, ignored);
    AppendToFile(copy, "");
  }
  UseSystemFilesIn(dir);
}

void RequireWritable(const std::string& path) {
  const bool writable = TEVFileAccess(path.c_str(), 2) == 0;
  const int error = errno;
  if (writable && fs::is_regular_file(path)) return;
  const bool forbidden = !writable && (error == EACCES || error == EPERM);
  const std::string reason =
      writable ? Text("ReasonNoFile", "it is no file") : std::string(std::strerror(error));
  throw Refusal(forbidden
                    ? Text("SystemFileForbidden",
                           "The file {1} cannot be written: {2}. Be root, or use --scratch DIR or "
                           "install --no-services.\n",
                           {path, reason})
                    : Text("SystemFileNotWritten",
                           "The file {1} cannot be written: {2}. Use --scratch DIR or "
                           "install --no-services.\n",
                           {path, reason}));
}

void Overwrite(const std::string& path) {
  if (TEVRenameFile((path + kRewritten).c_str(), (path + kWhole).c_str()) != 0) {
    throw CannotReplace(path);
  }
  FinishOverwrite(path);
}

void FinishOverwrite(const std::string& path) {
  const std::string whole = path + kWhole;
  if (!Exists(whole)) return;
  std::error_code failed;
  fs::copy_file(whole, path, fs::copy_options::overwrite_existing, failed);
  if (failed) {
    throw Refusal(Text("ContentIsBeside", "The file {1} cannot be written: its content is {2}.\n",
                       {path, whole}));
  }
  SyncFile(path);
  Delete(whole);
}

void SyncSystemFiles() {
  for (const char* name : {kServices, kInetd}) {
    const std::string file = RealFile(SystemFile(name));
    if (Exists(file)) SyncFile(file);
  }
}

void TellHowInetdReads() {
  Say("  " +
      Text("InetdReads", "inetd reads this when it gets the signal HUP: pkill -HUP -x inetd"));
}

std::string LinesTakenOut(const std::string& path) {
  return Text("LinesTakenOut", "The lines of the tree are taken out of {1}.", {path});
}

void RemoveLines(const std::string& path, const std::vector<std::string>& lines) {
  std::error_code failed;
  const std::string real = fs::canonical(path, failed);
  if (!failed) FinishOverwrite(real);
  std::ifstream file(real, std::ios::binary);
  std::string kept;
  for (std::string line; std::getline(file, line);) {
    if (std::count(lines.begin(), lines.end(), line) > 0) continue;
    // The last line may have no newline.
    kept += file.eof() ? line : line + '\n';
  }
  struct stat info {};
  if (failed || file.bad() || stat(real.c_str(), &info) != 0) {
    throw CannotRead(path);
  }
  const std::string fresh = real + ".new";
  Write(fresh, kept);
  if ((chown(fresh.c_str(), info.st_uid, info.st_gid) != 0 && geteuid() == 0) ||
      chmod(fresh.c_str(), info.st_mode & 07777) != 0) {
    Delete(fresh);
    throw Refusal(Text("OwnerNotKept", "The file {1} cannot get the owner and the mode of {2}.\n",
                       {fresh, path}));
  }
  SyncFileSystem(fresh);
  if (TEVRenameFile(fresh.c_str(), real.c_str()) == 0) return;
  if (TEVRenameFile(fresh.c_str(), (real + kWhole).c_str()) != 0) {
    throw CannotReplace(path);
  }
  FinishOverwrite(real);
}

void RestoreSystemFiles() {
  FinishOverwrite(SystemFile(kServices));
  for (const char* name : {kServices, kInetd}) {
    const std::string file = RealFile(SystemFile(name));
    if (!Exists(file)) TEVRenameFile((file + kRewritten).c_str(), file.c_str());
  }
  const std::string inetd = RealFile(SystemFile(kInetd));
  const std::string old = inetd + kRewritten;
  if (!Exists(old)) return;
  if (IsBegunCopy(inetd, old) && TEVRenameFile(old.c_str(), inetd.c_str()) == 0) return;
  throw Refusal(Text("InetdInterrupted",
                     "An earlier run may have been interrupted while it rewrote {1}, which was "
                     "{1}.tmp before: compare the two, put the good one in the place of {1}, "
                     "remove the other, and run the command again.\n",
                     {inetd}));
}

#include "system_files.h"

#include <kb0core/TEVFile.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "console.h"
#include "files.h"
#include "formats.h"
#include "paths.h"
#include "refusal.h"

namespace fs = std::filesystem;

void UseScratch(const std::string& dir) {
  RequirePlainPath("directory", dir);
  if (!fs::is_directory(dir)) throw Refusal("The directory " + dir + " does not exist.\n");
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
  throw Refusal("The file " + path + " cannot be written: " +
                (writable ? "it is no file" : std::strerror(error)) + ". " +
                (forbidden ? "Be root, or use" : "Use") + " --scratch DIR or --no-services.\n");
}

void Overwrite(const std::string& path) {
  if (TEVRenameFile((path + kRewritten).c_str(), (path + kWhole).c_str()) != 0) {
    throw Refusal("The file " + path + " cannot be replaced.\n");
  }
  FinishOverwrite(path);
}

void FinishOverwrite(const std::string& path) {
  const std::string whole = path + kWhole;
  if (!Exists(whole)) return;
  std::error_code failed;
  fs::copy_file(whole, path, fs::copy_options::overwrite_existing, failed);
  if (failed) {
    throw Refusal("The file " + path + " cannot be written: its content is " + whole + ".\n");
  }
  Delete(whole);
}

void TellHowInetdReads() {
  Say("  inetd reads this when it gets the signal HUP: pkill -HUP -x inetd");
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
    throw Refusal("The file " + path + " cannot be read.\n");
  }
  const std::string fresh = real + ".new";
  Write(fresh, kept);
  if ((chown(fresh.c_str(), info.st_uid, info.st_gid) != 0 && geteuid() == 0) ||
      chmod(fresh.c_str(), info.st_mode & 07777) != 0) {
    Delete(fresh);
    throw Refusal("The file " + fresh + " cannot get the owner and the mode of " + path + ".\n");
  }
  SyncFileSystem(fresh);
  if (TEVRenameFile(fresh.c_str(), real.c_str()) == 0) return;
  if (TEVRenameFile(fresh.c_str(), (real + kWhole).c_str()) != 0) {
    throw Refusal("The file " + path + " cannot be replaced.\n");
  }
  FinishOverwrite(real);
}

void RestoreSystemFiles() {
  FinishOverwrite(SystemFile(kServices));
  for (const char* name : {kServices, kInetd}) {
    const std::string file = SystemFile(name);
    if (!Exists(file)) TEVRenameFile((file + kRewritten).c_str(), file.c_str());
  }
  const std::string inetd = SystemFile(kInetd);
  if (!Exists(inetd + kRewritten)) return;
  throw Refusal("An earlier run may have been interrupted while it rewrote " + inetd +
                ", which was " + inetd +
                ".tmp before: compare the two, put the good one in the place of " + inetd +
                ", remove the other, and run the command again.\n");
}

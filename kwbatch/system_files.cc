#include "system_files.h"

#include <kb0core/TEVFile.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

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

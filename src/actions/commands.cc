#include <kb0core/TEVFile.h>
#include <sys/stat.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <string>

#include "kwinstutil/actions.h"
#include "report/message.h"
#include "support/format.h"
#include "support/shell.h"
#include "support/text_file.h"
#include "support/tree_paths.h"

using kwinst::Format;
using kwinst::MessageFrame;

namespace {

/// Writes `text` and a newline to `path`. Returns false if not all could be stored.
bool WriteLine(const char* path, const char* text) {
  std::FILE* file = nullptr;
  if (TEVFOpen(path, "w", &file) != 0) return false;
  const bool written = std::fprintf(file, "%s\n", text) >= 0 && std::fflush(file) == 0;
  return TEVFClose(file) == 0 && written;
}

/// Appends to the file `to` with `command`. When that fails, as on a full disk, `to` is cut back to
/// its former length, or removed if it is new. False on failure.
bool AppendWhole(const std::string& command, const char* to) {
  struct stat before {};
  const bool exists = stat(to, &before) == 0;
  const bool is_new = !exists && errno == ENOENT;
  if (kwinst::RunShell(command) == 0) return true;

  if (exists) kwinst::CutBack(to, before.st_size);
  // If `to` is a symbolic link, it stays, and the new file that it leads to is removed.
  if (char file[PATH_MAX]; is_new && realpath(to, file) != nullptr) TEVDeleteFile(file);
  return false;
}

}  // namespace

int TEVInsCommande(char* command, TEVUnicodeString* message) noexcept {
  if (command == nullptr) return -10;
  const MessageFrame frame;
  if (kwinst::RunShell(command) != 0) {
    *message = frame.Build("ErrCmdFailed", {command});
    return -1;
  }
  *message = frame.Build("CmdSuccessful", {command});
  return 1;
}

int TEVInsUpdate(char* from, char* to, TEVUnicodeString* message) noexcept {
  if (from == nullptr || to == nullptr) return -10;
  const MessageFrame frame;
  if (!kwinst::Exists(from)) {
    *message = frame.Build("ErrFileNotExist", {from});
    return -1;
  }
  const std::string command = Format("cat %s >> %s", from, to);
  if (!AppendWhole(command, to)) {
    *message = frame.Build("ErrCmdFailed", {command});
    return -1;
  }
  // Deliberate: the key of this function has one "s". Catalogs have both spellings.
  *message = frame.Build("CmdSucessful", {command});
  return 1;
}

int TEVInsCopyInstall(char* from, char* to, TEVUnicodeString* message) noexcept {
  if (from == nullptr || to == nullptr) return -10;
  return TEVInsCommande(Format("cp %s %s", from, to).data(), message);
}

int TEVInsCreateFile(char* path, char* text, TEVUnicodeString* message) noexcept {
  if (path == nullptr || text == nullptr) return -10;
  const MessageFrame frame;
  if (!WriteLine(path, text)) {
    *message = frame.Build("CreateFile_KO", {path});
    return -1;
  }
  *message = frame.Build("CreateFile_OK", {path});
  return 1;
}

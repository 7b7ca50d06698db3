#include <kb0core/TEVFile.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>

#include "kwinstutil/dirs.h"
#include "kwinstutil/spk.h"
#include "report/message.h"
#include "support/format.h"
#include "support/shell.h"
#include "support/text_file.h"
#include "support/tree_paths.h"

using kwinst::Format;
using kwinst::JoinPath;
using kwinst::MessageFrame;

namespace {

std::string TempDir() {
  char path[kwinst::kPathSize] = "";
  TEVInsGetTempDir(path);
  return path;
}

/// Does this error number say that a path does not exist? After any other error it may exist.
bool MeansMissing(int error) {
  return error == ENOENT || error == ENOTDIR || error == ENAMETOOLONG || error == ELOOP;
}

/// May `path` exist? Links are not followed: a dangling link exists. A file that cannot be examined
/// may exist. If it were ignored, the service pack would overwrite it.
bool MayExist(const std::string& path) {
  TEVFileInfo info;
  return TEVGetFileInfo(path.c_str(), &info) == 0 || !MeansMissing(errno);
}

/// The service pack's control file, which is unpacked in the temporary directory.
class UnpackedList {
 public:
  UnpackedList(const char* spkName, const char* osDir, TEVINSType type)
      : member_(type == zeb2 ? JoinPath(kwinst::kControlDir, spkName)
                             : Format("%s/%s/%s", osDir, kwinst::kControlDir, spkName)),
        path_(JoinPath(TempDir(), member_)) {}

  /// Its path in the archive.
  const std::string& member() const { return member_; }
  const std::string& path() const { return path_; }

 private:
  std::string member_;
  std::string path_;
};

/// The command that unpacks `member` of a service pack.
std::string UnpackingCommand(const std::string& archive, const std::string& member) {
  const auto [path, compressed] = kwinst::FindArchive(archive);
  const char* format =
      compressed ? "cd %s; compress -d -c %s |  tar -xf - %s 2>&1" : "cd %s; tar -xf %s  %s 2>&1";
  return Format(format, TempDir().c_str(), path.c_str(), member.c_str());
}

/// The file name in a line when files are saved: its first word. Empty if the line names no file.
std::string FirstWord(char* line) {
  if (std::strtol(line, nullptr, 10) != 0) return "";
  kwinst::CutNewline(line);
  if (std::strcmp(line, "0") == 0) return "";
  line += std::strspn(line, " ");
  return std::string(line, std::strcspn(line, " "));
}

/// The file name in a line when files are restored: all of it, numbers and blanks included.
/// Deliberate: saving reads the same line differently.
std::string WholeLine(char* line) {
  kwinst::CutNewline(line);
  return line;
}

/// The old and the new path of a file.
struct Renaming {
  std::string from;
  std::string to;
};

/// Renames the file that each line of the control file names, as `renaming(line)` says. A file that
/// does not exist is ignored. Deletes the control file at the end. Returns 0, or -1 with `message`
/// assigned.
template <typename Function>
int RenameListedFiles(const UnpackedList& control, TEVUnicodeString& message, Function renaming) {
  const MessageFrame frame;
  const kwinst::InputFile file = kwinst::OpenForReading(control.path().c_str());
  if (file == nullptr) {
    const int error = errno;
    message = frame.Build("ErrWndOpenControlFile.Text", {control.path(), error});
    TEVDeleteFile(control.path().c_str());
    return -1;
  }
  int status = 0;
  kwinst::ForEachLine<1024>(file.get(), [&](char* line) {
    if (line[0] == '\0') return false;  // a zero byte at the start of a line ends the list
    const auto [from, to] = renaming(line);
    if (!MayExist(from) || TEVRenameFile(from.c_str(), to.c_str()) == 0) return true;
    message = frame.Build("ErrWndRenameFile.Text", {from, to});
    status = -1;
    return false;
  });
  // A read error is treated as the end of the list.
  TEVDeleteFile(control.path().c_str());
  return status;
}

}  // namespace

int TEVInsSaveFilesBeforeInstall(char* spkName, char* mediaDir, char* installDir, const char* osDir,
                                 TEVINSType type, TEVUnicodeString& message) noexcept {
  if (mediaDir == nullptr || installDir == nullptr || (type == code && osDir == nullptr)) return -1;
  const MessageFrame frame;
  const std::string archive = JoinPath(mediaDir, spkName);
  const UnpackedList control(spkName, osDir, type);
  if (kwinst::RunShell(UnpackingCommand(archive, control.member())) != 0) {
    message = frame.Build("ErrWndExtractTar.Text", {control.member(), archive});
    message.Append(frame.Build("CheckTmpDir", {TempDir()}));
    return -1;
  }
  return RenameListedFiles(control, message, [installDir](char* line) {
    const std::string file = FirstWord(line);
    if (file.empty()) return Renaming{};
    const std::string target = JoinPath(installDir, file);
    return Renaming{target, target + kwinst::kSavedFile};
  });
}

int TEVInsRestoreFiles(char* installDir, char* spkName, const char* osDir, TEVINSType type,
                       TEVUnicodeString& message) noexcept {
  const UnpackedList control(spkName, osDir, type);
  if (!kwinst::Exists(control.path()) && MeansMissing(errno)) return 0;
  return RenameListedFiles(control, message, [installDir](char* line) {
    const std::string file = WholeLine(line);
    if (file.empty()) return Renaming{};
    const std::string target = JoinPath(installDir, file);
    return Renaming{target + kwinst::kSavedFile, target};
  });
}

#include "ports/inetd_file.h"

#include <kb0core/TEVFile.h>

#include <cerrno>
#include <cstring>
#include <optional>
#include <string_view>
#include <utility>

#include "ports/line_table.h"
#include "ports/system_file.h"
#include "report/message.h"

namespace kwinst {

namespace {

InetdOutcome CannotOpen(const std::string& path, const std::string& error,
                        const MessageFrame& frame, TEVUnicodeString& message) {
  message = frame.Build("ErrWndOpenServicesFile", {path, error});
  return InetdOutcome::kFailed;
}

/// The outcome and the message of writing the file `path`.
InetdOutcome Written(bool written, const std::string& path, const MessageFrame& frame,
                     TEVUnicodeString& message) {
  message = written ? frame.Build("OKWriteServicesFile", {path})
                    : frame.Build("ErrWndWriteServicesFile", {path});
  return written ? InetdOutcome::kChanged : InetdOutcome::kFailed;
}

/// Writes `table` in the place of the file, which is the backup meanwhile.
InetdOutcome RewriteWithBackup(const std::string& path, const LineTable& table,
                               const MessageFrame& frame, TEVUnicodeString& message) {
  const std::optional<std::string> real = RealFile(path);
  if (!real) return CannotOpen(path, std::strerror(errno), frame, message);
  const std::string backup = *real + kRewriteSuffix;
  DropLink(backup, *real);
  if (TEVRenameFile(real->c_str(), backup.c_str()) != 0) {
    const char* error = std::strerror(errno);
    message = frame.Build("ErrWndRenameServicesFile", {*real, error});
    return InetdOutcome::kFailed;
  }
  std::string error;
  InputFile file = OpenSystemFile(*real, "w", &error);
  // The backup is not brought back here: it may be the only thing that can still be read.
  if (file == nullptr) return CannotOpen(*real, error, frame, message);

  if (!table.WriteAndClose(std::move(file))) {
    TEVRenameFile(backup.c_str(), real->c_str());
    return Written(false, *real, frame, message);
  }
  TEVDeleteFile(backup.c_str());
  return Written(true, path, frame, message);
}

}  // namespace

InetdOutcome RegisterInInetd(const std::string& service, const std::string& line,
                             const std::string& existing, TEVUnicodeString& message) {
  const MessageFrame frame;
  const std::optional<std::string> path = SystemFile("inetd.conf");
  if (!path) {
    message = frame.Build("ErrVRK_ODT_TMP", {}, "VRK_ODT_TMP is not set\n");
    return InetdOutcome::kFailed;
  }
  std::string error;
  InputFile file = OpenSystemFile(*path, "r+", &error);
  if (file == nullptr) return CannotOpen(*path, error, frame, message);

  size_t lines = 0;
  bool found = false;
  bool stands = false;
  const bool read = ForEachPiece<kSlotSize>(file.get(), [&](std::string_view piece) {
    ++lines;
    found = found || BeginsWith(piece, service);
    stands = piece == existing;
    return !stands;
  });
  if (!read) return CannotOpen(*path, std::strerror(errno), frame, message);
  if (stands) return InetdOutcome::kAlreadyThere;
  if (!found) return Written(AppendAndClose(std::move(file), *path, line), *path, frame, message);

  LineTable table(lines);
  if (table.absent()) return InetdOutcome::kFailed;
  if (!table.Read(file.get(), {{service, line}})) return Written(false, *path, frame, message);
  file.reset();
  return RewriteWithBackup(*path, table, frame, message);
}

}  // namespace kwinst

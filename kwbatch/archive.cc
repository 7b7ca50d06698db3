#include "archive.h"

#include <kwinstutil/kwinstutil.h>

#include <algorithm>
#include <filesystem>
#include <set>

#include "files.h"
#include "formats.h"
#include "interruption.h"
#include "refusal.h"

namespace fs = std::filesystem;

namespace {

/// True when the command has succeeded. The library's message would be the whole command.
bool RunShell(std::string command) {
  TEVUnicodeString unused;
  return TEVInsCommande(command.data(), &unused) == 1;
}

std::string ReadingCommand(const std::string& archive) {
  return (IsCompressed(archive) ? "compress -d -c " : "cat ") + archive;
}

}  // namespace

/// A pipe has the status of its last program only, and tar is content with an archive that ends
/// between two members. So each failure is noted, and the archive's last block kept, which must be
/// empty.
std::vector<std::string> MembersOf(const std::string& archive) {
  SafePoint();
  const TemporaryDirectory temp;
  const bool read =
      RunShell("cd " + temp.path() + " && mkfifo copy && { tail -c 512 copy >last & { " +
               ReadingCommand(archive) + " || echo >unread; } | tee copy | " +
               "TAR_OPTIONS=\"$TAR_OPTIONS --quoting-style=literal\" tar -tf - >members || echo "
               ">unread; wait; }");
  const std::string last = TextOf(temp.path() + "/last");
  if (!read || IsThere(temp.path() + "/unread") || last != std::string(512, '\0')) {
    throw Refusal("The archive " + archive + " is damaged or cut off.\n");
  }
  return LinesOf(temp.path() + "/members");
}

void Unpack(const std::string& archive, const std::vector<std::string>& members,
            const std::string& dir) {
  const TemporaryDirectory temp;
  std::string list;
  for (const std::string& member : members) list += member + "\n";
  Write(temp.path() + "/list", list);
  if (RunShell("cd " + dir + " && " + ReadingCommand(archive) + " | tar -xf - -T " + temp.path() +
               "/list")) {
    return;
  }
  throw Refusal("The archive " + archive + " cannot be unpacked in " + dir + ".\n");
}

void RequireRealDirectories(const std::vector<std::string>& members, const std::string& tree) {
  std::set<fs::path> dirs;
  for (const std::string& member : members) {
    for (fs::path dir = fs::path(member).parent_path(); dir.has_relative_path();
         dir = dir.parent_path()) {
      if (!dirs.insert(dir).second) break;
    }
  }
  for (const fs::path& dir : dirs) {
    if (!fs::is_symlink(tree / dir)) continue;
    throw Refusal("The directory " + (tree / dir).string() +
                  " is a symbolic link, which a real directory would replace.\n");
  }
}

#include "archive.h"

#include <kwinstutil/kwinstutil.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <set>

#include "archive_reader.h"
#include "files.h"
#include "formats.h"
#include "interruption.h"
#include "refusal.h"
#include "texts.h"

namespace fs = std::filesystem;

namespace {

/// True when the command has succeeded. The library's message would be the whole command.
bool RunShell(std::string command) {
  TEVUnicodeString unused;
  return TEVInsCommande(command.data(), &unused) == 1;
}

/// The program that takes the compression off, or "cat". What compress has not made has no name of
/// its own: tar knows it by its content, but not in a pipe.
std::string UnpackingProgram(const std::string& archive) {
  if (IsCompressed(archive)) return "compress";
  std::ifstream file(archive, std::ios::binary);
  std::string start(4, '\0');
  file.read(start.data(), static_cast<std::streamsize>(start.size()));
  if (start == "\x28\xB5\x2F\xFD") return "zstd";
  return start.compare(0, 2, "\x1F\x8B") == 0 ? "gzip" : "cat";
}

std::string ReadingCommand(const std::string& archive) {
  const std::string program = UnpackingProgram(archive);
  return program + (program == "cat" ? " " : " -d -c ") + archive;
}

std::vector<Member> ReadMembers(const std::string& archive) {
  SafePoint();
  RequireReadable(archive);
  RequireRegular(archive);
  RequireProgram("tar");
  RequireProgram(UnpackingProgram(archive));
  ArchiveReader reader(archive);
  // The name of the archive decides what unpacks it.
  if (reader.IsMadeByCompress() != IsCompressed(archive)) {
    throw Refusal(Text("ArchiveDamaged", "The archive {1} is damaged or cut off.\n", {archive}));
  }
  std::vector<Member> members;
  for (ArchiveMember member; reader.Next(member);) members.push_back({member.path, member.size});
  return members;
}

}  // namespace

const std::vector<Member>& MembersOf(const std::string& archive) {
  static std::map<std::string, std::vector<Member>> known;
  const auto found = known.find(archive);
  return found != known.end() ? found->second : known[archive] = ReadMembers(archive);
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
  throw Refusal(
      Text("ArchiveNotUnpacked", "The archive {1} cannot be unpacked in {2}.\n", {archive, dir}));
}

void Unpack(const Part& part, const std::string& dir) {
  std::vector<std::string> members;
  for (const Member& member : part.members) members.push_back(member.path);
  Unpack(part.archive, members, dir);
}

void RequireRealDirectories(const std::vector<Member>& members, const std::string& tree) {
  std::set<fs::path> dirs;
  for (const Member& member : members) {
    for (fs::path dir = fs::path(member.path).parent_path(); dir.has_relative_path();
         dir = dir.parent_path()) {
      if (!dirs.insert(dir).second) break;
    }
  }
  for (const fs::path& dir : dirs) {
    if (!fs::is_symlink(tree / dir)) continue;
    throw Refusal(
        Text("LinkReplaced",
             "The directory {1} is a symbolic link, which a real directory would replace.\n",
             {(tree / dir).string()}));
  }
}

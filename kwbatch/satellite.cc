#include "satellite.h"

#include <kwinstutil/kwinstutil.h>

#include "archive.h"
#include "files.h"
#include "formats.h"
#include "json.h"
#include "paths.h"
#include "refusal.h"
#include "registration.h"
#include "space.h"
#include "system_files.h"
#include "texts.h"

void RequireSatellite(const std::string& medium, const std::string& target, bool registered) {
  std::string source = MediumPath(medium);
  TEVUnicodeString message;
  if (TEVInsCheckMediaSAT(source.data(), &message) != 0) throw Refused(message);
  const auto required = static_cast<unsigned int>(SatComputeRequired(source.data(), message));
  if (FreeSpace(target) / 1024 < required) {
    throw Refusal(
        Text("SatelliteSpace", "The satellite needs {1} MB in {2}.\n", {required, target}));
  }
  if (!registered) return;
  RequireWritable(SystemFile(kServices));
  RequireWritable(SystemFile(kInetd));
}

bool HasSatellite(const std::string& target) { return Exists(target + "/satellite"); }

std::vector<Member> SatelliteMembers(const std::string& medium) {
  std::vector<Member> members = MembersOf(MediumPath(medium) + "/" + kSatelliteArchive);
  for (Member& member : members) member.path.insert(0, std::string(kSatelliteDirectory) + "/");
  return members;
}

void InstallSatellite(const std::string& medium, const std::string& target, bool registered) {
  const std::string dir = target + "/" + kSatelliteDirectory;
  MakeDirectories(dir);
  // Nothing else tells later which files are the satellite's.
  const std::string archive = MediumPath(medium) + "/" + kSatelliteArchive;
  std::string list;
  for (const Member& member : MembersOf(archive)) list += member.path + "\n";
  WriteDurably(dir + "/" + kSatelliteList, list);
  std::string command = "cd " + dir + " && compress -d -c " + archive + " | tar -xf -";
  TEVUnicodeString message;
  if (TEVInsCommande(command.data(), &message) != 1) throw Refused(message);
  SayDone(Text("SatelliteInstalled", "The rendering satellite is installed in {1}.", {dir}));
  if (registered) RegisterSatellite(dir);
}

void RegisterSatellitePort() {
  TEVUnicodeString message;
  // A line that only begins with its name passes for the library.
  if (SatUpdateService(message) >= 0 && PortInServices(kSatelliteService) != 0) return;
  throw Refusal(Text("SatelliteNotRegistered", "The satellite cannot be registered in {1}.\n",
                     {SystemFile(kServices)}));
}

void RegisterSatellite(std::string dir) {
  RegisterSatellitePort();
  TEVUnicodeString message;
  if (SatUpdateInet(dir.data(), message) < 0) throw Refused(message);
  SyncSystemFiles();
  SayDone(Text("SatelliteRegistered", "The rendering satellite is registered in {1} and {2}.",
               {SystemFile(kServices), SystemFile(kInetd)}));
}

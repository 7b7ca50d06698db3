#include "genuine.h"

#include <kwinstutil/kwinstutil.h>

#include <filesystem>
#include <set>

#include "console.h"
#include "files.h"
#include "formats.h"
#include "interruption.h"
#include "paths.h"
#include "refusal.h"
#include "texts.h"

namespace fs = std::filesystem;

namespace {

/// True when the command has succeeded; what it prints is of no use to the user.
bool Succeeds(const std::string& command) {
  std::string silent = "{ " + command + "; } >/dev/null 2>&1";
  TEVUnicodeString unused;
  const bool done = TEVInsCommande(silent.data(), &unused) == 1;
  SafePointAfterProgram();
  return done;
}

std::string NotSigned(const std::string& medium) {
  return Text("MediumNotSigned", "The medium {1} is not signed.\n", {medium});
}

void CopyFile(const fs::path& from, const fs::path& to) {
  SafePoint();
  std::error_code error;
  fs::create_directories(to.parent_path());
  if (fs::is_regular_file(fs::symlink_status(from)) && fs::copy_file(from, to, error)) return;
  if (error) {
    throw Refusal(Text("NotCopied", "{1} cannot be copied to /tmp: {2}.\n",
                       {from.string(), error.message()}));
  }
  throw Refusal(Text("NoRegularFile", "{1} cannot be copied to /tmp: it is no regular file.\n",
                     {from.string()}));
}

/// The files that the list of checksums names: two blanks stand before the path.
std::set<std::string> SignedFiles(const std::string& list) {
  std::set<std::string> files;
  for (const std::string& line : LinesOf(list)) {
    const size_t blanks = line.find("  ");
    const fs::path path = blanks == std::string::npos ? "" : line.substr(blanks + 2);
    RequirePlainPath(Text("NounPathInList", "path in the list of checksums"), path);
    if (path.is_absolute() || *path.lexically_normal().begin() == "..") {
      throw Refusal(Text("ChecksumOutside",
                         "The list of checksums names {1}, outside the medium.\n",
                         {path.string()}));
    }
    files.insert(path);
  }
  return files;
}

/// Refuses every file of the medium that was not signed.
void RequireListed(const std::string& medium, std::set<std::string> listed) {
  listed.insert({kChecksums, kSignature});
  for (const auto& entry : fs::recursive_directory_iterator(medium)) {
    if (entry.is_directory() && !entry.is_symlink()) continue;
    const std::string path = entry.path().lexically_relative(medium);
    if (listed.count(path) != 0) continue;
    throw Refusal(Text("FileNotSigned", "The medium {1} has the file {2}, which is not signed.\n",
                       {medium, path}));
  }
}

/// gpgv's own message for any of these would be that the key is not known.
void RequireKeyring(const std::string& keyring) {
  RequirePlainPath(Text("NounKeyring", "keyring"), keyring);
  if (!Exists(keyring)) {
    throw Refusal(Text("NoKeyring", "The keyring {1} does not exist.\n", {keyring}));
  }
  RequireReadable(keyring);
  RequireRegular(keyring);
  if (fs::is_empty(keyring)) {
    throw Refusal(Text("KeyringEmpty", "The keyring {1} is empty.\n", {keyring}));
  }
  if (TextOf(keyring).rfind("-----BEGIN", 0) == 0) {
    throw Refusal(Text("KeyringIsText",
                       "The keyring {1} is a text. gpg --dearmor makes one of it.\n", {keyring}));
  }
}

/// Asks gpgv who has signed the list of checksums. It also takes the signature of a key that has
/// expired or was revoked, which only its status lines tell.
void RequireSignature(const std::string& dir, const std::string& keyring) {
  RequireKeyring(keyring);
  if (!Succeeds("command -v gpgv")) {
    throw Refusal(Text("NoGpgv", "The program gpgv is missing.\n"));
  }
  if (!Succeeds("gpgv --status-fd 3 --homedir " + dir + " --keyring " + keyring + " " + dir + "/" +
                kSignature + " " + dir + "/" + kChecksums + " 3>gpgv.status")) {
    throw Refusal(
        Text("OtherKey", "The medium {1} is not signed with a key of {2}.\n", {dir, keyring}));
  }
  for (const std::string& line : LinesOf("gpgv.status")) {
    if (line.rfind("[GNUPG:] GOODSIG ", 0) == 0) return;
  }
  throw Refusal(Text("KeyNotValid",
                     "The medium {1} is signed with a key that has expired or was revoked.\n",
                     {dir}));
}

void RequireUnchanged(const std::string& dir) {
  if (Succeeds("cd " + dir + " && sha256sum --strict --check " + kChecksums)) return;
  throw Refusal(Text("MediumChanged", "The medium {1} was changed after it was signed.\n", {dir}));
}

}  // namespace

std::string GenuineCopy(const std::string& medium, const std::string& keyring) {
  if (!IsThere(medium + "/" + kChecksums) || !IsThere(medium + "/" + kSignature)) {
    throw Refusal(NotSigned(medium));
  }
  // No name begins with another one.
  int number = 1;
  while (IsThere("genuine" + std::to_string(number))) ++number;
  std::string copy = fs::absolute("genuine" + std::to_string(number));
  ShowAs(copy, medium);
  for (const char* file : {kChecksums, kSignature}) {
    CopyFile(medium + "/" + file, copy + "/" + file);
  }
  RequireSignature(copy, keyring);
  const std::set<std::string> listed = SignedFiles(copy + "/" + kChecksums);
  RequireListed(medium, listed);
  for (const std::string& file : listed) CopyFile(medium + "/" + file, copy + "/" + file);
  RequireUnchanged(copy);
  Say(Text("MediumGenuine", "The medium {1} is genuine.", {medium}));
  return copy;
}

void RequireChecksums(const std::string& medium) {
  RequireMediumPath(medium);
  RequireListed(medium, SignedFiles(medium + "/" + kChecksums));
  RequireUnchanged(medium);
}

void TellUnverified(const std::string& medium) {
  const bool is_signed = IsThere(medium + "/" + kSignature);
  Say(is_signed
          ? Text("NoKeyringUsed",
                 "The medium {1} is signed, but there is no keyring to verify it with.", {medium})
          : NotSigned(medium));
}

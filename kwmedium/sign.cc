#include "sign.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "kwbatch/files.h"
#include "kwbatch/formats.h"
#include "kwbatch/paths.h"
#include "kwbatch/refusal.h"
#include "sources.h"

namespace {

// Beside the former signature, which stands until the new one is whole.
constexpr char kNewChecksums[] = "SHA256SUMS.new";
constexpr char kNewSignature[] = "SHA256SUMS.sig.new";

/// Runs a program in a directory, with its output in a file there.
void RunProgram(std::vector<std::string> words, const std::string& dir, const std::string& output) {
  std::vector<char*> arguments;
  arguments.reserve(words.size() + 1);
  for (std::string& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addchdir_np(&actions, dir.c_str());
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, output.c_str(),
                                   O_WRONLY | O_CREAT | O_TRUNC, 0644);
  pid_t child = 0;
  const int error =
      posix_spawnp(&child, arguments[0], &actions, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (error != 0) throw Refusal(words[0] + " cannot be run: " + std::strerror(error) + ".\n");
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  if (status != 0) throw Refusal(words[0] + " has failed.\n");
}

/// Is the file one that signing makes?
bool IsOfSignature(const std::string& path) {
  return path == kChecksums || path == kSignature || path == kNewChecksums || path == kNewSignature;
}

/// The medium's files as arguments, sorted. Those of an earlier signature are not among them.
std::vector<std::string> FilesOf(const std::string& medium) {
  std::vector<std::string> files;
  for (const Source& file : SourcesBelow(medium)) {
    RequirePlainPath("file", file.path);
    if (!S_ISREG(file.info.st_mode)) throw Refusal(file.origin + " is no regular file.\n");
    if (!IsOfSignature(file.path)) files.push_back(file.path);
  }
  if (files.empty()) throw Refusal("There is nothing to sign in " + medium + ".\n");
  return files;
}

}  // namespace

void SignMedium(const std::string& medium, const std::string& key) {
  std::string dir = std::filesystem::absolute(medium).lexically_normal();
  if (dir.back() == '/') dir.pop_back();
  std::vector<std::string> words = FilesOf(dir);
  words.insert(words.begin(), {"sha256sum", "--"});
  try {
    RunProgram(words, dir, kNewChecksums);
    RunProgram({"gpg", "--yes", "--local-user", key, "--output", kNewSignature, "--detach-sign",
                kNewChecksums},
               dir, "/dev/null");
    Rename(dir + "/" + kNewChecksums, dir + "/" + kChecksums);
    Rename(dir + "/" + kNewSignature, dir + "/" + kSignature);
  } catch (const Refusal&) {
    for (const char* name : {kNewChecksums, kNewSignature}) Delete(dir + "/" + name);
    throw;
  }
}

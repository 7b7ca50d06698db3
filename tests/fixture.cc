#include "fixture.h"

#include <grp.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <utility>

namespace fs = std::filesystem;

Fixture::Fixture() {
  dir_ = fs::temp_directory_path() / "kwinst-test-XXXXXX";
  if (mkdtemp(dir_.data()) == nullptr) std::abort();
  fs::permissions(dir_, fs::perms(0755));
  const std::regex text("([\\w.]+) = \"[^\n]*");
  const std::string file = "msgcatalog/TEVInstUtil.msg";
  const std::string english = Read(SOURCE_DIR "/resources/" + file);
  Write(file, std::regex_replace(english, text, "$1 = \"$1|{1}|{2}|{3}|{4}\""));
  SetEnv("TEVMsgCatalogPath", Path("msgcatalog").c_str());
  for (const char* variable :
       {"LC_ALL", "LC_MESSAGES", "LANG", "VRK_ODT_IN", "VRK_ODT_OUT", "VRK_ODT_TMP"})
    SetEnv(variable, nullptr);
}

Fixture::~Fixture() {
  for (const auto& [name, value] : environment_) SetEnv(name, value ? value->c_str() : nullptr);
  std::error_code ignored;
  fs::remove_all(dir_, ignored);
}

std::string Fixture::Write(const std::string& relative, std::string_view content) const {
  const std::string path = Path(relative);
  fs::create_directories(fs::path(path).parent_path());
  std::ofstream(path, std::ios::binary) << content;
  return path;
}

std::string Fixture::MakeDir(const std::string& relative) const {
  fs::create_directories(Path(relative));
  return Path(relative);
}

std::string Fixture::Program(const std::string& relative, const std::string& commands) const {
  const std::string path = Write(relative, "#!/bin/sh\n" + commands);
  chmod(path.c_str(), 0755);
  return path;
}

std::string Fixture::Told() { return std::exchange(message_, kUntouched).ConvertToChar(); }

void Fixture::UseDefaultTexts() {
  Write("no_keys/TEVInstUtil.msg");
  SetEnv("TEVMsgCatalogPath", Path("no_keys").c_str());
}

void Fixture::SetEnv(const std::string& name, const char* value) {
  const char* before = std::getenv(name.c_str());
  environment_.emplace(name, before == nullptr ? std::nullopt : std::optional<std::string>(before));
  value == nullptr ? unsetenv(name.c_str()) : setenv(name.c_str(), value, 1);
}

std::string Read(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return file ? std::string(std::istreambuf_iterator<char>(file), {}) : "(no file)";
}

bool Exists(const std::string& path) { return fs::exists(fs::symlink_status(path)); }

std::string Env(std::initializer_list<const char*> names, const std::string& prefix) {
  std::string values;
  for (const char* name : names) {
    const char* value = std::getenv((prefix + name).c_str());
    values += (value == nullptr ? "-" : value) + std::string(";");
  }
  return values;
}

std::string Message(const std::string& key, const std::string& p1, const std::string& p2,
                    const std::string& p3, const std::string& p4) {
  return key + "|" + p1 + "|" + p2 + "|" + p3 + "|" + p4;
}

void AsNobody(const std::function<void()>& body) {
  std::fflush(nullptr);
  const pid_t child = fork();
  ASSERT_NE(child, -1);
  if (child == 0) {
    const uid_t user = geteuid(), nobody = 65534;
    if (user == 0 && (setgroups(0, nullptr) != 0 || setresgid(nobody, nobody, 0) != 0 ||
                      setresuid(nobody, nobody, 0) != 0))
      _exit(1);
    body();
    // What runs at the exit, as the leak check and the coverage counters, needs the user's rights.
    if (setresuid(user, user, user) != 0) _exit(1);
    std::exit(::testing::Test::HasFailure() ? 1 : 0);
  }
  int status = 0;
  EXPECT_TRUE(waitpid(child, &status, 0) == child && status == 0) << "see the failures above";
}

std::string Captured(int descriptor, const std::function<void()>& body) {
  std::fflush(nullptr);
  std::FILE* file = std::tmpfile();
  const int before = dup(descriptor);
  dup2(fileno(file), descriptor);
  body();
  std::fflush(nullptr);
  dup2(before, descriptor);
  close(before);
  const std::string text = Read("/proc/self/fd/" + std::to_string(fileno(file)));
  std::fclose(file);
  return text;
}

#include "fixture.h"

#include <fcntl.h>
#include <grp.h>
#include <pwd.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>

namespace fs = std::filesystem;

namespace {

/// Sets a variable, or unsets it when `value` is null.
void PutEnv(const std::string& name, const char* value) {
  value == nullptr ? unsetenv(name.c_str()) : setenv(name.c_str(), value, 1);
}

void BecomeNobody() {
  const passwd* nobody = getpwnam("nobody");
  if (nobody == nullptr || setgroups(0, nullptr) != 0 || setgid(nobody->pw_gid) != 0 ||
      setuid(nobody->pw_uid) != 0) {
    std::perror("cannot become nobody");
    _exit(1);
  }
}

}  // namespace

Fixture::Fixture() {
  std::string name = fs::temp_directory_path() / "kwinst-test-XXXXXX";
  if (mkdtemp(name.data()) == nullptr) std::abort();
  dir_ = name;
  fs::permissions(dir_, fs::perms(0755));
  const std::regex text("([\\w.]+) = \"[^\n]*");
  Write("msgcatalog/TEVInstUtil.msg",
        std::regex_replace(Read(SOURCE_DIR "/resources/msgcatalog/TEVInstUtil.msg"), text,
                           "$1 = \"$1|{1}|{2}|{3}|{4}\""));
  SetEnv("TEVMsgCatalogPath", Path("msgcatalog").c_str());
  for (const char* variable :
       {"LC_ALL", "LC_MESSAGES", "LANG", "VRK_ODT_IN", "VRK_ODT_OUT", "VRK_ODT_TMP"}) {
    SetEnv(variable, nullptr);
  }
}

Fixture::~Fixture() {
  for (const auto& [name, value] : environment_) PutEnv(name, value ? value->c_str() : nullptr);
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

void Fixture::SetEnv(const std::string& name, const char* value) {
  const char* before = std::getenv(name.c_str());
  environment_.emplace(name, before == nullptr ? std::nullopt : std::optional<std::string>(before));
  PutEnv(name, value);
}

std::string Read(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) return "(no file)";
  std::ostringstream content;
  content << file.rdbuf();
  return content.str();
}

bool Exists(const std::string& path) { return fs::exists(fs::symlink_status(path)); }

std::string Message(const std::string& key, const std::string& p1, const std::string& p2,
                    const std::string& p3, const std::string& p4) {
  return key + "|" + p1 + "|" + p2 + "|" + p3 + "|" + p4;
}

void AsNobody(const std::function<void()>& body) {
  std::fflush(nullptr);
  const pid_t child = fork();
  ASSERT_NE(child, -1);
  if (child == 0) {
    if (geteuid() == 0) BecomeNobody();
    body();
    std::fflush(nullptr);
    _exit(::testing::Test::HasFailure() ? 1 : 0);
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0) << "see the failures above";
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

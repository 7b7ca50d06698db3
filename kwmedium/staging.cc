#include "staging.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "kwbatch/console.h"
#include "kwbatch/refusal.h"

namespace fs = std::filesystem;

namespace {

void MakeDirectory(const std::string& path) {
  std::error_code error;
  fs::create_directory(path, error);
  if (error) throw Refusal(path + ": " + error.message() + ".\n");
}

}  // namespace

Staging::Staging(const std::string& medium) {
  fs::path path = fs::absolute(medium).lexically_normal();
  if (!path.has_filename()) path = path.parent_path();
  medium_ = path;
  std::error_code error;
  if (!fs::is_directory(path.parent_path())) {
    throw Refusal("The directory " + path.parent_path().string() + " does not exist.\n");
  }
  if (fs::symlink_status(path, error).type() != fs::file_type::not_found &&
      !(fs::is_directory(fs::symlink_status(path, error)) && fs::is_empty(path, error))) {
    throw Refusal(medium + " exists already, and is no empty directory.\n");
  }
  dir_ = fs::canonical(path.parent_path()) / ("." + path.filename().string() + "-XXXXXX");
  if (mkdtemp(dir_.data()) == nullptr) {
    throw Refusal(path.parent_path().string() + ": " + std::strerror(errno) + ".\n");
  }
  ShowAs(this->path(), medium);
  MakeDirectory(this->path());
}

Staging::~Staging() {
  std::error_code ignored;
  fs::remove_all(dir_, ignored);
}

std::string Staging::MakeWorkDirectory(const std::string& name) const {
  std::string dir = dir_ + "/" + name;
  MakeDirectory(dir);
  return dir;
}

void Staging::Publish() const {
  if (std::rename(path().c_str(), medium_.c_str()) == 0) return;
  throw Refusal(medium_ + ": " + std::strerror(errno) + ".\n");
}

#include "formats.h"

#include <cstdlib>
#include <filesystem>

#include "files.h"

std::string ArchiveOf(const std::string& medium_dir, const std::string& component) {
  const std::string plain = medium_dir + "/" + component;
  for (const std::string& path : {plain + ".Z", plain}) {
    if (Exists(path)) return path;
  }
  return "";
}

bool IsCompressed(const std::string& archive) {
  return std::filesystem::path(archive).extension() == ".Z";
}

std::string SystemFile(const std::string& name) {
  const char* scratch = std::getenv("VRK_ODT_TMP");
  const bool development = std::getenv("VRK_ODT_IN") != nullptr &&
                           std::getenv("VRK_ODT_OUT") != nullptr && scratch != nullptr;
  return (development ? std::string(scratch) : "/etc") + "/" + name;
}

void UseSystemFilesIn(const std::string& dir) {
  setenv("VRK_ODT_IN", "1", 1);
  setenv("VRK_ODT_OUT", "1", 1);
  setenv("VRK_ODT_TMP", dir.c_str(), 1);
}

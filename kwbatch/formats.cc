#include "formats.h"

#include <sys/stat.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <sstream>

#include "files.h"
#include "texts.h"

namespace {

/// The stroke fonts that the library takes out with the languages.
constexpr const char* kLanguageFonts[] = {"SICH", "TRCH", "KANJ", "KOHG", "SSS4"};

}  // namespace

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

TableLine::TableLine(const std::string& line) {
  std::istringstream fields(line);
  std::getline(fields, type, ':');
  std::getline(fields, kind, ':');
  std::getline(fields, name, ':');
  for (std::string field; std::getline(fields, field, ':');) {
    const size_t equals = field.find('=') + 1;
    if (field.rfind("ga=", 0) == 0) level_of_all = field.substr(equals);
    if (field.rfind("level=", 0) == 0) {
      level = static_cast<int>(std::strtol(field.c_str() + equals, nullptr, 10));
    }
  }
}

bool IsOfLanguage(const std::string& path) {
  for (const Language& language : kLanguages) {
    if (path.rfind(std::string(kCatalogs) + "/" + language.name + "/", 0) == 0) return true;
  }
  return std::any_of(std::begin(kLanguageFonts), std::end(kLanguageFonts),
                     [&path](const char* font) {
                       return path == std::string("resources/fonts/Stroke/") + font + ".font";
                     });
}

std::string WhyNotInUpdate(const std::string& path, mode_t mode) {
  if (!S_ISREG(mode)) {
    return Text("ReasonNotRegular", "is no regular file, which could not be taken back");
  }
  const auto first = static_cast<unsigned char>(path.empty() ? '-' : path[0]);
  if (path.find(' ') != std::string::npos || std::isdigit(first) != 0 || first == '-' ||
      first == '+') {
    return Text(
        "ReasonName",
        "has a name that could not be set aside: with a blank, or a digit or sign at its start");
  }
  return "";
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

#include "medium.h"

#include <kb0core/TEVFile.h>

#include "console.h"

namespace {

constexpr size_t kSystemNameLength = 15;  ///< of the names in the file OSUNIX

bool Exists(const std::string& path) { return TEVFileAccess(path.c_str(), 0) == 0; }

Medium OpenSystem(const std::string& dir, const std::string& os) {
  Medium medium;
  medium.dir = dir;
  std::string path = dir + "/TOC";
  TEVINSMediaToc* toc = nullptr;
  TEVUnicodeString message;
  const int status = InitMediaToc(path.data(), &toc, &message);
  medium.toc.reset(toc);
  if (status != 0) throw Refused(message);
  if (TEVInsCheckMedia(code, toc, &message) != 0) throw Refused(message);
  medium.os = os.empty() && toc->GetOS() != nullptr ? toc->GetOS() : os;
  if (medium.os.empty()) throw Refusal("The table " + path + " names no operating system.\n");
  RequirePlainName("operating system of the medium", medium.os);
  if (medium.os.size() > kSystemNameLength) {
    throw Refusal("The operating system \"" + medium.os + "\" has more than 15 characters.\n");
  }
  return medium;
}

}  // namespace

std::vector<std::string> SystemsOf(const std::string& dir) {
  std::vector<std::string> systems;
  for (int index = 1; index <= 4; ++index) {
    char name[16] = "";
    TEVInsReadOSFile(dir.c_str(), index, name);
    if (name[0] != '\0') systems.emplace_back(name);
  }
  return systems;
}

std::vector<Medium> OpenMedium(const std::string& dir, const std::string& os) {
  std::vector<Medium> media;
  const std::vector<std::string> systems = SystemsOf(dir);
  for (const std::string& system : systems) {
    if (os.empty() || os == system) media.push_back(OpenSystem(dir + "/" + system, system));
  }
  if (systems.empty()) media.push_back(OpenSystem(dir, ""));
  if (media.empty() || (!os.empty() && media.front().os != os)) {
    throw Refusal("The medium " + dir + " holds nothing for the operating system " + os + ".\n");
  }
  return media;
}

std::vector<std::string> PackagesOf(const TEVINSToc& toc, TEVINSPkg kind) {
  const auto list = std::make_unique<TEVINSStockName>();
  toc.GetPackage(kind, code, list.get(), 1);
  std::vector<std::string> names;
  for (int i = 0; i < list->GetNbName(); ++i) names.emplace_back(list->GetName(i));
  return names;
}

std::string ArchiveOf(const Medium& medium, const std::string& component) {
  const std::string plain = medium.dir + "/" + component;
  for (const std::string& path : {plain + ".Z", plain}) {
    if (Exists(path)) return path;
  }
  return "";
}

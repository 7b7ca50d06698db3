#include "medium.h"

#include <kb0core/TEVFile.h>

#include <cstring>

#include "files.h"
#include "formats.h"
#include "paths.h"
#include "refusal.h"
#include "texts.h"

namespace {

MediumKind KindOf(TEVINSMediaToc* toc) {
  TEVUnicodeString message;
  if (TEVInsCheckMediaHFX(toc, &message) == 0) return MediumKind::kHotFix;
  const int pack = TEVInsCheckMediaSPK(toc, &message);
  if (pack == 0) return MediumKind::kServicePack;
  if (pack == 1) return MediumKind::kSdkServicePack;
  if (TEVInsCheckMedia(zeb2, toc, &message) == 0) return MediumKind::kSdk;
  if (TEVInsCheckMediaSMP(toc, &message) == 0) return MediumKind::kSamples;
  if (TEVInsCheckMedia(code, toc, &message) == 0) return MediumKind::kProducts;
  throw Refused(message);
}

Medium OpenSystem(const std::string& dir, const std::string& os) {
  Medium medium;
  medium.dir = dir;
  medium.of_several = !os.empty();
  std::string path = dir + "/" + kMediumTable;
  RequireReadable(path);
  TEVINSMediaToc* toc = nullptr;
  TEVUnicodeString message;
  const int status = InitMediaToc(path.data(), &toc, &message);
  medium.toc.reset(toc);
  if (status != 0) throw Refused(message);
  medium.kind = KindOf(toc);
  medium.os = os.empty() && toc->GetOS() != nullptr ? toc->GetOS() : os;
  if (medium.os.empty()) {
    throw Refusal(Text("TableWithoutSystem", "The table {1} names no operating system.\n", {path}));
  }
  RequireSystemName(medium.os);
  return medium;
}

}  // namespace

bool IsSdk(const Medium& medium) {
  return medium.kind == MediumKind::kSdk || medium.kind == MediumKind::kSdkServicePack;
}

std::vector<std::string> SystemsOf(const std::string& dir) {
  std::vector<std::string> systems;
  for (int index = 1; index <= static_cast<int>(kMostSystems); ++index) {
    char name[kSystemNameLength + 1] = "";
    TEVInsReadOSFile(dir.c_str(), index, name);
    if (name[0] == '\0') continue;
    RequirePlainName(Text("NounSystemIn", "operating system in {1}", {dir + "/" + kSystemList}),
                     name);
    systems.emplace_back(name);
  }
  return systems;
}

std::vector<Medium> OpenMedium(const std::string& dir, const std::string& os) {
  std::vector<Medium> media;
  RequireReadable(dir + "/" + kSystemList);
  const std::vector<std::string> systems = SystemsOf(dir);
  for (const std::string& system : systems) {
    if (os.empty() || os == system) media.push_back(OpenSystem(dir + "/" + system, system));
  }
  if (systems.empty()) media.push_back(OpenSystem(dir, ""));
  if (media.empty() || (!os.empty() && media.front().os != os)) {
    throw Refusal(Text("MediumWithoutSystem",
                       "The medium {1} holds nothing for the operating system {2}.\n", {dir, os}));
  }
  return media;
}

Content ContentOf(MediumKind kind) {
  switch (kind) {
    case MediumKind::kSdk:
      return {zeb2, {PRD, SLT}};
    case MediumKind::kSamples:
      return {samples, {SMP}};
    case MediumKind::kServicePack:
      return {code, {SPK}};
    case MediumKind::kSdkServicePack:
      return {zeb2, {SPK}};
    case MediumKind::kHotFix:
      return {code, {HFX}};
    case MediumKind::kProducts:
      break;
  }
  return {code, {FWK, GRP, PRD, PDO, SLT}};
}

std::string RequireArchive(const Medium& medium, const std::string& package) {
  RequirePackageName(package);
  std::string archive = ArchiveOf(medium.dir, package);
  if (!archive.empty()) return archive;
  throw Refusal(
      Text("ArchiveMissing", "The archive {1} is missing.\n", {medium.dir + "/" + package}));
}

std::vector<std::string> PackagesOf(const TEVINSToc& toc, TEVINSType type, TEVINSPkg kind) {
  const auto list = std::make_unique<TEVINSStockName>();
  toc.GetPackage(kind, type, list.get(), 1);
  std::vector<std::string> names;
  names.reserve(static_cast<size_t>(list->GetNbName()));
  for (int i = 0; i < list->GetNbName(); ++i) names.emplace_back(list->GetName(i));
  return names;
}

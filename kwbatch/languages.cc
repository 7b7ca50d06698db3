#include "languages.h"

#include <kwinstutil/kwinstutil.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <sstream>
#include <vector>

#include "console.h"
#include "files.h"
#include "formats.h"
#include "nearest.h"
#include "refusal.h"
#include "texts.h"
#include "tree.h"
#include "unfinished.h"

namespace fs = std::filesystem;

namespace {

[[noreturn]] void RejectLanguage(const std::string& name) {
  std::vector<std::string> known;
  for (const Language& language : kLanguages) known.emplace_back(language.name);
  const std::string unknown = Text("UnknownLanguage", "unknown language \"{1}\"", {name});
  throw UsageError(Text("KnownLanguages", "{1}\nLanguages: all, none, or some of {2}",
                        {DidYouMean(unknown, "", name, known), CommaList(known)}));
}

/// The bits of a comma-separated list of languages.
int LanguageMask(const std::string& list) {
  if (list == "all") return kEverything;
  if (list == "none") return 0;
  int mask = 0;
  std::istringstream names(list + ",");
  for (std::string name; std::getline(names, name, ',');) {
    const auto* known = std::find_if(std::begin(kLanguages), std::end(kLanguages),
                                     [&name](const Language& l) { return name == l.name; });
    if (known == std::end(kLanguages)) RejectLanguage(name);
    mask |= known->bit;
  }
  return mask;
}

}  // namespace

std::optional<int> ChosenLanguages(const Request& request) {
  std::optional<int> mask;
  if (!request.languages.empty()) mask = LanguageMask(request.languages);
  if (request.fonts) mask = mask.value_or(kEverything) | kIndexedFonts;
  return mask;
}

int InstalledLanguages(const Medium& medium, std::string target) {
  if (IsSdk(medium)) return kEverything;
  const auto read = [&] { return TEVInsInitChosenLang(target.data(), medium.os.c_str()); };
  const int languages = read();
  // The library takes a file that it cannot read for one that names all, or none. What is read
  // wrongly once would be written.
  const std::string path = SystemDir(medium, target) + "/" + kLanguageRecord;
  LinesOf(path);
  if (read() != languages) throw CannotRead(path);
  return languages;
}

int LanguagesToInstall(const Medium& medium, const std::string& target, std::optional<int> chosen) {
  if (IsSdk(medium)) return kEverything;
  const auto unfinished = Unfinished::Read(SystemDir(medium, target));
  const bool asked_before = unfinished && unfinished->languages;
  if (!asked_before && !Exists(SystemDir(medium, target) + "/" + kLanguageRecord)) {
    return chosen.value_or(kEverything);
  }
  const int kept = asked_before ? *unfinished->languages : InstalledLanguages(medium, target);
  if (chosen && *chosen != kept) {
    Say(Text("LanguagesKept", "The languages that were chosen before are kept in {1}.",
             {SystemDir(medium, target)}));
  }
  return kept;
}

void RecordLanguages(const Medium& medium, const std::string& target, int languages) {
  if (IsSdk(medium)) return;
  // The library empties the file before it writes it. It does so elsewhere, since a kill in between
  // would lose the languages.
  const TemporaryDirectory temp;
  std::string dir = temp.path();
  fs::create_directory(dir + "/" + medium.os);
  TEVUnicodeString unused;
  TEVInsCreateNLSFile(dir.data(), medium.os.c_str(), languages, unused);
  const std::string path = SystemDir(medium, target) + "/" + kLanguageRecord;
  WriteDurably(path, TextOf(SystemDir(medium, dir) + "/" + kLanguageRecord));
  // The status says nothing about the file; only reading it back does.
  if (InstalledLanguages(medium, target) == languages) return;
  throw Refusal(Text("LanguagesNotWritten", "The languages cannot be written to {1}.\n", {path}));
}

void RemoveOtherLanguages(const std::string& system_dir, int languages) {
  for (const auto& [name, bit] : kLanguages) {
    const std::string dir = system_dir + "/" + kCatalogs + "/" + name;
    if ((languages & bit) == 0) DeleteTree(dir);
  }
}

#include <kb0core/TEVFile.h>

#include <cstring>
#include <string>

#include "kwinstutil/actions.h"
#include "kwinstutil/lang.h"
#include "support/shell.h"
#include "support/text_file.h"
#include "support/tree_paths.h"

namespace {

/// An item of the language mask.
struct Item {
  int bit;
  const char* name;  ///< its line in NLS.txt and, for a language, its catalog directory
};

constexpr int kFonts = 1;
constexpr int kEverything = 127;

constexpr Item kItems[] = {
    {kFonts, "Language-indexed fonts"},
    {2, "French"},
    {4, "German"},
    {8, "Italian"},
    {16, "Japanese"},
    {32, "Simplified_Chinese"},
    {64, "Korean"},
};

constexpr const char* kStrokeFonts[] = {"SICH", "TRCH", "KANJ", "KOHG", "SSS4"};

std::string ChoiceFile(const char* installDir, const char* osDir) {
  return kwinst::JoinPath(kwinst::SystemDir(installDir, osDir), kwinst::kLanguageChoice);
}

/// The bit of the item that `line` names, or 0.
int BitOf(const char* line) {
  for (const Item& item : kItems) {
    if (std::strcmp(line, item.name) == 0) return item.bit;
  }
  return 0;
}

}  // namespace

int TEVInsCreateNLSFile(char* installDir, const char* osDir, int languages,
                        TEVUnicodeString& message) noexcept {
  std::string text;
  for (const Item& item : kItems) {
    if ((languages & item.bit) != 0) text.append(item.name).append("\n");
  }
  TEVInsCreateFile(ChoiceFile(installDir, osDir).data(), text.data(), &message);
  return 0;
}

int TEVInsInitChosenLang(char* installDir, const char* osDir) noexcept {
  const std::string path = ChoiceFile(installDir, osDir);
  if (TEVFileAccess(path.c_str(), 4) != 0) return kEverything;
  const kwinst::InputFile file = kwinst::OpenForReading(path.c_str());
  if (file == nullptr) return kEverything;
  int languages = 0;
  kwinst::ForEachLine<1024>(file.get(), [&languages](char* line) {
    kwinst::CutNewline(line);
    languages |= BitOf(line);
    return true;
  });
  return std::ferror(file.get()) == 0 ? languages : kEverything;
}

void TEVInsRemoveLang(char* installDir, const char* osDir, char* componentName,
                      int languages) noexcept {
  if (installDir == nullptr || osDir == nullptr || componentName == nullptr) return;
  const std::string system = kwinst::SystemDir(installDir, osDir);
  const std::string catalogs = kwinst::JoinPath(system, kwinst::kCatalogDir);
  for (const Item& item : kItems) {
    if (item.bit == kFonts || (languages & item.bit) != 0) continue;
    kwinst::RunShell("rm -rf " + kwinst::JoinPath(catalogs, item.name));
  }
  if ((languages & kFonts) != 0 || std::strcmp(componentName, "Visualization") != 0) return;
  const std::string fonts = kwinst::JoinPath(system, kwinst::kStrokeFontDir);
  for (const char* font : kStrokeFonts) {
    TEVDeleteFile((kwinst::JoinPath(fonts, font) + ".font").c_str());
  }
}

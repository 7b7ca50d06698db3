#include "unfinished.h"

#include <cstdlib>
#include <sstream>

#include "console.h"
#include "files.h"
#include "formats.h"
#include "integrity.h"
#include "texts.h"
#include "tree.h"

namespace {

constexpr const char* kLastLine = "end";

std::string PathIn(const std::string& system_dir) { return system_dir + "/" + kUnfinished; }

/// Is everything in place that the table names?
bool IsIntact(const std::string& system_dir, bool sdk) {
  if (HasFragment(system_dir)) return false;
  const auto installed = OpenInstalled(system_dir);
  return installed != nullptr && CheckIntegrity(installed.get(), system_dir, sdk).status == 0;
}

}  // namespace

std::optional<Unfinished> Unfinished::Read(const std::string& system_dir) {
  if (!IsThere(PathIn(system_dir))) return std::nullopt;
  Unfinished record;
  const std::vector<std::string> lines = LinesOf(PathIn(system_dir));
  record.whole = !lines.empty() && lines.back() == kLastLine;
  if (!record.whole) return record;
  for (const std::string& line : lines) {
    const std::string word = line.substr(0, line.find(' '));
    const std::string rest = line.substr(line.find(' ') + 1);
    if (word == "medium") record.medium = rest;
    if (word == "languages") {
      record.languages = static_cast<int>(std::strtol(rest.c_str(), nullptr, 10));
    }
    if (word == "package") record.packages.push_back(rest);
  }
  return record;
}

std::optional<Unfinished> Unfinished::Forbidding(const std::string& system_dir, bool sdk) {
  auto record = Read(system_dir);
  if (record && !record->whole && IsIntact(system_dir, sdk)) return std::nullopt;
  return record;
}

void Unfinished::Write(const std::string& system_dir) const {
  std::ostringstream text;
  text << "medium " << AsShown(medium) << '\n';
  if (languages) text << "languages " << *languages << '\n';
  for (const std::string& name : packages) text << "package " << name << '\n';
  text << kLastLine << '\n';
  WriteDurably(PathIn(system_dir), text.str());
}

Refusal Unfinished::NotFinished(const std::string& system_dir) const {
  if (medium.empty()) {
    return Refusal(Text("InstallationUnfinished",
                        "The installation of a medium in {1} is not finished. Repeat it first.\n",
                        {system_dir}));
  }
  return Refusal(Text("MediumUnfinished",
                      "The installation of {1} in {2} is not finished. Repeat it first.\n",
                      {medium, system_dir}));
}

void Unfinished::Delete(const std::string& system_dir) {
  SyncFileSystem(system_dir);
  ::Delete(PathIn(system_dir));
  SyncFileSystem(system_dir);
}

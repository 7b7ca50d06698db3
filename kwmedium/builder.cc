#include "builder.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <limits>
#include <map>
#include <sstream>

#include "kwbatch/console.h"
#include "kwbatch/deep_check.h"
#include "kwbatch/files.h"
#include "kwbatch/formats.h"
#include "kwbatch/refusal.h"

namespace {

/// The latest time that a file of the medium may have.
std::time_t SourceDate() {
  const char* text = std::getenv("SOURCE_DATE_EPOCH");
  if (text == nullptr) return std::numeric_limits<std::time_t>::max();
  std::time_t date = 0;
  const char* end = text + std::strlen(text);
  const auto [stop, error] = std::from_chars(text, end, date);
  if (error != std::errc() || stop != end || date < 0) {
    throw Refusal("SOURCE_DATE_EPOCH is no number of seconds: " + std::string(text) + "\n");
  }
  return date;
}

/// The time of what kwmedium adds itself: no clock, so that a second run gives the same bytes.
std::time_t LatestTime(const std::vector<Source>& files) {
  std::time_t latest = 0;
  for (const Source& file : files) latest = std::max(latest, file.info.st_mtime);
  return std::min(latest, SourceDate());
}

/// The name of the post-installation list stands for programs, which the pack brings too.
void RequirePrograms(const Component& component, const Source& list) {
  std::istringstream words(TextOf(list.origin));
  for (std::string word; words >> word;) {
    const std::string program = "code/bin/" + word + "_" + component.name;
    if (std::any_of(component.files.begin(), component.files.end(),
                    [&program](const Source& file) { return file.path == program; })) {
      continue;
    }
    throw Refusal(list.origin + " names " + word + ", but there is no " + program + ".\n");
  }
}

/// Writes the archive. Each file is read once: what the manifest says of it comes out of that, so
/// the manifest stands at the archive's end.
void WriteArchive(const Component& component, const std::string& dir) {
  ArchiveWriter archive(dir + "/" + ArchiveName(component.name, component.packing),
                        component.packing, LatestTime(component.files));
  std::map<std::string, std::string> manifest;
  for (const Source& file : component.files) {
    const std::string numbers = archive.Add(component.root + file.path, file);
    const bool listed = !numbers.empty() && file.path != kPackPrograms &&
                        (component.root.empty() || !IsOfLanguage(file.path));
    if (listed) manifest[file.path] = numbers;
  }
  const std::string list = std::string(kControl) + "/" + component.name;
  const std::string table = list + kPackTableSuffix;
  const std::string numbers = archive.AddText(component.root + table, component.table);
  // Whoever takes an update back needs its table until the listed files are gone.
  if (!component.update) manifest[table] = numbers;
  std::string text;
  for (const auto& [path, line] : manifest) text.append(path).append("\n").append(line);
  archive.AddText(component.root + list, text);
  archive.Close();
}

std::string DirectoryOf(const SystemMedium& system, const std::vector<SystemMedium>& systems,
                        const std::string& medium) {
  return systems.size() == 1 ? medium : medium + "/" + system.os;
}

/// Writes the tables, and refuses what could not be installed before anything is packed. Returns
/// how many components there are.
size_t WriteTables(const std::vector<SystemMedium>& systems, const std::string& medium) {
  size_t count = 0;
  std::string names;
  for (const SystemMedium& system : systems) {
    const std::string dir = DirectoryOf(system, systems, medium);
    std::filesystem::create_directories(dir);
    Write(dir + "/" + kMediumTable, system.table);
    try {
      RequireUsableTable(dir);
    } catch (const Refusal& refusal) {
      throw Refusal(system.place + refusal.what());
    }
    names += system.os + "\n";
    for (const Component& component : system.components) {
      if (component.packing == Packing::kCompress) RequireProgram("compress");
    }
    count += system.components.size();
  }
  if (systems.size() > 1) Write(medium + "/" + kSystemList, names);
  return count;
}

}  // namespace

void RequireFiles(const Component& component) {
  const auto refuse = [](const Source& file, const std::string& why) {
    throw Refusal(file.origin + " " + why + ".\n");
  };
  if (component.files.empty()) throw Refusal("There are no files for " + component.name + ".\n");
  for (const Source& file : component.files) {
    const bool programs = component.update && file.path == kPackPrograms;
    if (programs) RequirePrograms(component, file);
    if (file.path.compare(0, std::strlen(kControl) + 1, std::string(kControl) + "/") == 0 &&
        !programs) {
      refuse(file, "is in the directory " + std::string(kControl) + ", which installations use");
    }
    const std::string reason = component.update ? WhyNotInUpdate(file.path, file.info.st_mode) : "";
    if (!reason.empty()) refuse(file, reason);
    if (component.update && !component.root.empty() && IsOfLanguage(file.path)) {
      refuse(file, "is of a language, which a target may lack");
    }
  }
}

void BuildMedium(const std::vector<SystemMedium>& systems, const Staging& staging) {
  Progress progress(WriteTables(systems, staging.path()));
  for (const SystemMedium& system : systems) {
    for (const Component& component : system.components) {
      progress.Begin(component.name + " (" + system.os + ")");
      try {
        WriteArchive(component, DirectoryOf(system, systems, staging.path()));
      } catch (const Refusal& refusal) {
        throw Refusal(component.place + refusal.what());
      }
    }
  }
  staging.Publish();
}

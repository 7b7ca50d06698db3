#include "update.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <set>
#include <utility>

#include "builder.h"
#include "edition.h"
#include "kwbatch/console.h"
#include "kwbatch/files.h"
#include "kwbatch/formats.h"
#include "kwbatch/package_line.h"
#include "kwbatch/refusal.h"

namespace fs = std::filesystem;

namespace {

/// What differs between two states of a system.
struct Difference {
  std::vector<Source> changed;  ///< or new
  std::vector<std::string> removed;
  std::vector<std::string> of_languages;
};

void RequireRead(const std::ifstream& file, const Source& source) {
  if (!file.is_open() || file.bad()) throw Refusal(source.origin + " cannot be read.\n");
}

bool HasSameContent(const Source& a, const Source& b) {
  if (S_ISLNK(a.info.st_mode)) return fs::read_symlink(a.origin) == fs::read_symlink(b.origin);
  std::ifstream first(a.origin, std::ios::binary);
  std::ifstream second(b.origin, std::ios::binary);
  std::vector<char> blocks[] = {std::vector<char>(1 << 16), std::vector<char>(1 << 16)};
  RequireRead(first, a);
  RequireRead(second, b);
  while (first && second) {
    first.read(blocks[0].data(), static_cast<std::streamsize>(blocks[0].size()));
    second.read(blocks[1].data(), static_cast<std::streamsize>(blocks[1].size()));
    RequireRead(first, a);
    RequireRead(second, b);
    const auto count = first.gcount();
    if (count != second.gcount() ||
        !std::equal(blocks[0].begin(), blocks[0].begin() + count, blocks[1].begin())) {
      return false;
    }
  }
  return first.eof() && second.eof();
}

bool IsSame(const Source& a, const Source& b) {
  return a.info.st_mode == b.info.st_mode && a.info.st_size == b.info.st_size &&
         HasSameContent(a, b);
}

Difference Compare(const Edition& from, const Edition& to) {
  std::map<std::string, const Source*> former;
  for (const Source& file : from.files) former.emplace(file.path, &file);
  Difference difference;
  for (const Source& file : to.files) {
    const auto known = former.find(file.path);
    const bool same = known != former.end() && IsSame(*known->second, file);
    if (known != former.end()) former.erase(known);
    if (same) continue;
    if (!to.sdk && IsOfLanguage(file.path)) {
      difference.of_languages.push_back(file.path);
    } else {
      difference.changed.push_back(file);
    }
  }
  for (const auto& [path, file] : former) difference.removed.push_back(path);
  return difference;
}

/// Names the files that a pack cannot deal with, and refuses them unless they are to be left.
void RequireLeft(const std::vector<std::string>& files, bool leave, const std::string& what,
                 const std::string& option) {
  if (files.empty()) return;
  std::string text = what + ":\n";
  for (const std::string& file : files) text += "  " + file + "\n";
  if (!leave) throw Refusal(text + option + " leaves them as they are.\n");
  Say(text);
}

/// A line of a table, checked as all are.
PackageLine LineOf(const std::string& text) { return *ParsePackageLine(text); }

std::string HeadLine(const char* kind, const std::string& name, const std::string& level,
                     const Edition& edition) {
  const char* type = kTEVINSNames[edition.sdk ? zeb2 : code];
  return LineOf(std::string(type) + ":" + kind + ":" + name + ":os=" + edition.os +
                ":ga=" + edition.ga + ":level=" + level)
      .Text();
}

/// The lines of the parts of a pack: one for each product that it touches.
std::string PartLines(const std::string& name, const std::vector<Source>& files,
                      const Edition& from, const Edition& to) {
  std::set<std::string> products;
  for (const Source& file : files) {
    for (const Edition* edition : {&to, &from}) {
      const auto owner = edition->owners.find(file.path);
      if (owner == edition->owners.end()) continue;
      products.insert(owner->second);
      break;
    }
  }
  const std::string base = name.substr(0, name.rfind(kSdkSuffix));
  std::string lines;
  for (const std::string& product : products) {
    lines +=
        LineOf(std::string(kTEVINSNames[to.sdk ? zeb2 : code]) + ":FSP:" + base + "-" + product)
            .Text();
  }
  return lines;
}

/// The post-installation programs and their list, which is written to `list`.
void AddPostPrograms(const UpdateRequest& request, const std::string& name, const std::string& list,
                     std::vector<Source>& files) {
  if (request.post_programs.empty()) return;
  std::string words;
  for (const std::string& program : request.post_programs) {
    const std::string word = fs::path(program).filename();
    words += word + "\n";
    files.push_back(SourceOf("code/bin/" + word + "_" + name, program));
    if ((files.back().info.st_mode & S_IXUSR) == 0) throw Refusal(program + " is no program.\n");
  }
  Write(list, words);
  // A time of the input: a second run gives the same bytes.
  fs::last_write_time(list, fs::last_write_time(request.post_programs.front()));
  files.push_back(SourceOf(kPackPrograms, list));
}

void SortByPath(std::vector<Source>& files) {
  std::sort(files.begin(), files.end(),
            [](const Source& a, const Source& b) { return a.path < b.path; });
  const auto twice =
      std::adjacent_find(files.begin(), files.end(),
                         [](const Source& a, const Source& b) { return a.path == b.path; });
  if (twice != files.end()) throw Refusal("The file " + twice->path + " is given twice.\n");
}

/// The medium of one system: its table, and the one archive.
SystemMedium MediumOf(const UpdateRequest& request, const Edition& edition, const std::string& name,
                      const std::string& before, const std::string& table,
                      std::vector<Source> files) {
  SortByPath(files);
  Component component{
      name, table,           edition.sdk ? "" : edition.os + "/", true, request.packing,
      "",   std::move(files)};
  RequireFiles(component);
  return {edition.os, before + table, {std::move(component)}};
}

void RequireSuccessor(const Edition& from, const Edition& to, const UpdateRequest& request) {
  if (from.os != to.os || from.ga != to.ga || from.sdk != to.sdk) {
    throw Refusal(request.from + " is " + from.ga + " for " + from.os + ", " + request.to + " is " +
                  to.ga + " for " + to.os + ".\n");
  }
  if (LevelOf(LineOf("code:SPK:x:level=" + request.level)) > from.pack_level) return;
  throw Refusal(request.from + " has a service pack of level " + std::to_string(from.pack_level) +
                " already.\n");
}

}  // namespace

void MakeServicePack(const UpdateRequest& request) {
  // What is wrong on the command line is said before anything is unpacked.
  LineOf("code:SPK:" + request.name + ":level=" + request.level);
  for (const std::string& program : request.post_programs) SourceOf(program, program);
  const Staging staging(request.medium);
  const auto former = OpenEditions({request.from, request.os, request.ga}, staging, "from");
  const auto present = OpenEditions({request.to, request.os, request.ga}, staging, "to");
  std::vector<SystemMedium> systems;
  for (const Edition& to : present) {
    const auto from = std::find_if(former.begin(), former.end(),
                                   [&to](const Edition& e) { return e.os == to.os; });
    if (from == former.end()) throw Refusal(request.from + " has no system " + to.os + ".\n");
    RequireSuccessor(*from, to, request);
    Difference difference = Compare(*from, to);
    RequireLeft(difference.removed, request.leave_removed,
                "A service pack cannot remove these files, which " + request.to + " does not have",
                "--leave-removed");
    RequireLeft(difference.of_languages, request.leave_languages,
                "A service pack cannot bring these files: targets may lack their language",
                "--leave-languages");
    if (difference.changed.empty()) throw Refusal("Nothing has changed for " + to.os + ".\n");
    const std::string name = request.name + (to.sdk ? kSdkSuffix : "");
    const std::string parts = PartLines(name, difference.changed, *from, to);
    AddPostPrograms(request, name, staging.MakeWorkDirectory("post-" + to.os) + "/list",
                    difference.changed);
    systems.push_back(MediumOf(request, to, name, "",
                               HeadLine("SPK", name, request.level, to) + parts,
                               std::move(difference.changed)));
  }
  BuildMedium(systems, staging);
}

void MakeHotFix(const UpdateRequest& request) {
  LineOf("code:SPK:" + request.pack + ":level=" + request.pack_level);
  const std::string line =
      LineOf("code:HFX:" + request.name + (request.level.empty() ? "" : ":level=" + request.level))
          .Text();
  const Staging staging(request.medium);
  std::vector<SystemMedium> systems;
  for (const Edition& edition :
       OpenEditions({request.from, request.os, request.ga}, staging, "from")) {
    std::vector<Source> files;
    for (const std::string& path : request.files) {
      const auto known = std::find_if(edition.files.begin(), edition.files.end(),
                                      [&path](const Source& file) { return file.path == path; });
      if (known == edition.files.end()) {
        throw Refusal(request.from + " has no file " + path + " for " + edition.os + ".\n");
      }
      files.push_back(*known);
    }
    systems.push_back(MediumOf(request, edition, request.name,
                               HeadLine("SPK", request.pack, request.pack_level, edition), line,
                               std::move(files)));
  }
  BuildMedium(systems, staging);
}

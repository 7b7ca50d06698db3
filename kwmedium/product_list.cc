#include "product_list.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <set>

#include "kwbatch/formats.h"
#include "kwbatch/package_line.h"
#include "kwbatch/refusal.h"

namespace fs = std::filesystem;

namespace {

constexpr const char* kKeys[] = {"os", "ga", "level", "from", "compress"};
constexpr const char* kOwnFiles[] = {kMediumTable, kSystemList, kChecksums, kSignature};

bool IsUpdateKind(TEVINSPkg kind) { return kind == SPK || kind == HFX; }

class ListReader {
 public:
  ListReader(const std::string& path, Packing packing) : path_(path), packing_(packing) {}

  std::vector<SystemMedium> Read();

 private:
  void Take(const PackageLine& line);
  void RequireKnown(const PackageLine& line);
  void RequireNew(const std::string& name);
  void BeginSystem(const PackageLine& line);
  Packing PackingOf(const PackageLine& line) const;
  void AddComponent(const PackageLine& line);

  std::string path_;
  Packing packing_;
  size_t number_ = 0;
  std::vector<SystemMedium> systems_;
  std::set<std::string> levels_;         ///< systems with a general-availability level
  std::map<std::string, size_t> names_;  ///< of this system's archives, and their lines
};

std::vector<SystemMedium> ListReader::Read() {
  std::ifstream file(path_, std::ios::binary);
  std::string place = path_;
  try {
    if (!file) throw Refusal("The list cannot be read.\n");
    for (std::string text; std::getline(file, text);) {
      place = path_ + ":" + std::to_string(++number_);
      if (const auto line = ParsePackageLine(text)) Take(*line);
    }
    place = path_;
    if (file.bad() || fs::is_directory(path_)) throw Refusal("The list cannot be read.\n");
    if (systems_.empty()) throw Refusal("The list has no lines.\n");
    for (const SystemMedium& system : systems_) {
      if (levels_.count(system.os) == 0) throw Refusal("No line of " + system.os + " has ga=.\n");
      if (system.components.empty()) throw Refusal("No line of " + system.os + " has from=.\n");
    }
  } catch (const Refusal& refusal) {
    throw Refusal(place + ": " + refusal.what());
  }
  return std::move(systems_);
}

void ListReader::Take(const PackageLine& line) {
  RequireKnown(line);
  if (line.Has("os")) BeginSystem(line);
  if (systems_.empty()) throw Refusal("No line up to here names the operating system, os=.\n");
  SystemMedium& system = systems_.back();
  if (!line.Value("ga").empty()) levels_.insert(system.os);
  RequireNew(line.name);
  system.table += line.Text();
  if (line.Has("from")) return AddComponent(line);
  if (line.kind == FSP && !system.components.empty() && system.components.back().update) {
    // The parts of a service pack are in the table that it brings.
    system.components.back().table += line.Text();
  } else if (line.kind != SPK) {
    throw Refusal("The directory of its files is missing, from=.\n");
  }
}

void ListReader::RequireKnown(const PackageLine& line) {
  for (const auto& [key, value] : line.keys) {
    if (std::find(std::begin(kKeys), std::end(kKeys), key) == std::end(kKeys)) {
      throw Refusal("There is no key \"" + key + "\".\n");
    }
    if (value.empty()) throw Refusal("The key \"" + key + "\" has no value.\n");
  }
  if (line.Has("level") && !IsUpdateKind(line.kind)) {
    throw Refusal("Only service packs and hot fixes have a level.\n");
  }
}

void ListReader::RequireNew(const std::string& name) {
  if (std::find(std::begin(kOwnFiles), std::end(kOwnFiles), name) != std::end(kOwnFiles)) {
    throw Refusal("The name " + name + " is that of another file of the medium.\n");
  }
  if (fs::path(name).extension() == ".Z") {
    throw Refusal("The name " + name + " is that of a compressed archive.\n");
  }
  const auto [known, is_new] = names_.emplace(name, number_);
  if (is_new) return;
  throw Refusal("The name " + name + " is in line " + std::to_string(known->second) +
                " already.\n");
}

/// A line that names another system begins that system's part of the list.
void ListReader::BeginSystem(const PackageLine& line) {
  const std::string os = line.Value("os");
  if (!systems_.empty() && systems_.back().os == os) return;
  if (std::any_of(systems_.begin(), systems_.end(),
                  [&os](const SystemMedium& system) { return system.os == os; })) {
    throw Refusal("The lines of " + os + " do not stand together.\n");
  }
  if (systems_.size() == kMostSystems) throw Refusal("There are more than four systems.\n");
  systems_.push_back({os, "", {}, path_ + ":" + std::to_string(number_) + ": "});
  names_.clear();
}

Packing ListReader::PackingOf(const PackageLine& line) const {
  const std::map<std::string, Packing> packings = {{"no", Packing::kPlain},
                                                   {"yes", Packing::kCompress},
                                                   {"gzip", Packing::kGzip},
                                                   {"zstd", Packing::kZstd}};
  if (!line.Has("compress")) return packing_;
  const auto packing = packings.find(line.Value("compress"));
  if (packing != packings.end()) return packing->second;
  throw Refusal("compress= is yes, no, gzip or zstd.\n");
}

void ListReader::AddComponent(const PackageLine& line) {
  const fs::path base = fs::path(path_).parent_path();
  std::string dir = (base / line.Value("from")).lexically_normal();
  if (dir.size() > 1 && dir.back() == '/') dir.pop_back();
  if (!fs::is_directory(dir)) throw Refusal("The directory " + dir + " does not exist.\n");
  SystemMedium& system = systems_.back();
  Component component{line.name,
                      line.Text(),
                      line.type == zeb2 ? "" : system.os + "/",
                      IsUpdateKind(line.kind),
                      PackingOf(line),
                      path_ + ":" + std::to_string(number_) + ": ",
                      SourcesBelow(dir)};
  RequireFiles(component);
  system.components.push_back(std::move(component));
}

}  // namespace

std::vector<SystemMedium> ReadProductList(const std::string& path, Packing packing) {
  return ListReader(path, packing).Read();
}

#include "space.h"

#include <kwinstutil/kwinstutil.h>
#include <sys/stat.h>
#include <sys/statvfs.h>

#include <algorithm>
#include <filesystem>

#include "console.h"
#include "files.h"
#include "refusal.h"
#include "texts.h"

namespace fs = std::filesystem;

namespace {

/// The path, or the nearest directory above it that exists.
std::string ExistingPart(fs::path path) {
  while (!Exists(path) && path.has_relative_path()) path = path.parent_path();
  return path;
}

struct statvfs Usage(const std::string& dir) {
  struct statvfs usage {};
  if (statvfs(dir.c_str(), &usage) == 0) return usage;
  throw Refusal(Text("SpaceNotMeasured", "The free space of {1} cannot be measured.\n", {dir}));
}

}  // namespace

unsigned int FreeSpace(const std::string& target) {
  unsigned int available = 0;
  TEVUnicodeString message;
  if (TEVInsComputeAvailSpace(target.c_str(), &available, &message) != 0) throw Refused(message);
  return available;
}

void RequireReadWrite(const std::string& path) {
  const std::string dir = ExistingPart(path);
  if ((Usage(dir).f_flag & ST_RDONLY) == 0) return;
  throw Refusal(Text("ReadOnly", "The file system of {1} is read-only.\n", {dir}));
}

Demand::Volume& Demand::VolumeOf(const std::string& dir) {
  const auto [known, is_new] = known_.emplace(dir, nullptr);
  if (!is_new) return *known->second;
  constexpr int64_t kOwnBlocks = 32;  // of the tree's tables and kwbatch's records
  constexpr int64_t kOwnInodes = 16;
  const std::string existing = ExistingPart(dir);
  struct stat info {};
  stat(existing.c_str(), &info);
  const auto found = volumes_.find(info.st_dev);
  known->second = found != volumes_.end() ? &found->second : nullptr;
  if (known->second == nullptr) {
    const auto block = static_cast<int64_t>(Usage(existing).f_frsize);
    known->second = &volumes_[info.st_dev];
    *known->second = {existing, block, kOwnBlocks, kOwnInodes};
  }
  return *known->second;
}

void Demand::AddDirectory(const std::string& dir) {
  if (known_.count(dir) != 0 || Exists(dir) || !new_dirs_.insert(dir).second) return;
  AddDirectory(fs::path(dir).parent_path());
  Volume& volume = VolumeOf(dir);
  ++volume.blocks;
  ++volume.inodes;
}

void Demand::Add(const std::vector<Member>& members, const std::set<std::string>& kept) {
  VolumeOf(target_);
  for (const Member& member : members) {
    const fs::path path = fs::path(target_) / member.path;
    const std::string dir = path.parent_path();
    AddDirectory(dir);
    if (!path.has_filename()) continue;
    Volume& volume = VolumeOf(dir);
    volume.blocks += (static_cast<int64_t>(member.size) + volume.block - 1) / volume.block;
    ++volume.inodes;
    struct stat old {};
    const bool stays = kept.count(member.path) != 0;
    if (stays || new_dirs_.count(dir) != 0 || lstat(path.c_str(), &old) != 0) continue;
    volume.blocks -= old.st_blocks * 512 / volume.block;
    --volume.inodes;
  }
}

void Demand::Require() const {
  std::string missing;
  for (const auto& [device, volume] : volumes_) {
    RequireReadWrite(volume.dir);
    const struct statvfs usage = Usage(volume.dir);
    const int64_t bytes = std::max<int64_t>(0, volume.blocks) * volume.block;
    const int64_t inodes = std::max<int64_t>(0, volume.inodes);
    const auto free_bytes = static_cast<int64_t>(usage.f_bavail * usage.f_frsize);
    // A file system may make inodes as they are needed, and has no number of them then.
    const bool counts_inodes = usage.f_files != 0;
    const auto free_inodes = static_cast<int64_t>(counts_inodes ? usage.f_favail : 0);
    const std::string text =
        Text("SpaceNeeded",
             "In {1}, {2} KB and {3} inodes are needed, {4} KB and {5} inodes are free.\n",
             {volume.dir, bytes / 1024, inodes, free_bytes / 1024, free_inodes});
    if (bytes > free_bytes || (counts_inodes && inodes > free_inodes)) missing += text;
    Say(text);
  }
  if (!missing.empty()) {
    throw Refusal(Text("NotEnoughSpace", "There is not enough space. {1}", {missing}));
  }
}

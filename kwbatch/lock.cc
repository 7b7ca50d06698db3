#include "lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

#include "files.h"
#include "interruption.h"
#include "refusal.h"
#include "texts.h"

namespace fs = std::filesystem;

namespace {

/// The process that holds a lock of the open file; 0 if that is not known. Some file systems have
/// another device number in the list.
pid_t HolderOf(int file) {
  struct stat info {};
  if (fstat(file, &info) != 0) return 0;
  char id[64];
  static_cast<void>(std::snprintf(id, sizeof id, "%02x:%02x:%ju", major(info.st_dev),
                                  minor(info.st_dev), static_cast<uintmax_t>(info.st_ino)));
  std::ifstream locks("/proc/locks");
  for (std::string line; std::getline(locks, line);) {
    std::istringstream words(line);
    std::string number;
    std::string type;
    std::string advisory;
    std::string access;
    pid_t holder = 0;
    std::string place;
    // A process that waits has "->" in the place of the type.
    words >> number >> type >> advisory >> access >> holder >> place;
    if (type == "FLOCK" && place == id) return holder;
  }
  return 0;
}

Refusal Busy(const std::string& dir, pid_t holder) {
  if (holder == 0) {
    return Refusal(
        Text("LockHeld",
             "Another kwbatch works on {1}. Try again later, or wait for it with --wait SECONDS.\n",
             {dir}),
        kBusy);
  }
  return Refusal(Text("LockHeldBy",
                      "Another kwbatch, process {1} or a program that it started, works on {2}. "
                      "Try again later, or wait for it with --wait SECONDS.\n",
                      {holder, dir}),
                 kBusy);
}

}  // namespace

Lock::Lock(const std::string& dir, Kind kind, const Request& request) : dir_(dir) {
  Take(kind, request.wait);
}

void Lock::Take(Kind kind, int wait) {
  // A tar that outlives a killed kwbatch keeps the tree locked: it still writes to it.
  const int inherited = kind == Kind::kWriting ? 0 : O_CLOEXEC;
  for (;;) {
    file_ = open(dir_.c_str(), O_RDONLY | O_DIRECTORY | inherited);
    if (file_ < 0 && (errno != EACCES || kind == Kind::kReading)) return;
    WaitFor(kind, wait);
    if (IsInPlace()) return;
    close(file_);
  }
}

bool Lock::IsInPlace() const {
  struct stat locked {};
  struct stat named {};
  return fstat(file_, &locked) == 0 && stat(dir_.c_str(), &named) == 0 &&
         locked.st_dev == named.st_dev && locked.st_ino == named.st_ino;
}

void Lock::WaitFor(Kind kind, int wait) {
  const int operation = (kind == Kind::kReading ? LOCK_SH : LOCK_EX) | LOCK_NB;
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(wait);
  while (flock(file_, operation) != 0) {
    if (errno != EWOULDBLOCK) {
      throw Refusal(Text("DirectoryNotLocked", "The directory {1} cannot be locked.\n", {dir_}));
    }
    const pid_t holder = HolderOf(file_);
    // The scratch directory may be the tree.
    if (holder == getpid()) return;
    if (std::chrono::steady_clock::now() >= end) throw Busy(dir_, holder);
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    SafePoint();
  }
}

Lock::~Lock() {
  if (file_ < 0) return;
  // A daemon that a program of the product has started holds the file too.
  flock(file_, LOCK_UN);
  close(file_);
}

void Lock::MakeDirectory() {
  if (file_ >= 0) return;
  MakeDirectories(dir_);
  Take(Kind::kWriting, 0);
  if (fs::is_empty(dir_)) return;
  throw Refusal(
      Text("LockOfInstallation", "Another kwbatch has begun to install in {1}.\n", {dir_}), kBusy);
}

#include "lock.h"

#include <fcntl.h>
#include <kwinstutil/dirs.h>
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

#include "interruption.h"
#include "refusal.h"

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
  const std::string process =
      holder == 0 ? "" : ", process " + std::to_string(holder) + " or a program that it started,";
  return Refusal("Another kwbatch" + process + " works on " + dir +
                     ". Try again later, or wait for it with --wait SECONDS.\n",
                 kBusy);
}

}  // namespace

Lock::Lock(const std::string& dir, Kind kind, const Request& request) : dir_(dir) {
  Take(kind, request.wait);
}

void Lock::Take(Kind kind, int wait) {
  // A tar that outlives a killed kwbatch keeps the tree locked: it still writes to it.
  const int inherited = kind == Kind::kWriting ? 0 : O_CLOEXEC;
  file_ = open(dir_.c_str(), O_RDONLY | O_DIRECTORY | inherited);
  if (file_ < 0 && (errno != EACCES || kind == Kind::kReading)) return;
  const int operation = (kind == Kind::kReading ? LOCK_SH : LOCK_EX) | LOCK_NB;
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(wait);
  while (flock(file_, operation) != 0) {
    if (errno != EWOULDBLOCK) throw Refusal("The directory " + dir_ + " cannot be locked.\n");
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
  if (TEVInsCreateDirectory(dir_.data()) != 0) {
    throw Refusal("The directory " + dir_ + " cannot be made.\n");
  }
  Take(Kind::kWriting, 0);
  if (fs::is_empty(dir_)) return;
  throw Refusal("Another kwbatch has begun to install in " + dir_ + ".\n", kBusy);
}

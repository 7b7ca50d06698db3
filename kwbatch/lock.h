#ifndef KWBATCH_LOCK_H_
#define KWBATCH_LOCK_H_

#include <string>

#include "request.h"

/// Keeps other runs of kwbatch on this machine away from a directory. The lock lies on the
/// directory itself and needs no file, so a killed kwbatch leaves nothing behind.
class Lock {
 public:
  enum class Kind {
    kReading,  ///< others may read too
    kWriting,
    kWritingAlone,  ///< like kWriting, but programs that kwbatch starts do not hold it
  };

  /// Waits for the lock as long as the request says, then throws a Refusal that is kBusy and names
  /// the process. What is no directory is not locked, and for reading nor is a directory that this
  /// user may not list: whatever follows refuses them.
  Lock(const std::string& dir, Kind kind, const Request& request);
  ~Lock();
  Lock(const Lock&) = delete;
  Lock& operator=(const Lock&) = delete;

  /// Makes the directory of a lock for writing if it did not exist, and locks it. Throws a Refusal
  /// when it cannot be made, or another kwbatch was faster.
  void MakeDirectory();

 private:
  void Take(Kind kind, int wait);
  void WaitFor(Kind kind, int wait);
  /// Does the directory still have its name, or was it removed while the lock was waited for?
  bool IsInPlace() const;

  std::string dir_;
  int file_ = -1;
};

#endif  // KWBATCH_LOCK_H_

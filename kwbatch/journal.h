#ifndef KWBATCH_JOURNAL_H_
#define KWBATCH_JOURNAL_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "refusal.h"

/// What kwbatch knows of the uncommitted service pack of a system directory: which it is, how far
/// it has come, and what there was before. There is at most one, in the file control/SPK.journal.
struct Journal {
  enum class Phase {
    kInstalling,  ///< begun, and not come to its end
    kPending,     ///< installed, and not committed
    kRepairing,   ///< a committed pack is being set over damaged files
    kUndoing,     ///< being taken out
    kCommitting,  ///< its saved files are being deleted
  };

  /// Reads the journal of a system directory; none when there is no file, or when it is not whole
  /// and no pack has begun to change anything. Throws a Refusal for one that cannot be read or
  /// understood.
  static std::optional<Journal> Read(const std::string& system_dir);

  /// The refusal of anything but what brings the pack to an end.
  Refusal NotFinished(const std::string& system_dir) const;

  /// Writes the journal durably, the whole of it or nothing. Throws a Refusal.
  void Write(const std::string& system_dir) const;

  Phase phase = Phase::kInstalling;
  std::string pack;                          ///< its name
  int64_t table_size = 0;                    ///< of control/PRESENT before
  std::vector<std::string> saved_files;      ///< that the pack replaces
  std::vector<std::string> new_files;        ///< that were not there
  std::vector<std::string> new_directories;  ///< likewise, the inner ones last
  std::vector<std::string> table_lines;      ///< that the pack adds to control/PRESENT
};

/// The path of the journal of a system directory.
std::string JournalPath(const std::string& system_dir);

#endif  // KWBATCH_JOURNAL_H_

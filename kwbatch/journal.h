#ifndef KWBATCH_JOURNAL_H_
#define KWBATCH_JOURNAL_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "refusal.h"

/// What kwbatch knows of the uncommitted service pack or hot fix of a system directory: its name,
/// its phase, and what was there before it. There is at most one, in the file control/SPK.journal.
struct Journal {
  enum class Phase {
    kInstalling,  ///< begun, and not finished
    kPending,     ///< installed, and not committed
    kRepairing,   ///< a committed pack is installed again over damaged files
    kUndoing,     ///< being taken out
    kCommitting,  ///< its saved files are being deleted
  };

  /// Reads the journal of a system directory; no value without a file, or when the file is not
  /// whole and no pack has begun to change anything. Throws a Refusal for one that cannot be read
  /// or understood, or names a path that leads out of the directory.
  static std::optional<Journal> Read(const std::string& system_dir);

  /// Is the pack a hot fix? A service pack may take the lines of hot fixes with it.
  bool IsOfHotFix() const;

  /// The pack as messages name it: "Service pack SP1" or "Hot fix HF1".
  std::string Name() const;

  /// The refusal of any other work: it says how to finish the pack.
  Refusal NotFinished(const std::string& system_dir) const;

  /// Enters the phase of an undo durably, by a rename: the pack may have filled the disk. Throws a
  /// Refusal.
  void BeginUndo(const std::string& system_dir);

  /// Deletes the journal, if there is one. Throws a Refusal.
  static void Delete(const std::string& system_dir);

  /// Writes the whole journal durably, or changes nothing. Throws a Refusal.
  void Write(const std::string& system_dir) const;

  Phase phase = Phase::kInstalling;
  std::string pack;                          ///< its name
  int64_t table_size = 0;                    ///< of control/PRESENT before the pack
  std::vector<std::string> saved_files;      ///< that the pack replaces
  std::vector<std::string> site_files;       ///< those of them that the site had changed
  std::vector<std::string> new_files;        ///< that the pack adds
  std::vector<std::string> new_directories;  ///< likewise, inner ones last
  std::vector<std::string> table_lines;      ///< that the pack adds to control/PRESENT
};

/// The path of the journal of a system directory.
std::string JournalPath(const std::string& system_dir);

#endif  // KWBATCH_JOURNAL_H_

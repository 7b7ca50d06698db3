#ifndef KWBATCH_UNFINISHED_H_
#define KWBATCH_UNFINISHED_H_

#include <optional>
#include <string>
#include <vector>

#include "refusal.h"

/// What was asked for by an unfinished installation: a file in the system directory. While it
/// exists, the same command continues the installation, from what the file says. A power cut may
/// have emptied it.
struct Unfinished {
  /// Reads the record of a system directory; no value without a file. A record that is not whole
  /// names no languages. Throws a Refusal when it cannot be examined.
  static std::optional<Unfinished> Read(const std::string& system_dir);

  /// Writes the record durably; the directory `control` must exist. Throws a Refusal.
  void Write(const std::string& system_dir) const;

  /// The record that forbids other work than what brings the installation to its end: one that is
  /// whole, or any while files of the system directory are missing or damaged.
  static std::optional<Unfinished> Forbidding(const std::string& system_dir, bool sdk);

  /// The refusal of such work.
  Refusal NotFinished(const std::string& system_dir) const;

  /// Deletes the record once the disk has everything. Throws a Refusal when it stays.
  static void Delete(const std::string& system_dir);

  std::string medium;                 ///< the directory of its table
  std::optional<int> languages;       ///< language mask
  std::vector<std::string> packages;  ///< all that are to be installed, those that are there too
  bool whole = false;                 ///< what was read has its last line
};

#endif  // KWBATCH_UNFINISHED_H_

#ifndef QTOCLIB_TABLE_H_
#define QTOCLIB_TABLE_H_

#include <array>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "qtoclib/TEVINSToc.h"

namespace kwinst {

constexpr int kTypes = 6;
constexpr int kKinds = 10;

/// One package: one line of a table.
struct Package {
  TEVINSType type;
  TEVINSPkg kind;
  size_t hash;  ///< of the name
  std::string name;
};

}  // namespace kwinst

/// The content of a table file.
struct TEVINSToc::Table {
  /// Reads a table file. What cannot be read goes to the information text; if
  /// `may_be_missing` is true, a missing file is an empty table.
  static std::unique_ptr<Table> Read(const std::string& path, bool may_be_missing);

  /// The indices of the packages of a kind and type, or null if there is no such kind or type.
  const std::vector<uint32_t>* Find(TEVINSPkg kind, TEVINSType type) const;

  /// Returns true if a package of that type and name is in the table, whatever its kind.
  bool Has(TEVINSType type, std::string_view name) const;

  std::string path;
  std::deque<kwinst::Package> packages;  ///< in the order of the file; they never move
  std::optional<std::string> os;
  std::optional<std::string> ga;
  int service_pack_level = 0;            ///< the highest
  std::optional<uint32_t> last_hot_fix;  ///< its index
  int hot_fix_level = 0;                 ///< of the last hot fix

 private:
  /// Adds the package of a line. Returns what is wrong with the line, or null.
  const char* Add(std::string_view line);

  /// The place in slots_ of a package, or the free one that it would have.
  size_t SlotOf(TEVINSType type, size_t hash, std::string_view name) const;

  std::array<std::array<std::vector<uint32_t>, kwinst::kKinds>, kwinst::kTypes> indices_;

  // A hash table: 1 + the index of a package, or 0. Its size is a power of two, and at least half
  // of it is free. Made when a name is first asked for: the table of a medium never is.
  mutable std::vector<uint32_t> slots_;
};

#endif  // QTOCLIB_TABLE_H_

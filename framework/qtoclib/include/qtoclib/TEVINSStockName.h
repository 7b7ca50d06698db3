#ifndef QTOCLIB_TEVINSSTOCKNAME_H_
#define QTOCLIB_TEVINSSTOCKNAME_H_

#include <string>
#include <vector>

#include "qtoclib/export.h"

/// A list of package names in one block of memory.
///
/// A block filled with zeros is a valid empty list. Callers allocate a zeroed block of the size of
/// this structure and release it without calling a destructor. So the structure is plain, has a
/// fixed capacity, and owns nothing.
struct QTOCLIB_EXPORT TEVINSStockName {
  static constexpr int kCapacity = 4096;  ///< names that the list can hold
  static constexpr int kNameSize = 52;    ///< bytes of one name, its terminator included

  /// The number of names in the list.
  int GetNbName() const;

  /// The name at index `i`, which begins at 0. Null if there is none.
  char* GetName(int i);

  /// Adds a name of at most kNameSize - 1 characters. Returns true. If the name is longer or the
  /// list is full, returns false and leaves the list as it was.
  bool Add(const char* name);

  int count;                         ///< names in use
  char names[kCapacity][kNameSize];  ///< the names, each ended by a zero
};

static_assert(sizeof(TEVINSStockName) == 212996, "callers allocate exactly this many bytes");

/// The names of installed packages.
class QTOCLIB_EXPORT TEVINSStockNameInst {
 public:
  /// Makes an empty list with room for `nbEntries` names. It grows if more are added.
  explicit TEVINSStockNameInst(int nbEntries);

  /// The number of names in the list.
  int GetNbName() const;

  /// The name at index `i`, which begins at 0. Null if there is none.
  const char* GetName(int i) const;

  void Add(const char* name);

 private:
  std::vector<std::string> names_;
};

#endif  // QTOCLIB_TEVINSSTOCKNAME_H_

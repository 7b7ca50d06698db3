#ifndef QTOCLIB_TEVINSTOC_H_
#define QTOCLIB_TEVINSTOC_H_

#include <memory>
#include <ostream>

#include "qtoclib/TEVINSStockName.h"
#include "qtoclib/TEVINSType.h"
#include "qtoclib/export.h"

/// A table of contents: the packages of a medium or of an installed tree.
///
/// A table is a text file with a line for each package:
///
///     type:kind:name[:key=value]...
///     code:FWK:BASE:os=aix:ga=R12
///     code:PRD:Modeler
///     code:SPK:SP2:level=2
///
/// Blank lines and lines that start with `#` are ignored. The keys are `os`, `ga` and, for service
/// packs and hot fixes, `level`: at least 1, and 1 if it is not given. Other fields are ignored. A
/// name has 1 to 47 characters.
///
/// Opening a table never fails. A file or a line that cannot be read is reported in the information
/// text, and the other lines are used. The whole process has one information text. Of bad
/// lines, the first twenty are reported; the others are only counted.
class QTOCLIB_EXPORT TEVINSToc {
 public:
  TEVINSToc(const TEVINSToc&) = delete;
  TEVINSToc& operator=(const TEVINSToc&) = delete;

  /// Empties the information text. Call it before a table is opened.
  static void sResetInfoMsg();
  /// Points `text` to the information text, which is valid until it changes. If it is empty, `text`
  /// is untouched.
  static void sGetInfoMsg(char*& text);
  /// Does the same as sResetInfoMsg. Call it when the text is no longer needed.
  static void sClearInfoMsg();

  /// Adds the names of the packages of that kind and type to `list`, in the order of the file. If
  /// the list is full, the information text says how many names were left out. `flag` is ignored.
  void GetPackage(TEVINSPkg pkg, TEVINSType type, TEVINSStockName* list, int flag) const;

  /// The number of packages in the table.
  int GetNbToc() const;

  /// The general-availability level: the `ga` of the last line that has one. Null if none has.
  const char* GetGALevel() const;

  /// The operating system: the `os` of the last line that has one. Null if none has.
  const char* GetOS() const;

  /// The highest level of the service packs in the table. 0 if there are none. The argument is
  /// ignored.
  int GetSPKLevel(int unused) const;

  /// The name of the last hot fix in the table. Null if there is none.
  const char* GetHFXName() const;

  /// The level of the last hot fix in the table. 0 if there is none.
  int GetHFXLevel() const;

 protected:
  struct Table;

  explicit TEVINSToc(std::unique_ptr<Table> table);
  ~TEVINSToc();

  const Table& table() const { return *table_; }

 private:
  std::unique_ptr<Table> table_;
};

/// The table of a medium.
class QTOCLIB_EXPORT TEVINSMediaToc : public TEVINSToc {
 public:
  /// Opens the table file `path`.
  explicit TEVINSMediaToc(const char* path);
};

/// The table of an installed tree.
class QTOCLIB_EXPORT TEVINSInstToc : public TEVINSToc {
 public:
  /// Opens the table file `path`. If `path` is a directory, the file is its `control/PRESENT`. A
  /// directory without that file is a new tree with an empty table.
  explicit TEVINSInstToc(const char* path);

  /// Does the same as GetPackage. This list has no limit.
  void GetPackageInst(TEVINSPkg pkg, TEVINSType type, TEVINSStockNameInst* list, int flag) const;

  /// Is a package of that name and type in the table, whatever its kind? Returns 0 for yes, -1 for
  /// no.
  int IsInstalled(const char* name, TEVINSType type) const;

  /// Compares the files of the tree with the packages' manifests.
  ///
  /// `path` is the system directory. A package may have a manifest `control/NAME` there. It has two
  /// lines for each file of the package: the path relative to the system directory, and its
  /// `MODE SIZE CRC`. MODE is octal; only its low twelve bits are compared. SIZE is decimal. CRC is
  /// the decimal number that cksum(1) prints. If several packages list a file, the last of them in
  /// the table is used.
  ///
  /// Each missing or damaged file is reported to `out` in a line of its own. A manifest is treated
  /// as a damaged file of its package if it cannot be read or understood, lists nothing, or names a
  /// path outside the system directory. If `path` is not a directory, `path` itself is reported.
  ///
  /// Returns
  ///   1  nothing is missing or damaged;
  ///   2  at least one of them was last listed by a service pack (kinds SPK and FSP);
  ///   0  only other files are missing or damaged, or `path` is null or not a
  ///      directory.
  ///
  /// The two integers are ignored.
  int CheckIntegrity(std::ostream& out, const char* path, int unused1, int unused2) const;
};

#endif  // QTOCLIB_TEVINSTOC_H_

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
/// Blank lines and lines that start with `#` count for nothing. The keys are `os`, `ga` and, for
/// service packs and hot fixes, `level` (at least 1, and 1 when it is not given); other fields are
/// ignored. A name has 1 to 47 characters.
///
/// Opening a table never fails. What cannot be read (the file, or single lines of it) is told in
/// the information text, which the whole process shares, and the other lines count. Of many bad
/// lines, twenty are told one by one.
class QTOCLIB_EXPORT TEVINSToc {
 public:
  TEVINSToc(const TEVINSToc&) = delete;
  TEVINSToc& operator=(const TEVINSToc&) = delete;

  /// Empties the information text, before a table is opened.
  static void sResetInfoMsg();
  /// Points `text` to the information text, valid until it changes, or leaves `text` as it is when
  /// there is none.
  static void sGetInfoMsg(char*& text);
  /// Discards the information text.
  static void sClearInfoMsg();

  /// Adds the names of the packages of that kind and type to `list`, in the order of the file. What
  /// finds no room in it is told in the information text. `flag` changes nothing.
  void GetPackage(TEVINSPkg pkg, TEVINSType type, TEVINSStockName* list, int flag) const;

  /// The number of packages in the table.
  int GetNbToc() const;

  /// The general-availability level: the `ga` of the last line that has one, or null.
  const char* GetGALevel() const;

  /// The operating system: the `os` of the last line that has one, or null.
  const char* GetOS() const;

  /// The highest level of the service packs in the table, or 0. The argument changes nothing.
  int GetSPKLevel(int unused) const;

  /// The name of the last hot fix in the table, or null.
  const char* GetHFXName() const;

  /// The level of the last hot fix in the table, or 0.
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
  /// Opens the table file `path`. When `path` is a directory, its `control/PRESENT` is meant; a
  /// directory without that file is a new tree, with an empty table.
  explicit TEVINSInstToc(const char* path);

  /// As GetPackage, for a list without a limit.
  void GetPackageInst(TEVINSPkg pkg, TEVINSType type, TEVINSStockNameInst* list, int flag) const;

  /// 0 when a package of that name and type, of any kind, is in the table, -1 when not.
  int IsInstalled(const char* name, TEVINSType type) const;

  /// Compares the files of the tree with the packages' manifests.
  ///
  /// `path` is the system directory. A package may have a manifest `control/NAME` in it, with two
  /// lines for each of its files: the path relative to the system directory, then
  /// `MODE SIZE CRC`: the octal mode (its low twelve bits count), the decimal size, and the decimal
  /// CRC that cksum(1) prints. A file is held against the last package in the table that lists it.
  ///
  /// Each missing or damaged file is reported to `out` in a line of its own. So is a manifest that
  /// cannot be read or understood, or that names a path outside the system directory: it counts as
  /// a damaged file of its package, as does one that lists nothing. A `path` that is no directory
  /// is damaged as a whole.
  ///
  /// Returns 1 when nothing is wrong, 2 when at least one wrong file was last listed by a service
  /// pack (kinds SPK and FSP), and 0 otherwise. The two integers change nothing.
  int CheckIntegrity(std::ostream& out, const char* path, int unused1, int unused2) const;
};

#endif  // QTOCLIB_TEVINSTOC_H_

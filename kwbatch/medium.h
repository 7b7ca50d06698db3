#ifndef KWBATCH_MEDIUM_H_
#define KWBATCH_MEDIUM_H_

#include <kwinstutil/kwinstutil.h>

#include <memory>
#include <string>
#include <vector>

enum class MediumKind { kProducts, kSdk, kSamples, kServicePack, kSdkServicePack, kHotFix };

/// Does a medium of this kind change what is installed, instead of adding to it?
constexpr bool IsUpdate(MediumKind kind) { return kind > MediumKind::kSamples; }

/// The content of a medium for one operating system.
struct Medium {
  MediumKind kind;
  std::string os;   ///< the system's name, and its directory in a code tree
  bool of_several;  ///< the OSUNIX of the medium names this system
  std::string dir;  ///< where its table and archives are
  std::unique_ptr<TEVINSMediaToc> toc;
};

/// What is installed from a medium: packages of one type, of some kinds, in the order in which they
/// build upon one another.
struct Content {
  TEVINSType type;
  std::vector<TEVINSPkg> kinds;
};

/// Is this a medium for an SDK tree?
bool IsSdk(const Medium& medium);

/// The names of the operating systems that the file OSUNIX of a medium or a tree lists; none
/// without that file. Throws a Refusal.
std::vector<std::string> SystemsOf(const std::string& dir);

/// Opens the medium at a path that MediumPath gave: a directory with a table, or with the file
/// OSUNIX and, for each system named there, a directory with a table. With `os`, only that system.
/// Throws a Refusal.
std::vector<Medium> OpenMedium(const std::string& dir, const std::string& os);

Content ContentOf(MediumKind kind);

/// The path of a package's archive on the medium. Throws a Refusal when it is missing, and for a
/// name that is no file name.
std::string RequireArchive(const Medium& medium, const std::string& package);

/// The names of the packages of a type and kind.
std::vector<std::string> PackagesOf(const TEVINSToc& toc, TEVINSType type, TEVINSPkg kind);

#endif  // KWBATCH_MEDIUM_H_

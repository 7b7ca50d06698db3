#ifndef KWBATCH_MEDIUM_H_
#define KWBATCH_MEDIUM_H_

#include <kwinstutil/kwinstutil.h>

#include <memory>
#include <string>
#include <vector>

/// The content of a medium for one operating system.
struct Medium {
  std::string os;   ///< the system's name, and its directory in a tree
  std::string dir;  ///< where its table and archives lie
  std::unique_ptr<TEVINSMediaToc> toc;
};

/// The kinds of package that are installed from a general-availability medium, in the order in
/// which they build upon one another.
constexpr TEVINSPkg kProductKinds[] = {FWK, GRP, PRD, PDO, SLT};

/// The names of the operating systems in DIR/OSUNIX.
std::vector<std::string> SystemsOf(const std::string& dir);

/// Opens a medium: a directory with a table, or with the file OSUNIX and a directory with a table
/// for each system that it names. With an `os`, only that system. Throws a Refusal.
std::vector<Medium> OpenMedium(const std::string& dir, const std::string& os);

/// The names of the code packages of a kind.
std::vector<std::string> PackagesOf(const TEVINSToc& toc, TEVINSPkg kind);

/// The path of the component's archive, compressed or not, or empty when there is none.
std::string ArchiveOf(const Medium& medium, const std::string& component);

#endif  // KWBATCH_MEDIUM_H_

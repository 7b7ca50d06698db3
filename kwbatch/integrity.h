#ifndef KWBATCH_INTEGRITY_H_
#define KWBATCH_INTEGRITY_H_

#include <kwinstutil/kwinstutil.h>

#include <set>
#include <string>
#include <vector>

#include "log.h"

/// What the library finds when it compares the installed files with their manifests.
struct Integrity {
  int status;           ///< as TEVInsCheckIntegrityGA returns it: 0 is intact, -3 is damaged
  std::string report;   ///< a line for each missing or damaged file
  std::string verdict;  ///< in the library's words
};

Integrity CheckIntegrity(TEVINSInstToc* installed, std::string system_dir, bool sdk);

/// The files that the manifests of the packages list, and the lines between them, which name none.
std::set<std::string> ListedBy(const std::vector<std::string>& packages,
                               const std::string& system_dir);

/// Are the files of the service packs and hot fixes there, whatever else was installed after them?
/// False when one of a service pack is not.
bool PacksAreInPlace(const std::string& system_dir, bool sdk);

/// Compares the installed files with their manifests. Throws a Refusal that names each damaged file
/// that one of these packages lists. Other damage is reported and logged, and is no failure.
void RequireWritten(const std::string& system_dir, bool sdk,
                    const std::vector<std::string>& packages, Log& log);

#endif  // KWBATCH_INTEGRITY_H_

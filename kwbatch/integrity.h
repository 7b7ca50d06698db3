#ifndef KWBATCH_INTEGRITY_H_
#define KWBATCH_INTEGRITY_H_

#include <kwinstutil/kwinstutil.h>

#include <string>

/// What the library finds when it compares the installed files with their manifests.
struct Integrity {
  int status;           ///< as TEVInsCheckIntegrityGA returns it: 0 is intact, -3 is damaged
  std::string report;   ///< a line for each missing or damaged file
  std::string verdict;  ///< in the library's words
};

Integrity CheckIntegrity(TEVINSInstToc* installed, std::string system_dir, bool sdk);

#endif  // KWBATCH_INTEGRITY_H_

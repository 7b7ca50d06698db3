#ifndef KWMEDIUM_FINDINGS_H_
#define KWMEDIUM_FINDINGS_H_

#include <string>
#include <vector>

/// What a check has found.
struct Findings {
  std::vector<std::string> faults;    ///< what an installation would refuse, or do wrong
  std::vector<std::string> warnings;  ///< what may be meant
};

#endif  // KWMEDIUM_FINDINGS_H_

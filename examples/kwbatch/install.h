#ifndef KWBATCH_INSTALL_H_
#define KWBATCH_INSTALL_H_

#include <optional>
#include <string>

struct InstallOptions {
  std::string medium;
  std::string target;
  std::string code_tree;         ///< the code that an SDK belongs to
  std::string os;                ///< the only system to install; empty for all of the medium
  std::optional<int> languages;  ///< language mask; without one, what the target has, or all
};

/// Installs a medium of products, SDK packages or samples: every package that the target does not
/// have yet. Throws a Refusal.
void Install(InstallOptions options);

#endif  // KWBATCH_INSTALL_H_

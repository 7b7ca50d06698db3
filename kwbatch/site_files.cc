#include "site_files.h"

#include <sstream>

#include "files.h"
#include "formats.h"
#include "integrity.h"
#include "tree.h"

std::vector<std::string> ChangedFiles(const std::string& system_dir, bool sdk,
                                      const std::set<std::string>& files) {
  std::vector<std::string> changed;
  const auto installed = OpenInstalled(system_dir);
  if (installed == nullptr) return changed;
  std::istringstream report(CheckIntegrity(installed.get(), system_dir, sdk).report);
  for (std::string line; std::getline(report, line);) {
    const std::string file = DamagedFileIn(line, files);
    if (!file.empty() && IsThere(system_dir + "/" + file)) changed.push_back(file);
  }
  return changed;
}

std::string SitePath(const std::string& path, const std::set<std::string>& taken) {
  std::string kept = path + kSiteSuffix;
  for (int number = 2; IsThere(kept) || taken.count(kept) != 0; ++number) {
    kept = path + kSiteSuffix + "." + std::to_string(number);
  }
  return kept;
}

#ifndef KWBATCH_SITE_FILES_H_
#define KWBATCH_SITE_FILES_H_

#include <set>
#include <string>
#include <vector>

/// \file
/// Files that the site has changed: their content is not what their manifests say.

/// Those of the files, which are paths below the system directory.
std::vector<std::string> ChangedFiles(const std::string& system_dir, bool sdk,
                                      const std::set<std::string>& files);

/// Where the site's version of the file at `path` is kept: PATH.site, or with a number behind it
/// when that is there, or among `taken`.
std::string SitePath(const std::string& path, const std::set<std::string>& taken = {});

#endif  // KWBATCH_SITE_FILES_H_

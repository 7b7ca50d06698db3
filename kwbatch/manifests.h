#ifndef KWBATCH_MANIFESTS_H_
#define KWBATCH_MANIFESTS_H_

#include <set>
#include <string>
#include <vector>

/// \file
/// The files of the packages of a system directory, as the tables and manifests there say. Paths
/// are below the system directory.

/// Throws a Refusal for a path that is absolute, or leads out of the directory with "..". `source`
/// says in the message where it stands.
void RequireInside(const std::string& path, const std::string& source);

/// Throws a Refusal when a directory on the way from `dir` to one of the files is a symbolic link.
void RequireNoLinks(const std::string& dir, const std::vector<std::string>& files);

/// The packages in the table of a system directory, each once, in the order of installation. Throws
/// a Refusal for a name that is no file name.
std::vector<std::string> PackagesIn(const std::string& system_dir);

/// The files that the manifest of a package lists; none when it has no manifest. Throws a Refusal
/// when it is damaged, and for a path that leads out.
std::vector<std::string> ListedFiles(const std::string& system_dir, const std::string& package);

/// The files that the installation may leave out, and no manifest lists therefore: the catalogs of
/// other languages beside the listed ones, and the language-indexed fonts. They need not exist.
std::vector<std::string> UnlistedFiles(const std::string& package,
                                       const std::vector<std::string>& listed);

/// The manifest and the table of a package.
std::vector<std::string> ControlFiles(const std::string& package);

#endif  // KWBATCH_MANIFESTS_H_

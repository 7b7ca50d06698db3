#ifndef KWMEDIUM_EDITION_H_
#define KWMEDIUM_EDITION_H_

#include <map>
#include <string>
#include <vector>

#include "sources.h"
#include "staging.h"

/// One state of the product for one operating system: a part of a tree, or of an unpacked medium.
struct Edition {
  std::string os;
  std::string ga;
  bool sdk = false;                           ///< a development kit
  int pack_level = 0;                         ///< of its highest service pack
  std::vector<Source> files;                  ///< without what installations write
  std::map<std::string, std::string> owners;  ///< the product of each listed file
};

/// What to open, and what is to be known of a directory that has no table.
struct EditionRequest {
  std::string path;  ///< a medium, an installed tree, or a directory with the files of a system
  std::string os;    ///< only this system
  std::string ga;
};

/// Opens all systems of a medium or a tree. Media are unpacked into the staging directory, below
/// `name`. Throws a Refusal.
std::vector<Edition> OpenEditions(const EditionRequest& request, const Staging& staging,
                                  const std::string& name);

#endif  // KWMEDIUM_EDITION_H_

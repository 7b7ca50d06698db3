#ifndef KWMEDIUM_BUILDER_H_
#define KWMEDIUM_BUILDER_H_

#include <string>
#include <vector>

#include "archive_writer.h"
#include "sources.h"
#include "staging.h"

/// One archive of a medium that is to be made.
struct Component {
  std::string name;
  std::string table;  ///< its own lines of the table
  std::string root;   ///< where it unpacks: the system directory with a slash, or nothing
  bool update;        ///< a service pack or a hot fix
  Packing packing;
  std::string place;  ///< begins each message about it: "LIST:LINE: "
  std::vector<Source> files;
};

/// What a medium is to hold for one operating system.
struct SystemMedium {
  std::string os;
  std::string table;
  std::vector<Component> components;
  std::string place = {};  ///< begins each message about its table
};

/// Refuses files that the component must not bring, and a list of post-installation programs that
/// are not there.
void RequireFiles(const Component& component);

/// Makes the medium: below a directory for each system if there are several. Shows its progress.
void BuildMedium(const std::vector<SystemMedium>& systems, const Staging& staging);

#endif  // KWMEDIUM_BUILDER_H_

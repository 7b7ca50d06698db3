#ifndef KWMEDIUM_UPDATE_H_
#define KWMEDIUM_UPDATE_H_

#include <string>
#include <vector>

#include "archive_writer.h"

/// What a service pack or a hot fix is to be.
struct UpdateRequest {
  std::string medium;  ///< the directory to be made
  std::string name;
  std::string level;
  std::string os;  ///< only this system; needed where a directory has no table
  std::string ga;
  std::string from;                ///< the former state; of a hot fix, where its files are
  std::string to;                  ///< of a service pack: the new state
  std::vector<std::string> files;  ///< of a hot fix, below the system directory
  std::string pack;                ///< of a hot fix: the service pack that it is for
  std::string pack_level;
  std::vector<std::string> post_programs;  ///< of a service pack: files
  bool leave_removed = false;
  bool leave_languages = false;
  Packing packing = Packing::kCompress;
};

/// Makes the medium of a service pack: what is new and what has changed. Throws a Refusal.
void MakeServicePack(const UpdateRequest& request);

/// Makes the medium of a hot fix. Throws a Refusal.
void MakeHotFix(const UpdateRequest& request);

#endif  // KWMEDIUM_UPDATE_H_

#ifndef KWBATCH_INVENTORY_H_
#define KWBATCH_INVENTORY_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "registration.h"

/// \file
/// What a tree or a medium holds, as its tables and records say. Nothing is written.

/// A service pack or a hot fix.
struct UpdateState {
  std::string name;
  int level = 0;
  std::string state;  ///< of a pack: pending, committed, interrupted, …; of a hot fix: installed
};

/// Packages by what they are, each list in the order of the table.
struct PackageLists {
  std::vector<std::string> products;  ///< frameworks, groups and options are among them
  std::vector<std::string> solutions;
  std::vector<std::string> sdk;
  std::vector<std::string> samples;
  std::vector<std::string> others;
};

/// The content for one operating system.
struct SystemInventory {
  std::string name;   ///< of the operating system
  std::string dir;    ///< where it is
  std::string level;  ///< of the general availability; may be empty
  std::string state;  ///< complete, unfinished, uninstalling; medium
  PackageLists packages;
  std::vector<UpdateState> service_packs;
  std::vector<UpdateState> hot_fixes;
  std::vector<std::string> languages;  ///< beside English
  bool fonts = false;                  ///< the language-indexed ones
  int64_t size = 0;                    ///< bytes on disk
  std::optional<Registered> registered;
};

struct Inventory {
  std::string kind;  ///< tree, sdk, medium
  std::vector<SystemInventory> systems;
  std::string sdk_tree;   ///< that a tree names as its development kit
  std::string code_tree;  ///< that a development kit names as its code
};

/// Of a tree or a medium; no systems when the directory is neither. Throws a Refusal for what
/// cannot be read.
Inventory InventoryOf(const std::string& dir, const std::string& os);

#endif  // KWBATCH_INVENTORY_H_

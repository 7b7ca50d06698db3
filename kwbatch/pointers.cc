#include "pointers.h"

#include <vector>

#include "files.h"
#include "formats.h"
#include "json.h"
#include "refusal.h"
#include "texts.h"

namespace {

/// Lets `tree` name another tree. False when it does already.
bool Point(const std::string& tree, const char* pointer, const std::string& other) {
  if (PointedTree(tree, pointer) == other) return false;
  NoteChange();
  WriteDurably(tree + "/" + pointer, other + "\n");
  SayDone(Text("TreeNames", "The tree in {1} names {2} now.", {tree, other}));
  return true;
}

bool MendSdk(const std::string& sdk, std::string code_tree) {
  if (code_tree.empty()) code_tree = PointedTree(sdk, kCodePointer);
  if (!Exists(code_tree + "/" + kSystemList)) {
    throw Refusal(
        Text("CodeNotThere",
             "The code of the development kit in {1} is not in {2}: give its tree with --code.\n",
             {sdk, code_tree}));
  }
  const bool moved = Point(sdk, kCodePointer, code_tree);
  // The code may have another development kit.
  const std::string known = PointedTree(code_tree, kSdkPointer);
  const bool has_another = known != sdk && PointedTree(known, kCodePointer) == code_tree;
  return (!has_another && Point(code_tree, kSdkPointer, sdk)) || moved;
}

}  // namespace

std::string PointedTree(const std::string& tree, const char* pointer) {
  const std::vector<std::string> lines = LinesOf(tree + "/" + pointer);
  return lines.empty() ? "" : lines.front();
}

bool IsSdkTree(const std::string& tree) {
  return Exists(tree + "/" + kPresent) && !Exists(tree + "/" + kSystemList);
}

bool MendPointers(const std::string& target, const std::string& code_tree) {
  if (IsSdkTree(target)) return MendSdk(target, code_tree);
  const std::string sdk = PointedTree(target, kSdkPointer);
  const std::string named = PointedTree(sdk, kCodePointer);
  if (!IsSdkTree(sdk) || named == target || Exists(named + "/" + kSystemList)) return false;
  return Point(sdk, kCodePointer, target);
}

#ifndef KWBATCH_POINTERS_H_
#define KWBATCH_POINTERS_H_

#include <string>

/// \file
/// The pointer files with which a development kit and its code name each other.

/// The tree that a pointer file of a tree names, or an empty text.
std::string PointedTree(const std::string& tree, const char* pointer);

/// Is the tree a development kit?
bool IsSdkTree(const std::string& tree);

/// Makes the two trees name each other again after one of them was moved; says so. `code_tree` is
/// given when the development kit `target` cannot find its code. True when something has changed.
/// Throws a Refusal.
bool MendPointers(const std::string& target, const std::string& code_tree);

#endif  // KWBATCH_POINTERS_H_

#ifndef KWBATCH_SPACE_H_
#define KWBATCH_SPACE_H_

#include <string>
#include <vector>

/// The free space of the file system where the target is or will be, in KB. Throws a Refusal.
unsigned int FreeSpace(const std::string& target);

/// Throws a Refusal when the target has no room for the content of these archives; says how much is
/// needed and how much is free.
void RequireSpace(const std::vector<std::string>& archives, const std::string& target);

#endif  // KWBATCH_SPACE_H_

#ifndef KWBATCH_DEEP_CHECK_H_
#define KWBATCH_DEEP_CHECK_H_

#include <string>

/// Reads everything on a medium, each archive to its end, compares the archives with the table and
/// with their manifests, and shows what an installation would refuse or do wrong, and what may be
/// meant. Throws a Refusal when there are faults, or the directory does not exist.
void RequireNoFaults(const std::string& dir);

/// Refuses a table, that of one system, which an installation would refuse; there need be no
/// archives yet.
void RequireUsableTable(const std::string& dir);

#endif  // KWBATCH_DEEP_CHECK_H_

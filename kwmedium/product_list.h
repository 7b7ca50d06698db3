#ifndef KWMEDIUM_PRODUCT_LIST_H_
#define KWMEDIUM_PRODUCT_LIST_H_

#include <string>
#include <vector>

#include "builder.h"

/// Reads the list of what a medium is to hold: lines of a table, each with the directory that its
/// files come from (see docs/formats.md). Throws a Refusal that names the line.
std::vector<SystemMedium> ReadProductList(const std::string& path, Packing packing);

#endif  // KWMEDIUM_PRODUCT_LIST_H_

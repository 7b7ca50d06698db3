#ifndef KWBATCH_TRANSFER_H_
#define KWBATCH_TRANSFER_H_

#include <string>

#include "log.h"
#include "medium.h"

/// Transfers the archive of the component `name` into the target, logs it, and says what a
/// successful tar printed. Throws a Refusal; the log then has the archive's checksum and the
/// file-system usage.
void Transfer(const Medium& medium, std::string name, std::string target, int languages, Log& log);

#endif  // KWBATCH_TRANSFER_H_

#ifndef KWINSTUTIL_CHECKS_SERVICE_PACK_STATE_H_
#define KWINSTUTIL_CHECKS_SERVICE_PACK_STATE_H_

#include <qtoclib/TEVINSToc.h>

#include <string>

namespace kwinst {

/// Is the service pack in `systemDir` installed, but not committed?
bool ServicePackIsPending(const std::string& systemDir);

/// Are files in `systemDir` damaged that belong to a service pack of `table`? Without a table the
/// answer is no. Writes the report on the files to the file NUL in the current directory.
bool ServicePackIsDamaged(TEVINSInstToc* table, std::string systemDir);

}  // namespace kwinst

#endif  // KWINSTUTIL_CHECKS_SERVICE_PACK_STATE_H_

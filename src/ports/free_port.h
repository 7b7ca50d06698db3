#ifndef KWINSTUTIL_PORTS_FREE_PORT_H_
#define KWINSTUTIL_PORTS_FREE_PORT_H_

#include "kwinstutil/ports.h"

namespace kwinst {

constexpr int kLowestPort = 1024;  ///< that a product may have
constexpr int kHighestPort = 65535;

/// Is `port` free? If not, `*message` becomes `taken(N)` for the next free port N up to `max`, or
/// the message of GetFreePort if no port is free.
template <typename Text>
bool IsPortFree(int port, int max, TEVUnicodeString* message, Text taken) {
  const int found = GetFreePort(port, message, max);
  if (found == -1 || found == port) return found != -1;
  *message = taken(found);
  return false;
}

}  // namespace kwinst

#endif  // KWINSTUTIL_PORTS_FREE_PORT_H_

#ifndef KWINSTUTIL_PORTS_PORT_RANGE_H_
#define KWINSTUTIL_PORTS_PORT_RANGE_H_

namespace kwinst {

constexpr int kLowestPort = 1024;  ///< that a product may have
constexpr int kHighestPort = 65535;

}  // namespace kwinst

#endif  // KWINSTUTIL_PORTS_PORT_RANGE_H_

#include <netinet/in.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "kwinstutil/ports.h"

namespace {

/// The values of the groups, except that of group 500. Nothing reads them.
int remembered[8];

/// Stores the value of group 500 over the first bytes of varOrbixPort, highest byte first. The
/// first byte of a port is zero, so varOrbixPort becomes empty.
void StoreOverOrbixPort(int value) {
  const uint32_t big_endian = htonl(static_cast<uint32_t>(value));
  std::memcpy(varOrbixPort, &big_endian, sizeof(big_endian));
}

}  // namespace

int InitFreePort(int group) noexcept {
  switch (group) {
    case 100:
      std::fill_n(remembered, 6, 0);
      remembered[6] = 8080;
      StoreOverOrbixPort(8082);
      break;
    case 200:
      std::fill_n(remembered, 2, 0);
      break;
    case 300:
      std::fill_n(remembered + 2, 3, 0);
      break;
    case 400:
      // The value between the two stays.
      remembered[5] = 0;
      remembered[7] = 0;
      break;
    default:
      break;
  }
  return 0;
}

int SetFreePort(int group, int first, int second, int third) noexcept {
  const int values[] = {first, second, third};
  switch (group) {
    case 200:
      std::copy_n(values, 2, remembered);
      break;
    case 300:
      std::copy_n(values, 3, remembered + 2);
      break;
    case 400:
      std::copy_n(values, 3, remembered + 5);
      break;
    case 500:
      StoreOverOrbixPort(first);
      break;
    default:
      break;
  }
  return 0;
}

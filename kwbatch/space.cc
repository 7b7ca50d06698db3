#include "space.h"

#include <kwinstutil/kwinstutil.h>

#include <cstdint>
#include <filesystem>

#include "console.h"
#include "formats.h"
#include "refusal.h"

unsigned int FreeSpace(const std::string& target) {
  unsigned int available = 0;
  TEVUnicodeString message;
  if (TEVInsComputeAvailSpace(target.c_str(), &available, &message) != 0) throw Refused(message);
  return available;
}

void RequireSpace(const std::vector<std::string>& archives, const std::string& target) {
  constexpr uintmax_t kGrowth = 4;  // of a compressed archive, at most as a rule
  uintmax_t required = 0;
  for (const std::string& archive : archives) {
    required += std::filesystem::file_size(archive) / 1024 * (IsCompressed(archive) ? kGrowth : 1);
  }
  const unsigned int available = FreeSpace(target);
  Say("About " + std::to_string(required) + " KB are needed, " + std::to_string(available) +
      " KB are free.");
  if (required > available) throw Refusal("There is not enough space in " + target + ".\n");
}

#include <kb0core/TEVFile.h>

#include <cerrno>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "kwinstutil/ports.h"
#include "ports/inetd_file.h"
#include "ports/line_table.h"
#include "ports/system_file.h"
#include "support/format.h"
#include "support/tree_paths.h"

using kwinst::kSlotSize;

namespace {

constexpr const char* kService = "mi-ray";

}  // namespace

int SatComputeRequired(char* mediaDir, TEVUnicodeString& /*message*/) noexcept {
  const std::string path = kwinst::JoinPath(mediaDir, kwinst::kSatelliteSpace);
  if (!kwinst::Exists(path) || kwinst::IsPipeOrDevice(path.c_str())) return 0;
  std::ifstream file(path);
  unsigned int kilobytes = 0;
  if (!(file >> kilobytes)) return 0;
  return static_cast<int>(kilobytes >> 10);
}

int SatUpdateService(TEVUnicodeString& /*message*/) noexcept {
  const std::optional<std::string> path = kwinst::SystemFile("services");
  if (!path) return -1;
  bool found = false;
  bool may_read = true;
  if (const kwinst::InputFile file = kwinst::OpenForReading(path->c_str()); file != nullptr) {
    const bool read = kwinst::ForEachPiece<kSlotSize>(file.get(), [&found](std::string_view piece) {
      found = piece.find(kService) != std::string_view::npos;
      return !found;
    });
    if (!read) return -2;
  } else {
    may_read = errno != EACCES;
  }
  if (found) return 0;

  // Opening a link that leads nowhere would create a file there.
  if (!kwinst::RealFile(*path)) return -2;
  std::string error;
  kwinst::InputFile file = kwinst::OpenSystemFile(*path, "a+", &error);
  if (file == nullptr && !may_read) file = kwinst::OpenSystemFile(*path, "a", &error);
  if (file == nullptr) return -2;
  const char* line = "mi-ray          7001/tcp   # Rendering slave\n";
  return kwinst::AppendAndClose(std::move(file), *path, line) ? 1 : -2;
}

int SatUpdateInet(char* satDir, TEVUnicodeString& message) noexcept {
  if (satDir == nullptr) return -2;
  const std::string entry =
      kwinst::Format("mi-ray stream tcp nowait root %s/ray.sh ray.sh %s", satDir, satDir);
  // The entry stands only as a last line without its newline; with one it is written again.
  switch (kwinst::RegisterInInetd(kService, entry + '\n', entry, message)) {
    case kwinst::InetdOutcome::kFailed:
      return -2;
    case kwinst::InetdOutcome::kAlreadyThere:
      return 0;
    case kwinst::InetdOutcome::kChanged:
      break;
  }
  return 1;
}

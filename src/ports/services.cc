#include <kb0core/TEVFile.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "kwinstutil/ports.h"
#include "ports/inetd_file.h"
#include "ports/line_table.h"
#include "ports/system_file.h"
#include "report/message.h"
#include "support/format.h"
#include "support/tree_paths.h"

using kwinst::Format;
using kwinst::InputFile;
using kwinst::kSlotSize;
using kwinst::LineTable;
using kwinst::MessageFrame;

namespace {

/// A service of the product, and the blanks in its lines.
struct Service {
  const char* name;      ///< a line that begins with it belongs to the service
  const char* column;    ///< the name and the blanks before the port
  const char* replaced;  ///< before the '#' of a line that replaces another one
  const char* added;     ///< before the '#' of a line that joins other lines of the product
};

constexpr size_t kServiceCount = 3;
constexpr const char* kAppended = "  ";  // before the '#' of a line that is appended

// The blanks differ from form to form, and the broker's added line from those of the others.
constexpr Service kServices[kServiceCount] = {
    {"morvelk7bb", "morvelk7bb       ", "   ", "   "},
    {"morvelk7run", "morvelk7run      ", "   ", "   "},
    {"TEVDeviceBroker", "TEVDeviceBroker ", "     ", kAppended},
};

enum : size_t { kBulletinBoard, kRun, kBroker };

/// One for each service; 0 leaves it alone.
using Ports = std::array<int, kServiceCount>;

/// Which of the services a file has.
using Found = std::array<bool, kServiceCount>;

std::string Line(const Service& service, int port, const char* blanks) {
  return Format("%s%d/tcp%s#Brovik Communication ports\n", service.column, port, blanks);
}

std::string AppendedLines(const Ports& ports) {
  std::string lines;
  for (size_t i = 0; i < kServiceCount; ++i) {
    if (ports[i] != 0) lines += Line(kServices[i], ports[i], kAppended);
  }
  return lines;
}

/// The product's line in the inetd file, without its newline.
std::string DaemonLine(const char* program) {
  return Format("%s stream tcp nowait root %s  #%s", kServices[kRun].name, program,
                kwinst::kSystemDaemon);
}

void Look(std::string_view piece, Found* found) {
  for (size_t i = 0; i < kServiceCount; ++i) {
    if (kwinst::BeginsWith(piece, kServices[i].name)) (*found)[i] = true;
  }
}

/// Reads `file` into `table`, with the new lines in it.
bool Fill(std::FILE* file, const Ports& ports, const Found& found, LineTable* table) {
  std::vector<kwinst::Replacement> replacements;
  for (size_t i = 0; i < kServiceCount; ++i) {
    const Service& service = kServices[i];
    if (ports[i] == 0) continue;
    replacements.push_back({service.name, Line(service, ports[i], service.replaced)});
  }
  if (!table->Read(file, replacements)) return false;
  for (size_t i = 0; i < kServiceCount; ++i) {
    const Service& service = kServices[i];
    if (ports[i] == 0 || found[i]) continue;
    if (!table->AddLine(Line(service, ports[i], service.added))) return false;
  }
  return true;
}

/// Puts `table` in the place of the file, by way of a temporary one.
int Replace(const std::string& path, const LineTable& table, const MessageFrame& frame,
            TEVUnicodeString* message) {
  const std::optional<std::string> real = kwinst::RealFile(path);
  if (!real) {
    const char* error = std::strerror(errno);
    if (message != nullptr) *message = frame.Build("ErrWndOpenServicesFile", {path, error});
    return -1;
  }
  const std::string temporary = *real + kwinst::kRewriteSuffix;
  std::string error;
  kwinst::DropLink(temporary, *real);
  InputFile file = kwinst::OpenSystemFile(temporary, "w", &error);
  if (file == nullptr) {
    if (message != nullptr) *message = frame.Build("ErrWndOpenServicesFile", {"", error});
    return -1;
  }
  if (!table.WriteAndClose(std::move(file))) {
    if (message != nullptr) *message = frame.Build("ErrWndWriteServicesFile", {*real});
    TEVDeleteFile(temporary.c_str());
    return -1;
  }
  TEVDeleteFile(real->c_str());
  if (TEVRenameFile(temporary.c_str(), real->c_str()) != 0) {
    const std::string text =
        Format("setup could not rename file %s to %s\n", temporary.c_str(), real->c_str());
    if (message != nullptr) {
      *message = frame.Build("KORenameServicesFile", {*real}, text);
    }
    // A success all the same: the new content is complete, under the temporary name.
    return 1;
  }
  if (message != nullptr) *message = frame.Build("OKWriteServicesFile", {path});
  return 1;
}

}  // namespace

int CheckNeedUpdateServices(char* inetdFile, char* installDir) noexcept {
  const std::string entry =
      DaemonLine(kwinst::ProgramFile(installDir, kwinst::kSystemDaemon).c_str());
  const InputFile file = kwinst::OpenForReading(inetdFile);
  if (file == nullptr) return 1;
  bool found = false;
  kwinst::ForEachPiece<kSlotSize>(file.get(), [&entry, &found](std::string_view piece) {
    if (piece.back() == '\n') piece.remove_suffix(1);
    found = piece == entry;
    return !found;
  });
  return found ? 0 : 1;
}

int CheckEtcServices(int mode) noexcept {
  const std::optional<std::string> path = kwinst::SystemFile("services");
  if (!path) return -1;
  const InputFile file = kwinst::OpenForReading(path->c_str());
  if (file == nullptr) return -1;
  Found found{};
  bool all = false;
  kwinst::ForEachPiece<kSlotSize>(file.get(), [mode, &found, &all](std::string_view piece) {
    Look(piece, &found);
    all = mode == 100 ? found[kBulletinBoard] && found[kRun] : found[kBroker];
    return !all;
  });
  return all ? 1 : -1;
}

int UpdatePorts(int bbPort, int runPort, int brokerPort, char* servicesFile,
                TEVUnicodeString* message) noexcept {
  const MessageFrame frame;
  std::string error;
  InputFile file = kwinst::OpenSystemFile(servicesFile, "r+", &error);
  if (file == nullptr) {
    const std::string text =
        Format("Setup cannot open file %s - %s\n", servicesFile, error.c_str());
    if (message != nullptr) {
      *message = frame.Build("ErrWndOpenServicesFile", {servicesFile, error}, text);
    }
    return -1;
  }
  const std::string lines = AppendedLines({bbPort, runPort, brokerPort});
  if (!kwinst::AppendAndClose(std::move(file), servicesFile, lines)) {
    if (message != nullptr) *message = frame.Build("ErrWndWriteServicesFile", {servicesFile});
    return -1;
  }
  const std::string text = Format("File %s  was updated\n", servicesFile);
  if (message != nullptr) {
    *message = frame.Build("OKWriteServicesFile", {servicesFile}, text);
  }
  return 1;
}

int UpdateNewPorts(int bbPort, int runPort, int brokerPort, char* servicesFile,
                   TEVUnicodeString* message) noexcept {
  const MessageFrame frame;
  const Ports ports = {bbPort, runPort, brokerPort};
  size_t lines = 0;
  Found found{};
  const auto first_pass = [&lines, &found](std::string_view piece) {
    ++lines;
    Look(piece, &found);
    return true;
  };
  std::string error;
  InputFile file = kwinst::OpenSystemFile(servicesFile, "r+", &error);
  if (file != nullptr && !kwinst::ForEachPiece<kSlotSize>(file.get(), first_pass)) {
    error = std::strerror(errno);
  }
  if (!error.empty()) {
    if (message != nullptr) {
      *message = frame.Build("ErrWndOpenServicesFile", {servicesFile, error});
    }
    return -1;
  }
  if (found == Found{}) {
    const bool stored = kwinst::AppendAndClose(std::move(file), servicesFile, AppendedLines(ports));
    if (message != nullptr) {
      *message = stored ? frame.Build("OKWriteServicesFile", {servicesFile})
                        : frame.Build("ErrWndWriteServicesFile", {servicesFile});
    }
    return stored ? 1 : -1;
  }
  LineTable table(lines);
  if (table.absent()) {
    const std::string size = Format("%zu", table.size());
    if (message != nullptr) *message = frame.Build("ErrWndAllocServicesFile", {"", size});
    return -1;
  }
  if (!Fill(file.get(), ports, found, &table)) {
    if (message != nullptr) *message = frame.Build("ErrWndWriteServicesFile", {servicesFile});
    return -1;
  }
  file.reset();
  return Replace(servicesFile, table, frame, message);
}

int UpdateDemon(char* demonPath, TEVUnicodeString* message) noexcept {
  const kwinst::InetdOutcome outcome =
      kwinst::RegisterInInetd(kServices[kRun].name, DaemonLine(demonPath) + '\n', "", *message);
  return outcome == kwinst::InetdOutcome::kChanged ? 1 : -1;
}

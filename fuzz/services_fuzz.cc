// The services and inetd files. An input: the ports, a directory, the file that is rewritten.

#include <kwinstutil/ports.h>

#include <array>
#include <cstdint>

#include "fuzz.h"

namespace {

using fuzz::Lines;
using fuzz::Require;

constexpr size_t kPiece = 1023;  // a longer line is read in pieces

const std::string kServices = fuzz::Path("services");
const std::string kInetd = fuzz::Path("inetd.conf");

constexpr const char* kNames[] = {"morvelk7bb", "morvelk7run", "TEVDeviceBroker"};
constexpr const char* kColumns[] = {"morvelk7bb       ", "morvelk7run      ", "TEVDeviceBroker "};

using Ports = std::array<int, 3>;

/// The directory of the system files, and a catalog with the message that they tell.
void Prepare() {
  static bool prepared = false;
  if (prepared) return;
  prepared = true;
  const std::string dir = fuzz::Path("");
  fuzz::Write(dir + "TEVInstUtil.msg", "OKWriteServicesFile = \"OK {1}\"\n");
  for (const char* name : {"TEVMsgCatalogPath", "VRK_ODT_IN", "VRK_ODT_OUT", "VRK_ODT_TMP"}) {
    setenv(name, dir.substr(0, dir.size() - 1).c_str(), 1);
  }
}

std::string Line(size_t service, int port, size_t blanks) {
  return kColumns[service] + std::to_string(port) + "/tcp" + std::string(blanks, ' ') +
         "#Brovik Communication ports\n";
}

/// A file with lines added: the last one that was there gets a newline first.
std::string Appended(const std::string& content, const std::string& lines) {
  const bool open_end = !content.empty() && content.back() != '\n';
  return lines.empty() ? content : content + (open_end ? "\n" : "") + lines;
}

std::string AppendedPorts(const std::string& content, const Ports& ports) {
  std::string lines;
  for (size_t i = 0; i < 3; ++i) {
    if (ports[i] != 0) lines += Line(i, ports[i], 2);
  }
  return Appended(content, lines);
}

bool Has(const std::string& content, std::string_view name) {
  const std::vector<std::string_view> lines = Lines(content, kPiece);
  return std::any_of(lines.begin(), lines.end(),
                     [&](std::string_view line) { return fuzz::BeginsWith(line, name); });
}

/// A file with `line` in the place of each one that begins with `name`.
std::string Replaced(std::string_view content, std::string_view name, std::string_view line) {
  std::string result;
  for (const std::string_view old : Lines(content, kPiece)) {
    result += fuzz::BeginsWith(old, name) ? line : old;
  }
  return result;
}

std::string NewPorts(const std::string& content, const Ports& ports) {
  bool found[3];
  for (size_t i = 0; i < 3; ++i) found[i] = Has(content, kNames[i]);
  if (!found[0] && !found[1] && !found[2]) return AppendedPorts(content, ports);
  std::string result;
  for (const std::string_view line : Lines(content, kPiece)) {
    std::string replacement;
    for (size_t i = 0; i < 3; ++i) {
      if (ports[i] == 0 || !fuzz::BeginsWith(line, kNames[i])) continue;
      replacement = Line(i, ports[i], i == 2 ? 5 : 3);
    }
    result += replacement.empty() ? line : replacement;
  }
  for (size_t i = 0; i < 3; ++i) {
    if (ports[i] != 0 && !found[i]) result = Appended(result, Line(i, ports[i], i == 2 ? 2 : 3));
  }
  return result;
}

/// Requires that a file has become `expected`, with nothing left beside it.
void RequireContent(const std::string& path, const std::string& expected) {
  Require(fuzz::Read(path) == expected, "foreign lines stay, and those of the service are right");
  Require(!fuzz::Exists(path + ".tmp"), "no copy is left");
  struct stat info {};
  Require(stat(path.c_str(), &info) == 0 && (info.st_mode & 07777) == 0640, "the mode stays");
}

void RequireOk(int status, const TEVUnicodeString& message, const std::string& path) {
  Require(status == 1 && message.ConvertToChar() == "OK " + path, "an update is reported");
}

void CheckPorts(const std::string& content, const Ports& ports) {
  std::string path = kServices;
  TEVUnicodeString message;
  fuzz::Write(kServices, content);
  RequireOk(UpdatePorts(ports[0], ports[1], ports[2], path.data(), &message), message, kServices);
  RequireContent(kServices, AppendedPorts(content, ports));

  const auto update = [&](const std::string& before) {
    message = "";
    const int status = UpdateNewPorts(ports[0], ports[1], ports[2], path.data(), &message);
    RequireOk(status, message, kServices);
    std::string after = NewPorts(before, ports);
    RequireContent(kServices, after);
    return after;
  };
  fuzz::Write(kServices, content);
  const std::string once = update(content);
  const bool both = Has(once, kNames[0]) && Has(once, kNames[1]);
  Require((CheckEtcServices(100) == 1) == both, "the product's ports are found");
  Require((CheckEtcServices(0) == 1) == Has(once, kNames[2]), "the broker's port is found");
  const std::string twice = update(once);
  Require(update(twice) == twice, "a repeated update changes nothing");
  if (ports == Ports{}) Require(once == content, "without a port nothing changes");
}

/// Requires of a line in the inetd file what both services have in common. `status` is that of a
/// change.
void CheckInetd(const std::string& content, const std::string& name, const std::string& line,
                int status, const TEVUnicodeString& message) {
  const bool replaced = Has(content, name);
  if (replaced && line.size() > kPiece) {
    Require(status != 1, "a line that is too long takes no other's place");
    RequireContent(kInetd, content);
    return;
  }
  RequireOk(status, message, kInetd);
  RequireContent(kInetd, replaced ? Replaced(content, name, line) : Appended(content, line));
}

void CheckDemon(const std::string& content, std::string dir) {
  const std::string program = dir + "/code/bin/TEVSysDemon";
  const std::string entry = "morvelk7run stream tcp nowait root " + program + "  #TEVSysDemon";
  fuzz::Write(kInetd, content);
  std::string path = kInetd;
  const std::vector<std::string_view> lines = Lines(content, kPiece);
  const bool registered = std::any_of(lines.begin(), lines.end(), [&](std::string_view line) {
    return fuzz::BeginsWith(line, entry) &&
           (line.size() == entry.size() || line.substr(entry.size()) == "\n");
  });
  Require((CheckNeedUpdateServices(path.data(), dir.data()) == 0) == registered,
          "the daemon's line is found");
  TEVUnicodeString message;
  const int status = UpdateDemon(std::string(program).data(), &message);
  CheckInetd(content, kNames[1], entry + '\n', status, message);
  if (status == 1 && entry.size() < kPiece) {
    Require(CheckNeedUpdateServices(path.data(), dir.data()) == 0, "the daemon is registered");
  }
}

void CheckSatellite(const std::string& content, std::string dir) {
  TEVUnicodeString message;
  const std::string line = "mi-ray          7001/tcp   # Rendering slave\n";
  const std::vector<std::string_view> lines = Lines(content, kPiece);
  const bool there = std::any_of(lines.begin(), lines.end(), [](std::string_view old) {
    return old.find("mi-ray") != std::string::npos;
  });
  fuzz::Write(kServices, content);
  Require(SatUpdateService(message) == (there ? 0 : 1), "the satellite's port is found or added");
  RequireContent(kServices, there ? content : Appended(content, line));
  Require(SatUpdateService(message) == 0, "the satellite's port is registered once");

  const std::string entry = "mi-ray stream tcp nowait root " + dir + "/ray.sh ray.sh " + dir;
  const bool stands = std::find(lines.begin(), lines.end(), entry) != lines.end();
  fuzz::Write(kInetd, content);
  const int status = SatUpdateInet(dir.data(), message);
  if (!stands) {
    CheckInetd(content, "mi-ray", entry + '\n', status, message);
    return;
  }
  Require(status == 0, "the satellite's entry is found");
  RequireContent(kInetd, content);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Prepare();
  fuzz::Input input(data, size);
  constexpr int kPorts[] = {0, 7, 5000, 65535};
  const unsigned choice = input.Byte();
  const Ports ports = {kPorts[choice & 3], kPorts[choice >> 2 & 3], kPorts[choice >> 4 & 3]};
  const std::string dir = input.NextArgument();
  const std::string content = input.Rest();
  CheckPorts(content, ports);
  CheckDemon(content, dir);
  CheckSatellite(content, dir);
  return 0;
}

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <climits>
#include <cstring>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "checksum.h"
#include "information.h"
#include "line_reader.h"
#include "qtoclib/TEVINSToc.h"
#include "table.h"

namespace kwinst {
namespace {

/// What a manifest says of a file.
struct Expected {
  uint32_t mode = 0;
  uint64_t size = 0;
  uint32_t checksum = 0;
};

struct ListedFile {
  const std::string* path;           ///< below the system directory
  std::optional<Expected> expected;  ///< not set if its last manifest does not say it
  bool in_service_pack;              ///< whether the last package that lists it is one
};

/// The number that the next word of `rest` is. Takes the word from `rest`.
template <typename Number>
bool TakeNumber(std::string_view& rest, int base, Number& number) {
  rest.remove_prefix(std::min(rest.find_first_not_of(" \t"), rest.size()));
  const std::string_view word = rest.substr(0, rest.find_first_of(" \t"));
  rest.remove_prefix(word.size());
  const char* end = word.data() + word.size();
  const auto [stop, error] = std::from_chars(word.data(), end, number, base);
  return error == std::errc() && stop == end;
}

/// Reads a line `MODE SIZE CRC`.
std::optional<Expected> ParseExpected(std::string_view line) {
  Expected expected;
  if (!TakeNumber(line, 8, expected.mode) || !TakeNumber(line, 10, expected.size) ||
      !TakeNumber(line, 10, expected.checksum) || !IsBlank(line)) {
    return std::nullopt;
  }
  expected.mode &= 07777;
  return expected;
}

/// The listed path in its shortest form, or nothing when it cannot be that of a file in the tree.
std::optional<std::string> PathInTree(std::string_view listed) {
  if (listed.empty() || listed.front() == '/' || listed.size() >= PATH_MAX ||
      listed.find('\0') != std::string_view::npos) {
    return std::nullopt;
  }
  std::string path;
  for (size_t start = 0; start <= listed.size();) {
    const size_t end = std::min(listed.find('/', start), listed.size());
    const std::string_view part = listed.substr(start, end - start);
    start = end + 1;
    if (part == "..") return std::nullopt;
    if (part.empty() || part == ".") continue;
    if (!path.empty()) path += '/';
    path += part;
  }
  if (path.empty()) return std::nullopt;
  return path;
}

/// The low twelve bits, in four octal digits.
std::string Octal(mode_t mode) {
  std::string digits;
  for (const int shift : {9, 6, 3, 0}) digits += static_cast<char>('0' + ((mode >> shift) & 7));
  return digits;
}

std::string CannotBeRead(int error) {
  return std::string("cannot be read: ") + std::strerror(error);
}

/// The packages, each name once: where it is mentioned last.
std::vector<const Package*> LastMentions(const std::deque<Package>& packages) {
  std::vector<const Package*> last;
  std::unordered_set<std::string_view> seen;
  for (auto package = packages.rbegin(); package != packages.rend(); ++package) {
    if (seen.insert(package->name).second) last.push_back(&*package);
  }
  std::reverse(last.begin(), last.end());
  return last;
}

/// The comparison of one tree with the manifests of its packages.
class IntegrityCheck {
 public:
  IntegrityCheck(std::ostream& out, std::string root) : out_(out), root_(std::move(root)) {}

  /// Takes the package's files into the list, in place of what earlier packages say of them.
  void ReadManifest(const Package& package);

  void CheckFiles();

  int Verdict() const {
    if (service_pack_damaged_) return 2;
    return damaged_ ? 0 : 1;
  }

 private:
  void List(const std::string& path, const std::optional<Expected>& expected, bool in_service_pack);
  std::string WhatIsWrong(const std::string& path, const Expected& expected);
  void Report(std::string text, bool in_service_pack);

  std::ostream& out_;
  const std::string root_;
  std::unordered_map<std::string, size_t> index_;  ///< path to place in files_
  std::vector<ListedFile> files_;                  ///< in the order of their first listing
  FileChecksum checksum_;
  bool damaged_ = false;
  bool service_pack_damaged_ = false;
};

void IntegrityCheck::ReadManifest(const Package& package) {
  // Such a name is not a file name, so the package cannot have a manifest.
  if (package.name == "." || package.name == ".." || package.name.find('/') != std::string::npos) {
    return;
  }
  const bool service_pack = package.kind == SPK || package.kind == FSP;
  const std::string manifest = "control/" + package.name;
  LineReader reader(root_ + '/' + manifest);
  LineProblems problems(manifest);
  std::string_view line;
  bool lists_something = false;
  for (bool more = reader.Next(line); more;) {
    if (IsBlank(line)) {
      more = reader.Next(line);
      continue;
    }
    lists_something = true;
    const size_t number = reader.number();
    const std::optional<std::string> path = PathInTree(line);
    more = reader.Next(line);
    const std::optional<Expected> expected = more ? ParseExpected(line) : std::nullopt;
    if (!path) {
      problems.Add(number, "it is not the path of a file in the tree");
    } else if (!expected) {
      problems.Add(number, "the mode, size and checksum of the file do not follow");
    }
    if (path) List(*path, expected, service_pack);
    // A line that starts with a digit is meant to be what should follow. Another is the next path.
    if (expected || (more && !line.empty() && line[0] >= '0' && line[0] <= '9')) {
      more = reader.Next(line);
    }
  }
  for (const std::string& problem : problems.Report()) Report(problem, service_pack);
  if (reader.error() == 0 && !lists_something) {
    Report(manifest + ": lists no file", service_pack);
  }
  if (reader.error() != 0 && reader.error() != ENOENT) {
    Report(manifest + ": " + CannotBeRead(reader.error()), service_pack);
  }
}

void IntegrityCheck::List(const std::string& path, const std::optional<Expected>& expected,
                          bool in_service_pack) {
  if (!expected) {
    // It was reported already; only what earlier packages say of the file no longer holds.
    if (const auto listed = index_.find(path); listed != index_.end()) {
      files_[listed->second].expected.reset();
    }
    return;
  }
  const auto [listed, is_new] = index_.emplace(path, files_.size());
  if (is_new) files_.push_back({&listed->first, {}, false});
  files_[listed->second].expected = expected;
  files_[listed->second].in_service_pack = in_service_pack;
}

void IntegrityCheck::CheckFiles() {
  for (const ListedFile& file : files_) {
    if (!file.expected) continue;
    const std::string wrong = WhatIsWrong(*file.path, *file.expected);
    if (!wrong.empty()) Report(*file.path + ": " + wrong, file.in_service_pack);
  }
}

/// What is wrong with a file, or an empty text. What costs least is looked at first.
std::string IntegrityCheck::WhatIsWrong(const std::string& path, const Expected& expected) {
  const std::string full_path = root_ + '/' + path;
  struct stat info {};
  if (lstat(full_path.c_str(), &info) != 0) {
    return errno == ENOENT || errno == ENOTDIR ? "is missing" : CannotBeRead(errno);
  }
  if (!S_ISREG(info.st_mode)) return "is not a regular file";
  if (static_cast<uint64_t>(info.st_size) != expected.size) {
    return "size is " + std::to_string(info.st_size) + ", should be " +
           std::to_string(expected.size);
  }
  if ((info.st_mode & 07777) != expected.mode) {
    return "mode is " + Octal(info.st_mode) + ", should be " + Octal(expected.mode);
  }
  uint32_t checksum = 0;
  if (const int error = checksum_.Compute(full_path, expected.size, checksum); error != 0) {
    return CannotBeRead(error);
  }
  return checksum == expected.checksum ? "" : "content has changed";
}

/// Reports one damage in a line of its own, whatever bytes are in it.
void IntegrityCheck::Report(std::string text, bool in_service_pack) {
  std::replace_if(
      text.begin(), text.end(),
      [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7F'; }, '?');
  out_ << text << '\n';
  damaged_ = true;
  if (in_service_pack) service_pack_damaged_ = true;
}

}  // namespace
}  // namespace kwinst

int TEVINSInstToc::CheckIntegrity(std::ostream& out, const char* path, int /*unused1*/,
                                  int /*unused2*/) const {
  if (path == nullptr) return 0;
  struct stat root {};
  if (stat(path, &root) != 0 || !S_ISDIR(root.st_mode)) {
    out << path << ": is no directory\n";
    return 0;
  }
  kwinst::IntegrityCheck check(out, path);
  for (const kwinst::Package* package : kwinst::LastMentions(table().packages)) {
    check.ReadManifest(*package);
  }
  check.CheckFiles();
  return check.Verdict();
}

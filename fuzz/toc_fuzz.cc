// Tables of contents, and the check of a tree against its manifests. An input: a table, the
// manifests of the packages P and Q, the content of two files of the tree. In a manifest, a line
// "=" stands for the mode, size and checksum that the file of the line before really has.

#include <qtoclib/TEVINSToc.h>

#include <cerrno>
#include <climits>
#include <map>
#include <optional>
#include <sstream>

#include "fuzz.h"

namespace {

using fuzz::Require;

const std::string kRoot = fuzz::Path("tree");
const std::string kTable = kRoot + "/control/PRESENT";

// ---- Tables ----

struct Package {
  int type = -1;
  int kind = -1;
  std::string name;
  std::optional<std::string> os;
  std::optional<std::string> ga;
  int level = 1;
};

struct Table {
  std::vector<Package> packages;
  std::vector<size_t> bad_lines;
};

int IndexOf(const std::string& word, int begin, int end) {
  for (int i = begin; i < end; ++i) {
    if (word == kTEVINSNames[i]) return i - begin;
  }
  return -1;
}

std::vector<std::string> Split(const std::string& text, char separator) {
  std::vector<std::string> parts(1);
  for (const char c : text) {
    if (c == separator) {
      parts.emplace_back();
    } else {
      parts.back() += c;
    }
  }
  return parts;
}

/// A number from 1 to the greatest of its type, or 0.
int Level(std::string text) {
  if (!text.empty() && text[0] == '+') text.erase(0, 1);
  if (text.empty() || text.find_first_not_of("0123456789") != std::string::npos) return 0;
  const auto most = static_cast<unsigned long long>(INT_MAX);  // NOLINT(google-runtime-int)
  const unsigned long long value = std::strtoull(text.c_str(), nullptr, 10);  // NOLINT
  return value > most ? 0 : static_cast<int>(value);
}

std::optional<Package> ReadPackage(const std::string& line) {
  const std::vector<std::string> fields = Split(line, ':');
  if (fields.size() < 3 || line.find('\0') != std::string::npos) return std::nullopt;
  Package package;
  package.type = IndexOf(fields[0], 0, kTEVINSFirstKind);
  package.kind = IndexOf(fields[1], kTEVINSFirstKind, 16);
  package.name = fields[2];
  if (package.type < 0 || package.kind < 0) return std::nullopt;
  if (package.name.empty() || package.name.size() > 47) return std::nullopt;
  const bool has_level = package.kind == SPK || package.kind == HFX;
  for (size_t i = 3; i < fields.size(); ++i) {
    if (fuzz::BeginsWith(fields[i], "os=")) package.os = fields[i].substr(3);
    if (fuzz::BeginsWith(fields[i], "ga=")) package.ga = fields[i].substr(3);
    if (!has_level || !fuzz::BeginsWith(fields[i], "level=")) continue;
    package.level = Level(fields[i].substr(6));
    if (package.level == 0) return std::nullopt;
  }
  return package;
}

/// A line without its LF or CR LF.
std::string Bare(std::string_view line) {
  if (!line.empty() && line.back() == '\n') line.remove_suffix(1);
  if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
  return std::string(line);
}

bool IsBlank(const std::string& line) { return line.find_first_not_of(" \t") == std::string::npos; }

Table ReadTable(const std::string& content) {
  Table table;
  size_t number = 0;
  for (const std::string_view whole : fuzz::Lines(content)) {
    ++number;
    const std::string line = Bare(whole);
    if (IsBlank(line) || line[0] == '#') continue;
    if (const std::optional<Package> package = ReadPackage(line)) {
      table.packages.push_back(*package);
    } else {
      table.bad_lines.push_back(number);
    }
  }
  return table;
}

/// All that a table answers, as a text.
struct Answers {
  std::string names[6][10];
  std::string os = "-";
  std::string ga = "-";
  std::string hot_fix = "-";
  int hot_fix_level = 0;
  int service_pack_level = 0;
  int count = 0;

  std::string Text() const {
    std::string text = os + '|' + ga + '|' + hot_fix + '|' + std::to_string(hot_fix_level) + '|' +
                       std::to_string(service_pack_level) + '|' + std::to_string(count);
    for (const auto& kinds : names) {
      for (const std::string& list : kinds) text += '\n' + list;
    }
    return text;
  }
};

std::string Expected(const Table& table) {
  Answers answers;
  for (const Package& package : table.packages) {
    answers.names[package.type][package.kind] += package.name + '|';
    answers.os = package.os.value_or(answers.os);
    answers.ga = package.ga.value_or(answers.ga);
    if (package.kind == SPK) {
      answers.service_pack_level = std::max(answers.service_pack_level, package.level);
    }
    if (package.kind == HFX) {
      answers.hot_fix = package.name;
      answers.hot_fix_level = package.level;
    }
    ++answers.count;
  }
  return answers.Text();
}

std::string Given(const TEVINSToc& toc) {
  static TEVINSStockName list;
  Answers answers;
  for (int type = 0; type < 6; ++type) {
    for (int kind = 0; kind < 10; ++kind) {
      list.count = 0;
      toc.GetPackage(static_cast<TEVINSPkg>(kind), static_cast<TEVINSType>(type), &list, 0);
      for (int i = 0; i < list.GetNbName(); ++i) {
        answers.names[type][kind].append(list.GetName(i)).append("|");
      }
    }
  }
  const auto text = [](const char* value) { return value == nullptr ? "-" : value; };
  answers.os = text(toc.GetOS());
  answers.ga = text(toc.GetGALevel());
  answers.hot_fix = text(toc.GetHFXName());
  answers.hot_fix_level = toc.GetHFXLevel();
  answers.service_pack_level = toc.GetSPKLevel(0);
  answers.count = toc.GetNbToc();
  return answers.Text();
}

/// The information text, which is empty afterwards.
std::string Information() {
  char* text = nullptr;
  TEVINSToc::sGetInfoMsg(text);
  std::string information = text == nullptr ? "" : text;
  TEVINSToc::sClearInfoMsg();
  return information;
}

/// Each bad line is told by its number, from the twenty-first on by their sum.
void CheckInformation(const Table& table) {
  const std::string information = Information();
  const std::vector<std::string_view> lines = fuzz::Lines(information);
  const size_t told = std::min<size_t>(table.bad_lines.size(), 20);
  Require(lines.size() == std::min<size_t>(table.bad_lines.size(), 21), "bad lines are told of");
  for (size_t i = 0; i < told; ++i) {
    const std::string place = kTable + ", line " + std::to_string(table.bad_lines[i]) + ": ";
    Require(fuzz::BeginsWith(lines[i], place), "a bad line is told by its number");
  }
  if (lines.size() <= told) return;
  const std::string sum = ": " + std::to_string(table.bad_lines.size() - told) + '\n';
  Require(lines.back().find(sum) != std::string::npos, "further bad lines are counted");
}

void CheckInstalled(const TEVINSInstToc& toc, const Table& table) {
  for (const Package& package : table.packages) {
    for (int type = 0; type < 6; ++type) {
      const bool installed = std::any_of(
          table.packages.begin(), table.packages.end(),
          [&](const Package& other) { return other.type == type && other.name == package.name; });
      Require(
          (toc.IsInstalled(package.name.c_str(), static_cast<TEVINSType>(type)) == 0) == installed,
          "what is in the table is installed");
    }
    const std::string other = package.name + '\x01';
    const bool there =
        std::any_of(table.packages.begin(), table.packages.end(),
                    [&](const Package& p) { return p.name == other && p.type == package.type; });
    Require((toc.IsInstalled(other.c_str(), static_cast<TEVINSType>(package.type)) == 0) == there,
            "what is not in the table is not installed");
  }
}

/// The same packages in lines of one form. The ':' at the end keeps a CR that belongs to a value.
std::string Written(const Table& table) {
  std::string content;
  for (const Package& package : table.packages) {
    content += std::string(kTEVINSNames[package.type]) + ':' +
               kTEVINSNames[kTEVINSFirstKind + package.kind] + ':' + package.name;
    if (package.os) content += ":os=" + *package.os;
    if (package.ga) content += ":ga=" + *package.ga;
    if (package.level != 1) content += ":level=" + std::to_string(package.level);
    content += ":\n";
  }
  return content;
}

void CheckTable(const std::string& content, const Table& table) {
  const std::string expected = Expected(table);
  fuzz::Write(kTable, Written(table));
  Require(Given(TEVINSMediaToc(kTable.c_str())) == expected,
          "a written table has the same answers");
  Require(Information().empty(), "a written table has no bad line");
  fuzz::Write(kTable, content);
  Require(Given(TEVINSMediaToc(kTable.c_str())) == expected, "a medium's table answers right");
  CheckInformation(table);
  const TEVINSInstToc toc(kRoot.c_str());
  Require(Given(toc) == expected, "an installed tree's table answers right");
  CheckInformation(table);
  CheckInstalled(toc, table);
}

// ---- Manifests ----

/// The checksum of cksum(1), bit by bit.
uint32_t Checksum(const std::string& content) {
  uint32_t crc = 0;
  const auto add = [&crc](unsigned char byte) {
    crc ^= static_cast<uint32_t>(byte) << 24;
    for (int i = 0; i < 8; ++i) crc = (crc << 1) ^ ((crc >> 31) != 0 ? 0x04C11DB7U : 0U);
  };
  for (const char c : content) add(static_cast<unsigned char>(c));
  for (size_t length = content.size(); length != 0; length >>= 8) {
    add(static_cast<unsigned char>(length & 0xFF));
  }
  return ~crc;
}

struct File {
  uint64_t mode;
  uint64_t size;
  uint64_t checksum;
};

/// What a path in the tree is, or none when it is no regular file.
std::optional<File> FileAt(const std::string& path) {
  struct stat info {};
  const std::string full = kRoot + '/' + path;
  if (lstat(full.c_str(), &info) != 0 || !S_ISREG(info.st_mode)) return std::nullopt;
  return File{info.st_mode & 07777, static_cast<uint64_t>(info.st_size),
              Checksum(fuzz::Read(full))};
}

/// A manifest with the truth in the place of each "=".
std::string Completed(const std::string& manifest) {
  std::string completed;
  std::string previous;
  for (const std::string_view line : fuzz::Lines(manifest)) {
    const std::optional<File> file = Bare(line) == "=" && previous.find('\0') == std::string::npos
                                         ? FileAt(previous)
                                         : std::nullopt;
    if (file) {
      std::ostringstream truth;
      truth << std::oct << file->mode << std::dec << ' ' << file->size << ' ' << file->checksum;
      completed += truth.str() + '\n';
    } else {
      completed += line;
    }
    previous = Bare(line);
  }
  return completed;
}

/// The shortest form of a path, or an empty text when it leads out of the tree or nowhere.
std::string Shortest(const std::string& path) {
  if (path.empty() || path[0] == '/' || path.size() >= PATH_MAX) return "";
  if (path.find('\0') != std::string::npos) return "";
  std::string shortest;
  for (const std::string& part : Split(path, '/')) {
    if (part == "..") return "";
    if (part.empty() || part == ".") continue;
    shortest += (shortest.empty() ? "" : "/") + part;
  }
  return shortest;
}

/// A number that is no greater than `most`.
bool ReadNumber(const std::string& word, int base, uint64_t most, uint64_t* number) {
  const char* digits = base == 8 ? "01234567" : "0123456789";
  if (word.empty() || word.find_first_not_of(digits) != std::string::npos) return false;
  errno = 0;
  *number = std::strtoull(word.c_str(), nullptr, base);
  return errno == 0 && *number <= most;
}

std::optional<File> ReadNumbers(std::string line) {
  std::replace(line.begin(), line.end(), '\t', ' ');
  std::vector<std::string> words = Split(line, ' ');
  words.erase(std::remove(words.begin(), words.end(), ""), words.end());
  File file{};
  if (words.size() != 3 || !ReadNumber(words[0], 8, UINT32_MAX, &file.mode) ||
      !ReadNumber(words[1], 10, UINT64_MAX, &file.size) ||
      !ReadNumber(words[2], 10, UINT32_MAX, &file.checksum)) {
    return std::nullopt;
  }
  file.mode &= 07777;
  return file;
}

struct Listing {
  File file;
  bool in_service_pack;
};

using Listings = std::map<std::string, Listing>;

/// Adds the files of a manifest. False when it lists none, or a line of it cannot be understood.
bool ReadManifest(const std::string& content, bool service_pack, Listings* listings) {
  const std::vector<std::string_view> lines = fuzz::Lines(content);
  bool lists_something = false;
  for (size_t i = 0; i < lines.size(); ++i) {
    if (IsBlank(Bare(lines[i]))) continue;
    const std::string path = Shortest(Bare(lines[i]));
    if (path.empty() || ++i == lines.size()) return false;
    const std::optional<File> file = ReadNumbers(Bare(lines[i]));
    if (!file) return false;
    (*listings)[path] = {*file, service_pack};
    lists_something = true;
  }
  return lists_something;
}

bool IsIntact(const std::string& path, const File& file) {
  const std::optional<File> now = FileAt(path);
  return now && now->mode == file.mode && now->size == file.size && now->checksum == file.checksum;
}

/// The packages in the order of their last mentions.
std::vector<Package> LastMentions(const Table& table) {
  std::vector<Package> last;
  for (const Package& package : table.packages) {
    last.erase(std::remove_if(last.begin(), last.end(),
                              [&](const Package& p) { return p.name == package.name; }),
               last.end());
    last.push_back(package);
  }
  return last;
}

/// What the check is to find.
struct Finding {
  bool understood = true;  ///< whether all manifests can be understood; else all is only damaged
  Listings damaged;
  bool service_pack = false;  ///< whether any package is part of one
};

Finding Check(const Table& table) {
  Finding finding;
  Listings listings;
  for (const Package& package : LastMentions(table)) {
    const bool service_pack = package.kind == SPK || package.kind == FSP;
    finding.service_pack = finding.service_pack || service_pack;
    const bool plain = package.name.find('/') == std::string::npos && package.name[0] != '.';
    const std::string manifest = kRoot + "/control/" + package.name;
    if (!plain || !fuzz::Exists(manifest)) continue;
    if (!ReadManifest(fuzz::Read(manifest), service_pack, &listings)) finding.understood = false;
  }
  for (const auto& [path, listing] : listings) {
    if (!IsIntact(path, listing.file)) finding.damaged.emplace(path, listing);
  }
  return finding;
}

void CheckIntegrity(const Table& table) {
  const Finding finding = Check(table);
  std::ostringstream out;
  const int verdict = TEVINSInstToc(kTable.c_str()).CheckIntegrity(out, kRoot.c_str(), 0, 0);
  TEVINSToc::sClearInfoMsg();
  const std::string text = out.str();
  const std::vector<std::string_view> report = fuzz::Lines(text);
  Require((verdict == 1) == report.empty(), "what is damaged is reported");
  for (const std::string_view line : report) {
    const bool clean = std::none_of(line.begin(), line.end() - 1,
                                    [](char c) { return (c >= '\0' && c < ' ') || c == '\x7f'; });
    Require(clean && line.back() == '\n', "a report is a line of text");
  }
  Require(verdict != 2 || finding.service_pack, "only a service pack damages a service pack");
  if (!finding.understood) {
    Require(verdict != 1, "a manifest that is not understood is damage");
    return;
  }
  const bool service_pack =
      std::any_of(finding.damaged.begin(), finding.damaged.end(),
                  [](const auto& damage) { return damage.second.in_service_pack; });
  Require(verdict == (service_pack ? 2 : finding.damaged.empty() ? 1 : 0), "damage is found");
  Require(report.size() == finding.damaged.size(), "each damaged file is reported once");
}

/// The directories of the tree, once for all inputs.
void Prepare() {
  static bool prepared = false;
  if (prepared) return;
  prepared = true;
  for (const char* dir : {"", "/control", "/code"}) mkdir((kRoot + dir).c_str(), 0755);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Prepare();
  fuzz::Input input(data, size);
  const std::string content = input.Next();
  const std::string p = input.Next();
  const std::string q = input.Next();
  const Table table = ReadTable(content);
  CheckTable(content, table);

  fuzz::Write(kRoot + "/code/a", input.Next());
  fuzz::Write(kRoot + "/code/b", input.Rest());
  fuzz::Write(kRoot + "/control/P", Completed(p));
  fuzz::Write(kRoot + "/control/Q", Completed(q));
  CheckIntegrity(table);
  return 0;
}

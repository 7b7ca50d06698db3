// Tables of contents. An input: a table. Its answers must be those of its lines, each opened alone.

#include <qtoclib/TEVINSToc.h>

#include <cstdint>
#include <optional>
#include <set>

#include "fuzz.h"

namespace {

using fuzz::Require;

constexpr int kKinds = 10, kLists = 60;
const std::string kTable = fuzz::Path("table");

/// All that a table answers.
struct Answers {
  std::string names[kLists];  ///< of each type and kind, with a '|' behind each
  std::optional<std::string> os, ga, hot_fix;
  int hot_fix_level = 0, service_pack_level = 0, count = 0;

  explicit Answers(const TEVINSToc* toc = nullptr) {
    static TEVINSStockName list;
    for (int i = 0; toc != nullptr && i < kLists; ++i) {
      list.count = 0;
      toc->GetPackage(static_cast<TEVINSPkg>(i % kKinds), static_cast<TEVINSType>(i / kKinds),
                      &list, 0);
      for (int k = 0; k < list.GetNbName(); ++k) names[i].append(list.GetName(k)).append("|");
    }
    if (toc == nullptr) return;
    if (toc->GetOS() != nullptr) os = toc->GetOS();
    if (toc->GetGALevel() != nullptr) ga = toc->GetGALevel();
    if (toc->GetHFXName() != nullptr) hot_fix = toc->GetHFXName();
    hot_fix_level = toc->GetHFXLevel();
    service_pack_level = toc->GetSPKLevel(0);
    count = toc->GetNbToc();
  }

  /// Adds the answers of a later line.
  void Add(const Answers& line) {
    for (int i = 0; i < kLists; ++i) names[i] += line.names[i];
    if (line.os) os = line.os;
    if (line.ga) ga = line.ga;
    if (line.hot_fix) hot_fix = line.hot_fix;
    if (line.hot_fix) hot_fix_level = line.hot_fix_level;
    service_pack_level = std::max(service_pack_level, line.service_pack_level);
    count += line.count;
  }

  bool operator==(const Answers& other) const {
    return std::equal(names, names + kLists, other.names) && os == other.os && ga == other.ga &&
           hot_fix == other.hot_fix && hot_fix_level == other.hot_fix_level &&
           service_pack_level == other.service_pack_level && count == other.count;
  }
};

/// The information text, which is empty afterwards.
std::string Information() {
  char* text = nullptr;
  TEVINSToc::sGetInfoMsg(text);
  std::string information = text == nullptr ? "" : text;
  TEVINSToc::sClearInfoMsg();
  return information;
}

/// Checks what became of a line without its end: a package of the list `list`, or nothing.
void CheckLine(const std::string& line, const Answers& answers, bool bad) {
  const bool ignored =
      line.find_first_not_of(" \t") == std::string::npos || (!line.empty() && line[0] == '#');
  Require(answers.count == (ignored || bad ? 0 : 1), "a line is ignored, bad or a package");
  bool good = false, may_be_bad = line.find(":level=") != std::string::npos;
  for (int i = 0; i < kLists; ++i) {
    const std::string head = std::string(kTEVINSNames[i / kKinds]) + ':' +
                             kTEVINSNames[kTEVINSFirstKind + i % kKinds] + ':';
    if (!fuzz::BeginsWith(line, head)) continue;
    const std::string name = line.substr(head.size(), line.find(':', head.size()) - head.size());
    good = !name.empty() && name.size() <= 47 && line.find('\0') == std::string::npos;
    const bool has_level = i % kKinds == SPK || i % kKinds == HFX;
    if (has_level && !bad && line == head + name + ":level=2") {
      Require(answers.service_pack_level + answers.hot_fix_level == 2, "a line has its level");
    }
    if (!bad) Require(answers.names[i] == name + '|', "a line has its type, kind and name");
  }
  Require(ignored || (good && (may_be_bad || !bad)) || bad, "only a good line is a package");
  Require(!bad || !good || may_be_bad, "a good line is a package");
  Require(!ignored || !bad, "an ignored line is not bad");
  if (answers.os) Require(line.find(":os=" + *answers.os) != std::string::npos, "the system");
  if (answers.ga) Require(line.find(":ga=" + *answers.ga) != std::string::npos, "the level");
}

/// Each bad line is reported with its number, from the twenty-first on only their count.
void CheckInformation(const std::string& path, const std::vector<size_t>& bad_lines) {
  const std::string information = Information();
  const std::vector<std::string_view> lines = fuzz::Lines(information);
  Require(lines.size() == std::min<size_t>(bad_lines.size(), 21), "bad lines are reported");
  for (size_t i = 0; i < std::min<size_t>(lines.size(), 20); ++i) {
    const std::string place = path + ", line " + std::to_string(bad_lines[i]) + ": ";
    Require(fuzz::BeginsWith(lines[i], place), "a bad line is reported with its number");
  }
  if (lines.size() <= 20) return;
  const std::string rest = ": " + std::to_string(bad_lines.size() - 20) + '\n';
  Require(lines.back().find(rest) != std::string::npos, "further bad lines are counted");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string content(reinterpret_cast<const char*>(data), size);
  Answers expected;
  std::vector<size_t> bad_lines;
  std::set<std::pair<int, std::string>> packages;
  size_t number = 0;
  for (std::string_view line : fuzz::Lines(content)) {
    ++number;
    fuzz::Write(kTable, line);
    const TEVINSMediaToc toc(kTable.c_str());
    const Answers answers(&toc);
    const bool bad = !Information().empty();
    if (line.back() == '\n') line.remove_suffix(1);
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    CheckLine(std::string(line), answers, bad);
    if (bad) bad_lines.push_back(number);
    expected.Add(answers);
    for (int i = 0; i < kLists; ++i) {
      const std::string& name = answers.names[i];
      if (!name.empty()) packages.emplace(i / kKinds, name.substr(0, name.size() - 1));
    }
  }
  fuzz::Write(kTable, content);
  const TEVINSMediaToc medium(kTable.c_str());
  CheckInformation(kTable, bad_lines);
  Require(Answers(&medium) == expected, "a table has the answers of its lines");
  const TEVINSInstToc tree(kTable.c_str());
  CheckInformation(kTable, bad_lines);
  Require(Answers(&tree) == expected, "the table of a tree has the same answers");
  for (const auto& [own_type, name] : packages) {
    for (int type = 0; type < kLists / kKinds; ++type) {
      for (const std::string& asked : {name, name + '\x01'}) {
        const bool installed = tree.IsInstalled(asked.c_str(), static_cast<TEVINSType>(type)) == 0;
        Require(installed == (packages.count({type, asked}) == 1), "what is listed is installed");
      }
    }
  }
  return 0;
}

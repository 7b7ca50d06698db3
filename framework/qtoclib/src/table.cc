#include "table.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>

#include "information.h"
#include "line_reader.h"

namespace {

/// The fields of a line, one after another.
class Fields {
 public:
  explicit Fields(std::string_view line) : rest_(line) {}

  std::optional<std::string_view> Next() {
    if (ended_) return std::nullopt;
    const size_t end = rest_.find(':');
    const std::string_view field = rest_.substr(0, end);
    ended_ = end == std::string_view::npos;
    if (!ended_) rest_.remove_prefix(end + 1);
    return field;
  }

 private:
  std::string_view rest_;
  bool ended_ = false;
};

/// The index of `word` among `count` words, or -1.
int IndexOf(std::string_view word, const char* const* words, int count) {
  for (int i = 0; i < count; ++i) {
    if (word == words[i]) return i;
  }
  return -1;
}

std::optional<int> ParseLevel(std::string_view text) {
  if (text.size() > 1 && text[0] == '+' && text[1] != '-') text.remove_prefix(1);
  int level = 0;
  const char* end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, level);
  if (error != std::errc() || rest != end || level < 1) return std::nullopt;
  return level;
}

}  // namespace

std::unique_ptr<TEVINSToc::Table> TEVINSToc::Table::Read(const std::string& path,
                                                         bool may_be_missing) {
  auto table = std::make_unique<Table>();
  table->path = path;
  kwinst::LineReader reader(path);
  kwinst::LineProblems problems(path);
  for (std::string_view line; reader.Next(line);) {
    if (kwinst::IsBlank(line) || line.front() == '#') continue;
    const char* problem = table->Add(line);
    if (problem != nullptr) problems.Add(reader.number(), problem);
  }
  std::string& information = kwinst::InformationText();
  for (const std::string& problem : problems.Report()) information += problem + '\n';
  if (reader.error() != 0 && !(may_be_missing && reader.error() == ENOENT)) {
    information += path + ": cannot be read: " + std::strerror(reader.error()) + '\n';
  }
  return table;
}

const std::vector<uint32_t>* TEVINSToc::Table::Find(TEVINSPkg kind, TEVINSType type) const {
  if (kind < 0 || kind >= kwinst::kKinds || type < 0 || type >= kwinst::kTypes) return nullptr;
  return &indices_[type][kind];
}

bool TEVINSToc::Table::Has(TEVINSType type, std::string_view name) const {
  if (slots_.empty()) {
    size_t size = 1;
    while (size < 2 * packages.size() + 1) size *= 2;
    slots_.resize(size);
    uint32_t number = 0;
    for (const kwinst::Package& package : packages) {
      slots_[SlotOf(package.type, package.hash, package.name)] = ++number;
    }
  }
  return slots_[SlotOf(type, std::hash<std::string_view>()(name), name)] != 0;
}

size_t TEVINSToc::Table::SlotOf(TEVINSType type, size_t hash, std::string_view name) const {
  const size_t mask = slots_.size() - 1;
  size_t slot = (hash + static_cast<size_t>(type)) & mask;
  for (; slots_[slot] != 0; slot = (slot + 1) & mask) {
    const kwinst::Package& package = packages[slots_[slot] - 1];
    if (package.hash == hash && package.type == type && package.name == name) break;
  }
  return slot;
}

const char* TEVINSToc::Table::Add(std::string_view line) {
  if (line.find('\0') != std::string_view::npos) return "it has a zero byte";
  Fields fields(line);
  const auto type_word = fields.Next();
  const auto kind_word = fields.Next();
  const auto name = fields.Next();
  if (!name) return "it has fewer than three fields";
  const int type = IndexOf(*type_word, kTEVINSNames, kwinst::kTypes);
  if (type == -1) return "its first field is no content type";
  const int kind = IndexOf(*kind_word, kTEVINSNames + kwinst::kTypes, kwinst::kKinds);
  if (kind == -1) return "its second field is no package kind";
  if (name->empty()) return "it has no package name";
  if (name->size() > 47) return "its package name is longer than 47 characters";

  std::optional<std::string_view> new_os;
  std::optional<std::string_view> new_ga;
  std::optional<int> level = 1;
  while (const auto field = fields.Next()) {
    const size_t equals = field->find('=');
    if (equals == std::string_view::npos) continue;
    const std::string_view key = field->substr(0, equals);
    const std::string_view value = field->substr(equals + 1);
    if (key == "os") new_os = value;
    if (key == "ga") new_ga = value;
    if (key == "level" && (kind == SPK || kind == HFX)) level = ParseLevel(value);
    if (!level) return "its level is no number above 0";
  }

  const auto index = static_cast<uint32_t>(packages.size());
  packages.push_back({static_cast<TEVINSType>(type), static_cast<TEVINSPkg>(kind),
                      std::hash<std::string_view>()(*name), std::string(*name)});
  indices_[static_cast<size_t>(type)][static_cast<size_t>(kind)].push_back(index);
  if (new_os) os = *new_os;
  if (new_ga) ga = *new_ga;
  if (kind == SPK) service_pack_level = std::max(*level, service_pack_level);
  if (kind == HFX) {
    last_hot_fix = index;
    hot_fix_level = *level;
  }
  return nullptr;
}

// TEVInsResetPresent. An input: the type, the name of a service pack, the control file.

#include <kwinstutil/spk.h>
#include <qtoclib/TEVINSToc.h>

#include <cstdint>

#include "fuzz.h"

namespace {

using fuzz::Require;

const std::string kPresent = fuzz::Path("PRESENT");
const std::string kPruned = fuzz::Path("pruned");

std::string Prune(const std::string& content, std::string name, TEVINSType type) {
  fuzz::Write(kPresent, content);
  std::string source = kPresent;
  std::string dest = kPruned;
  TEVInsResetPresent reset;
  const bool pruned = reset.InitSource(source.data()) == 0 && reset.InitDest(dest.data()) == 0 &&
                      reset.Remove(name.data(), type) == 0;
  Require(pruned, "a control file can be pruned");
  return fuzz::Read(kPruned);
}

/// Where the field that begins at `begin` ends: at a ':', or after 47 characters.
size_t FieldEnd(const std::string& line, size_t begin) {
  return std::min({line.find(':', begin), line.size(), begin + 47});
}

/// What is to become of a line, without its newline. False when it is to go.
bool Keep(std::string* line, const std::string& name, TEVINSType type) {
  const size_t first = FieldEnd(*line, 0);
  const size_t second = FieldEnd(*line, std::min(first + 1, line->size()));
  const size_t third = std::min(second + 1, line->size());
  const auto field = [line](size_t begin, size_t end) {
    const std::string text = begin < end ? line->substr(begin, end - begin) : "";
    return text.substr(0, text.find('\0'));
  };
  const bool complete = second < line->size();
  if (complete && field(0, first) == kTEVINSNames[type] && field(first + 1, second) == "SPK" &&
      field(third, FieldEnd(*line, third)) == name) {
    return false;
  }
  if (complete) (*line)[first] = (*line)[second] = ':';
  return true;
}

using Names = std::vector<std::string>;

/// The packages of each type and kind that a table lists.
std::vector<Names> Packages(const std::string& path) {
  const TEVINSInstToc toc(path.c_str());
  std::vector<Names> packages;
  for (int i = 0; i < 60; ++i) {
    TEVINSStockNameInst list(0);
    toc.GetPackageInst(static_cast<TEVINSPkg>(i % 10), static_cast<TEVINSType>(i / 10), &list, 0);
    Names& names = packages.emplace_back();
    for (int k = 0; k < list.GetNbName(); ++k) names.emplace_back(list.GetName(k));
  }
  TEVINSToc::sClearInfoMsg();
  return packages;
}

/// Of the packages in the table, exactly the service pack is gone.
void CheckTable(const std::string& name, TEVINSType type) {
  std::vector<Names> expected = Packages(kPresent);
  Names& packs = expected[static_cast<size_t>(type) * 10 + SPK];
  packs.erase(std::remove(packs.begin(), packs.end(), name), packs.end());
  Require(Packages(kPruned) == expected, "the other packages stay in the table");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::Input input(data, size);
  const auto type = static_cast<TEVINSType>(input.Byte() % 6);
  const std::string name = input.NextArgument();
  const std::string content = input.Rest();
  const std::string whole = content.empty() || content.back() == '\n' ? content : content + '\n';

  static bool removed = false;
  std::string expected;
  for (const std::string_view ended : fuzz::Lines(whole)) {
    std::string line(ended.substr(0, ended.size() - 1));
    const bool kept = Keep(&line, name, type);
    if (kept) expected += line + '\n';
    removed = removed || !kept;
  }
  const std::string pruned = Prune(content, name, type);
  Require(pruned == expected, "the other lines stay, in their order");
  Require((TEVInsResetPresent::IsLineRemoved() == 1) == removed, "a dropped line is reported");
  // A table may have CR LF line ends; to the pruning, a CR belongs to a name.
  if (content.find('\r') == std::string::npos) CheckTable(name, type);
  Require(Prune(pruned, name, type) == pruned, "pruning twice is pruning once");

  std::string from = kPresent;
  std::string to = kPruned;
  fuzz::Write(from, content);
  Require(TEVInsResetPresent::FileCopy(from.data(), to.data()) == 0 && fuzz::Read(to) == whole,
          "a copy has the same lines");
  return 0;
}

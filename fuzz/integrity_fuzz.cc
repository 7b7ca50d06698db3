// The check of a tree against its manifests. An input: a table, the manifests of the packages P and
// Q, the content of two files of the tree. In a manifest, a line "=" stands for the mode, size and
// checksum that the file of the line before really has.

#include <qtoclib/TEVINSToc.h>

#include <cstdint>
#include <set>
#include <sstream>

#include "fuzz.h"

namespace {

bool IsControl(char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7f'; }

using fuzz::Require;

const std::string kRoot = fuzz::Path("tree");
const std::string kTable = fuzz::Path("table");

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

/// What a manifest should say of a file, or an empty text when it is no regular file.
std::string Truth(const std::string& path) {
  struct stat info {};
  const std::string full = kRoot + '/' + path;
  if (path.find('\0') != std::string::npos) return "";
  if (lstat(full.c_str(), &info) != 0 || !S_ISREG(info.st_mode)) return "";
  std::ostringstream truth;
  truth << std::oct << (info.st_mode & 07777) << std::dec << ' ' << info.st_size << ' '
        << Checksum(fuzz::Read(full)) << '\n';
  return truth.str();
}

/// A manifest with the truth in the place of each "=".
std::string Completed(const std::string& manifest) {
  std::string completed, path;
  for (const std::string_view line : fuzz::Lines(manifest)) {
    const std::string truth = line == "=\n" || line == "=" ? Truth(path) : "";
    completed += truth.empty() ? std::string(line) : truth;
    path = line.substr(0, line.find_first_of("\r\n"));
  }
  return completed;
}

struct Result {
  int verdict;
  std::string report;
};

/// Checks the tree, with a manifest of P and one of Q.
Result Check(const std::string& p, const std::string& q) {
  fuzz::Write(kRoot + "/control/P", p);
  fuzz::Write(kRoot + "/control/Q", q);
  std::ostringstream out;
  const int verdict = TEVINSInstToc(kTable.c_str()).CheckIntegrity(out, kRoot.c_str(), 0, 0);
  TEVINSToc::sClearInfoMsg();
  const std::string report = out.str();
  Require((verdict == 1) == report.empty(), "what is damaged is reported");
  for (const std::string_view line : fuzz::Lines(report)) {
    const bool clean = std::none_of(line.begin(), line.end() - 1, IsControl);
    Require(clean && line.back() == '\n', "a report is a line of text");
  }
  return {verdict, report};
}

/// Has the table of the tree one of these packages?
bool Lists(const char* name, std::initializer_list<TEVINSPkg> kinds) {
  const TEVINSInstToc toc(kTable.c_str());
  bool found = false;
  for (int type = 0; type < 6; ++type) {
    found = found || (name != nullptr && toc.IsInstalled(name, static_cast<TEVINSType>(type)) == 0);
    TEVINSStockNameInst list(0);
    for (const TEVINSPkg kind : kinds) {
      toc.GetPackageInst(kind, static_cast<TEVINSType>(type), &list, 0);
    }
    found = found || list.GetNbName() > 0;
  }
  TEVINSToc::sClearInfoMsg();
  return found;
}

/// Whatever the manifests are.
void CheckManifests(const std::string& p, const std::string& q) {
  const Result result = Check(p, q);
  Require(result.verdict != 2 || Lists(nullptr, {SPK, FSP}), "only a service pack damages itself");
  const auto replaced = [](char c) { return IsControl(c) && c != '\n'; };
  if (std::any_of(p.begin(), p.end(), replaced) || std::any_of(q.begin(), q.end(), replaced)) {
    return;
  }
  std::set<std::string_view> files;
  for (const std::string_view line : fuzz::Lines(result.report)) {
    if (fuzz::BeginsWith(line, "control/")) continue;
    Require(files.insert(line.substr(0, line.rfind(": "))).second, "a file is reported once");
  }
  const auto with_returns = [](const std::string& text) {
    std::string changed;
    for (const char c : text) changed += c == '\n' ? "\r\n" : std::string(1, c);
    return changed;
  };
  Require(Check(with_returns(p), with_returns(q)).report == result.report,
          "the form of line ends has no effect");
}

/// A manifest with the truth finds each damage of a file, and is damaged itself when it is cut.
void CheckTruth(size_t cut) {
  const std::string first = Completed("code/a\n=\n"), truth = first + Completed("code//./b\n=\n");
  const bool listed = Lists("P", {}) || Lists("Q", {});
  Require(Check(truth, truth).verdict == 1, "what is as listed is intact");
  cut %= truth.size() + 1;
  const bool whole = cut == first.size() || cut + 1 == first.size() || cut + 1 >= truth.size();
  const std::string part = truth.substr(0, cut);
  Require((Check(part, part).verdict == 1) == (whole || !listed), "a torn manifest is damage");

  const std::string a = kRoot + "/code/a", content = fuzz::Read(a);
  const auto expect_damage = [&](const char* what) {
    const Result result = Check(truth, truth);
    const size_t reported = fuzz::Lines(result.report).size();
    Require(reported == (listed ? 1 : 0) && (result.verdict == 1) == !listed, what);
    Require(!listed || fuzz::BeginsWith(result.report, "code/a: "), what);
  };
  std::string changed = content + 'x';
  fuzz::Write(a, changed);
  expect_damage("another size is damage");
  if (!content.empty()) {
    changed.pop_back();
    changed[cut % changed.size()] ^= 1;
    fuzz::Write(a, changed);
    expect_damage("another content is damage");
  }
  fuzz::Write(a, content);
  chmod(a.c_str(), 0600);
  expect_damage("another mode is damage");
  unlink(a.c_str());
  expect_damage("a missing file is damage");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  for (const char* dir : {"", "/control", "/code"}) mkdir((kRoot + dir).c_str(), 0755);
  fuzz::Input input(data, size);
  fuzz::Write(kTable, input.Next());
  const std::string p = input.Next(), q = input.Next();
  fuzz::Write(kRoot + "/code/a", input.Next());
  fuzz::Write(kRoot + "/code/b", input.Rest());
  CheckManifests(Completed(p), Completed(q));
  CheckTruth(p.size() + q.size());
  return 0;
}

#include "integrity.h"

#include <filesystem>
#include <sstream>

#include "console.h"
#include "files.h"
#include "formats.h"
#include "refusal.h"
#include "texts.h"
#include "tree.h"

std::set<std::string> ListedBy(const std::vector<std::string>& packages,
                               const std::string& system_dir) {
  std::set<std::string> files;
  for (const std::string& name : packages) {
    for (const std::string& line : LinesOf(system_dir + "/" + kControl + "/" + name)) {
      files.insert(std::filesystem::path(line).lexically_normal());
    }
  }
  return files;
}

Integrity CheckIntegrity(TEVINSInstToc* installed, std::string system_dir, bool sdk) {
  std::ostringstream report;
  TEVUnicodeString verdict;
  const int status =
      TEVInsCheckIntegrityGA(installed, system_dir.data(), report, &verdict, sdk ? 1 : 0);
  return {status, report.str(), verdict.ConvertToChar()};
}

/// What is installed later counts first. So the table is compared without the products.
bool PacksAreInPlace(const std::string& system_dir, bool sdk) {
  std::string updates;
  for (const std::string& line : LinesOf(system_dir + "/" + kPresent)) {
    if (TableLine(line).IsUpdate()) updates += line + "\n";
  }
  const TemporaryDirectory temp;
  std::filesystem::create_directory(temp.path() + "/" + kControl);
  Write(temp.path() + "/" + kPresent, updates);
  const auto installed = OpenInstalled(temp.path());
  return installed == nullptr || CheckIntegrity(installed.get(), system_dir, sdk).status != -3;
}

void RequireWritten(const std::string& system_dir, bool sdk,
                    const std::vector<std::string>& packages, Log& log) {
  const auto installed = OpenInstalled(system_dir);
  const std::set<std::string> files = ListedBy(packages, system_dir);
  std::istringstream report(CheckIntegrity(installed.get(), system_dir, sdk).report);
  std::string ours;
  std::string others;
  for (std::string line; std::getline(report, line);) {
    (DamagedFileIn(line, files).empty() ? others : ours) += line + "\n";
  }
  if (!others.empty()) {
    others = Text("OthersDamaged", "Other files in {1} are damaged:\n{2}", {system_dir, others});
    log.Write(others);
    Complain(others);
  }
  if (ours.empty()) return;
  ours = Text("WrittenDamaged", "What was written to {1} is not what the manifests say:\n{2}",
              {system_dir, ours});
  log.Write(ours);
  throw Refusal(ours);
}

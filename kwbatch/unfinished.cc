#include "unfinished.h"

#include <kb0core/TEVFile.h>

#include "files.h"
#include "refusal.h"
#include "tree.h"

namespace {

std::string RecordPath(const Medium& medium, const std::string& target) {
  return SystemDir(medium, target) + "/control/Install.unfinished";
}

}  // namespace

bool IsUnfinished(const Medium& medium, const std::string& target) {
  return Exists(RecordPath(medium, target));
}

void BeginInstallation(const Medium& medium, const std::string& target,
                       const std::string& medium_path) {
  WriteDurably(RecordPath(medium, target), medium_path + "\n");
}

void EndInstallation(const Medium& medium, const std::string& target) {
  const std::string record = RecordPath(medium, target);
  SyncFileSystem(target);
  if (TEVDeleteFile(record.c_str()) != 0) {
    throw Refusal("The file " + record + " cannot be deleted.\n");
  }
  SyncFileSystem(target);
}

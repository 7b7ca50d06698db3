#include "checks/service_pack_state.h"

#include <fstream>

#include "support/tree_paths.h"

namespace kwinst {

bool ServicePackIsPending(const std::string& systemDir) {
  return Exists(ControlFile(systemDir, kPendingPack));
}

bool ServicePackIsDamaged(TEVINSInstToc* table, std::string systemDir) {
  // The report is thrown into a file of this name, which stays in the current directory.
  std::ofstream report("NUL");
  return table != nullptr && table->CheckIntegrity(report, systemDir.data(), 0, 0) == 2;
}

}  // namespace kwinst

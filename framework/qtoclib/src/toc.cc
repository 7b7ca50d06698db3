#include <sys/stat.h>

#include <utility>

#include "information.h"
#include "qtoclib/TEVINSToc.h"
#include "table.h"

namespace {

std::string ToString(const char* path) { return path == nullptr ? "" : path; }

bool IsDirectory(const std::string& path) {
  struct stat info {};
  return stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

}  // namespace

TEVINSToc::TEVINSToc(std::unique_ptr<Table> table) : table_(std::move(table)) {}

TEVINSToc::~TEVINSToc() = default;

void TEVINSToc::GetPackage(TEVINSPkg pkg, TEVINSType type, TEVINSStockName* list,
                           int /*flag*/) const {
  const std::vector<uint32_t>* found = table_->Find(pkg, type);
  if (list == nullptr || found == nullptr) return;
  size_t left_out = 0;
  for (const uint32_t index : *found) {
    if (!list->Add(table_->packages[index].name.c_str())) ++left_out;
  }
  if (left_out > 0) {
    kwinst::InformationText() += table_->path + ": packages that found no room in a list of " +
                                 std::to_string(TEVINSStockName::kCapacity) + ": " +
                                 std::to_string(left_out) + '\n';
  }
}

int TEVINSToc::GetNbToc() const { return static_cast<int>(table_->packages.size()); }

const char* TEVINSToc::GetGALevel() const { return table_->ga ? table_->ga->c_str() : nullptr; }

const char* TEVINSToc::GetOS() const { return table_->os ? table_->os->c_str() : nullptr; }

int TEVINSToc::GetSPKLevel(int /*unused*/) const { return table_->service_pack_level; }

const char* TEVINSToc::GetHFXName() const {
  if (!table_->last_hot_fix) return nullptr;
  return table_->packages[*table_->last_hot_fix].name.c_str();
}

int TEVINSToc::GetHFXLevel() const { return table_->hot_fix_level; }

TEVINSMediaToc::TEVINSMediaToc(const char* path) : TEVINSToc(Table::Read(ToString(path), false)) {}

TEVINSInstToc::TEVINSInstToc(const char* path)
    : TEVINSToc(IsDirectory(ToString(path)) ? Table::Read(ToString(path) + "/control/PRESENT", true)
                                            : Table::Read(ToString(path), false)) {}

void TEVINSInstToc::GetPackageInst(TEVINSPkg pkg, TEVINSType type, TEVINSStockNameInst* list,
                                   int /*flag*/) const {
  const std::vector<uint32_t>* found = table().Find(pkg, type);
  if (list == nullptr || found == nullptr) return;
  for (const uint32_t index : *found) list->Add(table().packages[index].name.c_str());
}

int TEVINSInstToc::IsInstalled(const char* name, TEVINSType type) const {
  return name != nullptr && table().Has(type, name) ? 0 : -1;
}

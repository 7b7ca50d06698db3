#include "toc/name_list.h"

#include <cstring>
#include <new>

namespace kwinst {

NameList::NameList(const TEVINSMediaToc* media, TEVINSPkg pkg, TEVINSType type, int flag)
    : list_(static_cast<TEVINSStockName*>(::operator new(sizeof(TEVINSStockName), std::nothrow))) {
  if (list_ == nullptr) return;
  std::memset(static_cast<void*>(list_), 0, sizeof(TEVINSStockName));
  if (media != nullptr) media->GetPackage(pkg, type, list_, flag);
}

NameList::~NameList() { ::operator delete(list_); }

}  // namespace kwinst

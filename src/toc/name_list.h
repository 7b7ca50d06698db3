#ifndef KWINSTUTIL_TOC_NAME_LIST_H_
#define KWINSTUTIL_TOC_NAME_LIST_H_

#include <qtoclib/TEVINSToc.h>

namespace kwinst {

/// The names of a medium's packages of one kind and type.
///
/// The list is a zeroed block of 212996 bytes, which the table of contents fills. If there is no
/// memory for it, the list is absent and is treated as empty.
class NameList {
 public:
  /// Passes `flag` to TEVINSToc::GetPackage. A null `media` has no packages.
  NameList(const TEVINSMediaToc* media, TEVINSPkg pkg, TEVINSType type, int flag);
  ~NameList();
  NameList(const NameList&) = delete;
  NameList& operator=(const NameList&) = delete;

  bool absent() const { return list_ == nullptr; }
  bool empty() const { return size() == 0; }
  int size() const { return absent() ? 0 : list_->GetNbName(); }
  const char* operator[](int i) const { return list_->GetName(i); }

 private:
  TEVINSStockName* list_;
};

}  // namespace kwinst

#endif  // KWINSTUTIL_TOC_NAME_LIST_H_

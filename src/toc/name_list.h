#ifndef KWINSTUTIL_TOC_NAME_LIST_H_
#define KWINSTUTIL_TOC_NAME_LIST_H_

#include <qtoclib/TEVINSToc.h>

namespace kwinst {

/// The names of a medium's packages of one kind and type.
///
/// The list lies in zeroed memory of 212996 bytes, as tables of contents fill it. Without that
/// memory it is absent, and counts as empty.
class NameList {
 public:
  /// Asks `media`, with the `flag` of TEVINSToc::GetPackage; a null one has no packages.
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

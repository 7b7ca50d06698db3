#include "report/message.h"

#include <vector>

namespace kwinst {

TEVUnicodeString Number(int value) {
  TEVUnicodeString text;
  text.BuildFromNum(value, "%d");
  return text;
}

TEVUnicodeString MessageFrame::Build(const char* key,
                                     std::initializer_list<TEVUnicodeString> parameters,
                                     const TEVUnicodeString& defaultText) const {
  std::vector<TEVUnicodeString> copies = parameters;
  return TEVMsgCatalog::BuildMessage("TEVInstUtil", key, copies.empty() ? nullptr : copies.data(),
                                     static_cast<int>(copies.size()), defaultText);
}

}  // namespace kwinst

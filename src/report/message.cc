#include "report/message.h"

#include <vector>

namespace kwinst {

constexpr const char* kCatalog = "TEVInstUtil";

MessageFrame::MessageFrame() {
  [[maybe_unused]] static const TEVUnicodeString kNoMessage =
      TEVMsgCatalog::BuildMessage(kCatalog, "", nullptr, 0, "");
}

TEVUnicodeString MessageFrame::Build(const char* key, std::initializer_list<MessageValue> values,
                                     const MessageValue& defaultText) const {
  std::vector<TEVUnicodeString> parameters;
  parameters.reserve(values.size());
  for (const MessageValue& value : values) parameters.push_back(value.text());
  return TEVMsgCatalog::BuildMessage(kCatalog, key,
                                     parameters.empty() ? nullptr : parameters.data(),
                                     static_cast<int>(parameters.size()), defaultText.text());
}

}  // namespace kwinst

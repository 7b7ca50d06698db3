#ifndef KWINSTUTIL_REPORT_MESSAGE_H_
#define KWINSTUTIL_REPORT_MESSAGE_H_

#include <kb0core/TEVMsgCatalog.h>
#include <kb0core/TEVUnicodeString.h>

#include <initializer_list>

namespace kwinst {

/// A number as a message parameter.
TEVUnicodeString Number(int value);

/// Makes the messages of one exported function, from the library's catalog.
///
/// Whether the caller's pointer is tested, and whether the text is assigned or appended, differs
/// from function to function and is written at each call:
///
///     const MessageFrame frame;
///     ...
///     if (message != nullptr) *message = frame.Build("ErrorNoFile", {path});
class MessageFrame {
 public:
  /// The text for `key` with `parameters`, or `defaultText` when no catalog has the key.
  TEVUnicodeString Build(const char* key, std::initializer_list<TEVUnicodeString> parameters = {},
                         const TEVUnicodeString& defaultText = nullptr) const;

 private:
  TEVMsgCatalog catalog_;
};

}  // namespace kwinst

#endif  // KWINSTUTIL_REPORT_MESSAGE_H_

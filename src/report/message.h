#ifndef KWINSTUTIL_REPORT_MESSAGE_H_
#define KWINSTUTIL_REPORT_MESSAGE_H_

#include <kb0core/TEVMsgCatalog.h>
#include <kb0core/TEVUnicodeString.h>

#include <initializer_list>
#include <string>

namespace kwinst {

/// A value that is put into a message: a text, which may be null and is empty then, or a number.
class MessageValue {
 public:
  // NOLINTBEGIN(google-explicit-constructor): a call names its values as they are.
  MessageValue(const char* text) : text_(text) {}
  MessageValue(const std::string& text) : text_(text.c_str()) {}
  MessageValue(const TEVUnicodeString& text) : text_(text) {}
  MessageValue(int number) { text_.BuildFromNum(number, "%d"); }
  // NOLINTEND(google-explicit-constructor)

  const TEVUnicodeString& text() const { return text_; }

 private:
  TEVUnicodeString text_;
};

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
  /// The first frame of the process reads the catalog. A function makes its frame before it does
  /// anything else, so that the message "too many open files" has its text.
  MessageFrame();

  /// The text for `key` with `values`, or `defaultText` when no catalog has the key.
  TEVUnicodeString Build(const char* key, std::initializer_list<MessageValue> values = {},
                         const MessageValue& defaultText = "") const;

 private:
  TEVMsgCatalog catalog_;
};

}  // namespace kwinst

#endif  // KWINSTUTIL_REPORT_MESSAGE_H_

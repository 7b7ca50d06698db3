#ifndef KB0CORE_TEVMSGCATALOG_H_
#define KB0CORE_TEVMSGCATALOG_H_

#include "kb0core/TEVString.h"
#include "kb0core/TEVUnicodeString.h"
#include "kb0core/export.h"

/// Finished messages, made from the text that a message catalog has for a key.
///
/// The catalog NAME is the first readable file NAME.msg in these directories:
///
/// 1. those of the environment variable TEVMsgCatalogPath, separated by colons; empty ones are
///    ignored;
/// 2. the directory fixed when the library was built, PREFIX/share/kwinstutil/msgcatalog;
/// 3. the same directory as seen from the library's own file, ../share/kwinstutil/msgcatalog when
///    that lies in lib: an installed copy may be moved.
///
/// Beside that English file, the folders French, German, Italian, Japanese, Korean and
/// Simplified_Chinese hold a NAME.msg each in their language.
/// The first of LC_ALL, LC_MESSAGES and LANG that is set and not empty chooses the language by its
/// code before `_`, `.` or `@`: fr, de, it, ja, ko, and zh_CN for Chinese.
///
/// A line of a catalog file is blank, a comment that starts with `#`, or
///
///     ErrorNoFile = "The file {1} does not exist.\n"
///
/// where {1} to {9} stand for the parameters, and \n, \t, \" and \\ for the usual characters. Any
/// other line is ignored. When a key stands twice, the last one is used.
///
/// A file is read once, for its first message; a message with an empty key reads it in advance. A
/// changed variable is seen by the next message.
class KB0CORE_EXPORT TEVMsgCatalog {
 public:
  TEVMsgCatalog();
  // Defined in the library: what a catalog object holds may change without its users.
  ~TEVMsgCatalog();  // NOLINT(performance-trivially-destructible)
  TEVMsgCatalog(const TEVMsgCatalog&) = delete;
  TEVMsgCatalog& operator=(const TEVMsgCatalog&) = delete;

  /// The text for `key` in the catalog `catalogName` with `parameters` put in: in the user's
  /// language, in English where that lacks the key, or `defaultText`, as it stands, where both do.
  /// `parameters` may be null when `parameterCount` is 0. A placeholder beyond the count becomes
  /// empty; a parameter is put in as it is and not read again.
  static TEVUnicodeString BuildMessage(const TEVString& catalogName, const TEVString& key,
                                       TEVUnicodeString* parameters, int parameterCount,
                                       const TEVUnicodeString& defaultText);
};

#endif  // KB0CORE_TEVMSGCATALOG_H_

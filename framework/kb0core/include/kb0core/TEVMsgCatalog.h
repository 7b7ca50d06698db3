#ifndef KB0CORE_TEVMSGCATALOG_H_
#define KB0CORE_TEVMSGCATALOG_H_

#include "kb0core/TEVString.h"
#include "kb0core/TEVUnicodeString.h"
#include "kb0core/export.h"

/// Makes a message from the text that a message catalog has for a key.
///
/// The catalog NAME is the first readable file NAME.msg in these directories:
///
/// 1. those of the environment variable TEVMsgCatalogPath, separated by colons; empty ones are
///    ignored;
/// 2. the directory fixed when the library was built, PREFIX/share/kwinstutil/msgcatalog;
/// 3. the same directory beside the library's own file: ../share/kwinstutil/msgcatalog if the
///    library is in lib. So an installed copy may be moved.
///
/// That file is English. Beside it are the folders French, German, Italian, Japanese, Korean and
/// Simplified_Chinese, each with a NAME.msg in its language. The first of LC_ALL, LC_MESSAGES and
/// LANG that is set and not empty chooses the language by its code before `_`, `.` or `@`: fr, de,
/// it, ja, ko, and zh_CN for Chinese.
///
/// A line of a catalog file is blank, a comment that starts with `#`, or
///
///     ErrorNoFile = "The file {1} does not exist.\n"
///
/// where {1} to {9} stand for the parameters, and \n, \t, \" and \\ for the usual characters. Any
/// other line is ignored. If a key is there twice, the last one is used.
///
/// A file is read once, when the first message from it is made. To read it earlier, make a message
/// with an empty key. The variables are read again for each message.
class KB0CORE_EXPORT TEVMsgCatalog {
 public:
  TEVMsgCatalog();
  // Defined in the library, so that the members may change and programs need not be built again.
  ~TEVMsgCatalog();  // NOLINT(performance-trivially-destructible)
  TEVMsgCatalog(const TEVMsgCatalog&) = delete;
  TEVMsgCatalog& operator=(const TEVMsgCatalog&) = delete;

  /// Returns the text for `key` in the catalog `catalogName`, with `parameters` in the place of the
  /// placeholders. It is the text in the user's language, or the English one if that language has
  /// none. If English has none either, it is `defaultText`, unchanged.
  ///
  /// `parameters` may be null if `parameterCount` is 0. A placeholder with a number above the count
  /// becomes empty. Placeholders in a parameter are not replaced.
  static TEVUnicodeString BuildMessage(const TEVString& catalogName, const TEVString& key,
                                       TEVUnicodeString* parameters, int parameterCount,
                                       const TEVUnicodeString& defaultText);
};

#endif  // KB0CORE_TEVMSGCATALOG_H_

#ifndef KWINSTUTIL_LANG_H_
#define KWINSTUTIL_LANG_H_

#include <kb0core/TEVUnicodeString.h>

#include "kwinstutil/export.h"

/// \file
/// The languages that a tree keeps. English is always there.
///
/// Each set bit of a language mask keeps one item: 1 language-indexed (stroke) fonts, 2 French,
/// 4 German, 8 Italian, 16 Japanese, 32 Simplified Chinese, 64 Korean; 127 is all of them.
/// `installDir` is the tree, `osDir` the system directory in it.

/// Records the choice in INSTALLDIR/OSDIR/NLS.txt, one line for each set bit in the order above and
/// an empty line, in the place of an earlier file. The paths must not be null. `message` is
/// assigned in every case: "CreateFile_OK" or "CreateFile_KO", both with the path.
///
/// Returns 0, also when the file could not be written: only the message tells.
KWINSTUTIL_EXPORT int TEVInsCreateNLSFile(char* installDir, const char* osDir, int languages,
                                          TEVUnicodeString& message) noexcept;

/// Reads the choice back. The paths must not be null. Lines other than the seven names are ignored.
///
/// Returns the mask; 127, everything, when there is no record that can be read.
KWINSTUTIL_EXPORT int TEVInsInitChosenLang(char* installDir, const char* osDir) noexcept;

/// Deletes the message catalogs of every language whose bit is clear and, with bit 1 clear and
/// `componentName` "Visualization", the five stroke-font files. Does nothing when a pointer is
/// null; tells no failures. The paths go to the shell unquoted.
KWINSTUTIL_EXPORT void TEVInsRemoveLang(char* installDir, const char* osDir, char* componentName,
                                        int languages) noexcept;

#endif  // KWINSTUTIL_LANG_H_

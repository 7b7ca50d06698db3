#ifndef KWINSTUTIL_LANG_H_
#define KWINSTUTIL_LANG_H_

#include <kb0core/TEVUnicodeString.h>

#include "kwinstutil/export.h"

/// \file
/// The languages that a tree keeps. English is always there.
///
/// Each set bit of a language mask keeps one item: 1 language-indexed (stroke) fonts, 2 French,
/// 4 German, 8 Italian, 16 Japanese, 32 Simplified Chinese, 64 Korean. 127 is all of them.
/// `installDir` is the tree, and `osDir` the system directory in it.

/// Writes `languages` to INSTALLDIR/OSDIR/NLS.txt: one line for each set bit, in the order above,
/// and an empty line. An earlier file is replaced. `installDir` must not be null; without an
/// `osDir` the file is INSTALLDIR/NLS.txt. `message` is assigned: "CreateFile_OK" or
/// "CreateFile_KO", both with the path.
///
/// Returns 0, even if the file could not be written. Only the message shows the failure.
///
/// Writes: INSTALLDIR/OSDIR/NLS.txt.
KWINSTUTIL_EXPORT int TEVInsCreateNLSFile(char* installDir, const char* osDir, int languages,
                                          TEVUnicodeString& message) noexcept;

/// Reads the mask from INSTALLDIR/OSDIR/NLS.txt. `installDir` must not be null; without an `osDir`
/// the file is INSTALLDIR/NLS.txt. Lines other than the seven names are ignored. A line of more
/// than 1023 characters is read in pieces of 1023, and each piece is treated as a line.
///
/// Returns the mask, or 127 (everything) when the file does not exist or cannot be read.
KWINSTUTIL_EXPORT int TEVInsInitChosenLang(char* installDir, const char* osDir) noexcept;

/// Deletes the message catalogs of every language whose bit is clear. For the component
/// "Visualization" with bit 1 clear, it also deletes the five stroke-font files. Failures are not
/// reported. If a pointer is null, nothing is done. The paths go to the shell unquoted.
///
/// Writes: deletes INSTALLDIR/OSDIR/resources/msgcatalog/LANGUAGE and
/// INSTALLDIR/OSDIR/resources/fonts/Stroke/FONT.font.
/// System: runs rm.
KWINSTUTIL_EXPORT void TEVInsRemoveLang(char* installDir, const char* osDir, char* componentName,
                                        int languages) noexcept;

#endif  // KWINSTUTIL_LANG_H_

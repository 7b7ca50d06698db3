#ifndef KWINSTUTIL_TOC_H_
#define KWINSTUTIL_TOC_H_

#include <kb0core/TEVUnicodeString.h>
#include <qtoclib/TEVINSToc.h>

#include "kwinstutil/export.h"

/// \file
/// Tables of contents.
///
/// No argument may be null. `*message` is assigned on failure and untouched on success.

/// Opens the table of contents of a medium.
///
/// `mediaPath` is the table file. `*toc` receives the table, which the caller deletes, or null.
///
/// Returns
///    0  the table was read, or there is no memory for it (`*toc` is null);
///   -1  the file does not exist ("ErrorInitNoToc": mediaPath; `*toc` is null), or the table
///       reported a problem ("ErrorInitMediaToc": mediaPath, the information text). After a problem
///       `*toc` holds what could be read.
KWINSTUTIL_EXPORT int InitMediaToc(char* mediaPath, TEVINSMediaToc** toc,
                                   TEVUnicodeString* message) noexcept;

/// Opens the table of contents of an installed tree.
///
/// `installPath` is the table file (control/PRESENT) or the system directory that holds it. A
/// directory without the file is a new tree: its table is empty, and this is no failure. `*toc`
/// receives the table, which the caller deletes, or null.
///
/// Returns
///    0  the table was read, or there is no memory for it (`*toc` is null);
///   -2  the table reported a problem, for example a missing file ("ErrorInitToc": installPath, the
///       information text). `*toc` holds what could be read.
KWINSTUTIL_EXPORT int InitInstallToc(char* installPath, TEVINSInstToc** toc,
                                     TEVUnicodeString* message) noexcept;

#endif  // KWINSTUTIL_TOC_H_

#ifndef KWINSTUTIL_TOC_H_
#define KWINSTUTIL_TOC_H_

#include <kb0core/TEVUnicodeString.h>
#include <qtoclib/TEVINSToc.h>

#include "kwinstutil/export.h"

/// Opens the table of contents of a medium.
///
/// `mediaPath` is the table file. `*toc` receives the table, which the caller deletes, or null.
/// No argument may be null. `*message` is assigned on failure and untouched on success.
///
/// Returns
///    0  the table was read, or there is no memory for one (`*toc` is null);
///   -1  the file does not exist ("ErrorInitNoToc": path; `*toc` is null), or the table reported a
///       problem ("ErrorInitMediaToc": path, information text). In the second case `*toc` still
///       holds what could be read, and is the caller's to delete.
KWINSTUTIL_EXPORT int InitMediaToc(char* mediaPath, TEVINSMediaToc** toc,
                                   TEVUnicodeString* message) noexcept;

/// Opens the table of contents of an installed tree.
///
/// `installPath` is the table file (control/PRESENT) or the system directory that holds it. A
/// directory without the file is a new tree: an empty table, and no failure. `*toc` receives the
/// table, which the caller deletes, or null. No argument may be null. `*message` is assigned on
/// failure and untouched on success.
///
/// Returns
///    0  the table was read, or there is no memory for one (`*toc` is null);
///   -2  the table reported a problem, a missing file included ("ErrorInitToc": path, information
///       text); `*toc` still holds what could be read, and is the caller's to delete.
KWINSTUTIL_EXPORT int InitInstallToc(char* installPath, TEVINSInstToc** toc,
                                     TEVUnicodeString* message) noexcept;

#endif  // KWINSTUTIL_TOC_H_

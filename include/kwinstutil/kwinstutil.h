#ifndef KWINSTUTIL_KWINSTUTIL_H_
#define KWINSTUTIL_KWINSTUTIL_H_

/// \file
/// The whole exported interface.
///
/// No function throws. All functions must be called from one thread.
///
/// The headers share a few conventions. Status values are listed below "Returns". `("Key": a, b)`
/// is the message with that key and the parameters a and b. In a path, capital letters stand for an
/// argument: INSTALLDIR/OSUNIX. "Writes:" says what a function creates, changes or deletes on disk.
/// "System:" says which files of the system, environment variables, ports and programs it uses. A
/// function without these lines does none of this.
///
/// A function that makes a message reads the message catalog, and with it TEVMsgCatalogPath,
/// LC_ALL, LC_MESSAGES and LANG (see TEVMsgCatalog).

#include "kwinstutil/actions.h"
#include "kwinstutil/checks.h"
#include "kwinstutil/dirs.h"
#include "kwinstutil/env.h"
#include "kwinstutil/export.h"
#include "kwinstutil/files.h"
#include "kwinstutil/lang.h"
#include "kwinstutil/ports.h"
#include "kwinstutil/processes.h"
#include "kwinstutil/report.h"
#include "kwinstutil/spk.h"
#include "kwinstutil/toc.h"

/// Marks the library as an internal component of the suite. Returns 1.
extern "C" KWINSTUTIL_EXPORT int BROVIK_ZEB2_INTERNAL_KWINSTUTIL() noexcept;

#endif  // KWINSTUTIL_KWINSTUTIL_H_

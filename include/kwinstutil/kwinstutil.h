#ifndef KWINSTUTIL_KWINSTUTIL_H_
#define KWINSTUTIL_KWINSTUTIL_H_

/// \file
/// The whole exported interface. All functions are called from one thread, and none throws.

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

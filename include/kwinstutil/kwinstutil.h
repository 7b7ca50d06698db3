#ifndef KWINSTUTIL_KWINSTUTIL_H_
#define KWINSTUTIL_KWINSTUTIL_H_

/// The whole exported interface. All functions are called from one thread, and none throws.

#include "kwinstutil/actions.h"
#include "kwinstutil/checks.h"
#include "kwinstutil/dirs.h"
#include "kwinstutil/env.h"
#include "kwinstutil/files.h"
#include "kwinstutil/lang.h"
#include "kwinstutil/ports.h"
#include "kwinstutil/report.h"
#include "kwinstutil/services.h"
#include "kwinstutil/toc.h"

#endif  // KWINSTUTIL_KWINSTUTIL_H_

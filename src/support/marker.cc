#include "kwinstutil/kwinstutil.h"

int BROVIK_ZEB2_INTERNAL_KWINSTUTIL() noexcept { return 1; }

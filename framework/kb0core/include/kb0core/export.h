#ifndef KB0CORE_EXPORT_H_
#define KB0CORE_EXPORT_H_

/// Marks what libKB0CORE exports. Everything else in the library is hidden.
#define KB0CORE_EXPORT __attribute__((visibility("default")))

#endif  // KB0CORE_EXPORT_H_

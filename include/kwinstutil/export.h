#ifndef KWINSTUTIL_EXPORT_H_
#define KWINSTUTIL_EXPORT_H_

/// Marks the exported interface; everything else in the library is hidden.
#define KWINSTUTIL_EXPORT __attribute__((visibility("default")))

#endif  // KWINSTUTIL_EXPORT_H_

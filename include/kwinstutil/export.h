#ifndef KWINSTUTIL_EXPORT_H_
#define KWINSTUTIL_EXPORT_H_

/// \file
/// The mark of the exported interface.

/// Marks the exported interface. Everything else in the library is hidden.
#define KWINSTUTIL_EXPORT __attribute__((visibility("default")))

#endif  // KWINSTUTIL_EXPORT_H_

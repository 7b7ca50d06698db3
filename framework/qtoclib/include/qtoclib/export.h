#ifndef QTOCLIB_EXPORT_H_
#define QTOCLIB_EXPORT_H_

/// Marks what libQTOCLIB shows; the rest of the library is hidden.
#define QTOCLIB_EXPORT __attribute__((visibility("default")))

#endif  // QTOCLIB_EXPORT_H_

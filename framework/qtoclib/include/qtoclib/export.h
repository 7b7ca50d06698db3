#ifndef QTOCLIB_EXPORT_H_
#define QTOCLIB_EXPORT_H_

/// Marks what libQTOCLIB exports. Everything else in the library is hidden.
#define QTOCLIB_EXPORT __attribute__((visibility("default")))

#endif  // QTOCLIB_EXPORT_H_

#ifndef KWINSTUTIL_CHECKS_H_
#define KWINSTUTIL_CHECKS_H_

#include <kb0core/TEVUnicodeString.h>
#include <qtoclib/TEVINSToc.h>

#include "kwinstutil/export.h"

// Does the medium hold what it claims to hold? None of these functions writes anything to disk. A
// null `media` counts as an empty medium. Unless said otherwise, a null `message` means that no
// message is wanted; `*message` is assigned on failure and untouched otherwise.

/// Does the medium hold products or solutions of the content type?
///
/// Returns
///    0  it does;
///   -1  it does not ("ErrEmptyMediaToc", no parameter).
KWINSTUTIL_EXPORT int TEVInsCheckMedia(TEVINSType type, TEVINSMediaToc* media,
                                       TEVUnicodeString* message) noexcept;

/// Does the directory `mediaDir` hold the files of the rendering satellite, LumaforgeSatellite.Z
/// and LFSFS? `mediaDir` must not be null.
///
/// Returns
///    0  both are there;
///   -2  one is missing ("ErrorNoFile": the path of the first that is).
KWINSTUTIL_EXPORT int TEVInsCheckMediaSAT(char* mediaDir, TEVUnicodeString* message) noexcept;

/// Does the medium hold a service pack?
///
/// Returns
///    0  a service pack of the code;
///    1  a service pack of the SDK part only, or there is no memory to ask (without a message);
///    4  no service pack ("ErrorNoSPK", no parameter).
KWINSTUTIL_EXPORT int TEVInsCheckMediaSPK(TEVINSMediaToc* media,
                                          TEVUnicodeString* message) noexcept;

/// Does the medium hold a hot fix?
///
/// Returns
///    0  it does, or there is no memory to ask;
///    4  it does not ("ErrorNoHFX", no parameter).
KWINSTUTIL_EXPORT int TEVInsCheckMediaHFX(TEVINSMediaToc* media,
                                          TEVUnicodeString* message) noexcept;

/// Does the medium hold samples? Unlike the others, this check requires a message string.
///
/// Returns
///    0  it does;
///   -1  it does not ("ErrEmptyMediaToc", no parameter), or `message` is null: then the medium is
///       not looked at.
KWINSTUTIL_EXPORT int TEVInsCheckMediaSMP(TEVINSMediaToc* media,
                                          TEVUnicodeString* message) noexcept;

#endif  // KWINSTUTIL_CHECKS_H_

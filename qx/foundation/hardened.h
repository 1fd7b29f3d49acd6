#pragma once

#include <qx/foundation/api.h>

#include <cstdint>

/// @file
/// The hardened mode. A build of the library with the option QX_HARDENED of its build system checks what other builds
/// take as given: an index that is outside, or an object whose memory was refused. The first violation prints one line
/// with the operation, the two values and the place, and aborts. Results and layouts are the same in both modes.
///
/// The macro QX_HARDENED comes with the CMake target, so that the library and its users agree; defined by hand it does
/// not link with a library that is not hardened.

#ifdef QX_HARDENED
/// Prints the line of a violation on the standard error stream and aborts.
[[noreturn]] QX_API void qxReportViolation(const char* operation, const char* condition, std::int64_t first,
                                           std::int64_t second, const char* file, int line) noexcept;

/// Checks a condition that an operation takes as given; @p first and @p second are the integers it is about.
#define QX_EXPECT(condition, operation, first, second)                                      \
  ((condition) ? static_cast<void>(0)                                                       \
               : qxReportViolation(operation, #condition, static_cast<std::int64_t>(first), \
                                   static_cast<std::int64_t>(second), __FILE__, __LINE__))
#else
#define QX_EXPECT(condition, operation, first, second) static_cast<void>(0)
#endif

#pragma once

/// Marks what the shared library exports; everything else stays hidden.
///
/// On a class template it stands at the class and at the `extern template` lines of the header, never at the
/// instantiation in the source file.
#define QX_API __attribute__((visibility("default")))

#pragma once

/// @file
/// What every header needs: a compiler that can read it, and the mark of what the shared library exports.

// A header that does not exist ends the compilation, so that the line above it is read and not hundreds of others.
#if !defined(__clang__) && !defined(__GNUC__)
#error "QX is built with g++ 12 or clang++ 14 or newer; this compiler is neither"
#include <qx/foundation/the_line_above_says_why.h>
#elif __cplusplus < 202002L
#error "QX needs C++20 or newer: compile with -std=c++20, with g++ 12 or clang++ 14 or newer"
#include <qx/foundation/the_line_above_says_why.h>
#elif defined(__clang__) ? __clang_major__ < 14 : __GNUC__ < 12
#error "QX needs g++ 12 or clang++ 14 or newer"
#include <qx/foundation/the_line_above_says_why.h>
#endif

/// Marks what the shared library exports; everything else stays hidden.
///
/// On a class template it stands at the class and at the `extern template` lines of the header, never at the
/// instantiation in the source file.
#define QX_API __attribute__((visibility("default")))

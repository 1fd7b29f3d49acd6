#pragma once

#include <qx/vectors/fixed_vector.h>
#include <qx/vectors/vector_n.h>

#include <cstddef>
#include <iosfwd>

/// @file
/// Text of vectors, "(1, 2, 3)", to streams. Who writes to a stream has included `ostream`; this header does not.

/// Writes the components by the rules of the stream, the width taken for each of them.
template <typename Traits, qxFixedVector V>
std::basic_ostream<char, Traits>& operator<<(std::basic_ostream<char, Traits>& stream, const V& v) {
  const auto width = stream.width(0);
  for (std::size_t i = 0; i < V::dimension; ++i) {
    stream << (i == 0 ? "(" : ", ");
    stream.width(width);
    stream << v.Data()[i];
  }
  return stream << ")";
}

/// The same of a run-time-sized vector; "()" without elements.
template <typename Traits, typename T>
std::basic_ostream<char, Traits>& operator<<(std::basic_ostream<char, Traits>& stream, const CQXBaseVector<T>& v) {
  const auto width = stream.width(0);
  stream << "(";
  for (const T& x : v) {
    if (&x != v.begin()) stream << ", ";
    stream.width(width);
    stream << x;
  }
  return stream << ")";
}

#pragma once

#include <qx/vectors/fixed_vector.h>
#include <qx/vectors/vector_n.h>

#include <cstddef>
#include <ostream>

/// @file
/// Text of vectors, "(1, 2, 3)", to streams. It needs <ostream>, which no other header of the
/// vectors does.

/// Writes the components by the rules of the stream, the width taken for each of them.
template <qxFixedVector V>
std::ostream& operator<<(std::ostream& stream, const V& v) {
  const auto width = stream.width(0);
  for (std::size_t i = 0; i < V::dimension; ++i) {
    stream << (i == 0 ? "(" : ", ");
    stream.width(width);
    stream << v.Data()[i];
  }
  return stream << ")";
}

/// The same of a run-time-sized vector; "()" without elements.
template <typename T>
std::ostream& operator<<(std::ostream& stream, const CQXBaseVector<T>& v) {
  const auto width = stream.width(0);
  stream << "(";
  for (const T& x : v) {
    if (&x != v.begin()) stream << ", ";
    stream.width(width);
    stream << x;
  }
  return stream << ")";
}

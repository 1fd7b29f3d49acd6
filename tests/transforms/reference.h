#pragma once

#include <qx/foundation/rotations_order.h>
#include <qx/matrices/matrix4.h>
#include <qx/vectors/vector3.h>

#include <array>
#include <cmath>
#include <numbers>
#include <random>

/// @file
/// Coordinate matrices written out plainly in 64-bit floats, as the conventions of the transforms say: column vectors,
/// right-handed rotations, degrees.

namespace reference {

struct Matrix {
  std::array<std::array<double, 4>, 4> m{{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}};

  Matrix operator*(const Matrix& b) const {
    Matrix product;
    for (std::size_t r = 0; r < 4; ++r) {
      for (std::size_t c = 0; c < 4; ++c) {
        product.m[r][c] = 0;
        for (std::size_t k = 0; k < 4; ++k) product.m[r][c] += m[r][k] * b.m[k][c];
      }
    }
    return product;
  }
};

/// The linear map of a 3x3 matrix.
template <typename T>
Matrix Linear(const CQXMatrix3<T>& a) {
  Matrix result;
  for (std::int32_t r = 0; r < 3; ++r) {
    for (std::int32_t c = 0; c < 3; ++c) result.m[std::size_t(r)][std::size_t(c)] = double(a(r, c));
  }
  return result;
}

template <typename T>
Matrix Translation(const CQXVector3<T>& t) {
  Matrix result;
  for (std::size_t i = 0; i < 3; ++i) result.m[i][3] = double(t[std::int32_t(i)]);
  return result;
}

template <typename T>
Matrix Scaling(const CQXVector3<T>& s) {
  Matrix result;
  for (std::size_t i = 0; i < 3; ++i) result.m[i][i] = double(s[std::int32_t(i)]);
  return result;
}

/// @p motion about the point @p c instead of the origin.
template <typename T>
Matrix About(const CQXVector3<T>& c, const Matrix& motion) {
  return Translation(c) * motion * Translation(-c);
}

inline Matrix PointReflection() { return Scaling(CQXVector3<double>(-1, -1, -1)); }

/// Rotation about coordinate axis 0, 1 or 2.
inline Matrix AxisRotation(std::size_t axis, double degrees) {
  const double angle = degrees * std::numbers::pi / 180;
  const std::size_t i = (axis + 1) % 3, j = (axis + 2) % 3;
  Matrix result;
  result.m[i][i] = result.m[j][j] = std::cos(angle);
  result.m[i][j] = -std::sin(angle);
  result.m[j][i] = std::sin(angle);
  return result;
}

/// Axes in their sequence of action, by order.
constexpr std::size_t sequences[6][3] = {{0, 1, 2}, {0, 2, 1}, {1, 0, 2}, {1, 2, 0}, {2, 1, 0}, {2, 0, 1}};

/// Rotation by angles about X, Y, Z that act in the given order.
inline Matrix Euler(const std::array<double, 3>& degrees, int order) {
  const auto& [first, second, third] = sequences[order];
  return AxisRotation(third, degrees[third]) * AxisRotation(second, degrees[second]) *
         AxisRotation(first, degrees[first]);
}

/// Largest difference of corresponding elements.
template <typename T>
double Distance(const CQXMatrix4<T>& a, const Matrix& b) {
  double largest = 0;
  for (std::int32_t r = 0; r < 4; ++r) {
    for (std::int32_t c = 0; c < 4; ++c) {
      const double difference = std::abs(double(a(r, c)) - b.m[std::size_t(r)][std::size_t(c)]);
      if (!(difference <= largest)) largest = difference;
    }
  }
  return largest;
}
template <typename T>
double Distance(const CQXMatrix3<T>& a, const Matrix& b) {
  return Distance(qxMatrix3To4(a), b);
}

/// Random numbers for the tests, the same in every run.
template <typename T>
struct Random {
  std::mt19937 engine{20240611};

  T In(double lo, double hi) { return T(std::uniform_real_distribution<double>(lo, hi)(engine)); }
  CQXVector3<T> Vector(double lo, double hi) {
    const T x = In(lo, hi), y = In(lo, hi), z = In(lo, hi);
    return {x, y, z};
  }
  std::array<double, 3> Angles() { return {In(-180, 180), In(-180, 180), In(-180, 180)}; }
};

}  // namespace reference

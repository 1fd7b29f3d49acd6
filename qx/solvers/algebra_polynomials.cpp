#include <qx/solvers/algebra.h>

#include <algorithm>
#include <cmath>

namespace {

template <qxReal T>
constexpr T third = T(0.3333333333333333);

/// Square root, and 0 for a radicand below the small value.
template <qxReal T>
T RootOrZero(T x) {
  return std::abs(x) < QX_TOLERANCE<T> ? T(0) : std::sqrt(x);
}

/// Roots of x^2 + p x + q: middle and half distance of two real roots (2), the double root (1), or the parts of a
/// complex pair (0).
template <qxReal T>
struct QuadraticRoots {
  std::int32_t code;
  T middle;
  T distance;

  QuadraticRoots(T p, T q, T band) : code(1), middle(T(-0.5) * p), distance(0) {
    const T discriminant = T(0.25) * p * p - q;
    if (discriminant > band) {
      code = 2;
      distance = RootOrZero(discriminant);
    } else if (discriminant < -band) {
      code = 0;
      distance = RootOrZero(-discriminant);
    }
  }

  void Write(T& x1, T& x2) const {
    x1 = code == 2 ? middle - distance : middle;
    x2 = code == 2 ? middle + distance : (code == 0 ? distance : middle);
  }

  void Write(CQXComplex<T>& z1, CQXComplex<T>& z2) const {
    if (code == 0) {
      z1.Set(middle, distance);
      z2.Set(middle, -distance);
    } else {
      z1.Set(middle - distance, 0);
      z2.Set(middle + distance, 0);
    }
  }
};

template <qxReal T>
void WriteBoth(T value, T& x1, T& x2) {
  x1 = x2 = value;
}

template <qxReal T>
void WriteBoth(T value, CQXComplex<T>& z1, CQXComplex<T>& z2) {
  z1.Set(value, 0);
  z2.Set(value, 0);
}

/// The general quadratic, for real and for complex outputs.
template <typename T, typename Root>
std::int32_t SolveGeneralQuadratic(T a, T b, T c, Root& root1, Root& root2, T tol) {
  if (std::abs(a) < tol) {
    if (std::abs(b) < tol) {
      WriteBoth(T(0), root1, root2);
      return std::abs(c) < tol ? -2 : -1;
    }
    WriteBoth(-c / b, root1, root2);
    return 1;
  }
  const QuadraticRoots<T> roots(b / a, c / a, T(1e-6));
  roots.Write(root1, root2);
  return roots.code;
}

}  // namespace

template <qxReal T>
std::int32_t CQXAlgebraFunctions<T>::SolveQuadratic(T a, T b, T c, T& x1, T& x2, T tol) noexcept {
  return SolveGeneralQuadratic(a, b, c, x1, x2, tol);
}

template <qxReal T>
std::int32_t CQXAlgebraFunctions<T>::SolveQuadratic(T a, T b, T c, CQXComplex<T>& z1, CQXComplex<T>& z2,
                                                    T tol) noexcept {
  return SolveGeneralQuadratic(a, b, c, z1, z2, tol);
}

template <qxReal T>
std::int32_t CQXAlgebraFunctions<T>::SolveReducedQuadratic(T p, T q, T& x1, T& x2, T tol) noexcept {
  const QuadraticRoots<T> roots(p, q, tol);
  roots.Write(x1, x2);
  return roots.code;
}

template <qxReal T>
std::int32_t CQXAlgebraFunctions<T>::SolveReducedQuadratic(T p, T q, CQXComplex<T>& z1, CQXComplex<T>& z2,
                                                           T tol) noexcept {
  const QuadraticRoots<T> roots(p, q, tol);
  roots.Write(z1, z2);
  return roots.code;
}

template <qxReal T>
std::int32_t CQXAlgebraFunctions<T>::SolveReducedCubic(T a, T b, T c, T& x1, T& x2, T& x3, T tol) noexcept {
  const T q = (a * a - 3 * b) / 9;
  const T r = (2 * a * a * a - 9 * a * b + 27 * c) / 54;
  const T shift = a * third<T>;
  const T cubeQ = q * q * q;
  if (cubeQ <= r * r) {
    const T size = RootOrZero(r * r - cubeQ) + std::abs(r);
    const T sign = r >= 0 ? T(-1) : T(1);
    const T partA = std::abs(size) < QX_TOLERANCE<T> ? T(0) : sign * std::pow(size, third<T>);
    const T partB = std::abs(partA) >= tol ? q / partA : T(0);
    x1 = (partA + partB) - shift;
    if (std::abs(partA - partB) >= tol) {
      x2 = T(-0.5) * (partA + partB) - shift;
      x3 = std::abs(partA - partB) * T(0.8660254037844386);
      return 1;
    }
    x2 = x3 = -partA - shift;
    return 2;
  }
  // The unguarded root keeps three close roots apart from not a number.
  const T angle = std::acos(std::clamp(r / std::sqrt(cubeQ), T(-1), T(1))) * third<T>;
  const T radius = -2 * RootOrZero(q);
  constexpr T turn = T(2.0943951023931953);
  x1 = radius * std::cos(angle) - shift;
  x2 = radius * std::cos(angle + turn) - shift;
  x3 = radius * std::cos(angle - turn) - shift;
  return 3;
}

template <qxReal T>
std::int32_t CQXAlgebraFunctions<T>::SolveReducedCubic(T a, T b, T c, CQXComplex<T>& z1, CQXComplex<T>& z2,
                                                       CQXComplex<T>& z3, T tol) noexcept {
  T x1, x2, x3;
  const std::int32_t code = SolveReducedCubic(a, b, c, x1, x2, x3, tol);
  z1.Set(x1, 0);
  if (code == 1) {
    z2.Set(x2, x3);
    z3.Set(x2, -x3);
  } else {
    z2.Set(x2, 0);
    z3.Set(x3, 0);
  }
  return code;
}

template class CQXAlgebraFunctions<float>;
template class CQXAlgebraFunctions<double>;

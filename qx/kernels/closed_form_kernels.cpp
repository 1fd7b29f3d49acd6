#include <qx/foundation/internal/instantiate.h>
#include <qx/foundation/tolerance.h>
#include <qx/kernels/closed_form_kernels.h>

#include <algorithm>
#include <cmath>

namespace qxKernels {

namespace {

/// 2 when the sum of squares over the determinant, times the tolerance, is above 1.
template <qxReal T>
std::int32_t ConditionFlag(T sumOfSquares, T det, T tol) {
  return sumOfSquares / std::abs(det) * tol > 1 ? 2 : 1;
}

/// Equation of three unknowns.
template <qxReal T>
struct Equation {
  T coefficients[3];
  T right;
};

/// Solves the pair with unknown @p fixed at 1 and the others, @p u before @p v, from the minor of their columns.
template <qxReal T>
void SolvePair(const Equation<T>& p, const Equation<T>& q, int u, int v, int fixed, T minor, T (&unknowns)[3]) {
  const T rightP = p.right - p.coefficients[fixed];
  const T rightQ = q.right - q.coefficients[fixed];
  unknowns[fixed] = 1;
  unknowns[u] = (rightP * q.coefficients[v] - p.coefficients[v] * rightQ) / minor;
  unknowns[v] = (p.coefficients[u] * rightQ - rightP * q.coefficients[u]) / minor;
}

/// Takes the pair if one of its 2x2 minors is above the tolerance.
template <qxReal T>
bool SolveByPair(const Equation<T>& p, const Equation<T>& q, T tol, T (&unknowns)[3]) {
  const auto minor = [&](int u, int v) {
    return p.coefficients[u] * q.coefficients[v] - p.coefficients[v] * q.coefficients[u];
  };
  const T xy = minor(0, 1), xz = minor(0, 2), yz = minor(1, 2);
  const T sizeXY = std::abs(xy), sizeXZ = std::abs(xz), sizeYZ = std::abs(yz);
  if (!(sizeXY > tol || sizeXZ > tol || sizeYZ > tol)) return false;
  const bool beforeYZ = sizeYZ < (sizeXY <= sizeXZ ? sizeXZ : sizeXY);
  if (!beforeYZ) {
    SolvePair(p, q, 1, 2, 0, yz, unknowns);
  } else if (sizeXY <= sizeXZ) {
    SolvePair(p, q, 0, 2, 1, xz, unknowns);
  } else {
    SolvePair(p, q, 0, 1, 2, xy, unknowns);
  }
  return true;
}

/// Takes the equation if one of its coefficients is above the tolerance.
template <qxReal T>
bool SolveByOne(const Equation<T>& p, T tol, T (&unknowns)[3]) {
  const T u = std::abs(p.coefficients[0]), v = std::abs(p.coefficients[1]), w = std::abs(p.coefficients[2]);
  if (!(u > tol || v > tol || w > tol)) return false;
  const int picked = w <= v ? (u >= v ? 0 : 1) : (u >= w ? 0 : 2);
  const int other = picked == 0 ? 1 : 0;
  const int third = 3 - picked - other;
  unknowns[other] = unknowns[third] = 1;
  unknowns[picked] = (p.right - p.coefficients[other] - p.coefficients[third]) / p.coefficients[picked];
  return true;
}

}  // namespace

template <qxReal T>
std::int32_t Solve2x2System(T a, T b, T c, T d, T r0, T r1, T& x, T& y, std::int32_t& conditionFlag, T tol) noexcept {
  const T det = a * d - b * c;
  const T numeratorX = r0 * d - r1 * b;
  const T numeratorY = r1 * a - r0 * c;
  conditionFlag = 1;
  if (std::abs(det) > tol) {
    x = numeratorX / det;
    y = numeratorY / det;
    conditionFlag = ConditionFlag(a * a + b * b + c * c + d * d, det, tol);
    return 1;
  }
  if (std::abs(numeratorX) > tol || std::abs(numeratorY) > tol) {
    x = y = 0;
    return -1;
  }
  x = y = 1;
  if (std::abs(a) > tol) {
    x = (r0 - b) / a;
  } else if (std::abs(b) > tol) {
    y = (r0 - b) / b;  // with b, not a, in the numerator: the contract
  } else if (std::abs(c) > tol) {
    x = (r1 - d) / c;
  } else if (std::abs(d) > tol) {
    y = (r1 - c) / d;
  }
  return -2;
}

template <qxReal T>
std::int32_t Solve3x3System(T a, T b, T c, T d, T e, T f, T g, T h, T i, T r0, T r1, T r2, T& x, T& y, T& z,
                            std::int32_t& conditionFlag, T tol) noexcept {
  const T cofactorA = e * i - f * h;
  const T cofactorB = d * i - f * g;
  const T cofactorC = d * h - e * g;
  const T rightI = r1 * i - f * r2;
  const T rightH = r1 * h - e * r2;
  const T rightG = d * r2 - r1 * g;
  const T det = a * cofactorA - b * cofactorB + c * cofactorC;
  const T numeratorX = r0 * cofactorA - b * rightI + c * rightH;
  const T numeratorY = a * rightI - r0 * cofactorB + c * rightG;
  const T numeratorZ = r0 * cofactorC - a * rightH - b * rightG;
  conditionFlag = 1;
  if (std::abs(det) > tol) {
    x = numeratorX / det;
    y = numeratorY / det;
    z = numeratorZ / det;
    const T sumOfSquares = a * a + b * b + c * c + d * d + e * e + f * f + g * g + h * h + i * i;
    conditionFlag = ConditionFlag(sumOfSquares, det, tol);
    return 1;
  }
  if (std::abs(numeratorX) > tol || std::abs(numeratorY) > tol || std::abs(numeratorZ) > tol) {
    x = y = z = 0;
    return -1;
  }
  const Equation<T> rows[3] = {{{a, b, c}, r0}, {{d, e, f}, r1}, {{g, h, i}, r2}};
  T unknowns[3] = {1, 1, 1};
  const bool found = SolveByPair(rows[0], rows[1], tol, unknowns) || SolveByPair(rows[0], rows[2], tol, unknowns) ||
                     SolveByPair(rows[1], rows[2], tol, unknowns);
  for (int row = 0; row < 3 && !found; ++row) {
    if (SolveByOne(rows[row], tol, unknowns)) break;
  }
  x = unknowns[0];
  y = unknowns[1];
  z = unknowns[2];
  return -2;
}

template <qxReal T>
QuadraticRoots<T> SolveReducedQuadratic(T p, T q, T band) noexcept {
  const T middle = T(-0.5) * p;
  const T discriminant = T(0.25) * p * p - q;
  if (discriminant > band) return {2, middle, qxGuardedSqrt(discriminant)};
  if (discriminant < -band) return {0, middle, qxGuardedSqrt(-discriminant)};
  return {1, middle, 0};
}

template <qxReal T>
std::int32_t SolveReducedCubic(T a, T b, T c, T& x1, T& x2, T& x3, T tol) noexcept {
  constexpr T third = T(0.3333333333333333);
  const T q = (a * a - 3 * b) / 9;
  const T r = (2 * a * a * a - 9 * a * b + 27 * c) / 54;
  const T shift = a * third;
  const T cubeQ = q * q * q;
  if (cubeQ <= r * r) {
    const T size = qxGuardedSqrt(r * r - cubeQ) + std::abs(r);
    const T sign = r >= 0 ? T(-1) : T(1);
    const T partA = std::abs(size) < QX_TOLERANCE<T> ? T(0) : sign * std::pow(size, third);
    const bool isTriple = partA == 0;  // all three fall together, with any tolerance
    const T partB = !isTriple && std::abs(partA) >= tol ? q / partA : T(0);
    x1 = (partA + partB) - shift;
    if (!isTriple && std::abs(partA - partB) >= tol) {
      x2 = T(-0.5) * (partA + partB) - shift;
      x3 = std::abs(partA - partB) * T(0.8660254037844386);
      return 1;
    }
    x2 = x3 = -partA - shift;
    return 2;
  }
  // The unguarded root keeps three close roots apart from not a number.
  const T angle = std::acos(std::clamp(r / std::sqrt(cubeQ), T(-1), T(1))) * third;
  const T radius = -2 * qxGuardedSqrt(q);
  constexpr T turn = T(2.0943951023931953);
  x1 = radius * std::cos(angle) - shift;
  x2 = radius * std::cos(angle + turn) - shift;
  x3 = radius * std::cos(angle - turn) - shift;
  return 3;
}

#define QX_INSTANTIATE(T)                                                                                          \
  template std::int32_t Solve2x2System(T, T, T, T, T, T, T&, T&, std::int32_t&, T) noexcept;                       \
  template std::int32_t Solve3x3System(T, T, T, T, T, T, T, T, T, T, T, T, T&, T&, T&, std::int32_t&, T) noexcept; \
  template QuadraticRoots<T> SolveReducedQuadratic(T, T, T) noexcept;                                              \
  template std::int32_t SolveReducedCubic(T, T, T, T&, T&, T&, T) noexcept;
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE

}  // namespace qxKernels

#include <qx/foundation/internal/instantiate.h>
#include <qx/foundation/tolerance.h>
#include <qx/solvers/internal/root_finders.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace qxSolvers {

namespace {

template <qxReal T>
bool IsSmall(T x) {
  return std::abs(x) < QX_TOLERANCE<T>;
}

/// A point of Brent's method with the value there.
template <qxReal T>
struct Sample {
  T x;
  T value;
};

/// The step from b to the root of the inverse quadratic through a, b and c, or of the line through two of them where a
/// and c are one.
/// @param formerStep,middle bounds of a step that is taken: half the former one, three quarters of the way to c
/// @return false when bisection does better; @p step is not touched then
template <qxReal T>
bool Interpolate(const Sample<T>& a, const Sample<T>& b, const Sample<T>& c, T middle, T tolerance, T formerStep,
                 T& step) {
  if (!(std::abs(formerStep) >= tolerance && std::abs(a.value) > std::abs(b.value))) return false;
  const T s = b.value / a.value;
  T p, q;
  if (std::abs(a.x - c.x) <= QX_TOLERANCE<T>) {
    p = 2 * middle * s;
    q = 1 - s;
  } else {
    const T ratio = a.value / c.value;
    const T r = b.value / c.value;
    p = s * (2 * middle * ratio * (ratio - r) - (b.x - a.x) * (r - 1));
    q = (ratio - 1) * (r - 1) * (s - 1);
  }
  if (p > 0) q = -q;
  p = std::abs(p);
  if (!(2 * p < std::min(3 * middle * q - std::abs(tolerance * q), std::abs(formerStep * q)))) return false;
  step = p / q;
  return true;
}

}  // namespace

template <qxReal T, typename F>
bool FindRootByNewton(T lo, T hi, T tol, T& root, F f, F df) {
  T x = (lo + hi) / 2;
  for (int iteration = 0; iteration < 19; ++iteration) {
    const T value = f(x);
    const T slope = df(x);
    if (IsSmall(slope)) {
      root = x;
      return true;
    }
    const T step = value / slope;
    x -= step;
    if ((lo - x) * (x - hi) < 0) return false;
    if (std::abs(step) < tol) {
      root = x;
      return true;
    }
  }
  root = x;
  return false;
}

template <qxReal T, typename F>
T FindRootBySafeNewton(T lo, T hi, T tol, F f, F df) {
  const T valueLo = f(lo);
  const T valueHi = f(hi);
  if (IsSmall(valueLo)) return lo;
  if (IsSmall(valueHi)) return hi;
  T below = lo, above = hi;  // ends with a negative and with a positive value
  if (!(valueLo < 0)) std::swap(below, above);
  T x = (lo + hi) / 2;
  T stepOld = std::abs(hi - lo);
  T step = stepOld;
  T value = f(x);
  T slope = df(x);
  for (int iteration = 0; iteration < 99; ++iteration) {
    const bool leaves = ((x - below) * slope - value) * ((x - above) * slope - value) > 0;
    const bool isSlow = std::abs(stepOld * slope) < std::abs(2 * value);
    stepOld = step;
    if (leaves || isSlow) {
      step = (above - below) / 2;
      x = below + step;
      if (IsSmall(below - x)) return x;
    } else {
      if (IsSmall(slope)) return x;
      step = value / slope;
      const T before = x;
      x -= step;
      if (IsSmall(before - x)) return x;
    }
    if (std::abs(step) < tol) return x;
    value = f(x);
    slope = df(x);
    (value >= 0 ? above : below) = x;
  }
  return x;
}

template <qxReal T, typename F>
T FindRootByBrent(T lo, T hi, T tol, F f) {
  Sample<T> a{lo, f(lo)}, b{hi, f(hi)}, c = b;
  T step = 0, formerStep = 0;
  for (int iteration = 0; iteration < 100; ++iteration) {
    if ((b.value > 0 && c.value > 0) || (b.value < 0 && c.value < 0)) {
      c = a;
      step = formerStep = b.x - a.x;
    }
    if (std::abs(c.value) < std::abs(b.value)) {
      a = b;
      b = c;
      c = a;
    }
    const T tolerance = 2 * QX_TOLERANCE<T> * std::abs(b.x) + T(0.5) * tol;
    const T middle = T(0.5) * (c.x - b.x);
    if (std::abs(middle) <= tolerance || IsSmall(b.value)) break;
    const T lastStep = step;
    const bool isInterpolated = Interpolate(a, b, c, middle, tolerance, formerStep, step);
    if (!isInterpolated) step = middle;
    formerStep = isInterpolated ? lastStep : step;
    a = b;
    if (std::abs(step) > tolerance) {
      b.x += step;
    } else {
      b.x += middle < 0 ? -tolerance : tolerance;
    }
    b.value = f(b.x);
  }
  return b.x;
}

template <qxReal T, typename F>
T FindRootBySecant(T lo, T hi, T tol, F f) {
  T left = lo, right = hi;
  T valueLeft = f(lo);
  T valueRight = f(hi);
  if (std::abs(valueLeft) < std::abs(valueRight)) {
    std::swap(left, right);
    std::swap(valueLeft, valueRight);
  }
  for (int iteration = 0; iteration < 49; ++iteration) {
    const T step = (left - right) * valueRight / (valueRight - valueLeft);
    left = right;
    valueLeft = valueRight;
    right += step;
    valueRight = f(right);
    if (std::abs(step) < tol || IsSmall(valueRight)) break;
  }
  return right;
}

template <qxReal T, typename F>
T FindRootByBisection(T lo, T hi, T tol, F f) {
  const T valueLo = f(lo);
  const T valueHi = f(hi);
  const bool falls = valueLo >= 0;
  T root = falls ? hi : lo;
  T step = falls ? lo - hi : hi - lo;
  if (std::abs(step) <= tol || std::abs(valueHi) <= QX_TOLERANCE<T>) return root;
  for (;;) {
    step /= 2;
    const T middle = root + step;
    const T value = f(middle);
    if (value <= 0) root = middle;
    if (std::abs(step) <= tol || std::abs(value) <= QX_TOLERANCE<T>) return root;
  }
}

template <qxReal T, typename F>
void NarrowRootBrackets(const T& lo, const T& hi, std::int32_t n, std::int32_t& found, T* lowerEnds, T* upperEnds,
                        F f) {
  T left = lo;
  const T step = (hi - lo) / static_cast<T>(n);
  T valueLeft = f(left);
  std::int32_t count = 0;
  for (std::int32_t i = 0; i < n; ++i) {
    const T right = left + step;
    const T valueRight = f(right);
    if (valueLeft * valueRight < 0) {
      lowerEnds[count] = left;
      upperEnds[count] = right;
      ++count;
    }
    left = right;
    valueLeft = valueRight;
  }
  found = count;
}

template <qxReal T, typename F>
bool SearchRootBrackets(T& x1, T& x2, F f) {
  constexpr T growth = T(1.6);
  T value1 = f(x1);
  T value2 = f(x2);
  for (int iteration = 0; iteration < 49; ++iteration) {
    if (value1 * value2 < 0) return true;
    if (std::abs(value2) > std::abs(value1)) {
      x1 += growth * (x1 - x2);
      value1 = f(x1);
    } else {
      x2 += growth * (x2 - x1);
      value2 = f(x1);  // at the end that stayed: the contract
    }
  }
  return false;
}

#define INSTANTIATE_FOR(T, F)                                                                   \
  template bool FindRootByNewton(T, T, T, T&, F, F);                                            \
  template T FindRootBySafeNewton(T, T, T, F, F);                                               \
  template T FindRootByBrent(T, T, T, F);                                                       \
  template T FindRootBySecant(T, T, T, F);                                                      \
  template T FindRootByBisection(T, T, T, F);                                                   \
  template void NarrowRootBrackets(const T&, const T&, std::int32_t, std::int32_t&, T*, T*, F); \
  template bool SearchRootBrackets(T&, T&, F);
#define QX_INSTANTIATE(T)      \
  INSTANTIATE_FOR(T, T (*)(T)) \
  INSTANTIATE_FOR(T, UserFunction<T>)
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE
#undef INSTANTIATE_FOR

}  // namespace qxSolvers

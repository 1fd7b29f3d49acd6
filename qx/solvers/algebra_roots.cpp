#include <qx/solvers/algebra.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

template <qxReal T>
bool IsSmall(T x) {
  return std::abs(x) < QX_TOLERANCE<T>;
}

}  // namespace

template <qxReal T>
std::int32_t CQXAlgebraFunctions<T>::Newton(T lo, T hi, T tol, T& root, Function f, Function df) {
  T x = (lo + hi) / 2;
  for (int iteration = 0; iteration < 19; ++iteration) {
    const T value = f(x);
    const T slope = df(x);
    if (IsSmall(slope)) {
      root = x;
      return 1;
    }
    const T step = value / slope;
    x -= step;
    if ((lo - x) * (x - hi) < 0) return 0;
    if (std::abs(step) < tol) {
      root = x;
      return 1;
    }
  }
  root = x;
  return 0;
}

template <qxReal T>
T CQXAlgebraFunctions<T>::SafeNewton(T lo, T hi, T tol, Function f, Function df) {
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

template <qxReal T>
T CQXAlgebraFunctions<T>::Brent(T lo, T hi, T tol, Function f) {
  T a = lo, b = hi, c = hi;
  T fa = f(a);
  T fb = f(b);
  T fc = fb;
  T d = 0, e = 0;
  for (int iteration = 0; iteration < 100; ++iteration) {
    if ((fb > 0 && fc > 0) || (fb < 0 && fc < 0)) {
      c = a;
      fc = fa;
      d = e = b - a;
    }
    if (std::abs(fc) < std::abs(fb)) {
      a = b;
      b = c;
      c = a;
      fa = fb;
      fb = fc;
      fc = fa;
    }
    const T tolerance = 2 * QX_TOLERANCE<T> * std::abs(b) + T(0.5) * tol;
    const T middle = T(0.5) * (c - b);
    if (std::abs(middle) <= tolerance || IsSmall(fb)) return b;
    bool accepted = false;
    if (std::abs(e) >= tolerance && std::abs(fa) > std::abs(fb)) {
      const T s = fb / fa;
      T p, q;
      if (std::abs(a - c) <= QX_TOLERANCE<T>) {
        p = 2 * middle * s;
        q = 1 - s;
      } else {
        const T ratio = fa / fc;
        const T r = fb / fc;
        p = s * (2 * middle * ratio * (ratio - r) - (b - a) * (r - 1));
        q = (ratio - 1) * (r - 1) * (s - 1);
      }
      if (p > 0) q = -q;
      p = std::abs(p);
      accepted = 2 * p < std::min(3 * middle * q - std::abs(tolerance * q), std::abs(e * q));
      if (accepted) {
        e = d;
        d = p / q;
      }
    }
    if (!accepted) {
      d = middle;
      e = d;
    }
    a = b;
    fa = fb;
    if (std::abs(d) > tolerance) {
      b += d;
    } else {
      b += middle < 0 ? -tolerance : tolerance;
    }
    fb = f(b);
  }
  return b;
}

template <qxReal T>
T CQXAlgebraFunctions<T>::Secant(T lo, T hi, T tol, Function f) {
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

template <qxReal T>
T CQXAlgebraFunctions<T>::Bisection(T lo, T hi, T tol, Function f) {
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

template <qxReal T>
void CQXAlgebraFunctions<T>::NarrowRootBrackets(const T& lo, const T& hi, std::int32_t n, std::int32_t& found,
                                                T* lowerEnds, T* upperEnds, Function f) {
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

template <qxReal T>
std::int32_t CQXAlgebraFunctions<T>::SearchRootBrackets(T& x1, T& x2, Function f) {
  constexpr T growth = T(1.6);
  T value1 = f(x1);
  T value2 = f(x2);
  for (int iteration = 0; iteration < 49; ++iteration) {
    if (value1 * value2 < 0) return 1;
    if (std::abs(value2) > std::abs(value1)) {
      x1 += growth * (x1 - x2);
      value1 = f(x1);
    } else {
      x2 += growth * (x2 - x1);
      value2 = f(x1);  // at the end that stayed: the contract
    }
  }
  return 0;
}

template class CQXAlgebraFunctions<float>;
template class CQXAlgebraFunctions<double>;

#include <qx/foundation/internal/instantiate.h>
#include <qx/foundation/tolerance.h>
#include <qx/solvers/internal/scalar_minimization.h>
#include <qx/solvers/internal/user_function.h>

#include <cmath>
#include <utility>

// Comparisons stand in the sense in which the algorithms are told: not a number takes the other branch.

namespace qxSolvers {

namespace {

template <qxReal T>
constexpr T goldenGrowth = T(1.61803399);
template <qxReal T>
constexpr T goldenRatio = T(0.61803399);
template <qxReal T>
constexpr T goldenComplement = T(0.38196601);
template <qxReal T>
constexpr T magnificationLimit = T(100);
constexpr int iterationLimit = 100;

/// Zero guard, and the absolute part of the tolerances.
template <qxReal T>
constexpr T smallValue = QX_TOLERANCE<T>;

template <qxReal T>
bool AreClose(T a, T b) {
  return std::abs(a - b) <= smallValue<T>;
}

/// @p magnitude with the sign of @p sign, where zero counts as positive.
template <qxReal T>
T WithSign(T magnitude, T sign) {
  return sign >= 0 ? magnitude : -magnitude;
}

/// Abscissa of the minimum of the parabola through three points.
template <qxReal T>
T ParabolaMinimum(T a, T b, T c, T fa, T fb, T fc) {
  const T r = (fb - fc) * (b - a);
  const T q = (fb - fa) * (b - c);
  T denominator = std::abs(q - r);
  if (denominator < smallValue<T>) denominator = smallValue<T>;
  denominator *= 2;
  if (q < r) denominator = -denominator;
  return b - (q * (b - c) - r * (b - a)) / denominator;
}

/// The interval of the two descents, and what they test alike.
template <qxReal T>
struct Interval {
  Interval(T a, T c) : lo(c < a ? c : a), hi(c < a ? a : c) {}

  /// Takes the tolerances of an iteration; true when @p x is known well enough.
  bool IsDone(T x, T tol) {
    middle = (lo + hi) / 2;
    tol1 = tol * std::abs(x) + smallValue<T>;
    tol2 = 2 * tol1;
    return std::abs(x - middle) <= tol2 - (hi - lo) / 2;
  }

  /// The step @p d from @p x, or the smallest one towards the middle where it would come too close to an end.
  T KeptFromEnds(T x, T d) const { return x + d - lo < tol2 || hi - (x + d) < tol2 ? WithSign(tol1, middle - x) : d; }

  bool Contains(T x) const { return lo < x && x < hi; }

  T lo;
  T hi;
  T middle{};
  T tol1{};
  T tol2{};
};

template <qxReal T>
struct Point {
  T x;
  T f;
};

template <qxReal T>
struct PointWithDerivative {
  T x;
  T f;
  T df;
};

/// The minimum of the parabola through the three best points as a step, kept from the ends of the interval.
/// @param formerStep the step before the last one
/// @return false when a golden step does better; @p step is not touched then
template <qxReal T>
bool FitParabola(const Interval<T>& interval, const Point<T>& best, const Point<T>& second, const Point<T>& third,
                 T formerStep, T& step) {
  const T x = best.x;
  if (std::abs(formerStep) <= interval.tol1) return false;
  const T r = (best.f - third.f) * (x - second.x);
  T q = (best.f - second.f) * (x - third.x);
  T p = (x - third.x) * q - (x - second.x) * r;
  q = 2 * (q - r);
  if (q > 0) p = -p;
  q = std::abs(q);
  if (std::abs(q * T(0.5) * formerStep) <= std::abs(p) || p <= (interval.lo - x) * q || (interval.hi - x) * q <= p) {
    return false;
  }
  step = interval.KeptFromEnds(x, p / q);
  return true;
}

/// A step by the secant through the derivatives at two points, kept from the ends of the interval.
/// @param[in,out] formerStep the step before the last one, then the last one
/// @param[in,out] step the last step, then the next one
/// @return false when a bisection does better; both steps are not touched then
template <qxReal T>
bool FitSecant(const Interval<T>& interval, const PointWithDerivative<T>& best, const PointWithDerivative<T>& second,
               const PointWithDerivative<T>& third, T& formerStep, T& step) {
  const T x = best.x;
  if (std::abs(formerStep) <= interval.tol1) return false;
  T d1 = 2 * (interval.hi - interval.lo);
  T d2 = d1;
  if (std::abs(best.df - second.df) > smallValue<T>) d1 = (second.x - x) * best.df / (best.df - second.df);
  if (std::abs(best.df - third.df) > smallValue<T>) d2 = (third.x - x) * best.df / (best.df - third.df);
  const bool isUsable1 = interval.Contains(x + d1) && best.df * d1 <= 0;
  const bool isUsable2 = interval.Contains(x + d2) && best.df * d2 <= 0;
  if (!isUsable1 && !isUsable2) return false;
  const T secant = isUsable1 && (!isUsable2 || std::abs(d1) < std::abs(d2)) ? d1 : d2;
  if (std::abs(secant) < std::abs(formerStep / 2)) return false;  // short steps are the ones that are rejected
  formerStep = step;
  step = interval.KeptFromEnds(x, secant);
  return true;
}

}  // namespace

template <qxReal T, typename F>
void FindTriple(T& a, T& b, T& c, T& fa, T& fb, T& fc, F f) {
  fa = f(a);
  fb = f(b);
  if (fa < fb) {
    std::swap(a, b);
    std::swap(fa, fb);
  }
  c = b + goldenGrowth<T> * (b - a);
  fc = f(c);
  while (fb > fc) {
    T u = ParabolaMinimum(a, b, c, fa, fb, fc);
    const T uLimit = b + magnificationLimit<T> * (c - b);
    T fu = f(u);  // also where u is discarded below
    if ((b - u) * (u - c) > 0) {
      if (fu < fc) {
        a = b;
        b = u;
        fa = fb;
        fb = fu;
        return;
      }
      if (fu > fb) {
        c = u;
        fc = fu;
        return;
      }
      u = c + goldenGrowth<T> * (c - b);
      fu = f(u);
    } else if ((c - u) * (u - uLimit) > 0) {
      if (fu < fc) {
        const T next = u + goldenGrowth<T> * (u - c);
        b = c;
        c = u;
        u = next;
        fb = fc;
        fc = fu;
        fu = f(u);
      }
    } else if ((u - uLimit) * (uLimit - c) < 0) {
      u = c + goldenGrowth<T> * (c - b);
      fu = f(u);
    } else {
      u = uLimit;
      fu = f(u);
    }
    a = b;
    b = c;
    c = u;
    fa = fb;
    fb = fc;
    fc = fu;
  }
}

template <qxReal T, typename F>
T MinimizeByGoldenSections(T a, T b, T c, T tol, T& xMin, F f) {
  T x0 = a;
  T x1 = b;
  T x2 = b;
  T x3 = c;
  if (std::abs(c - b) <= std::abs(b - a)) {
    x1 = b - goldenComplement<T> * (b - a);
  } else {
    x2 = b + goldenComplement<T> * (c - b);
  }
  T f1 = f(x1);
  T f2 = f(x2);
  while (tol * (std::abs(x1) + std::abs(x2)) < std::abs(x3 - x0)) {
    if (f1 <= f2) {
      x3 = x2;
      x2 = x1;
      x1 = goldenRatio<T> * x1 + goldenComplement<T> * x0;
      f2 = f1;
      f1 = f(x1);
    } else {
      x0 = x1;
      x1 = x2;
      x2 = goldenRatio<T> * x2 + goldenComplement<T> * x3;
      f1 = f2;
      f2 = f(x2);
    }
  }
  if (f1 < f2) {
    xMin = x1;
    return f1;
  }
  xMin = x2;
  return f2;
}

template <qxReal T, typename F>
T MinimizeByParabolas(T a, T b, T c, T tol, T& xMin, F f) {
  Interval<T> interval(a, c);
  auto& [lo, hi, middle, tol1, tol2] = interval;
  // The best point so far, the second best, and the second best before that.
  Point<T> best{b, f(b)};
  Point<T> second = best;
  Point<T> third = best;
  T d = 0;
  T e = 0;
  for (int iteration = 0; iteration < iterationLimit; ++iteration) {
    const T x = best.x;
    if (interval.IsDone(x, tol)) break;
    const T lastStep = d;
    if (FitParabola(interval, best, second, third, e, d)) {
      e = lastStep;
    } else {
      e = x < middle ? hi - x : lo - x;
      d = goldenComplement<T> * e;
    }
    const T u = std::abs(d) >= tol1 ? x + d : x + WithSign(tol1, d);
    const Point<T> trial{u, f(u)};
    if (trial.f <= best.f) {
      (u >= x ? lo : hi) = x;
      third = second;
      second = best;
      best = trial;
    } else {
      (u < x ? lo : hi) = u;
      if (trial.f <= second.f || AreClose(second.x, x)) {
        third = second;
        second = trial;
      } else if (trial.f <= third.f || AreClose(third.x, x) || AreClose(second.x, third.x)) {
        third = trial;
      }
    }
  }
  xMin = best.x;
  return best.f;
}

template <qxReal T, typename F>
T MinimizeByDerivatives(T a, T b, T c, T tol, T& xMin, F f, F df) {
  Interval<T> interval(a, c);
  auto& [lo, hi, middle, tol1, tol2] = interval;
  const T fb = f(b);
  PointWithDerivative<T> best{b, fb, df(b)};
  PointWithDerivative<T> second = best;
  PointWithDerivative<T> third = best;
  T d = 0;
  T e = 0;
  for (int iteration = 0; iteration < iterationLimit; ++iteration) {
    const T x = best.x;
    if (interval.IsDone(x, tol)) break;
    if (!FitSecant(interval, best, second, third, e, d)) {
      e = best.df >= 0 ? lo - x : hi - x;
      d = e / 2;
    }
    const bool isSmallest = !(std::abs(d) >= tol1);
    const T u = isSmallest ? x + WithSign(tol1, d) : x + d;
    const T fu = f(u);
    if (isSmallest && fu > best.f) break;
    const PointWithDerivative<T> trial{u, fu, df(u)};
    if (trial.f <= best.f) {
      (u < x ? hi : lo) = x;
      third = second;
      second = best;
      best = trial;
    } else {
      (u < x ? lo : hi) = u;
      if (trial.f <= second.f || AreClose(third.x, second.x)) {
        third = second;
        second = trial;
      } else if (trial.f < third.f || AreClose(third.x, x)) {
        third = trial;
      }
    }
  }
  xMin = best.x;
  return best.f;
}

#define INSTANTIATE_FOR(T, F)                             \
  template void FindTriple(T&, T&, T&, T&, T&, T&, F);    \
  template T MinimizeByGoldenSections(T, T, T, T, T&, F); \
  template T MinimizeByParabolas(T, T, T, T, T&, F);      \
  template T MinimizeByDerivatives(T, T, T, T, T&, F, F);
#define QX_INSTANTIATE(T)      \
  INSTANTIATE_FOR(T, T (*)(T)) \
  INSTANTIATE_FOR(T, UserFunction<T>)
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE
#undef INSTANTIATE_FOR

}  // namespace qxSolvers

#include <qx/arrays/gauss.h>
#include <qx/foundation/internal/instantiate.h>

#include <cmath>
#include <limits>
#include <numbers>

namespace {

constexpr double rootOfTwo = std::numbers::sqrt2;
constexpr double rootOfTwoHigh = 1.4142135381698608;    // its first 24 bits
constexpr double rootOfTwoLow = 2.420323420895794e-08;  // and the rest
constexpr double rootOfTwoPi = 2.5066282746310002;

double Density(double x) noexcept { return std::exp(-0.5 * x * x) / rootOfTwoPi; }

/// The lower tail by the complementary error function of -x / sqrt(2), corrected by what the quotient rounds off: a
/// relative error of eps there is one of x^2 eps in the tail.
double LowerTail(double x) noexcept {
  const double z = -x / rootOfTwo;
  const double tail = 0.5 * std::erfc(z);
  if (!(std::abs(z) < 30)) return tail;
  const double high = static_cast<float>(z);  // the product of two of 24 bits is exact
  const double low = z - high;
  const double rest = -x - high * rootOfTwoHigh - high * rootOfTwoLow - low * rootOfTwo;
  return tail - rest * Density(x);
}

/// What separates p from 0.5, with its sign, at x near 0, where the difference of two tails would cancel.
double FromMiddle(double x) noexcept { return 0.5 * std::erf(x / rootOfTwo); }

double Horner(const double (&c)[6], double x) noexcept {
  return ((((c[0] * x + c[1]) * x + c[2]) * x + c[3]) * x + c[4]) * x + c[5];
}

/// P. J. Acklam's approximation for 0 < p <= 0.5, with a relative error below 1.2e-9.
double ApproximateQuantile(double p) noexcept {
  constexpr double a[] = {-3.969683028665376e+01, 2.209460984245205e+02,  -2.759285104469687e+02,
                          1.383577518672690e+02,  -3.066479806614716e+01, 2.506628277459239e+00};
  constexpr double b[] = {-5.447609879822406e+01, 1.615858368580409e+02,  -1.556989798598866e+02,
                          6.680131188771972e+01,  -1.328068155288572e+01, 1};
  constexpr double c[] = {-7.784894002430293e-03, -3.223964580411365e-01, -2.400758277161838e+00,
                          -2.549732539343734e+00, 4.374664141464968e+00,  2.938163982698783e+00};
  constexpr double d[] = {0, 7.784695709041462e-03, 3.224671290700398e-01, 2.445134137142996e+00, 3.754408661907416e+00,
                          1};
  constexpr double tailBound = 0.02425;
  if (p < tailBound) {
    const double q = std::sqrt(-2 * std::log(p));
    return Horner(c, q) / Horner(d, q);
  }
  const double q = p - 0.5;
  return Horner(a, q * q) * q / Horner(b, q * q);
}

double Quantile(double p) noexcept {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  if (!(p >= 0 && p <= 1)) return std::numeric_limits<double>::quiet_NaN();
  if (p == 0 || p == 1) return p == 0 ? -infinity : infinity;
  if (p > 0.5) return -Quantile(1 - p);  // exact
  const double x = ApproximateQuantile(p);
  const double error = p > 0.25 ? FromMiddle(x) - (p - 0.5) : LowerTail(x) - p;
  const double step = error / Density(x);
  return x - step / (1 + 0.5 * x * step);
}

struct Legendre {
  double value;
  double slope;
};

/// By the recurrence of the differences: near x = 1, where it matters, the plain one loses digits with the degree.
Legendre LegendreAt(std::int32_t degree, double x) noexcept {
  double value = 1;
  double difference = 0;
  for (std::int32_t k = 1; k <= degree; ++k) {
    difference = ((k - 1.0) * difference + (2.0 * k - 1) * (x - 1) * value) / k;
    value += difference;
  }
  return {value, degree * ((x - 1) * value + difference) / ((x - 1) * (x + 1))};
}

/// The zero number @p i of the Legendre polynomial, counted from the largest.
double LegendreZero(std::int32_t degree, std::int32_t i) noexcept {
  const double n = degree;
  double x = (1 - (n - 1) / (8 * n * n * n)) * std::cos(std::numbers::pi * (i + 0.75) / (n + 0.5));
  for (int step = 0; step < 10; ++step) {
    const Legendre p = LegendreAt(degree, x);
    const double shift = p.value / p.slope;
    x -= shift;
    if (!(std::abs(shift) > 1e-15)) break;
  }
  return x;
}

}  // namespace

template <qxReal T>
std::int32_t qxGetGaussWeights(std::int32_t count, qxNonDeduced<T> sigma, T* weights) noexcept {
  if (count < 1 || !(sigma > 0)) return 0;
  const auto weight = [=](std::int32_t i) {
    const double distance = (std::abs(2.0 * i - (count - 1.0)) - (count % 2 == 0 ? 1 : 0)) / 2;
    // Relative to the middle ones, which an even count has half a step from the centre: they never vanish.
    const double square = count % 2 == 0 ? distance * (distance + 1) : distance * distance;
    return std::exp(-0.5 * square / sigma / sigma);
  };
  double sum = 0;
  for (std::int32_t i = 0; i < count; ++i) sum += weight(i);
  for (std::int32_t i = 0; i < count; ++i) weights[i] = static_cast<T>(weight(i) / sum);
  return 1;
}

template <qxReal T>
T qxCalculateGaussIntegral(T x) noexcept {
  return static_cast<T>(LowerTail(x));
}

template <qxReal T>
T qxCalculateGaussIntegral(T a, T b, qxNonDeduced<T> mean, qxNonDeduced<T> sigma) noexcept {
  const double low = (static_cast<double>(a) - mean) / sigma;
  const double high = (static_cast<double>(b) - mean) / sigma;
  if (low > 0 && high > 0) return static_cast<T>(LowerTail(-low) - LowerTail(-high));
  if (low < 0 && high < 0) return static_cast<T>(LowerTail(high) - LowerTail(low));
  return static_cast<T>(FromMiddle(high) - FromMiddle(low));
}

template <qxReal T>
T qxCalculateInverseGaussIntegral(T p) noexcept {
  return static_cast<T>(Quantile(p));
}

template <qxReal T>
std::int32_t qxGetGaussLegendreRule(std::int32_t count, T* nodes, T* weights) noexcept {
  if (count < 1) return 0;
  for (std::int32_t i = 0; i < (count + 1) / 2; ++i) {
    const double x = 2 * i + 1 == count ? 0 : LegendreZero(count, i);
    const Legendre p = LegendreAt(count, x);
    const double cosine = (1 - x) * (1 + x);
    // At the zero itself, which x misses by its rounding: near the ends that would be up to count^2 eps of the weight.
    const double atZero = 1 + 2 * x * (p.value / p.slope) / cosine;
    nodes[i] = static_cast<T>(-x);
    nodes[count - 1 - i] = static_cast<T>(x);
    weights[i] = weights[count - 1 - i] = static_cast<T>(2 / (cosine * p.slope * p.slope) * atZero);
  }
  return 1;
}

#define QX_INSTANTIATE(T)                                                \
  template std::int32_t qxGetGaussWeights(std::int32_t, T, T*) noexcept; \
  template T qxCalculateGaussIntegral(T) noexcept;                       \
  template T qxCalculateGaussIntegral(T, T, T, T) noexcept;              \
  template T qxCalculateInverseGaussIntegral(T) noexcept;                \
  template std::int32_t qxGetGaussLegendreRule(std::int32_t, T*, T*) noexcept;
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE

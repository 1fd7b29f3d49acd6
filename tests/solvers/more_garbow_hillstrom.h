#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numbers>
#include <vector>

/// @file
/// The 35 problems of J. J. More, B. S. Garbow and K. E. Hillstrom, Testing unconstrained optimization software, ACM
/// Trans. Math. Softw. 7 (1981), with their data, starts and least values. Derivatives come from dual numbers.

namespace mgh {

/// A number with its derivative in one direction.
template <typename T>
struct Dual {
  T v = 0, d = 0;
  Dual() = default;
  Dual(T value, T slope = 0) : v(value), d(slope) {}
  Dual operator-() const { return {-v, -d}; }
  Dual& operator+=(const Dual& b) { return *this = *this + b; }
  Dual& operator*=(const Dual& b) { return *this = *this * b; }
  friend Dual operator+(const Dual& a, const Dual& b) { return {a.v + b.v, a.d + b.d}; }
  friend Dual operator-(const Dual& a, const Dual& b) { return {a.v - b.v, a.d - b.d}; }
  friend Dual operator*(const Dual& a, const Dual& b) { return {a.v * b.v, a.d * b.v + a.v * b.d}; }
  friend Dual operator/(const Dual& a, const Dual& b) { return {a.v / b.v, (a.d - a.v / b.v * b.d) / b.v}; }
  friend Dual exp(const Dual& a) { return {std::exp(a.v), std::exp(a.v) * a.d}; }
  friend Dual sin(const Dual& a) { return {std::sin(a.v), std::cos(a.v) * a.d}; }
  friend Dual cos(const Dual& a) { return {std::cos(a.v), -std::sin(a.v) * a.d}; }
  friend Dual log(const Dual& a) { return {std::log(a.v), a.d / a.v}; }
  friend Dual atan(const Dual& a) { return {std::atan(a.v), a.d / (1 + a.v * a.v)}; }
  friend Dual sqrt(const Dual& a) { return {std::sqrt(a.v), a.d / (2 * std::sqrt(a.v))}; }
  friend Dual abs(const Dual& a) { return a.v < 0 ? -a : a; }
  friend bool operator<(const Dual& a, T b) { return a.v < b; }
};

/// Residuals of problem number @p number. S is T or Dual<T>.
template <typename T, typename S>
void Residuals(int number, std::size_t n, std::size_t m, const S* x, S* r) {
  using std::exp, std::sin, std::cos, std::log, std::atan, std::sqrt, std::abs;
  const auto c = [](double constant) { return S(static_cast<T>(constant)); };
  const auto N = [](std::size_t i) { return S(static_cast<T>(i)); };
  const auto square = [](const S& a) { return a * a; };
  S sum = c(0);
  switch (number) {
    case 1:
    case 21:
      for (std::size_t i = 0; i < n; i += 2) {
        r[i] = c(10) * (x[i + 1] - x[i] * x[i]);
        r[i + 1] = c(1) - x[i];
      }
      break;
    case 2:
      r[0] = c(-13) + x[0] + ((c(5) - x[1]) * x[1] - c(2)) * x[1];
      r[1] = c(-29) + x[0] + ((x[1] + c(1)) * x[1] - c(14)) * x[1];
      break;
    case 3:
      r[0] = c(1e4) * x[0] * x[1] - c(1);
      r[1] = exp(-x[0]) + exp(-x[1]) - c(1.0001);
      break;
    case 4:
      r[0] = x[0] - c(1e6);
      r[1] = x[1] - c(2e-6);
      r[2] = x[0] * x[1] - c(2);
      break;
    case 5:
      r[0] = c(1.5) - x[0] * (c(1) - x[1]);
      r[1] = c(2.25) - x[0] * (c(1) - x[1] * x[1]);
      r[2] = c(2.625) - x[0] * (c(1) - x[1] * x[1] * x[1]);
      break;
    case 6:
      for (std::size_t i = 1; i <= m; ++i) r[i - 1] = c(2) + N(2 * i) - (exp(N(i) * x[0]) + exp(N(i) * x[1]));
      break;
    case 7: {
      const S turn = atan(x[1] / x[0]) * c(0.5 / std::numbers::pi) + (x[0] < T(0) ? c(0.5) : c(0));
      r[0] = c(10) * (x[2] - c(10) * turn);
      r[1] = c(10) * (sqrt(x[0] * x[0] + x[1] * x[1]) - c(1));
      r[2] = x[2];
      break;
    }
    case 8: {
      const double y[] = {.14, .18, .22, .25, .29, .32, .35, .39, .37, .58, .73, .96, 1.34, 2.10, 4.39};
      for (std::size_t i = 1; i <= 15; ++i) {
        r[i - 1] = c(y[i - 1]) - (x[0] + N(i) / (N(16 - i) * x[1] + N(std::min(i, 16 - i)) * x[2]));
      }
      break;
    }
    case 9: {
      const double y[] = {.0009, .0044, .0175, .0540, .1295, .2420, .3521, .3989};
      for (std::size_t i = 1; i <= 15; ++i) {
        const S t = (c(8) - N(i)) / c(2);
        r[i - 1] = x[0] * exp(-x[1] * square(t - x[2]) / c(2)) - c(y[std::min(i, 16 - i) - 1]);
      }
      break;
    }
    case 10: {
      const double y[] = {34780, 28610, 23650, 19630, 16370, 13720, 11540, 9744,
                          8261,  7030,  6005,  5147,  4427,  3820,  3307,  2872};
      for (std::size_t i = 1; i <= 16; ++i) r[i - 1] = x[0] * exp(x[1] / (c(45) + N(5 * i) + x[2])) - c(y[i - 1]);
      break;
    }
    case 11:
      for (std::size_t i = 1; i <= m; ++i) {
        const double t = static_cast<double>(i) / 100, y = 25 + std::pow(-50 * std::log(t), 2.0 / 3);
        r[i - 1] = exp(-exp(log(abs(c(y) - x[1])) * x[2]) / x[0]) - c(t);
      }
      break;
    case 12:
      for (std::size_t i = 1; i <= m; ++i) {
        const double t = static_cast<double>(i) / 10;
        r[i - 1] = exp(c(-t) * x[0]) - exp(c(-t) * x[1]) - x[2] * c(std::exp(-t) - std::exp(-10 * t));
      }
      break;
    case 13:
    case 22:
      for (std::size_t i = 0; i < n; i += 4) {
        r[i] = x[i] + c(10) * x[i + 1];
        r[i + 1] = c(std::sqrt(5.0)) * (x[i + 2] - x[i + 3]);
        r[i + 2] = square(x[i + 1] - c(2) * x[i + 2]);
        r[i + 3] = c(std::sqrt(10.0)) * square(x[i] - x[i + 3]);
      }
      break;
    case 14:
      r[0] = c(10) * (x[1] - x[0] * x[0]);
      r[1] = c(1) - x[0];
      r[2] = c(std::sqrt(90.0)) * (x[3] - x[2] * x[2]);
      r[3] = c(1) - x[2];
      r[4] = c(std::sqrt(10.0)) * (x[1] + x[3] - c(2));
      r[5] = (x[1] - x[3]) / c(std::sqrt(10.0));
      break;
    case 15: {
      const double y[] = {.1957, .1947, .1735, .1600, .0844, .0627, .0456, .0342, .0323, .0235, .0246};
      const double u[] = {4, 2, 1, .5, .25, .167, .125, .1, .0833, .0714, .0625};
      for (std::size_t i = 0; i < 11; ++i) {
        r[i] = c(y[i]) - x[0] * (c(u[i] * u[i]) + c(u[i]) * x[1]) / (c(u[i] * u[i]) + c(u[i]) * x[2] + x[3]);
      }
      break;
    }
    case 16:
      for (std::size_t i = 1; i <= m; ++i) {
        const double t = static_cast<double>(i) / 5;
        r[i - 1] = square(x[0] + c(t) * x[1] - c(std::exp(t))) + square(x[2] + x[3] * c(std::sin(t)) - c(std::cos(t)));
      }
      break;
    case 17: {
      const double y[] = {.844, .908, .932, .936, .925, .908, .881, .850, .818, .784, .751,
                          .718, .685, .658, .628, .603, .580, .558, .538, .522, .506, .490,
                          .478, .467, .457, .448, .438, .431, .424, .420, .414, .411, .406};
      for (std::size_t i = 0; i < 33; ++i) {
        r[i] = c(y[i]) - (x[0] + x[1] * exp(-N(10 * i) * x[3]) + x[2] * exp(-N(10 * i) * x[4]));
      }
      break;
    }
    case 18:
      for (std::size_t i = 1; i <= m; ++i) {
        const double t = static_cast<double>(i) / 10;
        r[i - 1] = x[2] * exp(c(-t) * x[0]) - x[3] * exp(c(-t) * x[1]) + x[5] * exp(c(-t) * x[4]) -
                   c(std::exp(-t) - 5 * std::exp(-10 * t) + 3 * std::exp(-4 * t));
      }
      break;
    case 19: {
      const double y[] = {1.366, 1.191, 1.112, 1.013, .991, .885, .831, .847, .786, .725, .746, .679, .608,
                          .655,  .616,  .606,  .602,  .626, .651, .724, .649, .649, .694, .644, .624, .661,
                          .612,  .558,  .533,  .495,  .500, .423, .395, .375, .372, .391, .396, .405, .428,
                          .429,  .523,  .562,  .607,  .653, .672, .708, .633, .668, .645, .632, .591, .559,
                          .597,  .625,  .739,  .710,  .729, .720, .636, .581, .428, .292, .162, .098, .054};
      for (std::size_t i = 0; i < 65; ++i) {
        const S t = c(static_cast<double>(i) / 10);
        r[i] = c(y[i]) - x[0] * exp(-t * x[4]);
        for (std::size_t k = 1; k < 4; ++k) r[i] += -(x[k] * exp(-square(t - x[k + 7]) * x[k + 4]));
      }
      break;
    }
    case 20:
      for (std::size_t i = 1; i <= 29; ++i) {
        const S t = N(i) / c(29);
        S value = c(0), slope = c(0);
        for (std::size_t j = n; j-- > 0;) {
          value = value * t + x[j];
          if (j > 0) slope = slope * t + N(j) * x[j];
        }
        r[i - 1] = slope - value * value - c(1);
      }
      r[29] = x[0];
      r[30] = x[1] - x[0] * x[0] - c(1);
      break;
    case 23:
      for (std::size_t i = 0; i < n; ++i) {
        r[i] = c(std::sqrt(1e-5)) * (x[i] - c(1));
        sum += x[i] * x[i];
      }
      r[n] = sum - c(0.25);
      break;
    case 24: {
      const S root = c(std::sqrt(1e-5));
      r[0] = x[0] - c(0.2);
      for (std::size_t i = 1; i < n; ++i) {
        const double t = static_cast<double>(i) / 10;
        r[i] = root * (exp(x[i] / c(10)) + exp(x[i - 1] / c(10)) - c(std::exp(t + 0.1) + std::exp(t)));
        r[n + i - 1] = root * (exp(x[i] / c(10)) - c(std::exp(-0.1)));
      }
      for (std::size_t j = 0; j < n; ++j) sum += N(n - j) * x[j] * x[j];
      r[2 * n - 1] = sum - c(1);
      break;
    }
    case 25:
      for (std::size_t i = 0; i < n; ++i) {
        r[i] = x[i] - c(1);
        sum += N(i + 1) * (x[i] - c(1));
      }
      r[n] = sum;
      r[n + 1] = sum * sum;
      break;
    case 26:
      for (std::size_t i = 0; i < n; ++i) sum += cos(x[i]);
      for (std::size_t i = 0; i < n; ++i) r[i] = N(n) - sum + N(i + 1) * (c(1) - cos(x[i])) - sin(x[i]);
      break;
    case 27: {
      S product = c(1);
      for (std::size_t i = 0; i < n; ++i) {
        sum += x[i];
        product *= x[i];
      }
      for (std::size_t i = 0; i + 1 < n; ++i) r[i] = x[i] + sum - N(n + 1);
      r[n - 1] = product - c(1);
      break;
    }
    case 28:
    case 29: {
      const auto t = [&](std::size_t i) { return N(i + 1) / N(n + 1); };
      const auto cube = [&](std::size_t i) { return (x[i] + t(i) + c(1)) * square(x[i] + t(i) + c(1)); };
      for (std::size_t i = 0; i < n; ++i) {
        if (number == 28) {
          r[i] = c(2) * x[i] - (i > 0 ? x[i - 1] : c(0)) - (i + 1 < n ? x[i + 1] : c(0)) +
                 cube(i) / (c(2) * square(N(n + 1)));
        } else {
          S low = c(0), high = c(0);
          for (std::size_t j = 0; j < n; ++j) (j <= i ? low : high) += (j <= i ? t(j) : c(1) - t(j)) * cube(j);
          r[i] = x[i] + ((c(1) - t(i)) * low + t(i) * high) / (c(2) * N(n + 1));
        }
      }
      break;
    }
    case 30:
      for (std::size_t i = 0; i < n; ++i) {
        r[i] = (c(3) - c(2) * x[i]) * x[i] - (i > 0 ? x[i - 1] : c(0)) - (i + 1 < n ? c(2) * x[i + 1] : c(0)) + c(1);
      }
      break;
    case 31:
      for (std::size_t i = 0; i < n; ++i) {
        r[i] = x[i] * (c(2) + c(5) * x[i] * x[i]) + c(1);
        for (std::size_t j = i > 5 ? i - 5 : 0; j <= std::min(i + 1, n - 1); ++j) {
          if (j != i) r[i] += -(x[j] * (c(1) + x[j]));
        }
      }
      break;
    case 32:
      for (std::size_t j = 0; j < n; ++j) sum += x[j];
      for (std::size_t i = 0; i < m; ++i) r[i] = (i < n ? x[i] : c(0)) - c(2) * sum / N(m) - c(1);
      break;
    case 33:
      for (std::size_t j = 0; j < n; ++j) sum += N(j + 1) * x[j];
      for (std::size_t i = 0; i < m; ++i) r[i] = N(i + 1) * sum - c(1);
      break;
    case 34:
      for (std::size_t j = 1; j + 1 < n; ++j) sum += N(j + 1) * x[j];
      for (std::size_t i = 0; i < m; ++i) r[i] = (i + 1 < m ? N(i) * sum : c(0)) - c(1);
      break;
    default:  // 35
      std::fill_n(r, m, c(0));
      for (std::size_t j = 0; j < n; ++j) {
        const S argument = c(2) * x[j] - c(1);
        S former = c(1), value = argument;
        for (std::size_t i = 0; i < m; ++i) {
          r[i] += value / N(n);
          const S next = c(2) * argument * value - former;
          former = value;
          value = next;
        }
      }
      for (std::size_t i = 1; i < m; i += 2) r[i] += c(1) / N((i + 1) * (i + 1) - 1);
      break;
  }
}

struct Problem {
  int number;
  const char* name;
  std::size_t n, m;
  std::vector<double> start;
  std::vector<double> minima;  ///< the published least value, and other known stationary or limit values

  template <typename T>
  void Evaluate(const T* x, T* residuals) const {
    Residuals<T>(number, n, m, x, residuals);
  }
  template <typename T>
  void EvaluateJacobian(const T* x, T* jacobian) const {
    std::vector<Dual<T>> at(x, x + n), values(m);
    for (std::size_t k = 0; k < n; ++k) {
      at[k].d = 1;
      Residuals<T>(number, n, m, at.data(), values.data());
      at[k].d = 0;
      for (std::size_t i = 0; i < m; ++i) jacobian[i * n + k] = values[i].d;
    }
  }
  /// Sum of squares and, unless null, its gradient.
  template <typename T>
  T Value(const T* x, T* gradient) const {
    std::vector<T> r(m), jacobian(gradient != nullptr ? m * n : 0);
    Evaluate(x, r.data());
    T f = 0;
    for (const T residual : r) f += residual * residual;
    if (gradient == nullptr) return f;
    EvaluateJacobian(x, jacobian.data());
    std::fill_n(gradient, n, T(0));
    for (std::size_t i = 0; i < m; ++i) {
      for (std::size_t k = 0; k < n; ++k) gradient[k] += 2 * r[i] * jacobian[i * n + k];
    }
    return f;
  }
  /// Whether @p f is the published least value (@p any: or another known one) to 1e-3 of it and @p floor.
  [[nodiscard]] bool IsSolved(double f, bool any = false, double floor = 1e-9) const {
    for (std::size_t i = 0; i < (any ? minima.size() : 1); ++i) {
      const double bound = 1e-3 * minima[i] + floor;
      if (i == 0 ? f <= minima[i] + bound : std::abs(f - minima[i]) <= bound) return true;
    }
    return false;
  }
};

inline std::vector<double> Repeat(std::size_t n, const std::vector<double>& pattern) {
  std::vector<double> x(n);
  for (std::size_t i = 0; i < n; ++i) x[i] = pattern[i % pattern.size()];
  return x;
}

/// start[i] = f((i + 1) / by)
template <typename F>
std::vector<double> Ramp(std::size_t n, double by, F f) {
  std::vector<double> x(n);
  for (std::size_t i = 0; i < n; ++i) x[i] = f(static_cast<double>(i + 1) / by);
  return x;
}

inline std::vector<Problem> All() {
  const auto itself = [](double t) { return t; };
  const auto arc = [](double t) { return t * (t - 1); };
  return {{1, "Rosenbrock", 2, 2, {-1.2, 1}, {0}},
          {2, "Freudenstein-Roth", 2, 2, {0.5, -2}, {0, 48.98425}},
          {3, "Powell badly scaled", 2, 2, {0, 1}, {0}},
          {4, "Brown badly scaled", 2, 3, {1, 1}, {0}},
          {5, "Beale", 2, 3, {1, 1}, {0}},
          {6, "Jennrich-Sampson", 2, 10, {0.3, 0.4}, {124.362}},
          {7, "helical valley", 3, 3, {-1, 0, 0}, {0}},
          {8, "Bard", 3, 15, {1, 1, 1}, {8.21487e-3, 17.4286}},
          {9, "Gaussian", 3, 15, {0.4, 1, 0}, {1.12793e-8}},
          {10, "Meyer", 3, 16, {0.02, 4000, 250}, {87.9458}},
          {11, "Gulf", 3, 99, {5, 2.5, 0.15}, {0}},
          {12, "Box three-dimensional", 3, 10, {0, 10, 20}, {0}},
          {13, "Powell singular", 4, 4, {3, -1, 0, 1}, {0}},
          {14, "Wood", 4, 6, {-3, -1, -3, -1}, {0}},
          {15, "Kowalik-Osborne", 4, 11, {.25, .39, .415, .39}, {3.07505e-4, 1.02734e-3}},
          {16, "Brown-Dennis", 4, 20, {25, 5, -5, -1}, {85822.2}},
          {17, "Osborne 1", 5, 33, {.5, 1.5, -1, .01, .02}, {5.46489e-5}},
          {18, "Biggs EXP6", 6, 13, {1, 2, 1, 1, 1, 1}, {0, 5.65565e-3}},
          {19, "Osborne 2", 11, 65, {1.3, .65, .65, .7, .6, 3, 5, 7, 2, 4.5, 5.5}, {4.01377e-2}},
          {20, "Watson", 6, 31, Repeat(6, {0}), {2.28767e-3}},
          {21, "extended Rosenbrock", 10, 10, Repeat(10, {-1.2, 1}), {0}},
          {22, "extended Powell singular", 12, 12, Repeat(12, {3, -1, 0, 1}), {0}},
          {23, "penalty I", 4, 5, Ramp(4, 1, itself), {2.24997e-5}},
          {24, "penalty II", 4, 8, Repeat(4, {0.5}), {9.37629e-6}},
          {25, "variably dimensioned", 10, 12, Ramp(10, 10, [](double t) { return 1 - t; }), {0}},
          {26, "trigonometric", 10, 10, Repeat(10, {0.1}), {0, 2.79506e-5}},
          {27, "Brown almost linear", 10, 10, Repeat(10, {0.5}), {0, 1}},
          {28, "discrete boundary value", 10, 10, Ramp(10, 11, arc), {0}},
          {29, "discrete integral equation", 10, 10, Ramp(10, 11, arc), {0}},
          {30, "Broyden tridiagonal", 10, 10, Repeat(10, {-1}), {0}},
          {31, "Broyden banded", 10, 10, Repeat(10, {-1}), {0}},
          {32, "linear, full rank", 10, 20, Repeat(10, {1}), {10}},
          {33, "linear, rank 1", 10, 20, Repeat(10, {1}), {20 * 19 / 82.0}},
          {34, "linear, rank 1, zeros", 10, 20, Repeat(10, {1}), {454 / 74.0}},
          {35, "Chebyquad", 8, 8, Ramp(8, 9, itself), {3.51687e-3}}};
}

}  // namespace mgh

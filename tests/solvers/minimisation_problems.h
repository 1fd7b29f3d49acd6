#pragma once

#include <qx/solvers/optimization.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <initializer_list>
#include <numbers>
#include <utility>
#include <vector>

/// @file
/// Standard problems with their published minima, for the tests and the benchmark of the minimisers.

namespace problems {

/// One problem: value and gradient, start, bounds (none when empty) and the published least value.
template <typename T>
struct Problem {
  const char* name;
  std::vector<T> start;
  T minimum;
  T (*evaluate)(std::size_t n, const T* x, T* gradient);
  std::vector<QX_OPTIMIZATION_CONSTRAINTS> kinds;
  std::vector<T> lower;
  std::vector<T> upper;

  Problem(const char* itsName, std::vector<T> itsStart, T itsMinimum, T (*itsEvaluate)(std::size_t, const T*, T*),
          std::vector<QX_OPTIMIZATION_CONSTRAINTS> itsKinds = std::vector<QX_OPTIMIZATION_CONSTRAINTS>(),
          std::vector<T> itsLower = std::vector<T>(), std::vector<T> itsUpper = std::vector<T>())
      : name(itsName),
        start(std::move(itsStart)),
        minimum(itsMinimum),
        evaluate(itsEvaluate),
        kinds(std::move(itsKinds)),
        lower(std::move(itsLower)),
        upper(std::move(itsUpper)) {}
};

/// Calls of the two callbacks; the problem and these counts travel as the user's argument.
template <typename T>
struct Run {
  const Problem<T>* problem;
  std::vector<T> scratch;
  int values = 0;
  int gradients = 0;

  explicit Run(const Problem<T>& p) : problem(&p), scratch(p.start.size()) {}

  static T Value(const CQXVectorN<T>& x, void* user) {
    Run& run = *static_cast<Run*>(user);
    ++run.values;
    return run.problem->evaluate(run.scratch.size(), x.Data(), run.scratch.data());
  }
  static void Gradient(const CQXVectorN<T>& x, CQXVectorN<T>& gradient, void* user) {
    Run& run = *static_cast<Run*>(user);
    ++run.gradients;
    run.problem->evaluate(run.scratch.size(), x.Data(), gradient.Data());
  }
};

template <typename T>
std::vector<T> Repeat(std::size_t n, std::vector<T> pattern) {
  std::vector<T> x(n);
  for (std::size_t i = 0; i < n; ++i) x[i] = pattern[i % pattern.size()];
  return x;
}

/// Sum of squares: adds a residual with up to four entries of its row of the Jacobian to the value and the gradient.
template <typename T>
struct Squares {
  T value = 0;
  T* gradient;
  Squares(std::size_t n, T* g) : gradient(g) { std::fill_n(g, n, T(0)); }
  struct Entry {
    std::size_t i;
    T slope;
  };
  void Add(T residual, std::initializer_list<Entry> row) {
    value += residual * residual;
    for (const Entry& entry : row) gradient[entry.i] += 2 * residual * entry.slope;
  }
};

// J. J. More, B. S. Garbow and K. E. Hillstrom, Testing unconstrained optimization software, ACM Trans. Math. Softw. 7
// (1981); the numbers are theirs.

/// (21), and (1) for n = 2.
template <typename T>
T Rosenbrock(std::size_t n, const T* x, T* g) {
  Squares<T> sum(n, g);
  for (std::size_t i = 0; i + 1 < n; i += 2) {
    sum.Add(10 * (x[i + 1] - x[i] * x[i]), {{i, -20 * x[i]}, {i + 1, 10}});
    sum.Add(1 - x[i], {{i, -1}});
  }
  return sum.value;
}

/// (2)
template <typename T>
T FreudensteinRoth(std::size_t n, const T* x, T* g) {
  Squares<T> sum(n, g);
  sum.Add(-13 + x[0] + ((5 - x[1]) * x[1] - 2) * x[1], {{0, 1}, {1, (10 - 3 * x[1]) * x[1] - 2}});
  sum.Add(-29 + x[0] + ((x[1] + 1) * x[1] - 14) * x[1], {{0, 1}, {1, (3 * x[1] + 2) * x[1] - 14}});
  return sum.value;
}

/// (5)
template <typename T>
T Beale(std::size_t n, const T* x, T* g) {
  Squares<T> sum(n, g);
  const T y[] = {T(1.5), T(2.25), T(2.625)};
  T power = 1;
  for (int i = 0; i < 3; ++i) {
    const T slope = static_cast<T>(i + 1) * power * x[0];
    power *= x[1];
    sum.Add(y[i] - x[0] * (1 - power), {{0, power - 1}, {1, slope}});
  }
  return sum.value;
}

/// (7)
template <typename T>
T HelicalValley(std::size_t n, const T* x, T* g) {
  Squares<T> sum(n, g);
  const T square = x[0] * x[0] + x[1] * x[1], root = std::sqrt(square);
  const T turn = 1 / (2 * std::numbers::pi_v<T>);
  const T theta = turn * std::atan(x[1] / x[0]) + (x[0] < 0 ? T(0.5) : T(0));
  sum.Add(10 * (x[2] - 10 * theta), {{0, 100 * turn * x[1] / square}, {1, -100 * turn * x[0] / square}, {2, 10}});
  sum.Add(10 * (root - 1), {{0, 10 * x[0] / root}, {1, 10 * x[1] / root}});
  sum.Add(x[2], {{2, 1}});
  return sum.value;
}

/// (14)
template <typename T>
T Wood(std::size_t n, const T* x, T* g) {
  Squares<T> sum(n, g);
  const T root90 = std::sqrt(T(90)), root10 = std::sqrt(T(10));
  sum.Add(10 * (x[1] - x[0] * x[0]), {{0, -20 * x[0]}, {1, 10}});
  sum.Add(1 - x[0], {{0, -1}});
  sum.Add(root90 * (x[3] - x[2] * x[2]), {{2, -2 * root90 * x[2]}, {3, root90}});
  sum.Add(1 - x[2], {{2, -1}});
  sum.Add(root10 * (x[1] + x[3] - 2), {{1, root10}, {3, root10}});
  sum.Add((x[1] - x[3]) / root10, {{1, 1 / root10}, {3, -1 / root10}});
  return sum.value;
}

/// (22)
template <typename T>
T PowellSingular(std::size_t n, const T* x, T* g) {
  Squares<T> sum(n, g);
  const T root5 = std::sqrt(T(5)), root10 = std::sqrt(T(10));
  for (std::size_t i = 0; i + 3 < n; i += 4) {
    const T a = x[i + 1] - 2 * x[i + 2], b = x[i] - x[i + 3];
    sum.Add(x[i] + 10 * x[i + 1], {{i, 1}, {i + 1, 10}});
    sum.Add(root5 * (x[i + 2] - x[i + 3]), {{i + 2, root5}, {i + 3, -root5}});
    sum.Add(a * a, {{i + 1, 2 * a}, {i + 2, -4 * a}});
    sum.Add(root10 * b * b, {{i, 2 * root10 * b}, {i + 3, -2 * root10 * b}});
  }
  return sum.value;
}

/// (23)
template <typename T>
T PenaltyI(std::size_t n, const T* x, T* g) {
  Squares<T> sum(n, g);
  const T root = std::sqrt(T(1e-5));
  T last = T(-0.25);
  for (std::size_t i = 0; i < n; ++i) {
    sum.Add(root * (x[i] - 1), {{i, root}});
    last += x[i] * x[i];
  }
  for (std::size_t i = 0; i < n; ++i) g[i] += 4 * last * x[i];
  return sum.value + last * last;
}

/// (25)
template <typename T>
T VariablyDimensioned(std::size_t n, const T* x, T* g) {
  Squares<T> sum(n, g);
  T weighted = 0;
  for (std::size_t i = 0; i < n; ++i) {
    sum.Add(x[i] - 1, {{i, 1}});
    weighted += static_cast<T>(i + 1) * (x[i] - 1);
  }
  const T square = weighted * weighted;
  for (std::size_t i = 0; i < n; ++i) g[i] += 2 * weighted * (1 + 2 * square) * static_cast<T>(i + 1);
  return sum.value + square + square * square;
}

/// (26)
template <typename T>
T Trigonometric(std::size_t n, const T* x, T* g) {
  T cosines = 0, value = 0, residuals = 0;
  for (std::size_t i = 0; i < n; ++i) cosines += std::cos(x[i]);
  for (std::size_t i = 0; i < n; ++i) {
    const T weight = static_cast<T>(i + 1);
    const T residual = static_cast<T>(n) - cosines + weight * (1 - std::cos(x[i])) - std::sin(x[i]);
    value += residual * residual;
    residuals += residual;
    g[i] = 2 * residual * (weight * std::sin(x[i]) - std::cos(x[i]));
  }
  for (std::size_t i = 0; i < n; ++i) g[i] += 2 * residuals * std::sin(x[i]);
  return value;
}

/// (28)
template <typename T>
T DiscreteBoundaryValue(std::size_t n, const T* x, T* g) {
  Squares<T> sum(n, g);
  const T h = 1 / static_cast<T>(n + 1);
  for (std::size_t i = 0; i < n; ++i) {
    const T t = x[i] + static_cast<T>(i + 1) * h + 1;
    const T residual = 2 * x[i] - (i > 0 ? x[i - 1] : 0) - (i + 1 < n ? x[i + 1] : 0) + h * h * t * t * t / 2;
    sum.Add(residual, {{i, 2 + 3 * h * h * t * t / 2}});
    if (i > 0) g[i - 1] -= 2 * residual;
    if (i + 1 < n) g[i + 1] -= 2 * residual;
  }
  return sum.value;
}

/// (30)
template <typename T>
T BroydenTridiagonal(std::size_t n, const T* x, T* g) {
  Squares<T> sum(n, g);
  for (std::size_t i = 0; i < n; ++i) {
    const T residual = (3 - 2 * x[i]) * x[i] - (i > 0 ? x[i - 1] : 0) - (i + 1 < n ? 2 * x[i + 1] : 0) + 1;
    sum.Add(residual, {{i, 3 - 4 * x[i]}});
    if (i > 0) g[i - 1] -= 2 * residual;
    if (i + 1 < n) g[i + 1] -= 4 * residual;
  }
  return sum.value;
}

/// (31)
template <typename T>
T BroydenBanded(std::size_t n, const T* x, T* g) {
  Squares<T> sum(n, g);
  for (std::size_t i = 0; i < n; ++i) {
    const std::size_t first = i > 5 ? i - 5 : 0, last = std::min(i + 1, n - 1);
    T residual = x[i] * (2 + 5 * x[i] * x[i]) + 1;
    for (std::size_t j = first; j <= last; ++j) residual -= j == i ? 0 : x[j] * (1 + x[j]);
    sum.Add(residual, {{i, 2 + 15 * x[i] * x[i]}});
    for (std::size_t j = first; j <= last; ++j) g[j] -= j == i ? 0 : 2 * residual * (1 + 2 * x[j]);
  }
  return sum.value;
}

/// (32) with m = n.
template <typename T>
T LinearFullRank(std::size_t n, const T* x, T* g) {
  Squares<T> sum(n, g);
  T total = 0, residuals = 0;
  for (std::size_t i = 0; i < n; ++i) total += x[i];
  for (std::size_t i = 0; i < n; ++i) {
    const T residual = x[i] - 2 * total / static_cast<T>(n) - 1;
    residuals += residual;
    sum.Add(residual, {{i, 1}});
  }
  for (std::size_t i = 0; i < n; ++i) g[i] -= 4 * residuals / static_cast<T>(n);
  return sum.value;
}

template <typename T>
std::vector<Problem<T>> Unbounded() {
  std::vector<Problem<T>> list = {
      {"Freudenstein-Roth (2)", {T(0.5), -2}, T(48.98425), FreudensteinRoth<T>},
      {"Beale (5)", {1, 1}, 0, Beale<T>},
      {"helical valley (7)", {-1, 0, 0}, 0, HelicalValley<T>},
      {"Wood (14)", {-3, -1, -3, -1}, 0, Wood<T>},
  };
  for (const std::size_t n : {std::size_t(2), std::size_t(100), std::size_t(1000)}) {
    list.push_back({"Rosenbrock (21)", Repeat<T>(n, {T(-1.2), 1}), 0, Rosenbrock<T>});
  }
  for (const std::size_t n : {std::size_t(4), std::size_t(1000)}) {
    list.push_back({"Powell singular (22)", Repeat<T>(n, {3, -1, 0, 1}), 0, PowellSingular<T>});
  }
  std::vector<T> ramp(10);
  for (std::size_t i = 0; i < 10; ++i) ramp[i] = static_cast<T>(i + 1);
  list.push_back({"penalty I (23)", ramp, T(7.08765e-5), PenaltyI<T>});
  for (std::size_t i = 0; i < 10; ++i) ramp[i] = 1 - static_cast<T>(i + 1) / 10;
  list.push_back({"variably dimensioned (25)", ramp, 0, VariablyDimensioned<T>});
  for (const std::size_t n : {std::size_t(10), std::size_t(100)}) {
    list.push_back({"trigonometric (26)", Repeat<T>(n, {1 / static_cast<T>(n)}), 0, Trigonometric<T>});
  }
  for (const std::size_t n : {std::size_t(10), std::size_t(1000)}) {
    std::vector<T> start(n);
    for (std::size_t i = 0; i < n; ++i) {
      const T t = static_cast<T>(i + 1) / static_cast<T>(n + 1);
      start[i] = t * (t - 1);
    }
    list.push_back({"discrete boundary value (28)", start, 0, DiscreteBoundaryValue<T>});
    list.push_back({"Broyden tridiagonal (30)", Repeat<T>(n, {-1}), 0, BroydenTridiagonal<T>});
    list.push_back({"Broyden banded (31)", Repeat<T>(n, {-1}), 0, BroydenBanded<T>});
    list.push_back({"linear, full rank (32)", Repeat<T>(n, {1}), 0, LinearFullRank<T>});
  }
  return list;
}

// W. Hock and K. Schittkowski, Test examples for nonlinear programming codes (1981), and the chain of the L-BFGS-B
// paper.

template <typename T>
T HockSchittkowski3(std::size_t, const T* x, T* g) {
  g[0] = T(-2e-5) * (x[1] - x[0]);
  g[1] = 1 - g[0];
  return x[1] + T(1e-5) * (x[1] - x[0]) * (x[1] - x[0]);
}

template <typename T>
T HockSchittkowski4(std::size_t, const T* x, T* g) {
  g[0] = (x[0] + 1) * (x[0] + 1);
  g[1] = 1;
  return g[0] * (x[0] + 1) / 3 + x[1];
}

template <typename T>
T HockSchittkowski5(std::size_t, const T* x, T* g) {
  const T difference = x[0] - x[1];
  g[0] = std::cos(x[0] + x[1]) + 2 * difference - T(1.5);
  g[1] = std::cos(x[0] + x[1]) - 2 * difference + T(2.5);
  return std::sin(x[0] + x[1]) + difference * difference - T(1.5) * x[0] + T(2.5) * x[1] + 1;
}

template <typename T>
T HockSchittkowski45(std::size_t n, const T* x, T* g) {
  T product = 1;
  for (std::size_t i = 0; i < n; ++i) product *= x[i];
  for (std::size_t i = 0; i < n; ++i) {
    g[i] = -1;
    for (std::size_t j = 0; j < n; ++j) g[i] *= j == i ? T(1) : x[j];
    g[i] /= 120;
  }
  return 2 - product / 120;
}

template <typename T>
T HockSchittkowski110(std::size_t n, const T* x, T* g) {
  T value = 0, logarithm = 0;
  for (std::size_t i = 0; i < n; ++i) logarithm += std::log(x[i]) / 5;
  const T power = std::exp(logarithm);
  for (std::size_t i = 0; i < n; ++i) {
    const T a = std::log(x[i] - 2), b = std::log(10 - x[i]);
    value += a * a + b * b;
    g[i] = 2 * a / (x[i] - 2) - 2 * b / (10 - x[i]) - power / 5 / x[i];
  }
  return value - power;
}

template <typename T>
T Chain(std::size_t n, const T* x, T* g) {
  std::fill_n(g, n, T(0));
  T value = (x[0] - 1) * (x[0] - 1);
  g[0] = 2 * (x[0] - 1);
  for (std::size_t i = 1; i < n; ++i) {
    const T t = x[i] - x[i - 1] * x[i - 1];
    value += 4 * t * t;
    g[i] += 8 * t;
    g[i - 1] -= 16 * x[i - 1] * t;
  }
  return value;
}

template <typename T>
std::vector<Problem<T>> Bounded() {
  constexpr QX_OPTIMIZATION_CONSTRAINTS no = QX_UNCONSTRAINED, low = QX_LOWER_BOUND, both = QX_BOTH_BOUNDS;
  std::vector<Problem<T>> list = {
      {"HS 1", {-2, 1}, 0, Rosenbrock<T>, {no, low}, {0, T(-1.5)}, {0, 0}},
      {"HS 2", {-2, 1}, T(0.0504261879), Rosenbrock<T>, {no, low}, {0, T(1.5)}, {0, 0}},
      {"HS 3", {10, 1}, 0, HockSchittkowski3<T>, {no, low}, {0, 0}, {0, 0}},
      {"HS 4", {T(1.125), T(0.125)}, T(8.0 / 3), HockSchittkowski4<T>, {low, low}, {1, 0}, {0, 0}},
      {"HS 5", {0, 0}, T(-1.9132229550), HockSchittkowski5<T>, {both, both}, {T(-1.5), -3}, {4, 3}},
      {"HS 38", {-3, -1, -3, -1}, 0, Wood<T>, {both, both, both, both}, {-10, -10, -10, -10}, {10, 10, 10, 10}},
      {"HS 45",
       {2, 2, 2, 2, 2},
       1,
       HockSchittkowski45<T>,
       {both, both, both, both, both},
       {0, 0, 0, 0, 0},
       {1, 2, 3, 4, 5}},
      {"HS 110", Repeat<T>(10, {9}), T(-45.77846971), HockSchittkowski110<T>, std::vector(10, both),
       Repeat<T>(10, {T(2.001)}), Repeat<T>(10, {T(9.999)})},
  };
  for (const std::size_t n : {std::size_t(25), std::size_t(1000)}) {
    list.push_back(
        {"chain", Repeat<T>(n, {3}), 0, Chain<T>, std::vector(n, both), Repeat<T>(n, {1, -100}), Repeat<T>(n, {100})});
  }
  return list;
}

}  // namespace problems

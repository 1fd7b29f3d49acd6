#include "tests/operations/operations.h"

namespace {

template <typename T>
T Cubic(T x) {
  return ((x - T(0.5)) * x - T(2)) * x + T(0.25);
}
template <typename T>
T CubicSlope(T x) {
  return (3 * x - 1) * x - T(2);
}
template <typename T>
T Quartic(T x) {
  return (x * x - 2) * (x * x - 2) + x;
}
template <typename T>
T QuarticSlope(T x) {
  return 4 * x * (x * x - 2) + 1;
}
template <typename T>
T Pole(T x) {
  return x + 1 / x;
}
template <typename T>
T PoleSlope(T x) {
  return 1 - 1 / (x * x);
}

/// Chained Rosenbrock function.
template <typename T>
T Valley(const CQXVectorN<T>& x) {
  T value = 0;
  for (std::int32_t i = 0; i + 1 < x.Dim(); ++i) {
    const T a = x[i + 1] - x[i] * x[i], b = 1 - x[i];
    value += 100 * a * a + b * b;
  }
  return value;
}
template <typename T>
void ValleySlope(const CQXVectorN<T>& x, CQXVectorN<T>& g) {
  for (std::int32_t i = 0; i < x.Dim(); ++i) g[i] = 0;
  for (std::int32_t i = 0; i + 1 < x.Dim(); ++i) {
    const T a = x[i + 1] - x[i] * x[i];
    g[i] += -400 * x[i] * a - 2 * (1 - x[i]);
    g[i + 1] += 200 * a;
  }
}

template <typename T>
void SystemRows() {
  Row<T>("Solve2x2System", [](Hash& h) {
    Numbers<T> next(71);
    for (int i = 0; i < 300; ++i) {
      auto c = next.Array(6);
      if (i % 3 == 1) c[2] = 2 * c[0], c[3] = 2 * c[1];
      if (i % 6 == 4) c[5] = 2 * c[4];
      if (i % 5 == 0) c[static_cast<std::size_t>(i) % 6] = 0;
      T x = 9, y = 9;
      std::int32_t flag = 9;
      h(CQXAlgebra::Solve2x2System(c[0], c[1], c[2], c[3], c[4], c[5], x, y, flag), x, y, flag);
    }
  });
  Row<T>("Solve3x3System", [](Hash& h) {
    Numbers<T> next(72);
    for (int i = 0; i < 300; ++i) {
      auto c = next.Array(12);
      if (i % 3 == 1) c[3] = 2 * c[0], c[4] = 2 * c[1], c[5] = 2 * c[2];
      if (i % 6 == 4) c[10] = 2 * c[9];
      if (i % 5 == 0) c[static_cast<std::size_t>(i) % 12] = 0;
      T x = 9, y = 9, z = 9;
      std::int32_t flag = 9;
      h(CQXAlgebra::Solve3x3System(c[0], c[1], c[2], c[3], c[4], c[5], c[6], c[7], c[8], c[9], c[10], c[11], x, y, z,
                                   flag),
        x, y, z, flag);
    }
  });
  Row<T>("SolveQuadratic", [](Hash& h) {
    for (const T a : edges<T>) {
      for (const T b : edges<T>) {
        for (const T c : {T(0), T(1), T(-3), T(1e-8), T(1e5)}) {
          T x1 = 9, x2 = 9;
          CQXComplex<T> z1, z2;
          h(CQXAlgebra::SolveQuadratic(a, b, c, x1, x2)), h(x1), h(x2), h(CQXAlgebra::SolveQuadratic(a, b, c, z1, z2)),
              h(z1), h(z2);
          h(CQXAlgebra::SolveReducedQuadratic(a, b, x1, x2), x1, x2);
        }
      }
    }
  });
  PlatformRow<T>("SolveReducedCubic", [](Hash& h) {
    Numbers<T> next(73);
    for (int i = 0; i < 300; ++i) {
      const T a = next() * 4, b = next() * 4, c = next() * 4;
      T x1 = 9, x2 = 9, x3 = 9;
      CQXComplex<T> z1, z2, z3;
      h(CQXAlgebra::SolveReducedCubic(a, b, c, x1, x2, x3), x1, x2, x3);
      h(CQXAlgebra::SolveReducedCubic(-3 * a, 3 * a * a, -a * a * a, z1, z2, z3), z1, z2, z3);
    }
  });
  Row<T>("Combinations", [](Hash& h) {
    for (std::int32_t n = 0; n < 20; ++n) {
      for (std::int32_t k = 0; k <= n; ++k) h(CQXAlgebra::Combinations(n, k));
      h(CQXAlgebra::Permutations(n < 12 ? n : 12));
    }
  });
}

template <typename T>
void RootRows() {
  using A = CQXAlgebraFunctions<T>;
  const T tol = T(1e-6);
  Row<T>("Newton", [&](Hash& h) {
    for (T low = -3; low < 3; low += T(0.25)) {
      T root = 9;
      h(A::Newton(low, low + 1, tol, root, Cubic<T>, CubicSlope<T>)), h(root),
          h(A::SafeNewton(low, low + 1, tol, Cubic<T>, CubicSlope<T>));
    }
  });
  Row<T>("Brent", [&](Hash& h) {
    for (T low = -3; low < 3; low += T(0.25))
      h(A::Brent(low, low + 1, tol, Cubic<T>)), h(A::Brent(low, 3, tol, Pole<T>));
  });
  Row<T>("Secant", [&](Hash& h) {
    for (T low = -3; low < 3; low += T(0.25)) h(A::Secant(low, low + 1, tol, Cubic<T>));
  });
  Row<T>("Bisection", [&](Hash& h) {
    for (T low = -3; low < 3; low += T(0.25)) h(A::Bisection(low, low + 1, tol, Cubic<T>));
  });
  Row<T>("root brackets", [](Hash& h) {
    for (const std::int32_t n : {1, 5, 24, 100}) {
      std::vector<T> lower(100), upper(100);
      std::int32_t found = n;
      A::NarrowRootBrackets(T(-3), T(3), n, found, lower.data(), upper.data(), Cubic<T>);
      h(found, lower, upper);
      T low = T(0.1), high = T(1) / static_cast<T>(n);
      h(A::SearchRootBrackets(low, high, Cubic<T>), low, high);
    }
  });
}

template <typename T>
void MinimisationRows() {
  using O = CQXOptimization;
  Row<T>("one-dimensional minimisation", [](Hash& h) {
    Numbers<T> next(74);
    for (int i = 0; i < 60; ++i) {
      for (T (*f)(T) : {Quartic<T>, Pole<T>}) {
        T a = next() * 2, b = a + next(), c = 0, fa = 0, fb = 0, fc = 0, x = 9;
        if (f == Pole<T>) a = T(0.5) + T(i) / 100, b = T(0.75);
        O::FindInitTriple(a, b, c, fa, fb, fc, f);
        h(a, b, c, fa, fb, fc);
        h(O::GoldenSection(a, b, c, T(1e-4), x, f), x);
        h(O::ParabolicDescent(a, b, c, T(1e-4), x, f), x);
        h(O::DerivativeEstimationDescent(a, b, c, T(1e-4), x, f, f == Pole<T> ? PoleSlope<T> : QuarticSlope<T>), x);
      }
    }
  });
  const T tol = T(sizeof(T) == 4 ? 1e-5 : 1e-9);
  Row<T>("QuasiNewtonLBFGS", [tol](Hash& h) {
    for (const std::int32_t n : {1, 2, 3, 7, 20, 50}) {
      for (const std::int32_t m : {1, 3, 7}) {
        CQXVectorN<T> x = Made(CQXVectorN<T>(n, T(-1.25)));
        QX_OPTIMIZATION_INFO info = QX_OPT_IN_PROGRESS;
        h(O::QuasiNewtonLBFGS(n, std::min(n, m), x, tol, tol, tol, 500, Valley<T>, ValleySlope<T>, info), x, info);
      }
    }
  });
  Row<T>("QuasiNewtonConstraintLBFGSB", [tol](Hash& h) {
    for (const std::int32_t n : {1, 2, 3, 7, 20, 50}) {
      for (const std::int32_t m : {1, 3, 7}) {
        const auto size = static_cast<std::size_t>(n);
        std::vector<QX_OPTIMIZATION_CONSTRAINTS> kinds(size);
        for (std::size_t i = 0; i < size; ++i) kinds[i] = static_cast<QX_OPTIMIZATION_CONSTRAINTS>((i + size) % 4);
        const std::vector<T> lower(size, T(-0.5)), upper(size, T(0.75));
        CQXVectorN<T> x = Made(CQXVectorN<T>(n, T(-1.25)));
        QX_OPTIMIZATION_INFO info = QX_OPT_IN_PROGRESS;
        h(O::QuasiNewtonConstraintLBFGSB(n, std::min(n, m), x, tol, tol, tol, 500, kinds.data(), lower.data(),
                                         upper.data(), Valley<T>, ValleySlope<T>, info),
          x, info);
      }
    }
  });
}

}  // namespace

template <typename T>
void SolverRows() {
  SystemRows<T>();
  RootRows<T>();
  MinimisationRows<T>();
}

template void SolverRows<float>();
template void SolverRows<double>();

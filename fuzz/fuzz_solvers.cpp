#include <qx/solvers/algebra.h>
#include <qx/solvers/optimization.h>

#include "fuzz/input.h"

namespace {

struct TooManyCalls {};

/// A function that takes its values from the input. Some searches never end by contract; after 20000 calls the function
/// ends them by an exception.
struct Source {
  Input& input;
  int calls = 0;

  template <typename T>
  T Next() {
    if (++calls > 20000) throw TooManyCalls();
    return input.Number<T>();
  }
};
template <typename T>
T Value(T, void* user) {
  return static_cast<Source*>(user)->Next<T>();
}
template <typename T>
T ValueOf(const CQXVectorN<T>&, void* user) {
  return static_cast<Source*>(user)->Next<T>();
}
template <typename T>
void Gradient(const CQXVectorN<T>&, CQXVectorN<T>& gradient, void* user) {
  for (std::int32_t i = 0; i < gradient.Dim(); ++i) gradient[i] = static_cast<Source*>(user)->Next<T>();
}

template <typename T>
void Minimise(Input& input) {
  using O = CQXOptimization;
  const std::int32_t n = input.Integer(0, 6), m = input.Integer(0, 6);
  const auto size = static_cast<std::size_t>(n);
  CQXVectorN<T> x(n, input.Numbers<T>(size).data());
  const std::vector<T> lower = input.Numbers<T>(size), upper = input.Numbers<T>(size), tol = input.Numbers<T>(3);
  std::vector<QX_OPTIMIZATION_CONSTRAINTS> kinds(size);
  for (auto& kind : kinds) kind = input.Choice<QX_OPTIMIZATION_CONSTRAINTS>(4);
  QX_OPTIMIZATION_INFO info;
  Source source{input};
  O::QuasiNewtonLBFGS(n, m, x, tol[0], tol[1], tol[2], 40, &source, ValueOf<T>, Gradient<T>, info);
  O::QuasiNewtonConstraintLBFGSB(n, m, x, tol[0], tol[1], tol[2], 40, kinds.data(), lower.data(), upper.data(), &source,
                                 ValueOf<T>, Gradient<T>, info);
}

template <typename T>
void Search(Input& input) {
  using O = CQXOptimization;
  T a = input.Number<T>(), b = input.Number<T>(), c = input.Number<T>(), fa, fb, fc, x;
  const T tol = input.Number<T>();
  Source source{input};
  O::GoldenSection(a, b, c, tol, x, &source, Value<T>);
  O::ParabolicDescent(a, b, c, tol, x, &source, Value<T>);
  O::DerivativeEstimationDescent(a, b, c, tol, x, &source, Value<T>, Value<T>);
  O::FindInitTriple(a, b, c, fa, fb, fc, &source, Value<T>);
}

template <typename T>
void Systems(Input& input) {
  const std::vector<T> c = input.Numbers<T>(12);
  T x, y, z;
  std::int32_t flag;
  CQXComplex<T> z1, z2, z3;
  CQXAlgebra::Solve2x2System(c[0], c[1], c[2], c[3], c[4], c[5], x, y, flag);
  CQXAlgebra::Solve3x3System(c[0], c[1], c[2], c[3], c[4], c[5], c[6], c[7], c[8], c[9], c[10], c[11], x, y, z, flag);
  CQXAlgebra::SolveQuadratic(c[0], c[1], c[2], z1, z2);
  CQXAlgebra::SolveReducedCubic(c[0], c[1], c[2], z1, z2, z3);
  (void)CQXAlgebra::Combinations(input.Integer(-3, 100), input.Integer(-3, 100));
}

template <typename T>
void Run(Input& input) {
  const std::int32_t kind = input.Integer(0, 2);
  try {
    kind == 0 ? Minimise<T>(input) : kind == 1 ? Search<T>(input) : Systems<T>(input);
  } catch (const TooManyCalls&) {
  }
}

}  // namespace

QX_FUZZ(Run)

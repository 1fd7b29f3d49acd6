// Rotation paths, affine keys, cubic blends and trajectories beside Eigen and Imath where they have the like.
// Names: operation/library/type. One item is one rotation, matrix, element or sample.

#include <qx/differential/slde2.h>
#include <qx/interpolation/interpolation.h>

#include <cmath>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

#include <benchmark/benchmark.h>

#if __has_include(<Eigen/Dense>)
#include <Eigen/Dense>
#include <unsupported/Eigen/MatrixFunctions>
#define QX_HAS_EIGEN
#endif
#ifdef QX_LINK_GSL
#include <gsl/gsl_spline.h>
#endif
#if __has_include(<ImathQuat.h>)
#include <ImathQuat.h>
#define QX_HAS_IMATH
#endif

namespace {

constexpr std::size_t count = 1000;

/// Quaternions, or other values of four or more numbers, made from random numbers.
template <typename T, typename Value, typename Make>
std::vector<Value> MakeValues(Make make) {
  std::mt19937 engine(7);
  std::uniform_real_distribution<T> number(-1, 1);
  std::vector<Value> values(count + 3);
  for (Value& value : values) value = make([&] { return number(engine); });
  return values;
}

/// Combines neighbours at times from 0 to 1.
template <typename T, typename Value, typename Combine>
void RunNeighbours(benchmark::State& state, const std::vector<Value>& values, Combine combine) {
  std::vector<Value> results(count);
  for (auto _ : state) {
    for (std::size_t i = 0; i < count; ++i) {
      results[i] = combine(&values[i], static_cast<T>(i) / static_cast<T>(count));
    }
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(count));
}

template <typename T>
void CubicRotationQx(benchmark::State& state) {
  using Q = CQXQuaternion<T>;
  const auto values = MakeValues<T, Q>([](auto number) {
    Q q(number(), number(), number(), number());
    q.Normalize();
    return q;
  });
  RunNeighbours<T>(state, values, [](const Q* q, T t) {
    return CQXInterpolation::SlerpCubic(q[0], q[1], q[2], q[3], 0, 1, 2, 3, 1 + t);
  });
}

template <typename T>
void AffineQx(benchmark::State& state) {
  using M = CQXMatrix4<T>;
  const auto values = MakeValues<T, M>([](auto number) {
    M m;
    for (std::int32_t i = 0; i < 12; ++i) m[i] = number() + (i % 5 == 0 ? T(3) : T(0));
    m[15] = 1;
    return m;
  });
  RunNeighbours<T>(state, values, [](const M* m, T t) { return CQXInterpolation::AffineTransfLinear(m[0], m[1], t); });
}

template <typename T>
void CubicVectorQx(benchmark::State& state) {
  std::vector<CQXVectorN<T>> keys;
  for (int k = 0; k < 4; ++k) keys.emplace_back(1 << 14, T(k));
  for (auto _ : state) {
    benchmark::DoNotOptimize(CQXInterpolation::VectorsCubic(keys[0], keys[1], keys[2], keys[3], 0, 1, 2, 3, 1.5));
  }
  state.SetItemsProcessed(state.iterations() * (1 << 14));
}

/// A spiral, or two exponents.
template <typename T>
void TrajectoryQx(benchmark::State& state, T skew) {
  CQXSLDE2<T> system;
  system.SetTransformation({T(-0.25), skew, -1, T(-0.5)}, {});
  system.CalculateGeneralSolution();
  std::vector<CQXVector2<T>> out(count);
  for (auto _ : state) {
    system.CalculateTrajectory(1, 2, count, out.data(), T(0.01), 1);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(count));
}

/// A natural spline through 1000 keys, and its values at 1000 times; one item is a key or a value.
template <typename T>
void SplineQx(benchmark::State& state) {
  std::vector<T> nodes(count), values(count), slopes(count), out(count);
  for (std::size_t i = 0; i < count; ++i) {
    nodes[i] = static_cast<T>(i) + T(0.3) * std::sin(static_cast<T>(i));
    values[i] = std::sin(static_cast<T>(i));
  }
  constexpr auto n = static_cast<std::int32_t>(count);
  for (auto _ : state) {
    if (CQXInterpolation::FindSlopes(QX_SLOPES_SPLINE, QX_ENDS_NATURAL, n, nodes.data(), values.data(),
                                     slopes.data()) == 0) {
      return;
    }
    for (std::size_t i = 0; i < count; ++i) {
      out[i] = CQXInterpolation::CurveAt(n, nodes.data(), values.data(), slopes.data(), T(0.99) * static_cast<T>(i));
    }
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(count));
}

#ifdef QX_LINK_GSL
void SplineGsl(benchmark::State& state) {
  std::vector<double> nodes(count), values(count), out(count);
  for (std::size_t i = 0; i < count; ++i) {
    nodes[i] = static_cast<double>(i) + 0.3 * std::sin(static_cast<double>(i));
    values[i] = std::sin(static_cast<double>(i));
  }
  gsl_spline* spline = gsl_spline_alloc(gsl_interp_cspline, count);
  for (auto _ : state) {
    gsl_spline_init(spline, nodes.data(), values.data(), count);
    for (std::size_t i = 0; i < count; ++i) {
      out[i] = gsl_spline_eval(spline, 0.99 * static_cast<double>(i), nullptr);
    }
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(count));
  gsl_spline_free(spline);
}
#endif

#ifdef QX_HAS_EIGEN
/// The blend of the elements alone.
template <typename T>
void AffineEigen(benchmark::State& state) {
  using M = Eigen::Matrix<T, 4, 4>;
  const auto values = MakeValues<T, M>([](auto number) {
    M m;
    for (Eigen::Index i = 0; i < 16; ++i) m(i) = number();
    return m;
  });
  RunNeighbours<T>(state, values, [](const M* m, T t) -> M { return m[0] + (m[1] - m[0]) * t; });
}

template <typename T>
void CubicVectorEigen(benchmark::State& state) {
  using V = Eigen::Array<T, Eigen::Dynamic, 1>;
  std::vector<V> y;
  for (int k = 0; k < 4; ++k) y.push_back(V::Constant(1 << 14, T(k)));
  Eigen::Matrix<T, 4, 4> vandermonde;
  for (int k = 0; k < 4; ++k) vandermonde.row(k) << T(k * k * k), T(k * k), T(k), T(1);
  for (auto _ : state) {
    const Eigen::Matrix<T, 4, 4> v = vandermonde.inverse();
    const auto coefficient = [&](int r) { return y[0] * v(r, 0) + y[1] * v(r, 1) + y[2] * v(r, 2) + y[3] * v(r, 3); };
    const T t = T(1.5);
    V result = ((coefficient(0) * t + coefficient(1)) * t + coefficient(2)) * t + coefficient(3);
    benchmark::DoNotOptimize(result.data());
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * (1 << 14));
}

/// The exponential of the matrix for each sample.
template <typename T>
void TrajectoryEigen(benchmark::State& state, T skew) {
  Eigen::Matrix<T, 2, 2> a;
  a << T(-0.25), skew, T(-1), T(-0.5);
  const Eigen::Matrix<T, 2, 1> start(1, 2);
  std::vector<Eigen::Matrix<T, 2, 1>> out(count);
  for (auto _ : state) {
    for (std::size_t i = 0; i < count; ++i) {
      const Eigen::Matrix<T, 2, 2> exponential = (a * (static_cast<T>(i) * T(0.01))).exp();
      out[i] = exponential * start;
    }
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(count));
}
#endif

#ifdef QX_HAS_IMATH
template <typename T>
void CubicRotationImath(benchmark::State& state) {
  using Q = Imath::Quat<T>;
  const auto values =
      MakeValues<T, Q>([](auto number) { return Q(number(), number(), number(), number()).normalized(); });
  RunNeighbours<T>(state, values, [](const Q* q, T t) { return Imath::spline(q[0], q[1], q[2], q[3], t); });
}
#endif

template <typename T>
void RegisterOperations() {
  const std::string type = std::is_same_v<T, float> ? "float" : "double";
  const auto add = [&](const std::string& name, auto run) {
    benchmark::RegisterBenchmark((name + "/" + type).c_str(), run);
  };
  const auto spiral = [](auto run) { return [run](benchmark::State& state) { run(state, T(2)); }; };
  const auto exponents = [](auto run) { return [run](benchmark::State& state) { run(state, T(-2)); }; };
  add("cubic rotation/qx", CubicRotationQx<T>);
#ifdef QX_HAS_IMATH
  add("cubic rotation/Imath", CubicRotationImath<T>);
#endif
  add("affine/qx", AffineQx<T>);
#ifdef QX_HAS_EIGEN
  add("affine/Eigen", AffineEigen<T>);
#endif
  add("cubic of 16384/qx", CubicVectorQx<T>);
#ifdef QX_HAS_EIGEN
  add("cubic of 16384/Eigen", CubicVectorEigen<T>);
#endif
  add("spline/qx", SplineQx<T>);
#ifdef QX_LINK_GSL
  if constexpr (std::is_same_v<T, double>) add("spline/GSL", SplineGsl);
#endif
  add("spiral/qx", spiral(TrajectoryQx<T>));
#ifdef QX_HAS_EIGEN
  add("spiral/Eigen", spiral(TrajectoryEigen<T>));
#endif
  add("exponents/qx", exponents(TrajectoryQx<T>));
#ifdef QX_HAS_EIGEN
  add("exponents/Eigen", exponents(TrajectoryEigen<T>));
#endif
}

const bool isRegistered = [] {
  RegisterOperations<float>();
  RegisterOperations<double>();
  return true;
}();

}  // namespace

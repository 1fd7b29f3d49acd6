// Quaternions and arrays of points beside Eigen, GLM and Imath.
// Names: operation/library/type. Quaternion operations run over arrays of 1000, one item is one operation; points run
// over arrays of 1000 and 1000000, with the bytes read and written a second beside memcpy of the same array.

#include <qx/interpolation/interpolation.h>
#include <qx/transforms/affine_3d_transform.h>
#include <qx/transforms/coordinate_frames.h>
#include <qx/transforms/perspective_3d_transform.h>
#include <qx/transforms/quaternion.h>

#include <cmath>
#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

#include <benchmark/benchmark.h>

#if __has_include(<Eigen/Geometry>)
#include <Eigen/Geometry>
#define QX_HAS_EIGEN
#endif
#if __has_include(<glm/glm.hpp>)
#include <glm/glm.hpp>
#include <glm/gtc/quaternion.hpp>
#define QX_HAS_GLM
#endif
#if __has_include(<ImathQuat.h>)
#include <ImathMatrix.h>
#include <ImathMatrixAlgo.h>
#include <ImathQuat.h>
#define QX_HAS_IMATH
#endif

namespace {

template <typename T>
struct Qx {
  static constexpr const char* name = "qx";
  using Quaternion = CQXQuaternion<T>;
  using Matrix = CQXMatrix3<T>;
  using Point = CQXVector3<T>;
  static Quaternion Make(T w, T x, T y, T z) { return {w, x, y, z}; }
  static Quaternion Product(const Quaternion& a, const Quaternion& b) { return a * b; }
  static Quaternion Slerp(const Quaternion& a, const Quaternion& b, T t) { return CQXInterpolation::Slerp(a, b, t); }
  static Matrix ToMatrix(const Quaternion& q) { return q.GetMatrix(); }
  static Quaternion FromMatrix(const Matrix& m) { return Quaternion(m); }

  Qx() { transform.SetSRT({1, 2, 3}, 10, 20, 30, QX_ROTATIONS_XYZ, {}, {2, 3, 4}, {}); }
  void TransformPoints(const std::vector<Point>& in, std::vector<Point>& out) const {
    transform.TransformPoints(static_cast<std::int32_t>(in.size()), in.data(), out.data());
  }
  void TransformInPlace(std::vector<Point>& points) const {
    transform.TransformPointsInPlace(static_cast<std::int32_t>(points.size()), points.data());
  }
  CQXAffine3DTransform<T> transform;
};

#ifdef QX_HAS_EIGEN
template <typename T>
struct Eigen3 {
  static constexpr const char* name = "Eigen";
  using Quaternion = Eigen::Quaternion<T>;
  using Matrix = Eigen::Matrix<T, 3, 3>;
  using Point = Eigen::Matrix<T, 3, 1>;
  static Quaternion Make(T w, T x, T y, T z) { return {w, x, y, z}; }
  static Quaternion Product(const Quaternion& a, const Quaternion& b) { return a * b; }
  static Quaternion Slerp(const Quaternion& a, const Quaternion& b, T t) { return a.slerp(t, b); }
  static Matrix ToMatrix(const Quaternion& q) { return q.toRotationMatrix(); }
  static Quaternion FromMatrix(const Matrix& m) { return Quaternion(m); }

  void TransformPoints(const std::vector<Point>& in, std::vector<Point>& out) const {
    using Points = Eigen::Matrix<T, 3, Eigen::Dynamic>;
    const auto n = static_cast<Eigen::Index>(in.size());
    Eigen::Map<Points>(out.data()->data(), 3, n).noalias() =
        (a.lazyProduct(Eigen::Map<const Points>(in.data()->data(), 3, n))).colwise() + d;
  }
  void TransformInPlace(std::vector<Point>& points) const {
    for (Point& p : points) p = a * p + d;
  }
  Matrix a = Matrix::Random();
  Point d = Point::Random();
};
#endif

#ifdef QX_HAS_GLM
template <typename T>
struct Glm {
  static constexpr const char* name = "GLM";
  using Quaternion = glm::qua<T>;
  using Matrix = glm::mat<3, 3, T>;
  using Point = glm::vec<3, T>;
  static Quaternion Make(T w, T x, T y, T z) { return {w, x, y, z}; }
  static Quaternion Product(const Quaternion& a, const Quaternion& b) { return a * b; }
  static Quaternion Slerp(const Quaternion& a, const Quaternion& b, T t) { return glm::slerp(a, b, t); }
  static Matrix ToMatrix(const Quaternion& q) { return glm::mat3_cast(q); }
  static Quaternion FromMatrix(const Matrix& m) { return glm::quat_cast(m); }

  void TransformPoints(const std::vector<Point>& in, std::vector<Point>& out) const {
    for (std::size_t i = 0; i < in.size(); ++i) out[i] = Point(m * glm::vec<4, T>(in[i], T(1)));
  }
  void TransformInPlace(std::vector<Point>& points) const {
    for (Point& p : points) p = Point(m * glm::vec<4, T>(p, T(1)));
  }
  glm::mat<4, 4, T> m{T(2)};
};
#endif

#ifdef QX_HAS_IMATH
template <typename T>
struct ImathPeer {
  static constexpr const char* name = "Imath";
  using Quaternion = Imath::Quat<T>;
  using Matrix = Imath::Matrix33<T>;
  using Point = Imath::Vec3<T>;
  static Quaternion Make(T w, T x, T y, T z) { return {w, x, y, z}; }
  static Quaternion Product(const Quaternion& a, const Quaternion& b) { return a * b; }
  static Quaternion Slerp(const Quaternion& a, const Quaternion& b, T t) { return Imath::slerp(a, b, t); }
  static Matrix ToMatrix(const Quaternion& q) { return q.toMatrix33(); }
  static Quaternion FromMatrix(const Matrix& m) {
    Imath::Matrix44<T> wide;
    for (int r = 0; r < 3; ++r) {
      for (int c = 0; c < 3; ++c) wide[r][c] = m[r][c];
    }
    return Imath::extractQuat(wide);
  }

  void TransformPoints(const std::vector<Point>& in, std::vector<Point>& out) const {
    for (std::size_t i = 0; i < in.size(); ++i) out[i] = in[i] * m;
  }
  void TransformInPlace(std::vector<Point>& points) const {
    for (Point& p : points) p *= m;
  }
  Imath::Matrix44<T> m;
};
#endif

/// The yardstick of the points.
template <typename T>
struct Memcpy {
  static constexpr const char* name = "memcpy";
  struct Point {
    T x, y, z;
  };
  void TransformPoints(const std::vector<Point>& in, std::vector<Point>& out) const {
    std::memcpy(out.data(), in.data(), in.size() * sizeof(Point));
  }
};

enum class Operation { product, slerp, toMatrix, fromMatrix };

template <typename Library, typename T, Operation operation>
void RunQuaternions(benchmark::State& state) {
  constexpr std::size_t count = 1000;
  using Q = typename Library::Quaternion;
  std::vector<Q> a, b;
  std::vector<typename Library::Matrix> matrices;
  for (std::size_t i = 0; i < count; ++i) {
    // Unit quaternions whose turns go all round, so that every branch is taken.
    const T angle = T(0.0063) * T(i), c = std::cos(angle), s = std::sin(angle);
    a.push_back(Library::Make(c, s * T(0.6), 0, s * T(0.8)));
    b.push_back(Library::Make(T(0.5), T(-0.5), T(0.5), T(0.5)));
    matrices.push_back(Library::ToMatrix(a.back()));
  }
  std::vector<Q> results = a;
  for (auto _ : state) {
    for (std::size_t i = 0; i < count; ++i) {
      if constexpr (operation == Operation::product) results[i] = Library::Product(a[i], b[i]);
      if constexpr (operation == Operation::slerp) results[i] = Library::Slerp(a[i], b[i], T(0.3));
      if constexpr (operation == Operation::toMatrix) matrices[i] = Library::ToMatrix(a[i]);
      if constexpr (operation == Operation::fromMatrix) results[i] = Library::FromMatrix(matrices[i]);
    }
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * std::int64_t{count});
}

template <typename Library, bool inPlace>
void RunPoints(benchmark::State& state) {
  const auto count = static_cast<std::size_t>(state.range(0));
  std::vector<typename Library::Point> in(count), out(count);
  std::memset(static_cast<void*>(in.data()), 0, count * sizeof(in[0]));
  const Library library;
  for (auto _ : state) {
    if constexpr (inPlace) {
      library.TransformInPlace(in);
    } else {
      library.TransformPoints(in, out);
    }
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * std::int64_t(2 * count * sizeof(in[0])));
}

/// The similarity of 100 pairs of points; one item is a pair.
template <typename T>
void SimilarityQx(benchmark::State& state) {
  std::vector<CQXVector3<T>> source(100), target(100);
  for (std::size_t i = 0; i < 100; ++i) {
    const T x = static_cast<T>(i);
    source[i] = {std::sin(x), std::cos(3 * x), std::sin(7 * x)};
    target[i] = {source[i].Y(), source[i].Z() + T(0.1) * std::cos(x), source[i].X()};
  }
  CQXMatrix4<T> m;
  for (auto _ : state) benchmark::DoNotOptimize(qxFindSimilarityTransform(100, source.data(), target.data(), m));
  state.SetItemsProcessed(state.iterations() * 100);
}

/// Points through a perspective view, with the tests of volume and window; the peer multiplies and divides alone.
template <typename T>
void ProjectionQx(benchmark::State& state) {
  CQXPerspective3DTransform<T> view;
  view.LookAt({0, 0, 10}, {0, 0, 0}, {0, 1, 0});
  view.SetFieldOfView(60, T(1.5), 400);
  view.SetViewVolumeDepths(1, 100);
  if (view.Initialize() == 0) return;
  std::vector<CQXVector3<T>> points(1000, CQXVector3<T>(T(0.5), 1, 2));
  std::vector<CQXVector2<T>> out(1000);
  std::vector<std::int32_t> flags(1000);
  for (auto _ : state) {
    view.ProjectPoints(1000, points.data(), out.data(), flags.data());
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * 1000);
}

#ifdef QX_HAS_EIGEN
template <typename T>
void SimilarityEigen(benchmark::State& state) {
  Eigen::Matrix<T, 3, 100> source, target;
  for (Eigen::Index i = 0; i < 100; ++i) {
    const T x = static_cast<T>(i);
    source.col(i) << std::sin(x), std::cos(3 * x), std::sin(7 * x);
    target.col(i) << source(1, i), source(2, i) + T(0.1) * std::cos(x), source(0, i);
  }
  for (auto _ : state) benchmark::DoNotOptimize(Eigen::umeyama(source, target, true));
  state.SetItemsProcessed(state.iterations() * 100);
}

template <typename T>
void ProjectionEigen(benchmark::State& state) {
  Eigen::Matrix<T, 4, 4> m = Eigen::Matrix<T, 4, 4>::Identity();
  m(3, 2) = T(0.5);
  std::vector<Eigen::Matrix<T, 3, 1>> points(1000, Eigen::Matrix<T, 3, 1>(T(0.5), 1, 2));
  std::vector<Eigen::Matrix<T, 2, 1>> out(1000);
  for (auto _ : state) {
    for (std::size_t i = 0; i < 1000; ++i) out[i] = (m * points[i].homogeneous()).hnormalized().template head<2>();
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * 1000);
}
#endif

template <typename Library, typename T>
void RegisterLibrary(const std::string& type) {
  const auto name = [&](const char* operation) { return std::string(operation) + "/" + Library::name + "/" + type; };
  benchmark::RegisterBenchmark(name("points").c_str(), RunPoints<Library, false>)->Arg(1000)->Arg(1000000);
  if constexpr (requires { typename Library::Quaternion; }) {
    benchmark::RegisterBenchmark(name("points in place").c_str(), RunPoints<Library, true>)->Arg(1000)->Arg(1000000);
    benchmark::RegisterBenchmark(name("product").c_str(), RunQuaternions<Library, T, Operation::product>);
    benchmark::RegisterBenchmark(name("slerp").c_str(), RunQuaternions<Library, T, Operation::slerp>);
    benchmark::RegisterBenchmark(name("to matrix").c_str(), RunQuaternions<Library, T, Operation::toMatrix>);
    benchmark::RegisterBenchmark(name("from matrix").c_str(), RunQuaternions<Library, T, Operation::fromMatrix>);
  }
}

template <typename T>
void RegisterLibraries(const std::string& type) {
  RegisterLibrary<Qx<T>, T>(type);
#ifdef QX_HAS_EIGEN
  RegisterLibrary<Eigen3<T>, T>(type);
#endif
#ifdef QX_HAS_GLM
  RegisterLibrary<Glm<T>, T>(type);
#endif
#ifdef QX_HAS_IMATH
  RegisterLibrary<ImathPeer<T>, T>(type);
#endif
  RegisterLibrary<Memcpy<T>, T>(type);
  benchmark::RegisterBenchmark(("similarity/qx/" + type).c_str(), SimilarityQx<T>);
  benchmark::RegisterBenchmark(("projection/qx/" + type).c_str(), ProjectionQx<T>);
#ifdef QX_HAS_EIGEN
  benchmark::RegisterBenchmark(("similarity/Eigen/" + type).c_str(), SimilarityEigen<T>);
  benchmark::RegisterBenchmark(("projection/Eigen/" + type).c_str(), ProjectionEigen<T>);
#endif
}

const bool isRegistered = [] {
  RegisterLibraries<float>("float");
  RegisterLibraries<double>("double");
  return true;
}();

}  // namespace

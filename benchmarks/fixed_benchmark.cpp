// Products, inverses, determinants and matrix times vector of the fixed matrices beside Eigen, GLM and Imath: the
// latency of a chain in which each result is the next operand, and the throughput over arrays of 1000.
// Names: operation/library/type and size/chain or array. One item is one operation.

#include <qx/matrices/matrix3.h>
#include <qx/matrices/matrix4.h>

#include <string>
#include <type_traits>
#include <vector>

#include <benchmark/benchmark.h>

#if __has_include(<Eigen/Dense>)
#include <Eigen/Dense>
#define QX_HAS_EIGEN
#endif
#if __has_include(<glm/glm.hpp>)
#include <glm/glm.hpp>
#define QX_HAS_GLM
#endif
#if __has_include(<ImathMatrix.h>)
#include <ImathMatrix.h>
#define QX_HAS_IMATH
#endif

namespace {

template <typename T, int N>
struct Qx {
  static constexpr const char* name = "qx";
  using Matrix = std::conditional_t<N == 3, CQXMatrix3<T>, CQXMatrix4<T>>;
  using Vector = typename Matrix::Vector;
  static void Set(Matrix& m, int r, int c, T value) { m(r, c) = value; }
  static void Set(Vector& v, int i, T value) { v[i] = value; }
  static Matrix Product(const Matrix& a, const Matrix& b) { return a * b; }
  static Vector Apply(const Matrix& m, const Vector& v) { return m * v; }
  static T Det(const Matrix& m) { return m.Det(); }
  static Matrix Inverse(const Matrix& m) {
    Matrix result;
    static_cast<void>(m.Inverse(result, T(0)));
    return result;
  }
};

#ifdef QX_HAS_EIGEN
template <typename T, int N>
struct Eigen3 {
  static constexpr const char* name = "Eigen";
  using Matrix = Eigen::Matrix<T, N, N>;
  using Vector = Eigen::Matrix<T, N, 1>;
  static void Set(Matrix& m, int r, int c, T value) { m(r, c) = value; }
  static void Set(Vector& v, int i, T value) { v(i) = value; }
  static Matrix Product(const Matrix& a, const Matrix& b) { return a * b; }
  static Vector Apply(const Matrix& m, const Vector& v) { return m * v; }
  static T Det(const Matrix& m) { return m.determinant(); }
  static Matrix Inverse(const Matrix& m) { return m.inverse(); }
};
#endif

#ifdef QX_HAS_GLM
template <typename T, int N>
struct Glm {
  static constexpr const char* name = "GLM";
  using Matrix = glm::mat<N, N, T, glm::defaultp>;
  using Vector = glm::vec<N, T, glm::defaultp>;
  static void Set(Matrix& m, int r, int c, T value) { m[c][r] = value; }
  static void Set(Vector& v, int i, T value) { v[i] = value; }
  static Matrix Product(const Matrix& a, const Matrix& b) { return a * b; }
  static Vector Apply(const Matrix& m, const Vector& v) { return m * v; }
  static T Det(const Matrix& m) { return glm::determinant(m); }
  static Matrix Inverse(const Matrix& m) { return glm::inverse(m); }
};
#endif

#ifdef QX_HAS_IMATH
// Imath's vectors are rows: v M there is the column M v of the transposed matrix here.
template <typename T, int N>
struct ImathPeer {
  static constexpr const char* name = "Imath";
  using Matrix = std::conditional_t<N == 3, Imath::Matrix33<T>, Imath::Matrix44<T>>;
  using Vector = std::conditional_t<N == 3, Imath::Vec3<T>, Imath::Vec4<T>>;
  static void Set(Matrix& m, int r, int c, T value) { m[c][r] = value; }
  static void Set(Vector& v, int i, T value) { v[i] = value; }
  static Matrix Product(const Matrix& a, const Matrix& b) { return b * a; }
  static Vector Apply(const Matrix& m, const Vector& v) { return v * m; }
  static T Det(const Matrix& m) { return m.determinant(); }
  static Matrix Inverse(const Matrix& m) { return m.inverse(); }
};
#endif

/// A well conditioned matrix of norm about 1, so that chains stay bounded: nearly orthogonal, and no zero in it.
template <typename Library, typename T, int N>
typename Library::Matrix MakeMatrix(int seed) {
  typename Library::Matrix m;
  const T offset = T(0.001) * static_cast<T>(seed % 7);
  for (int r = 0; r < N; ++r) {
    for (int c = 0; c < N; ++c) {
      Library::Set(m, r, c, (r == c ? T(1) : T(0)) - T(2) / T(N) + (r == c ? offset / T(4) : T(0)));
    }
  }
  return m;
}

template <typename Library, typename T, int N>
typename Library::Vector MakeVector() {
  typename Library::Vector v;
  for (int i = 0; i < N; ++i) Library::Set(v, i, T(1) / T(i + 1));
  return v;
}

enum class Operation { product, inverse, determinant, apply };

constexpr int count = 1000;

template <typename Library, typename T, int N, Operation operation>
void RunArray(benchmark::State& state) {
  std::vector<typename Library::Matrix> a, b(count, MakeMatrix<Library, T, N>(0));
  for (int i = 0; i < count; ++i) a.push_back(MakeMatrix<Library, T, N>(i));
  std::vector<typename Library::Matrix> matrices = a;
  std::vector<typename Library::Vector> vectors(count, MakeVector<Library, T, N>()), results = vectors;
  std::vector<T> scalars(count);
  for (auto _ : state) {
    for (std::size_t i = 0; i < count; ++i) {
      if constexpr (operation == Operation::product) matrices[i] = Library::Product(a[i], b[i]);
      if constexpr (operation == Operation::inverse) matrices[i] = Library::Inverse(a[i]);
      if constexpr (operation == Operation::determinant) scalars[i] = Library::Det(a[i]);
      if constexpr (operation == Operation::apply) results[i] = Library::Apply(a[i], vectors[i]);
    }
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * count);
}

template <typename Library, typename T, int N, Operation operation>
void RunChain(benchmark::State& state) {
  typename Library::Matrix m = MakeMatrix<Library, T, N>(0);
  typename Library::Matrix x = m;
  typename Library::Vector v = MakeVector<Library, T, N>();
  benchmark::DoNotOptimize(m);
  benchmark::DoNotOptimize(x);
  benchmark::DoNotOptimize(v);
  for (auto _ : state) {
    for (int i = 0; i < count; ++i) {
      // From both sides in turn: by rows one of them is easier, by columns the other.
      if constexpr (operation == Operation::product) x = i % 2 == 0 ? Library::Product(x, m) : Library::Product(m, x);
      if constexpr (operation == Operation::inverse) x = Library::Inverse(x);
      if constexpr (operation == Operation::determinant) {
        Library::Set(x, i % N, i / N % N, T(1) + T(0.001) * Library::Det(x));  // never 0, and near 1
        benchmark::DoNotOptimize(x);  // otherwise all but one product is hoisted out of the loop
      }
      if constexpr (operation == Operation::apply) v = Library::Apply(m, v);
    }
    benchmark::DoNotOptimize(x);
    benchmark::DoNotOptimize(v);
  }
  state.SetItemsProcessed(state.iterations() * count);
}

template <typename Library, typename T, int N, Operation operation>
void RegisterOperation(const std::string& operationName) {
  const std::string name = operationName + "/" + Library::name + "/" + (std::is_same_v<T, float> ? "float" : "double") +
                           std::to_string(N) + "/";
  benchmark::RegisterBenchmark((name + "chain").c_str(), RunChain<Library, T, N, operation>);
  benchmark::RegisterBenchmark((name + "array").c_str(), RunArray<Library, T, N, operation>);
}

template <typename T, int N, Operation operation>
void RegisterLibraries(const std::string& name) {
  RegisterOperation<Qx<T, N>, T, N, operation>(name);
#ifdef QX_HAS_EIGEN
  RegisterOperation<Eigen3<T, N>, T, N, operation>(name);
#endif
#ifdef QX_HAS_GLM
  RegisterOperation<Glm<T, N>, T, N, operation>(name);
#endif
#ifdef QX_HAS_IMATH
  RegisterOperation<ImathPeer<T, N>, T, N, operation>(name);
#endif
}

template <typename T, int N>
void RegisterOperations() {
  RegisterLibraries<T, N, Operation::product>("product");
  RegisterLibraries<T, N, Operation::inverse>("inverse");
  RegisterLibraries<T, N, Operation::determinant>("determinant");
  RegisterLibraries<T, N, Operation::apply>("apply");
}

const bool isRegistered = [] {
  RegisterOperations<float, 3>();
  RegisterOperations<float, 4>();
  RegisterOperations<double, 3>();
  RegisterOperations<double, 4>();
  return true;
}();

}  // namespace

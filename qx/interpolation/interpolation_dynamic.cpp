#include <qx/foundation/internal/instantiate.h>
#include <qx/interpolation/interpolation.h>
#include <qx/kernels/interpolation_kernels.h>

#include <cstddef>
#include <utility>

namespace {

/// A vector of the dimension of the first key, with its elements unset.
template <typename E>
class Result;
template <typename E>
class Result<CQXBaseVector<E>> : public CQXBaseVector<E> {
 public:
  using Base = CQXBaseVector<E>;
  explicit Result(const Base& key) : Base(key.Dim(), typename Base::Unset()) {}
  using Base::Count;
  using Base::operator=;
};
/// A matrix of the sizes of the first key, with its elements unset.
template <typename E>
class Result<CQXBaseMatrix<E>> : public CQXBaseMatrix<E> {
 public:
  using Base = CQXBaseMatrix<E>;
  explicit Result(const Base& key) : Base(key.RowsNb(), key.ColsNb(), typename Base::Unset()) {}
  using Base::Count;
  using Base::operator=;
};

/// The vector or matrix that @p blend writes, given the number of elements and the block; zeros when memory was refused
/// to a key.
template <typename Array, typename Blend, typename... Keys>
Array Blended(Blend blend, const Array& first, const Keys&... others) {
  Result<Array> result(first);
  if (first.Data() != nullptr && (... && (others.Data() != nullptr))) {
    blend(result.Count(), result.Data());
  } else {
    result.SetToZero();
  }
  return Array(std::move(result));
}

template <typename T, typename Array>
Array Linear(const Array& a, const Array& b, T t) {
  return Blended([&](std::size_t count, auto* target) { qxKernels::BlendLinear(count, a.Data(), b.Data(), t, target); },
                 a, b);
}

template <typename T, typename Array>
Array Quadratic(const Array& a, const Array& b, const Array& c, T t0, T t1, T t2, T t) {
  const CQXMatrix3<T> v = CQXInterpolation::InverseVandermondeMatrix(t0, t1, t2);
  return Blended(
      [&](std::size_t count, T* target) {
        qxKernels::BlendQuadratic(count, a.Data(), b.Data(), c.Data(), v.Data(), t, target);
      },
      a, b, c);
}

template <typename T, typename Array>
Array Cubic(const Array& a, const Array& b, const Array& c, const Array& d, T t0, T t1, T t2, T t3, T t) {
  const CQXMatrix4<T> v = CQXInterpolation::InverseVandermondeMatrix(t0, t1, t2, t3);
  return Blended(
      [&](std::size_t count, T* target) {
        qxKernels::BlendCubic(count, a.Data(), b.Data(), c.Data(), d.Data(), v.Data(), t, target);
      },
      a, b, c, d);
}

}  // namespace

template <std::floating_point T>
CQXBaseVector<T> CQXInterpolation::VectorsLinear(const CQXBaseVector<T>& a, const CQXBaseVector<T>& b, Time<T> t) {
  return Linear<T>(a, b, t);
}

template <std::floating_point T>
CQXBaseVector<CQXComplex<T>> CQXInterpolation::VectorsLinear(const CQXBaseVector<CQXComplex<T>>& a,
                                                             const CQXBaseVector<CQXComplex<T>>& b, Time<T> t) {
  return Linear<T>(a, b, t);
}

template <std::floating_point T>
CQXBaseVector<T> CQXInterpolation::VectorsQuadratic(const CQXBaseVector<T>& a, const CQXBaseVector<T>& b,
                                                    const CQXBaseVector<T>& c, Time<T> t0, Time<T> t1, Time<T> t2,
                                                    Time<T> t) {
  return Quadratic<T>(a, b, c, t0, t1, t2, t);
}

template <std::floating_point T>
CQXBaseVector<T> CQXInterpolation::VectorsCubic(const CQXBaseVector<T>& a, const CQXBaseVector<T>& b,
                                                const CQXBaseVector<T>& c, const CQXBaseVector<T>& d, Time<T> t0,
                                                Time<T> t1, Time<T> t2, Time<T> t3, Time<T> t) {
  return Cubic<T>(a, b, c, d, t0, t1, t2, t3, t);
}

template <std::floating_point T>
CQXBaseMatrix<T> CQXInterpolation::MatricesLinear(const CQXBaseMatrix<T>& a, const CQXBaseMatrix<T>& b, Time<T> t) {
  return Linear<T>(a, b, t);
}

template <std::floating_point T>
CQXBaseMatrix<CQXComplex<T>> CQXInterpolation::MatricesLinear(const CQXBaseMatrix<CQXComplex<T>>& a,
                                                              const CQXBaseMatrix<CQXComplex<T>>& b, Time<T> t) {
  return Linear<T>(a, b, t);
}

template <std::floating_point T>
CQXBaseMatrix<T> CQXInterpolation::MatricesQuadratic(const CQXBaseMatrix<T>& a, const CQXBaseMatrix<T>& b,
                                                     const CQXBaseMatrix<T>& c, Time<T> t0, Time<T> t1, Time<T> t2,
                                                     Time<T> t) {
  return Quadratic<T>(a, b, c, t0, t1, t2, t);
}

template <std::floating_point T>
CQXBaseMatrix<T> CQXInterpolation::MatricesCubic(const CQXBaseMatrix<T>& a, const CQXBaseMatrix<T>& b,
                                                 const CQXBaseMatrix<T>& c, const CQXBaseMatrix<T>& d, Time<T> t0,
                                                 Time<T> t1, Time<T> t2, Time<T> t3, Time<T> t) {
  return Cubic<T>(a, b, c, d, t0, t1, t2, t3, t);
}

#define QX_INSTANTIATE(T)                                                                                              \
  template CQXBaseVector<T> CQXInterpolation::VectorsLinear(const CQXBaseVector<T>&, const CQXBaseVector<T>&, T);      \
  template CQXBaseVector<CQXComplex<T>> CQXInterpolation::VectorsLinear(const CQXBaseVector<CQXComplex<T>>&,           \
                                                                        const CQXBaseVector<CQXComplex<T>>&, T);       \
  template CQXBaseVector<T> CQXInterpolation::VectorsQuadratic(const CQXBaseVector<T>&, const CQXBaseVector<T>&,       \
                                                               const CQXBaseVector<T>&, T, T, T, T);                   \
  template CQXBaseVector<T> CQXInterpolation::VectorsCubic(const CQXBaseVector<T>&, const CQXBaseVector<T>&,           \
                                                           const CQXBaseVector<T>&, const CQXBaseVector<T>&, T, T, T,  \
                                                           T, T);                                                      \
  template CQXBaseMatrix<T> CQXInterpolation::MatricesLinear(const CQXBaseMatrix<T>&, const CQXBaseMatrix<T>&, T);     \
  template CQXBaseMatrix<CQXComplex<T>> CQXInterpolation::MatricesLinear(const CQXBaseMatrix<CQXComplex<T>>&,          \
                                                                         const CQXBaseMatrix<CQXComplex<T>>&, T);      \
  template CQXBaseMatrix<T> CQXInterpolation::MatricesQuadratic(const CQXBaseMatrix<T>&, const CQXBaseMatrix<T>&,      \
                                                                const CQXBaseMatrix<T>&, T, T, T, T);                  \
  template CQXBaseMatrix<T> CQXInterpolation::MatricesCubic(const CQXBaseMatrix<T>&, const CQXBaseMatrix<T>&,          \
                                                            const CQXBaseMatrix<T>&, const CQXBaseMatrix<T>&, T, T, T, \
                                                            T, T);
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE

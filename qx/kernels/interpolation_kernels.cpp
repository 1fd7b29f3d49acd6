#include <qx/foundation/complex.h>
#include <qx/foundation/internal/instantiate.h>
#include <qx/foundation/polynomial.h>
#include <qx/kernels/interpolation_kernels.h>

#include <algorithm>

namespace qxKernels {

template <typename T>
void BlendLinear(std::size_t count, const T* a, const T* b, T t, T* target) noexcept {
  for (std::size_t i = 0; i < count; ++i) target[i] = a[i] + (b[i] - a[i]) * t;
}

template <typename T>
void BlendLinear(std::size_t count, const CQXComplex<T>* a, const CQXComplex<T>* b, T t,
                 CQXComplex<T>* target) noexcept {
  for (std::size_t i = 0; i < count; ++i) {
    target[i].Set(a[i].Real() + (b[i].Real() - a[i].Real()) * t, a[i].Imag() + (b[i].Imag() - a[i].Imag()) * t);
  }
}

// The matrix is copied, so that writing the target cannot change it and it stays in registers.

template <typename T>
void BlendQuadratic(std::size_t count, const T* a, const T* b, const T* c, const T* v, T t, T* target) noexcept {
  T m[9];
  std::copy_n(v, 9, m);
  for (std::size_t i = 0; i < count; ++i) target[i] = qxQuadraticAt(m, t, a[i], b[i], c[i]);
}

template <typename T>
void BlendCubic(std::size_t count, const T* a, const T* b, const T* c, const T* d, const T* v, T t,
                T* target) noexcept {
  T m[16];
  std::copy_n(v, 16, m);
  for (std::size_t i = 0; i < count; ++i) target[i] = qxCubicAt(m, t, a[i], b[i], c[i], d[i]);
}

#define QX_INSTANTIATE(T)                                                                                         \
  template void BlendLinear(std::size_t, const T*, const T*, T, T*) noexcept;                                     \
  template void BlendLinear(std::size_t, const CQXComplex<T>*, const CQXComplex<T>*, T, CQXComplex<T>*) noexcept; \
  template void BlendQuadratic(std::size_t, const T*, const T*, const T*, const T*, T, T*) noexcept;              \
  template void BlendCubic(std::size_t, const T*, const T*, const T*, const T*, const T*, T, T*) noexcept;
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE

}  // namespace qxKernels

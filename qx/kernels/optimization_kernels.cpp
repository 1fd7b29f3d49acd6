#include <qx/kernels/optimization_kernels.h>

namespace qxKernels {

template <typename T>
void AddMultiple(std::size_t count, T* target, T factor, const T* v) noexcept {
  for (std::size_t i = 0; i < count; ++i) target[i] += factor * v[i];
}

template <typename T>
void MoveAlong(std::size_t count, const T* origin, T factor, const T* direction, T* target) noexcept {
  for (std::size_t i = 0; i < count; ++i) target[i] = origin[i] + factor * direction[i];
}

#define QX_INSTANTIATE(T)                                              \
  template void AddMultiple<T>(std::size_t, T*, T, const T*) noexcept; \
  template void MoveAlong<T>(std::size_t, const T*, T, const T*, T*) noexcept;

QX_INSTANTIATE(float)
QX_INSTANTIATE(double)

#undef QX_INSTANTIATE

}  // namespace qxKernels

#include <qx/foundation/internal/instantiate.h>
#include <qx/kernels/transform_kernels.h>

namespace qxKernels {

template <typename T>
void TransformPoints(std::size_t count, const T* matrix, const T* source, T* target) noexcept {
  const T a00 = matrix[0], a01 = matrix[1], a02 = matrix[2], d0 = matrix[3];
  const T a10 = matrix[4], a11 = matrix[5], a12 = matrix[6], d1 = matrix[7];
  const T a20 = matrix[8], a21 = matrix[9], a22 = matrix[10], d2 = matrix[11];
  for (std::size_t i = 0; i < 3 * count; i += 3) {
    const T x = source[i], y = source[i + 1], z = source[i + 2];
    target[i] = a00 * x + a01 * y + a02 * z + d0;
    target[i + 1] = a10 * x + a11 * y + a12 * z + d1;
    target[i + 2] = a20 * x + a21 * y + a22 * z + d2;
  }
}

template <typename T>
void TransformVectors(std::size_t count, const T* matrix, const T* source, T* target) noexcept {
  const T a00 = matrix[0], a01 = matrix[1], a02 = matrix[2];
  const T a10 = matrix[4], a11 = matrix[5], a12 = matrix[6];
  const T a20 = matrix[8], a21 = matrix[9], a22 = matrix[10];
  for (std::size_t i = 0; i < 3 * count; i += 3) {
    const T x = source[i], y = source[i + 1], z = source[i + 2];
    target[i] = a00 * x + a01 * y + a02 * z;
    target[i + 1] = a10 * x + a11 * y + a12 * z;
    target[i + 2] = a20 * x + a21 * y + a22 * z;
  }
}

#define QX_INSTANTIATE(T)                                                      \
  template void TransformPoints(std::size_t, const T*, const T*, T*) noexcept; \
  template void TransformVectors(std::size_t, const T*, const T*, T*) noexcept;
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE

}  // namespace qxKernels

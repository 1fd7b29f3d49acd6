#include <qx/matrices/internal/closed_form.h>
#include <qx/matrices/matrix2.h>
#include <qx/matrices/matrix3.h>
#include <qx/matrices/matrix4.h>

namespace {

template <typename Matrix, typename T>
std::int32_t Invert(const T* source, T* target, T tolerance) {
  Matrix inverse;
  const std::int32_t code = Matrix(source).Inverse(inverse, tolerance);
  if (code == 0) inverse.Dump(target);
  return code;
}

}  // namespace

template <qxReal T>
std::int32_t qxInvertInClosedForm(std::int32_t size, const T* source, T* target, T tolerance) noexcept {
  if (size == 2) return Invert<CQXMatrix2<T>>(source, target, tolerance);
  if (size == 3) return Invert<CQXMatrix3<T>>(source, target, tolerance);
  return Invert<CQXMatrix4<T>>(source, target, tolerance);
}

template std::int32_t qxInvertInClosedForm(std::int32_t, const float*, float*, float) noexcept;
template std::int32_t qxInvertInClosedForm(std::int32_t, const double*, double*, double) noexcept;

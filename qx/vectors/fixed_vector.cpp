#include <qx/kernels/closed_form_kernels.h>
#include <qx/vectors/vector2.h>
#include <qx/vectors/vector3.h>
#include <qx/vectors/vector4.h>

#include <cstdint>

template <qxReal T>
std::int32_t CQXVector2<T>::DecomposeInBasis(const CQXVector2& a, const CQXVector2& b, T& alpha, T& beta,
                                             T tolerance) const noexcept {
  T x, y;
  std::int32_t condition;
  const std::int32_t result =
      qxKernels::Solve2x2System(a.X(), b.X(), a.Y(), b.Y(), X(), Y(), x, y, condition, tolerance);
  if (result != 1 || condition != 1) return 0;
  alpha = x;
  beta = y;
  return 1;
}

template <qxReal T>
std::int32_t CQXVector3<T>::DecomposeInBasis(const CQXVector3& a, const CQXVector3& b, const CQXVector3& c, T& alpha,
                                             T& beta, T& gamma, T tolerance) const noexcept {
  T x, y, z;
  std::int32_t condition;
  const std::int32_t result = qxKernels::Solve3x3System(a.X(), b.X(), c.X(), a.Y(), b.Y(), c.Y(), a.Z(), b.Z(), c.Z(),
                                                        X(), Y(), Z(), x, y, z, condition, tolerance);
  if (result != 1 || condition != 1) return 0;
  alpha = x;
  beta = y;
  gamma = z;
  return 1;
}

template class CQXVector2<float>;
template class CQXVector2<double>;
template class CQXVector3<float>;
template class CQXVector3<double>;
template class CQXVector4<float>;
template class CQXVector4<double>;

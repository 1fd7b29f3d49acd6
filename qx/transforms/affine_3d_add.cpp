#include <qx/transforms/affine_3d_transform.h>
#include <qx/transforms/internal/motions.h>

#include <cstdint>

using qxMotions::AxisRotation;
using qxMotions::EulerRotation;

namespace {

/// Row @p i of r times the first three rows of m.
template <qxReal T>
CQXVector4<T> RotatedRow(const CQXMatrix3<T>& r, std::int32_t i, const CQXMatrix4<T>& m) {
  return m.RowVector(0) * r(i, 0) + m.RowVector(1) * r(i, 1) + m.RowVector(2) * r(i, 2);
}

/// Row @p target += factor times row @p source.
template <qxReal T>
void AddRow(CQXMatrix4<T>& m, std::int32_t target, T factor, std::int32_t source) {
  m.SetRowVector(target, m.RowVector(target) + m.RowVector(source) * factor);
}

}  // namespace

template <qxReal T>
void CQXAffine3DTransform<T>::AddTranslation(const CQXVector3<T>& t) noexcept {
  for (std::int32_t i = 0; i < 3; ++i) AddRow(m_matrix, i, t[i], 3);
}

template <qxReal T>
void CQXAffine3DTransform<T>::AddScaling(const CQXVector3<T>& s, const CQXVector3<T>& c) noexcept {
  for (std::int32_t i = 0; i < 3; ++i) {
    const CQXVector4<T> center = m_matrix.RowVector(3) * c[i];
    m_matrix.SetRowVector(i, (m_matrix.RowVector(i) - center) * s[i] + center);
  }
}

template <qxReal T>
void CQXAffine3DTransform<T>::AddRotation(T angleInDegrees, const CQXVector3<T>& axis) noexcept {
  AddRotation(AxisRotation(angleInDegrees, axis));
}

template <qxReal T>
void CQXAffine3DTransform<T>::AddRotation(const CQXMatrix3<T>& r) noexcept {
  const CQXMatrix4<T> old = m_matrix;
  for (std::int32_t i = 0; i < 3; ++i) m_matrix.SetRowVector(i, RotatedRow(r, i, old));
}

template <qxReal T>
void CQXAffine3DTransform<T>::AddRotation(const CQXMatrix3<T>& r, const CQXVector3<T>& c) noexcept {
  const CQXVector3<T> d = c - r * c;
  AddRotation(r);
  AddTranslation(d);
}

template <qxReal T>
void CQXAffine3DTransform<T>::AddRotation(T axInDegrees, T ayInDegrees, T azInDegrees,
                                          qxRotationsOrder order) noexcept {
  AddRotation(EulerRotation(axInDegrees, ayInDegrees, azInDegrees, order));
}

template <qxReal T>
void CQXAffine3DTransform<T>::AddRotation(T axInDegrees, T ayInDegrees, T azInDegrees, qxRotationsOrder order,
                                          const CQXVector3<T>& c) noexcept {
  AddRotation(EulerRotation(axInDegrees, ayInDegrees, azInDegrees, order), c);
}

template <qxReal T>
void CQXAffine3DTransform<T>::AddReflection() noexcept {
  m_matrix = m_matrix.Reflect();
}

template <qxReal T>
void CQXAffine3DTransform<T>::AddShearXY(T a, T b) noexcept {
  AddRow(m_matrix, 0, a, 2);
  AddRow(m_matrix, 1, b, 2);
}

template <qxReal T>
void CQXAffine3DTransform<T>::AddShearXZ(T a, T b) noexcept {
  AddRow(m_matrix, 0, a, 1);
  AddRow(m_matrix, 2, b, 1);
}

template <qxReal T>
void CQXAffine3DTransform<T>::AddShearYZ(T a, T b) noexcept {
  AddRow(m_matrix, 1, a, 0);
  AddRow(m_matrix, 2, b, 0);
}

template class CQXAffine3DTransform<float>;
template class CQXAffine3DTransform<double>;

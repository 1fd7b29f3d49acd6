#include <qx/transforms/base_3d_transform.h>

template <qxReal T>
CQXBase3DTransform<T>::~CQXBase3DTransform() = default;

template <qxReal T>
CQXBase3DTransform<T>& CQXBase3DTransform<T>::operator=(const CQXBase3DTransform& other) noexcept = default;

template <qxReal T>
std::int32_t CQXBase3DTransform<T>::Invert(CQXMatrix4<T>& target, T tolerance) const noexcept {
  return m_matrix.Inverse(target, tolerance) == 0;
}

template <qxReal T>
qxTransformType CQXBase3DTransform<T>::GetTypeOfTransform() const noexcept {
  return QX_TRANSFORM_GENERAL;
}

template class CQXBase3DTransform<float>;
template class CQXBase3DTransform<double>;

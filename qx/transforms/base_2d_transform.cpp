#include <qx/transforms/base_2d_transform.h>

template <qxReal T>
CQXBase2DTransform<T>::~CQXBase2DTransform() = default;

template <qxReal T>
CQXBase2DTransform<T>& CQXBase2DTransform<T>::operator=(const CQXBase2DTransform& other) noexcept = default;

template <qxReal T>
std::int32_t CQXBase2DTransform<T>::Invert(CQXMatrix3<T>& target, T tolerance) const noexcept {
  return m_matrix.Inverse(target, tolerance) == 0;
}

template <qxReal T>
qxTransformType CQXBase2DTransform<T>::GetTypeOfTransform() const noexcept {
  return QX_TRANSFORM_GENERAL;
}

template class CQXBase2DTransform<float>;
template class CQXBase2DTransform<double>;

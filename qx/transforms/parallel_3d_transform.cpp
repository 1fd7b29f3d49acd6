#include <qx/transforms/parallel_3d_transform.h>
#include <qx/vectors/vector_functions.h>

template <qxReal T>
CQXParallel3DTransform<T>::~CQXParallel3DTransform() = default;

template <qxReal T>
CQXParallel3DTransform<T>& CQXParallel3DTransform<T>::operator=(const Base& other) noexcept {
  View::operator=(other);
  return *this;
}

template <qxReal T>
CQXParallel3DTransform<T>& CQXParallel3DTransform<T>::operator=(const View& other) noexcept {
  View::operator=(other);
  if (other.GetTypeOfTransform() != QX_TRANSFORM_PARALLEL) this->m_isReady = 0;
  return *this;
}

template <qxReal T>
CQXParallel3DTransform<T>& CQXParallel3DTransform<T>::operator=(const CQXParallel3DTransform& other) noexcept = default;

template <qxReal T>
qxTransformType CQXParallel3DTransform<T>::GetTypeOfTransform() const noexcept {
  return QX_TRANSFORM_PARALLEL;
}

template <qxReal T>
std::int32_t CQXParallel3DTransform<T>::Initialize() {
  this->m_isReady = 0;
  const T front = this->m_frontDistance, back = this->m_backDistance;
  const bool isBounded = this->m_useViewVolume != 0;
  if ((isBounded && !(front < back)) || View::FindViewFrame() == 0) return 0;
  // A point slides along the direction by its distance from the view plane.
  const CQXVector3<T>& normal = this->m_localAxis3;
  const CQXVector3<T> slide = View::EffectiveDirection() / View::EffectiveDirection().Dot(normal);
  const CQXVector3<T>* axes[] = {&this->m_localAxis1, &this->m_localAxis2};
  for (std::int32_t i = 0; i < 2; ++i) {
    const CQXVector3<T>& axis = *axes[i];
    const T skew = axis.Dot(slide);
    this->m_matrix.SetRowVector(
        i, qxVector3To4(axis - normal * skew, -axis.Dot(this->m_localOrigin) - skew * this->m_planeD));
  }
  const T zScale = isBounded ? 1 / (back - front) : T(1);
  const T zShift = isBounded ? -front * zScale : T(0);
  this->m_matrix.SetRowVector(2, qxVector3To4(normal * zScale, this->m_planeD * zScale + zShift));
  this->m_matrix.SetRowVector(3, {0, 0, 0, 1});
  return this->m_isReady = 1;
}

template class CQXParallel3DTransform<float>;
template class CQXParallel3DTransform<double>;

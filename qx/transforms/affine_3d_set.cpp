#include <qx/transforms/affine_3d_transform.h>
#include <qx/transforms/internal/motions.h>

#include <cstdint>

using qxMotions::AxisRotation;
using qxMotions::EulerRotation;

namespace {

template <qxReal T>
CQXMatrix3<T> UnitMatrix() {
  CQXMatrix3<T> unit;
  unit.Unit();
  return unit;
}

template <qxReal T>
CQXMatrix3<T> DiagonalMatrix(const CQXVector3<T>& s) {
  return {s.X(), 0, 0, 0, s.Y(), 0, 0, 0, s.Z()};
}

/// Last column of the scaling about a center: exactly zero for a center of almost zero.
template <qxReal T>
CQXVector3<T> ScalingShift(const CQXVector3<T>& s, const CQXVector3<T>& c) {
  if (c.IsAlmostZero(T(1e-6)) != 0) return {};
  return {(1 - s.X()) * c.X(), (1 - s.Y()) * c.Y(), (1 - s.Z()) * c.Z()};
}

/// The 4x4 matrix (a | d).
template <qxReal T>
CQXMatrix4<T> Affine(const CQXMatrix3<T>& a, const CQXVector3<T>& d) {
  return CQXAffine3DTransform<T>(a, d).GetMatrix();
}

// The pieces of the composite motions.

template <qxReal T>
CQXMatrix4<T> Scaling(const CQXVector3<T>& s, const CQXVector3<T>& cs) {
  return Affine(DiagonalMatrix(s), ScalingShift(s, cs));
}
template <qxReal T>
CQXMatrix4<T> Rotation(const CQXMatrix3<T>& r, const CQXVector3<T>& c) {
  return Affine(r, c - r * c);
}
template <qxReal T>
CQXMatrix4<T> RotationTranslation(const CQXVector3<T>& t, const CQXMatrix3<T>& r, const CQXVector3<T>& c) {
  return Affine(r, t - c);
}
template <qxReal T>
CQXMatrix4<T> TranslationRotation(const CQXVector3<T>& t, const CQXMatrix3<T>& r, const CQXVector3<T>& c) {
  return Affine(r, r * t - c);
}
template <qxReal T>
CQXMatrix4<T> ScalingTranslation(const CQXVector3<T>& t, const CQXVector3<T>& s, const CQXVector3<T>& cs) {
  return Affine(DiagonalMatrix(s), ScalingShift(s, cs) + t);
}
template <qxReal T>
CQXMatrix4<T> TranslationScaling(const CQXVector3<T>& t, const CQXVector3<T>& s, const CQXVector3<T>& cs) {
  return Affine(DiagonalMatrix(s), ScalingShift(s, cs) + CQXVector3<T>(s.X() * t.X(), s.Y() * t.Y(), s.Z() * t.Z()));
}

}  // namespace

// ---- Elementary motions

template <qxReal T>
void CQXAffine3DTransform<T>::SetTranslation(const CQXVector3<T>& t) noexcept {
  Set4DData(UnitMatrix<T>(), t);
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetScaling(const CQXVector3<T>& s) noexcept {
  Set4DData(DiagonalMatrix(s), CQXVector3<T>());
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetScaling(const CQXVector3<T>& s, const CQXVector3<T>& c) noexcept {
  m_matrix = Scaling(s, c);
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetRotation(const CQXMatrix3<T>& r) noexcept {
  Set4DData(r, CQXVector3<T>());
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetRotation(const CQXMatrix3<T>& r, const CQXVector3<T>& c) noexcept {
  m_matrix = Rotation(r, c);
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetRotation(T angleInDegrees, const CQXVector3<T>& axis) noexcept {
  SetRotation(AxisRotation(angleInDegrees, axis));
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetRotation(T axInDegrees, T ayInDegrees, T azInDegrees,
                                          qxRotationsOrder order) noexcept {
  SetRotation(EulerRotation(axInDegrees, ayInDegrees, azInDegrees, order));
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetRotation(T axInDegrees, T ayInDegrees, T azInDegrees, qxRotationsOrder order,
                                          const CQXVector3<T>& c) noexcept {
  SetRotation(EulerRotation(axInDegrees, ayInDegrees, azInDegrees, order), c);
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetReflection() noexcept {
  Set4DData(-UnitMatrix<T>(), CQXVector3<T>());
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetShearXY(T a, T b) noexcept {
  Base::SetToIdentity();
  m_matrix(0, 2) = a;
  m_matrix(1, 2) = b;
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetShearXZ(T a, T b) noexcept {
  Base::SetToIdentity();
  m_matrix(0, 1) = a;
  m_matrix(2, 1) = b;
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetShearYZ(T a, T b) noexcept {
  Base::SetToIdentity();
  m_matrix(1, 0) = a;
  m_matrix(2, 0) = b;
}

// ---- Composite motions

template <qxReal T>
void CQXAffine3DTransform<T>::SetST(const CQXVector3<T>& t, const CQXVector3<T>& s, const CQXVector3<T>& cs) noexcept {
  m_matrix = ScalingTranslation(t, s, cs);
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetTS(const CQXVector3<T>& t, const CQXVector3<T>& s, const CQXVector3<T>& cs) noexcept {
  m_matrix = TranslationScaling(t, s, cs);
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetRT(const CQXVector3<T>& t, const CQXMatrix3<T>& r, const CQXVector3<T>& c) noexcept {
  m_matrix = RotationTranslation(t, r, c);
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetRT(const CQXVector3<T>& t, T axInDegrees, T ayInDegrees, T azInDegrees,
                                    qxRotationsOrder order, const CQXVector3<T>& c) noexcept {
  SetRT(t, EulerRotation(axInDegrees, ayInDegrees, azInDegrees, order), c);
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetTR(const CQXVector3<T>& t, const CQXMatrix3<T>& r, const CQXVector3<T>& c) noexcept {
  m_matrix = TranslationRotation(t, r, c);
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetTR(const CQXVector3<T>& t, T axInDegrees, T ayInDegrees, T azInDegrees,
                                    qxRotationsOrder order, const CQXVector3<T>& c) noexcept {
  SetTR(t, EulerRotation(axInDegrees, ayInDegrees, azInDegrees, order), c);
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetSR(const CQXMatrix3<T>& r, const CQXVector3<T>& c, const CQXVector3<T>& s,
                                    const CQXVector3<T>& cs) noexcept {
  m_matrix = Rotation(r, c) * Scaling(s, cs);
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetSR(T axInDegrees, T ayInDegrees, T azInDegrees, qxRotationsOrder order,
                                    const CQXVector3<T>& c, const CQXVector3<T>& s, const CQXVector3<T>& cs) noexcept {
  SetSR(EulerRotation(axInDegrees, ayInDegrees, azInDegrees, order), c, s, cs);
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetRS(const CQXMatrix3<T>& r, const CQXVector3<T>& c, const CQXVector3<T>& s,
                                    const CQXVector3<T>& cs) noexcept {
  m_matrix = Scaling(s, cs) * Rotation(r, c);
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetRS(T axInDegrees, T ayInDegrees, T azInDegrees, qxRotationsOrder order,
                                    const CQXVector3<T>& c, const CQXVector3<T>& s, const CQXVector3<T>& cs) noexcept {
  SetRS(EulerRotation(axInDegrees, ayInDegrees, azInDegrees, order), c, s, cs);
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetSRT(const CQXVector3<T>& t, const CQXMatrix3<T>& r, const CQXVector3<T>& c,
                                     const CQXVector3<T>& s, const CQXVector3<T>& cs) noexcept {
  m_matrix = RotationTranslation(t, r, c) * Scaling(s, cs);
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetSRT(const CQXVector3<T>& t, T axInDegrees, T ayInDegrees, T azInDegrees,
                                     qxRotationsOrder order, const CQXVector3<T>& c, const CQXVector3<T>& s,
                                     const CQXVector3<T>& cs) noexcept {
  SetSRT(t, EulerRotation(axInDegrees, ayInDegrees, azInDegrees, order), c, s, cs);
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetSTR(const CQXVector3<T>& t, const CQXMatrix3<T>& r, const CQXVector3<T>& c,
                                     const CQXVector3<T>& s, const CQXVector3<T>& cs) noexcept {
  m_matrix = TranslationRotation(t, r, c) * Scaling(s, cs);
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetSTR(const CQXVector3<T>& t, T axInDegrees, T ayInDegrees, T azInDegrees,
                                     qxRotationsOrder order, const CQXVector3<T>& c, const CQXVector3<T>& s,
                                     const CQXVector3<T>& cs) noexcept {
  SetSTR(t, EulerRotation(axInDegrees, ayInDegrees, azInDegrees, order), c, s, cs);
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetRST(const CQXVector3<T>& t, const CQXMatrix3<T>& r, const CQXVector3<T>& c,
                                     const CQXVector3<T>& s, const CQXVector3<T>& cs) noexcept {
  m_matrix = ScalingTranslation(t, s, cs) * Rotation(r, c);
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetRST(const CQXVector3<T>& t, T axInDegrees, T ayInDegrees, T azInDegrees,
                                     qxRotationsOrder order, const CQXVector3<T>& c, const CQXVector3<T>& s,
                                     const CQXVector3<T>& cs) noexcept {
  SetRST(t, EulerRotation(axInDegrees, ayInDegrees, azInDegrees, order), c, s, cs);
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetRTS(const CQXVector3<T>& t, const CQXMatrix3<T>& r, const CQXVector3<T>& c,
                                     const CQXVector3<T>& s, const CQXVector3<T>& cs) noexcept {
  m_matrix = Scaling(s, cs) * RotationTranslation(t, r, c);
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetRTS(const CQXVector3<T>& t, T axInDegrees, T ayInDegrees, T azInDegrees,
                                     qxRotationsOrder order, const CQXVector3<T>& c, const CQXVector3<T>& s,
                                     const CQXVector3<T>& cs) noexcept {
  SetRTS(t, EulerRotation(axInDegrees, ayInDegrees, azInDegrees, order), c, s, cs);
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetTSR(const CQXVector3<T>& t, const CQXMatrix3<T>& r, const CQXVector3<T>& c,
                                     const CQXVector3<T>& s, const CQXVector3<T>& cs) noexcept {
  m_matrix = Rotation(r, c) * TranslationScaling(t, s, cs);
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetTSR(const CQXVector3<T>& t, T axInDegrees, T ayInDegrees, T azInDegrees,
                                     qxRotationsOrder order, const CQXVector3<T>& c, const CQXVector3<T>& s,
                                     const CQXVector3<T>& cs) noexcept {
  SetTSR(t, EulerRotation(axInDegrees, ayInDegrees, azInDegrees, order), c, s, cs);
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetTRS(const CQXVector3<T>& t, const CQXMatrix3<T>& r, const CQXVector3<T>& c,
                                     const CQXVector3<T>& s, const CQXVector3<T>& cs) noexcept {
  m_matrix = Scaling(s, cs) * TranslationRotation(t, r, c);
}

template <qxReal T>
void CQXAffine3DTransform<T>::SetTRS(const CQXVector3<T>& t, T axInDegrees, T ayInDegrees, T azInDegrees,
                                     qxRotationsOrder order, const CQXVector3<T>& c, const CQXVector3<T>& s,
                                     const CQXVector3<T>& cs) noexcept {
  SetTRS(t, EulerRotation(axInDegrees, ayInDegrees, azInDegrees, order), c, s, cs);
}

template class CQXAffine3DTransform<float>;
template class CQXAffine3DTransform<double>;

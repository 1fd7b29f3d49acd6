#include <qx/transforms/affine_2d_transform.h>
#include <qx/transforms/internal/affine_parts.h>
#include <qx/transforms/internal/motions.h>

#include <cmath>
#include <numbers>

using namespace qxMotions;
using qxAffineParts::scalingFirst;
using qxAffineParts::scalingLast;
using qxAffineParts::Side;

namespace {

template <qxReal T>
CQXMatrix3<T> Stretch(const CQXVector2<T>& s, T angleInDegrees) noexcept {
  const CQXMatrix2<T> u = PlaneRotation(angleInDegrees);
  return Affine(u * DiagonalMatrix(s) * u.Transpose(), CQXVector2<T>());
}

template <qxReal T>
CQXMatrix3<T> Reflection(T angleInDegrees) noexcept {
  const CQXMatrix2<T> r = PlaneRotation(2 * angleInDegrees);
  return Affine(CQXMatrix2<T>(r[0], -r[1], r[2], -r[3]), CQXVector2<T>());
}

template <qxReal T>
CQXMatrix3<T> Block(T a00, T a01, T a10, T a11) noexcept {
  return {a00, a01, 0, a10, a11, 0, 0, 0, 1};
}

template <qxReal T>
T InDegrees(T angleInRadians) noexcept {
  return angleInRadians * 180 / std::numbers::pi_v<T>;
}

/// The parts of a transform; the translation is the last column as it is.
template <qxReal T>
bool ExtractParts(const CQXAffine2DTransform<T>& transform, Side side, CQXVector2<T>& t, CQXVector2<T>& s,
                  T& angleInDegrees, T& stretchAngleInDegrees, std::int32_t& reflection) noexcept {
  CQXMatrix2<T> a = transform.Get2DMatrix();
  const T det = a.Det();
  if (!(std::abs(det) >= T(1e-6))) return false;
  reflection = det < 0;
  if (reflection != 0) a = {a[0], -a[1], a[2], -a[3]};
  // The closest rotation of a matrix that does not reflect is that of the sum with its cofactors.
  const T c = a[0] + a[3], sine = a[2] - a[1];
  const CQXMatrix2<T> r = CQXMatrix2<T>(c, -sine, sine, c) / std::sqrt(c * c + sine * sine);
  const CQXMatrix2<T> stretch = side == scalingFirst ? r.Transpose() * a : a * r.Transpose();
  const T mean = (stretch[0] + stretch[3]) / 2, difference = (stretch[0] - stretch[3]) / 2;
  const T skew = (stretch[1] + stretch[2]) / 2;
  t = transform.GetTranslation();
  angleInDegrees = InDegrees(std::atan2(sine, c));
  if (std::abs(skew) <= T(1e-6)) {
    stretchAngleInDegrees = 0;
    s = {stretch[0], stretch[3]};
  } else {
    stretchAngleInDegrees = InDegrees(std::atan2(skew, difference) / 2);
    const T largest = mean + std::sqrt(difference * difference + skew * skew);
    s = {largest, std::abs(det) / largest};
  }
  return true;
}

template <qxReal T>
void UndoRotation(T angleInDegrees, CQXVector2<T>& t) noexcept {
  t = PlaneRotation(-angleInDegrees) * t;
}

template <qxReal T>
void UndoScaling(const CQXVector2<T>& s, T stretchAngleInDegrees, CQXVector2<T>& t) noexcept {
  const CQXMatrix2<T> u = PlaneRotation(stretchAngleInDegrees);
  t = u * ProductByAxis(CQXVector2<T>(1 / s.X(), 1 / s.Y()), u.Transpose() * t);
}

}  // namespace

template <qxReal T>
CQXAffine2DTransform<T>::~CQXAffine2DTransform() = default;

template <qxReal T>
CQXAffine2DTransform<T>& CQXAffine2DTransform<T>::operator=(const Base& other) noexcept {
  Base::operator=(other);
  return *this;
}

template <qxReal T>
CQXAffine2DTransform<T>& CQXAffine2DTransform<T>::operator=(const CQXAffine2DTransform& other) noexcept = default;

template <qxReal T>
qxTransformType CQXAffine2DTransform<T>::GetTypeOfTransform() const noexcept {
  return QX_TRANSFORM_AFFINE;
}

// ---- Elementary motions

template <qxReal T>
void CQXAffine2DTransform<T>::SetTranslation(const CQXVector2<T>& t) noexcept {
  m_matrix = Affine(CQXMatrix2<T>(1, 0, 0, 1), t);
}

template <qxReal T>
void CQXAffine2DTransform<T>::AddTranslation(const CQXVector2<T>& t) noexcept {
  Base::AddTransform(Affine(CQXMatrix2<T>(1, 0, 0, 1), t));
}

template <qxReal T>
void CQXAffine2DTransform<T>::SetScaling(const CQXVector2<T>& s) noexcept {
  m_matrix = Affine(DiagonalMatrix(s), CQXVector2<T>());
}

template <qxReal T>
void CQXAffine2DTransform<T>::SetScaling(const CQXVector2<T>& s, const CQXVector2<T>& c) noexcept {
  m_matrix = Scaling(s, c);
}

template <qxReal T>
void CQXAffine2DTransform<T>::AddScaling(const CQXVector2<T>& s, const CQXVector2<T>& c) noexcept {
  Base::AddTransform(Scaling(s, c));
}

template <qxReal T>
void CQXAffine2DTransform<T>::SetStretch(const CQXVector2<T>& s, T angleInDegrees) noexcept {
  m_matrix = Stretch(s, angleInDegrees);
}

template <qxReal T>
void CQXAffine2DTransform<T>::AddStretch(const CQXVector2<T>& s, T angleInDegrees) noexcept {
  Base::AddTransform(Stretch(s, angleInDegrees));
}

template <qxReal T>
void CQXAffine2DTransform<T>::SetRotation(T angleInDegrees) noexcept {
  m_matrix = Affine(PlaneRotation(angleInDegrees), CQXVector2<T>());
}

template <qxReal T>
void CQXAffine2DTransform<T>::AddRotation(T angleInDegrees) noexcept {
  Base::AddTransform(Affine(PlaneRotation(angleInDegrees), CQXVector2<T>()));
}

template <qxReal T>
void CQXAffine2DTransform<T>::SetRotation(T angleInDegrees, const CQXVector2<T>& c) noexcept {
  m_matrix = Rotation(PlaneRotation(angleInDegrees), c);
}

template <qxReal T>
void CQXAffine2DTransform<T>::AddRotation(T angleInDegrees, const CQXVector2<T>& c) noexcept {
  Base::AddTransform(Rotation(PlaneRotation(angleInDegrees), c));
}

template <qxReal T>
void CQXAffine2DTransform<T>::SetReflection() noexcept {
  m_matrix = Block<T>(-1, 0, 0, -1);
}

template <qxReal T>
void CQXAffine2DTransform<T>::AddReflection() noexcept {
  Base::AddTransform(Block<T>(-1, 0, 0, -1));
}

template <qxReal T>
void CQXAffine2DTransform<T>::SetReflection(T angleInDegrees) noexcept {
  m_matrix = Reflection(angleInDegrees);
}

template <qxReal T>
void CQXAffine2DTransform<T>::AddReflection(T angleInDegrees) noexcept {
  Base::AddTransform(Reflection(angleInDegrees));
}

template <qxReal T>
void CQXAffine2DTransform<T>::SetShearX(T a) noexcept {
  m_matrix = Block<T>(1, a, 0, 1);
}

template <qxReal T>
void CQXAffine2DTransform<T>::AddShearX(T a) noexcept {
  Base::AddTransform(Block<T>(1, a, 0, 1));
}

template <qxReal T>
void CQXAffine2DTransform<T>::SetShearY(T a) noexcept {
  m_matrix = Block<T>(1, 0, a, 1);
}

template <qxReal T>
void CQXAffine2DTransform<T>::AddShearY(T a) noexcept {
  Base::AddTransform(Block<T>(1, 0, a, 1));
}

// ---- Composite motions

template <qxReal T>
void CQXAffine2DTransform<T>::SetST(const CQXVector2<T>& t, const CQXVector2<T>& s, const CQXVector2<T>& cs) noexcept {
  m_matrix = ScalingTranslation(t, s, cs);
}

template <qxReal T>
void CQXAffine2DTransform<T>::SetTS(const CQXVector2<T>& t, const CQXVector2<T>& s, const CQXVector2<T>& cs) noexcept {
  m_matrix = TranslationScaling(t, s, cs);
}

template <qxReal T>
void CQXAffine2DTransform<T>::SetRT(const CQXVector2<T>& t, T angleInDegrees, const CQXVector2<T>& c) noexcept {
  m_matrix = RotationTranslation(t, PlaneRotation(angleInDegrees), c);
}

template <qxReal T>
void CQXAffine2DTransform<T>::SetTR(const CQXVector2<T>& t, T angleInDegrees, const CQXVector2<T>& c) noexcept {
  m_matrix = TranslationRotation(t, PlaneRotation(angleInDegrees), c);
}

template <qxReal T>
void CQXAffine2DTransform<T>::SetSR(T angleInDegrees, const CQXVector2<T>& c, const CQXVector2<T>& s,
                                    const CQXVector2<T>& cs) noexcept {
  m_matrix = Rotation(PlaneRotation(angleInDegrees), c) * Scaling(s, cs);
}

template <qxReal T>
void CQXAffine2DTransform<T>::SetRS(T angleInDegrees, const CQXVector2<T>& c, const CQXVector2<T>& s,
                                    const CQXVector2<T>& cs) noexcept {
  m_matrix = Scaling(s, cs) * Rotation(PlaneRotation(angleInDegrees), c);
}

template <qxReal T>
void CQXAffine2DTransform<T>::SetSRT(const CQXVector2<T>& t, T angleInDegrees, const CQXVector2<T>& c,
                                     const CQXVector2<T>& s, const CQXVector2<T>& cs) noexcept {
  const CQXMatrix2<T> r = PlaneRotation(angleInDegrees);
  m_matrix = RotationTranslation(t, r, c) * Scaling(s, cs);
}

template <qxReal T>
void CQXAffine2DTransform<T>::SetSTR(const CQXVector2<T>& t, T angleInDegrees, const CQXVector2<T>& c,
                                     const CQXVector2<T>& s, const CQXVector2<T>& cs) noexcept {
  const CQXMatrix2<T> r = PlaneRotation(angleInDegrees);
  m_matrix = TranslationRotation(t, r, c) * Scaling(s, cs);
}

template <qxReal T>
void CQXAffine2DTransform<T>::SetRST(const CQXVector2<T>& t, T angleInDegrees, const CQXVector2<T>& c,
                                     const CQXVector2<T>& s, const CQXVector2<T>& cs) noexcept {
  const CQXMatrix2<T> r = PlaneRotation(angleInDegrees);
  m_matrix = ScalingTranslation(t, s, cs) * Rotation(r, c);
}

template <qxReal T>
void CQXAffine2DTransform<T>::SetRTS(const CQXVector2<T>& t, T angleInDegrees, const CQXVector2<T>& c,
                                     const CQXVector2<T>& s, const CQXVector2<T>& cs) noexcept {
  const CQXMatrix2<T> r = PlaneRotation(angleInDegrees);
  m_matrix = Scaling(s, cs) * RotationTranslation(t, r, c);
}

template <qxReal T>
void CQXAffine2DTransform<T>::SetTSR(const CQXVector2<T>& t, T angleInDegrees, const CQXVector2<T>& c,
                                     const CQXVector2<T>& s, const CQXVector2<T>& cs) noexcept {
  const CQXMatrix2<T> r = PlaneRotation(angleInDegrees);
  m_matrix = Rotation(r, c) * TranslationScaling(t, s, cs);
}

template <qxReal T>
void CQXAffine2DTransform<T>::SetTRS(const CQXVector2<T>& t, T angleInDegrees, const CQXVector2<T>& c,
                                     const CQXVector2<T>& s, const CQXVector2<T>& cs) noexcept {
  const CQXMatrix2<T> r = PlaneRotation(angleInDegrees);
  m_matrix = Scaling(s, cs) * TranslationRotation(t, r, c);
}

// ---- Geometry

template <qxReal T>
void CQXAffine2DTransform<T>::TransformPoints(std::int32_t n, const CQXVector2<T>* source,
                                              CQXVector2<T>* target) const noexcept {
  const CQXAffine2DTransform transform(*this);  // a copy, which writing the target cannot change
  for (std::int32_t i = 0; i < n; ++i) target[i] = transform.TransformPoint(source[i]);
}

template <qxReal T>
void CQXAffine2DTransform<T>::TransformVectors(std::int32_t n, const CQXVector2<T>* source,
                                               CQXVector2<T>* target) const noexcept {
  const CQXAffine2DTransform transform(*this);
  for (std::int32_t i = 0; i < n; ++i) target[i] = transform.TransformVector(source[i]);
}

template <qxReal T>
void CQXAffine2DTransform<T>::TransformLine(const CQXVector2<T>& point, const CQXVector2<T>& direction,
                                            CQXVector2<T>& newPoint, CQXVector2<T>& newDirection) const noexcept {
  const CQXVector2<T> p = TransformPoint(point);
  const CQXVector2<T> v = TransformVector(direction);
  newPoint = p;
  newDirection = v;
}

// ---- Predicates

template <qxReal T>
std::int32_t CQXAffine2DTransform<T>::IsTranslation(T tolerance) const noexcept {
  return Base::IsAffine(tolerance) != 0 && Get2DMatrix().IsUnit(tolerance) != 0;
}

template <qxReal T>
std::int32_t CQXAffine2DTransform<T>::IsRotation(T tolerance) const noexcept {
  return IsOrthogonal(tolerance) != 0 && Get2DMatrix().Det() > 0;
}

template <qxReal T>
std::int32_t CQXAffine2DTransform<T>::IsScaling(T tolerance) const noexcept {
  return Base::IsAffine(tolerance) != 0 && GetTranslation().NormInf() <= tolerance &&
         Get2DMatrix().IsDiagonal(tolerance) != 0;
}

template <qxReal T>
std::int32_t CQXAffine2DTransform<T>::IsEuclidean(T tolerance) const noexcept {
  return Base::IsAffine(tolerance) != 0 && Get2DMatrix().IsOrthogonal(tolerance) != 0;
}

template <qxReal T>
std::int32_t CQXAffine2DTransform<T>::IsOrthogonal(T tolerance) const noexcept {
  return IsEuclidean(tolerance) != 0 && GetTranslation().NormInf() <= tolerance;
}

// ---- Taking apart. The translation is freed from the motions that act after it, the last one first.

template <qxReal T>
std::int32_t CQXAffine2DTransform<T>::ExtractSRT(CQXVector2<T>& t, CQXVector2<T>& s, T& angleInDegrees,
                                                 T& stretchAngleInDegrees, std::int32_t& reflection) const noexcept {
  return ExtractParts(*this, scalingFirst, t, s, angleInDegrees, stretchAngleInDegrees, reflection);
}

template <qxReal T>
std::int32_t CQXAffine2DTransform<T>::ExtractSTR(CQXVector2<T>& t, CQXVector2<T>& s, T& angleInDegrees,
                                                 T& stretchAngleInDegrees, std::int32_t& reflection) const noexcept {
  if (!ExtractParts(*this, scalingFirst, t, s, angleInDegrees, stretchAngleInDegrees, reflection)) return 0;
  UndoRotation(angleInDegrees, t);
  return 1;
}

template <qxReal T>
std::int32_t CQXAffine2DTransform<T>::ExtractRST(CQXVector2<T>& t, CQXVector2<T>& s, T& angleInDegrees,
                                                 T& stretchAngleInDegrees, std::int32_t& reflection) const noexcept {
  return ExtractParts(*this, scalingLast, t, s, angleInDegrees, stretchAngleInDegrees, reflection);
}

template <qxReal T>
std::int32_t CQXAffine2DTransform<T>::ExtractRTS(CQXVector2<T>& t, CQXVector2<T>& s, T& angleInDegrees,
                                                 T& stretchAngleInDegrees, std::int32_t& reflection) const noexcept {
  if (!ExtractParts(*this, scalingLast, t, s, angleInDegrees, stretchAngleInDegrees, reflection)) return 0;
  UndoScaling(s, stretchAngleInDegrees, t);
  return 1;
}

template <qxReal T>
std::int32_t CQXAffine2DTransform<T>::ExtractTSR(CQXVector2<T>& t, CQXVector2<T>& s, T& angleInDegrees,
                                                 T& stretchAngleInDegrees, std::int32_t& reflection) const noexcept {
  if (!ExtractParts(*this, scalingFirst, t, s, angleInDegrees, stretchAngleInDegrees, reflection)) return 0;
  UndoRotation(angleInDegrees, t);
  UndoScaling(s, stretchAngleInDegrees, t);
  return 1;
}

template <qxReal T>
std::int32_t CQXAffine2DTransform<T>::ExtractTRS(CQXVector2<T>& t, CQXVector2<T>& s, T& angleInDegrees,
                                                 T& stretchAngleInDegrees, std::int32_t& reflection) const noexcept {
  if (!ExtractParts(*this, scalingLast, t, s, angleInDegrees, stretchAngleInDegrees, reflection)) return 0;
  UndoScaling(s, stretchAngleInDegrees, t);
  UndoRotation(angleInDegrees, t);
  return 1;
}

template class CQXAffine2DTransform<float>;
template class CQXAffine2DTransform<double>;

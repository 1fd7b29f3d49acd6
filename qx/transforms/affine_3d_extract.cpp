#include <qx/transforms/affine_3d_transform.h>

#include <cstdint>

namespace {

template <qxReal T>
constexpr T extractTolerance = T(1e-6);

/// t := S^-1 t with S = U diag(s) U^T. The inverse of the diagonal is zero where a factor is too small.
template <qxReal T>
void UndoScaling(const CQXVector3<T>& s, const CQXMatrix3<T>& u, CQXVector3<T>& t) {
  const CQXMatrix3<T> diagonal(s.X(), 0, 0, 0, s.Y(), 0, 0, 0, s.Z());
  CQXMatrix3<T> inverse;
  diagonal.DiagInverse(inverse, extractTolerance<T>);
  t = u * inverse * u.Transpose() * t;
}

template <qxReal T>
void UndoRotation(const CQXMatrix3<T>& r, CQXVector3<T>& t) {
  t = r.Transpose() * t;
}

/// Scaling U diag(s) U^T, rotation and reflection of a 3x3 block.
template <qxReal T>
struct ScaleRotation {
  CQXVector3<T> s;
  CQXMatrix3<T> r, u;
  std::int32_t hasStretch = 0;
  std::int32_t reflection = 0;
};

enum Side : std::int32_t { scalingLast = 0, scalingFirst = 1 };

/// Takes a transform apart: the last column as it is, and the block with the scaling on the given side.
template <qxReal T>
std::int32_t ExtractParts(const CQXAffine3DTransform<T>& transform, Side side, CQXVector3<T>& t, CQXVector3<T>& s,
                          CQXMatrix3<T>& r, CQXMatrix3<T>& u, std::int32_t& reflection) {
  CQXMatrix3<T> out1, out2, out3;
  std::int32_t hasStretch = 0;
  if (transform.Get3DMatrix().ExtractScaleRotation(out1, out2, out3, side, extractTolerance<T>, hasStretch,
                                                   reflection) == 0) {
    return 0;
  }
  const bool isFirst = side == scalingFirst;
  t = transform.GetTranslation();
  s = out2.Diagonal();
  r = isFirst ? out1 : out3;
  if (reflection != 0) r = -r;
  u.Unit();
  if (hasStretch != 0) u = isFirst ? out3 : out1;
  return 1;
}

/// One of the two polar forms of a block: a = Q S (the scaling first) or a = S Q.
template <qxReal T>
class PolarForm {
 public:
  PolarForm(const CQXMatrix3<T>& a, Side side) : m_side(side) {
    m_isFound = a.PolarDecomposition(m_q, m_s, side == scalingFirst ? 1 : 0, extractTolerance<T>) != 0;
    if (m_isFound) m_det = m_q.Det();
  }

  bool IsFound() const { return m_isFound; }
  bool IsDiagonal() const { return m_isFound && m_s.IsDiagonal(extractTolerance<T>) != 0; }
  T Det() const { return m_det; }

  /// Takes the symmetric factor apart, S = V D V^T.
  bool FindStretch() {
    m_isFound = m_s.SpectralDecomposition(m_v, m_d, 0, extractTolerance<T>) != 0;
    return m_isFound;
  }
  /// Distance of the product of the factors from the block, after FindStretch().
  T Residual(const CQXMatrix3<T>& a) const {
    const CQXMatrix3<T> stretch = m_v * m_d * m_v.Transpose();
    return (a - (m_side == scalingFirst ? m_q * stretch : stretch * m_q)).Norm(QX_MATRIX_NORM_EUCLIDEAN);
  }

  /// The result of a form whose symmetric factor is diagonal.
  ScaleRotation<T> Unstretched() const {
    ScaleRotation<T> result{m_s.Diagonal(), m_q, {}, 0, m_det < 0};
    result.u.Unit();
    if (result.reflection != 0) result.r = -result.r;
    return result;
  }
  /// The result after FindStretch().
  ScaleRotation<T> Stretched(std::int32_t reflection) const {
    // The axes of the stretch have no sign: take them as a rotation.
    return {m_d.Diagonal(), reflection != 0 ? -m_q : m_q, m_v.Det() < 0 ? -m_v : m_v, 1, reflection};
  }

 private:
  Side m_side;
  bool m_isFound;
  T m_det = 0;
  CQXMatrix3<T> m_q, m_s, m_v, m_d;
};

/// Analysis behind ExtractElementaryTransforms() and the closest scaling and rotation.
template <qxReal T>
bool FindElementary(const CQXMatrix3<T>& a, ScaleRotation<T>& result, std::int32_t& order) {
  PolarForm<T> first(a, scalingFirst);
  if (first.IsDiagonal()) {
    result = first.Unstretched();
    order = 0;
    return true;
  }
  PolarForm<T> second(a, scalingLast);
  if (second.IsDiagonal()) {
    result = second.Unstretched();
    order = 1;
    return true;
  }
  if (!first.IsFound() && !second.IsFound()) return false;

  bool useFirst = first.IsFound();
  bool useSecond = second.IsFound();
  std::int32_t reflection = (useFirst ? first : second).Det() < 0;
  if (useFirst && useSecond && !(first.Det() * second.Det() >= 0)) {
    // The factors disagree: take the one that rotates.
    useFirst = first.Det() > 0;
    useSecond = !useFirst;
    reflection = 0;
  }
  if (useFirst) useFirst = first.FindStretch();
  if (useSecond) useSecond = second.FindStretch();
  if (!useFirst && !useSecond) return false;
  if (useFirst && useSecond) useSecond = second.Residual(a) < first.Residual(a);
  result = (useSecond ? second : first).Stretched(reflection);
  order = useSecond ? 1 : 0;
  return true;
}

}  // namespace

// ---- The six forms: the translation is freed from the motions that act after it, the last one first.

template <qxReal T>
std::int32_t CQXAffine3DTransform<T>::ExtractSRT(CQXVector3<T>& t, CQXVector3<T>& s, CQXMatrix3<T>& r, CQXMatrix3<T>& u,
                                                 std::int32_t& reflection) const {
  if (ExtractParts(*this, scalingFirst, t, s, r, u, reflection) == 0) return 0;
  return 1;
}

template <qxReal T>
std::int32_t CQXAffine3DTransform<T>::ExtractSTR(CQXVector3<T>& t, CQXVector3<T>& s, CQXMatrix3<T>& r, CQXMatrix3<T>& u,
                                                 std::int32_t& reflection) const {
  if (ExtractParts(*this, scalingFirst, t, s, r, u, reflection) == 0) return 0;
  UndoRotation(r, t);
  return 1;
}

template <qxReal T>
std::int32_t CQXAffine3DTransform<T>::ExtractRST(CQXVector3<T>& t, CQXVector3<T>& s, CQXMatrix3<T>& r, CQXMatrix3<T>& u,
                                                 std::int32_t& reflection) const {
  if (ExtractParts(*this, scalingLast, t, s, r, u, reflection) == 0) return 0;
  return 1;
}

template <qxReal T>
std::int32_t CQXAffine3DTransform<T>::ExtractRTS(CQXVector3<T>& t, CQXVector3<T>& s, CQXMatrix3<T>& r, CQXMatrix3<T>& u,
                                                 std::int32_t& reflection) const {
  if (ExtractParts(*this, scalingLast, t, s, r, u, reflection) == 0) return 0;
  UndoScaling(s, u, t);
  return 1;
}

template <qxReal T>
std::int32_t CQXAffine3DTransform<T>::ExtractTSR(CQXVector3<T>& t, CQXVector3<T>& s, CQXMatrix3<T>& r, CQXMatrix3<T>& u,
                                                 std::int32_t& reflection) const {
  if (ExtractParts(*this, scalingFirst, t, s, r, u, reflection) == 0) return 0;
  UndoRotation(r, t);
  UndoScaling(s, u, t);
  return 1;
}

template <qxReal T>
std::int32_t CQXAffine3DTransform<T>::ExtractTRS(CQXVector3<T>& t, CQXVector3<T>& s, CQXMatrix3<T>& r, CQXMatrix3<T>& u,
                                                 std::int32_t& reflection) const {
  if (ExtractParts(*this, scalingLast, t, s, r, u, reflection) == 0) return 0;
  UndoScaling(s, u, t);
  UndoRotation(r, t);
  return 1;
}

template <qxReal T>
std::int32_t CQXAffine3DTransform<T>::ExtractElementaryTransforms(CQXVector3<T>& t, CQXVector3<T>& s, CQXMatrix3<T>& r,
                                                                  CQXMatrix3<T>& u, std::int32_t& hasStretch,
                                                                  std::int32_t& order, std::int32_t& reflection) const {
  ScaleRotation<T> parts;
  if (!FindElementary(Get3DMatrix(), parts, order)) return 0;
  t = GetTranslation();
  s = parts.s;
  r = parts.r;
  u = parts.u;
  hasStretch = parts.hasStretch;
  reflection = parts.reflection;
  return 1;
}

template <qxReal T>
CQXVector3<T> CQXAffine3DTransform<T>::ExtractClosestScaling() const {
  ScaleRotation<T> parts;
  std::int32_t order;
  return FindElementary(Get3DMatrix(), parts, order) ? parts.s : CQXVector3<T>();
}

template <qxReal T>
CQXMatrix3<T> CQXAffine3DTransform<T>::ExtractClosestRotation(std::int32_t& reflection) const {
  ScaleRotation<T> parts;
  std::int32_t order;
  if (!FindElementary(Get3DMatrix(), parts, order)) {
    parts.r.Unit();
    parts.reflection = 0;
  }
  reflection = parts.reflection;
  return parts.r;
}

template class CQXAffine3DTransform<float>;
template class CQXAffine3DTransform<double>;

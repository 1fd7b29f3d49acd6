#include <qx/foundation/internal/instantiate.h>
#include <qx/transforms/internal/affine_parts.h>

namespace qxAffineParts {

namespace {

template <qxReal T>
constexpr T extractTolerance = T(1e-6);

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

}  // namespace

template <qxReal T>
bool FindParts(const CQXMatrix3<T>& a, Side side, ScaleRotation<T>& parts) {
  CQXMatrix3<T> out1, out2, out3;
  std::int32_t hasStretch = 0, reflection = 0;
  if (a.ExtractScaleRotation(out1, out2, out3, side, extractTolerance<T>, hasStretch, reflection) == 0) return false;
  const bool isFirst = side == scalingFirst;
  parts = {out2.Diagonal(), isFirst ? out1 : out3, {}, hasStretch, reflection};
  if (reflection != 0) parts.r = -parts.r;
  parts.u.Unit();
  if (hasStretch != 0) parts.u = isFirst ? out3 : out1;
  return true;
}

template <qxReal T>
bool FindElementary(const CQXMatrix3<T>& a, ScaleRotation<T>& parts, std::int32_t& order) {
  PolarForm<T> first(a, scalingFirst);
  if (first.IsDiagonal()) {
    parts = first.Unstretched();
    order = 0;
    return true;
  }
  PolarForm<T> second(a, scalingLast);
  if (second.IsDiagonal()) {
    parts = second.Unstretched();
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
  parts = (useSecond ? second : first).Stretched(reflection);
  order = useSecond ? 1 : 0;
  return true;
}

template <qxReal T>
void UndoScaling(const CQXVector3<T>& s, const CQXMatrix3<T>& u, CQXVector3<T>& t) {
  const CQXMatrix3<T> diagonal(s.X(), 0, 0, 0, s.Y(), 0, 0, 0, s.Z());
  CQXMatrix3<T> inverse;
  static_cast<void>(diagonal.DiagInverse(inverse, extractTolerance<T>));  // a refusal leaves zero
  t = u * inverse * u.Transpose() * t;
}

#define QX_INSTANTIATE(T)                                                               \
  template bool FindParts(const CQXMatrix3<T>&, Side, ScaleRotation<T>&);               \
  template bool FindElementary(const CQXMatrix3<T>&, ScaleRotation<T>&, std::int32_t&); \
  template void UndoScaling(const CQXVector3<T>&, const CQXMatrix3<T>&, CQXVector3<T>&);
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE

}  // namespace qxAffineParts

#include <qx/foundation/internal/instantiate.h>
#include <qx/interpolation/interpolation.h>

#include <cmath>
#include <cstdint>

namespace {

/// What counts as no translation, as a factor of 1 and as a singular block, for both element types.
template <qxReal T>
constexpr T bound = T(1e-6);

/// A scaling about a centre.
template <qxReal T>
struct Scaling {
  explicit Scaling(const CQXMatrix4<T>& key) noexcept : factors(key.Diagonal3()) {
    const CQXVector3<T> d = key.ExtractTranslation();
    if (d.IsAlmostZero(bound<T>) != 0) return;
    for (std::int32_t i = 0; i < 3; ++i) {
      if (!(std::abs(factors[i] - 1) <= bound<T>)) centre[i] = d[i] / (1 - factors[i]);
    }
  }

  CQXVector3<T> factors;
  CQXVector3<T> centre;
};

template <qxReal T>
CQXMatrix4<T> ScalingMatrix(const CQXVector3<T>& s, const CQXVector3<T>& c) noexcept {
  return {s.X(), 0,     0,     (1 - s.X()) * c.X(),  //
          0,     s.Y(), 0,     (1 - s.Y()) * c.Y(),  //
          0,     0,     s.Z(), (1 - s.Z()) * c.Z(),  //
          0,     0,     0,     1};
}

/// The polar factors of the upper left block of a key; where they are refused, the unit matrix and the block itself.
template <qxReal T>
struct PolarFactors {
  /// @return false when they are refused.
  bool Take(const CQXMatrix4<T>& key) {
    q.Unit();
    s = key.GetMatrix();
    return key.GetMatrix().PolarDecomposition(q, s, 1, bound<T>) != 0;
  }
  [[nodiscard]] CQXQuaternion<T> Rotation() const noexcept { return qxMatrixToQuaternion(q); }

  CQXMatrix3<T> q;
  CQXMatrix3<T> s;
};

}  // namespace

template <qxReal T>
CQXMatrix4<T> CQXInterpolation::ScalingsLinear(const CQXMatrix4<T>& a, const CQXMatrix4<T>& b, Time<T> t) noexcept {
  const Scaling<T> sa(a), sb(b);
  return ScalingMatrix(VectorsLinear(sa.factors, sb.factors, t), VectorsLinear(sa.centre, sb.centre, t));
}

template <qxReal T>
CQXMatrix4<T> CQXInterpolation::ScalingsCubic(const CQXMatrix4<T>& a, const CQXMatrix4<T>& b, const CQXMatrix4<T>& c,
                                              const CQXMatrix4<T>& d, Time<T> t0, Time<T> t1, Time<T> t2, Time<T> t3,
                                              Time<T> t) noexcept {
  const Scaling<T> sa(a), sb(b), sc(c), sd(d);
  return ScalingMatrix(VectorsCubic(sa.factors, sb.factors, sc.factors, sd.factors, t0, t1, t2, t3, t),
                       VectorsCubic(sa.centre, sb.centre, sc.centre, sd.centre, t0, t1, t2, t3, t));
}

template <qxReal T>
CQXMatrix4<T> CQXInterpolation::AffineTransfLinear(const CQXMatrix4<T>& a, const CQXMatrix4<T>& b, Time<T> t) {
  PolarFactors<T> pa, pb;
  if (pa.Take(a) || pb.Take(b)) return MatricesLinear(a, b, t);
  const CQXMatrix3<T> rotation = Slerp(pa.Rotation(), pb.Rotation(), t).GetMatrix();
  return WithTranslation(qxMatrix3To4(rotation * MatricesLinear(pa.s, pb.s, t)),
                         VectorsLinear(a.ExtractTranslation(), b.ExtractTranslation(), t));
}

template <qxReal T>
CQXMatrix4<T> CQXInterpolation::AffineTransfCubic(const CQXMatrix4<T>& a, const CQXMatrix4<T>& b,
                                                  const CQXMatrix4<T>& c, const CQXMatrix4<T>& d, Time<T> t0,
                                                  Time<T> t1, Time<T> t2, Time<T> t3, Time<T> t) {
  PolarFactors<T> pa, pb, pc, pd;
  if (pa.Take(a) || pb.Take(b) || pc.Take(c) || pd.Take(d)) return MatricesCubic(a, b, c, d, t0, t1, t2, t3, t);
  const CQXMatrix3<T> rotation =
      SlerpCubic(pa.Rotation(), pb.Rotation(), pc.Rotation(), pd.Rotation(), t0, t1, t2, t3, t).GetMatrix();
  return WithTranslation(qxMatrix3To4(rotation * MatricesCubic(pa.s, pb.s, pc.s, pd.s, t0, t1, t2, t3, t)),
                         VectorsCubic(a.ExtractTranslation(), b.ExtractTranslation(), c.ExtractTranslation(),
                                      d.ExtractTranslation(), t0, t1, t2, t3, t));
}

#define QX_INSTANTIATE(T)                                                                                              \
  template CQXMatrix4<T> CQXInterpolation::ScalingsLinear(const CQXMatrix4<T>&, const CQXMatrix4<T>&, T) noexcept;     \
  template CQXMatrix4<T> CQXInterpolation::ScalingsCubic(                                                              \
      const CQXMatrix4<T>&, const CQXMatrix4<T>&, const CQXMatrix4<T>&, const CQXMatrix4<T>&, T, T, T, T, T) noexcept; \
  template CQXMatrix4<T> CQXInterpolation::AffineTransfLinear(const CQXMatrix4<T>&, const CQXMatrix4<T>&, T);          \
  template CQXMatrix4<T> CQXInterpolation::AffineTransfCubic(                                                          \
      const CQXMatrix4<T>&, const CQXMatrix4<T>&, const CQXMatrix4<T>&, const CQXMatrix4<T>&, T, T, T, T, T);
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE

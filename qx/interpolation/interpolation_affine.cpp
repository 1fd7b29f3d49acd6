#include <qx/interpolation/interpolation.h>
#include <qx/transforms/affine_3d_transform.h>

#include <cmath>

namespace {

/// The matrix (a | d) over 0, 0, 0, 1.
template <typename T>
CQXMatrix4<T> Affine(const CQXMatrix3<T>& a, const CQXVector3<T>& d) {
  return CQXAffine3DTransform<T>(a, d).GetMatrix();
}

template <typename T>
CQXMatrix4<T> Translation(const CQXVector3<T>& d) {
  CQXAffine3DTransform<T> transform;
  transform.SetTranslation(d);
  return transform.GetMatrix();
}

/// A scaling about a point.
template <typename T>
class CenteredScaling {
 public:
  CenteredScaling(const CQXVector3<T>& s, const CQXVector3<T>& c) : factors(s), center(c) {}
  explicit CenteredScaling(const CQXMatrix4<T>& m) : factors(m.Diagonal3()) {
    const CQXVector3<T> d = m.ExtractTranslation();
    if (d.IsAlmostZero(bound) != 0) return;
    for (std::int32_t i = 0; i < 3; ++i) {
      center[i] = std::abs(factors[i] - 1) <= bound ? T(0) : d[i] / (1 - factors[i]);
    }
  }

  CQXMatrix4<T> GetMatrix() const {
    const CQXMatrix3<T> a(factors.X(), 0, 0, 0, factors.Y(), 0, 0, 0, factors.Z());
    return Affine(a, CQXVector3<T>((1 - factors.X()) * center.X(), (1 - factors.Y()) * center.Y(),
                                   (1 - factors.Z()) * center.Z()));
  }

  CQXVector3<T> factors, center;

 private:
  static constexpr T bound = T(1e-6);
};

/// The polar form Q S of a block; where there is none, the unit matrix and the block itself.
template <typename T>
struct PolarKey {
  explicit PolarKey(const CQXMatrix4<T>& m) : s(m.GetMatrix()) {
    q.Unit();
    result = m.GetMatrix().PolarDecomposition(q, s, 1, T(1e-6));
  }
  CQXQuaternion<T> Rotation() const { return qxMatrixToQuaternion(q); }

  CQXMatrix3<T> q, s;
  std::int32_t result;
};

}  // namespace

template <typename T>
CQXMatrix4<T> CQXInterpolation::TranslationsLinear(const CQXMatrix4<T>& a, const CQXMatrix4<T>& b,
                                                   std::type_identity_t<T> t) noexcept {
  return Translation(VectorsLinear(a.ExtractTranslation(), b.ExtractTranslation(), t));
}

template <typename T>
CQXMatrix4<T> CQXInterpolation::TranslationsCubic(const CQXMatrix4<T>& a, const CQXMatrix4<T>& b,
                                                  const CQXMatrix4<T>& c, const CQXMatrix4<T>& d,
                                                  std::type_identity_t<T> t0, std::type_identity_t<T> t1,
                                                  std::type_identity_t<T> t2, std::type_identity_t<T> t3,
                                                  std::type_identity_t<T> t) noexcept {
  return Translation(VectorsCubic(a.ExtractTranslation(), b.ExtractTranslation(), c.ExtractTranslation(),
                                  d.ExtractTranslation(), t0, t1, t2, t3, t));
}

template <typename T>
CQXMatrix4<T> CQXInterpolation::ScalingsLinear(const CQXMatrix4<T>& a, const CQXMatrix4<T>& b,
                                               std::type_identity_t<T> t) noexcept {
  const CenteredScaling<T> ka(a), kb(b);
  return CenteredScaling<T>(VectorsLinear(ka.factors, kb.factors, t), VectorsLinear(ka.center, kb.center, t))
      .GetMatrix();
}

template <typename T>
CQXMatrix4<T> CQXInterpolation::ScalingsCubic(const CQXMatrix4<T>& a, const CQXMatrix4<T>& b, const CQXMatrix4<T>& c,
                                              const CQXMatrix4<T>& d, std::type_identity_t<T> t0,
                                              std::type_identity_t<T> t1, std::type_identity_t<T> t2,
                                              std::type_identity_t<T> t3, std::type_identity_t<T> t) noexcept {
  const CenteredScaling<T> ka(a), kb(b), kc(c), kd(d);
  return CenteredScaling<T>(VectorsCubic(ka.factors, kb.factors, kc.factors, kd.factors, t0, t1, t2, t3, t),
                            VectorsCubic(ka.center, kb.center, kc.center, kd.center, t0, t1, t2, t3, t))
      .GetMatrix();
}

template <typename T>
CQXMatrix4<T> CQXInterpolation::AffineTransfLinear(const CQXMatrix4<T>& a, const CQXMatrix4<T>& b,
                                                   std::type_identity_t<T> t) {
  const PolarKey<T> ka(a), kb(b);
  if (ka.result != 0 || kb.result != 0) return MatricesLinear(a, b, t);
  return Affine(Slerp(ka.Rotation(), kb.Rotation(), t).GetMatrix() * MatricesLinear(ka.s, kb.s, t),
                VectorsLinear(a.ExtractTranslation(), b.ExtractTranslation(), t));
}

template <typename T>
CQXMatrix4<T> CQXInterpolation::AffineTransfCubic(const CQXMatrix4<T>& a, const CQXMatrix4<T>& b,
                                                  const CQXMatrix4<T>& c, const CQXMatrix4<T>& d,
                                                  std::type_identity_t<T> t0, std::type_identity_t<T> t1,
                                                  std::type_identity_t<T> t2, std::type_identity_t<T> t3,
                                                  std::type_identity_t<T> t) {
  const PolarKey<T> ka(a), kb(b), kc(c), kd(d);
  if (ka.result != 0 || kb.result != 0 || kc.result != 0 || kd.result != 0) {
    return MatricesCubic(a, b, c, d, t0, t1, t2, t3, t);
  }
  const CQXQuaternion<T> rotation =
      SlerpCubic(ka.Rotation(), kb.Rotation(), kc.Rotation(), kd.Rotation(), t0, t1, t2, t3, t);
  return Affine(rotation.GetMatrix() * MatricesCubic(ka.s, kb.s, kc.s, kd.s, t0, t1, t2, t3, t),
                VectorsCubic(a.ExtractTranslation(), b.ExtractTranslation(), c.ExtractTranslation(),
                             d.ExtractTranslation(), t0, t1, t2, t3, t));
}

#define INSTANTIATE_LINEAR(Name, T, Noexcept) \
  template CQXMatrix4<T> CQXInterpolation::Name(const CQXMatrix4<T>&, const CQXMatrix4<T>&, T) Noexcept
#define INSTANTIATE_CUBIC(Name, T, Noexcept)                                                                      \
  template CQXMatrix4<T> CQXInterpolation::Name(const CQXMatrix4<T>&, const CQXMatrix4<T>&, const CQXMatrix4<T>&, \
                                                const CQXMatrix4<T>&, T, T, T, T, T) Noexcept
#define INSTANTIATE(T)                                 \
  INSTANTIATE_LINEAR(TranslationsLinear, T, noexcept); \
  INSTANTIATE_CUBIC(TranslationsCubic, T, noexcept);   \
  INSTANTIATE_LINEAR(ScalingsLinear, T, noexcept);     \
  INSTANTIATE_CUBIC(ScalingsCubic, T, noexcept);       \
  INSTANTIATE_LINEAR(AffineTransfLinear, T, );         \
  INSTANTIATE_CUBIC(AffineTransfCubic, T, )
INSTANTIATE(float);
INSTANTIATE(double);
#undef INSTANTIATE
#undef INSTANTIATE_CUBIC
#undef INSTANTIATE_LINEAR

#include <qx/transforms/affine_2d_transform.h>
#include <qx/transforms/affine_3d_transform.h>

#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "tests/transforms/reference.h"
#include "tests/typed_test.h"

namespace {

template <typename T>
class Affine2D : public ::testing::Test {
 protected:
  using X2 = CQXAffine2DTransform<T>;
  using X3 = CQXAffine3DTransform<T>;
  static constexpr T eps = std::numeric_limits<T>::epsilon();

  CQXVector2<T> RandomVector(double lo = -3, double hi = 3) {
    const T x = random.In(lo, hi), y = random.In(lo, hi);
    return {x, y};
  }
  CQXMatrix3<T> RandomMatrix() {
    CQXMatrix3<T> m;
    for (std::int32_t i = 0; i < 9; ++i) m[i] = random.In(-2, 2);
    return m;
  }
  static CQXVector3<T> InSpace(const CQXVector2<T>& v, T z = 0) { return {v.X(), v.Y(), z}; }
  /// The rows and columns of x, y and w.
  static CQXMatrix3<T> InPlane(const CQXMatrix4<T>& m) {
    return {m[0], m[1], m[3], m[4], m[5], m[7], m[12], m[13], m[15]};
  }
  static CQXMatrix4<T> InSpace(const CQXMatrix3<T>& m) {
    return {m[0], m[1], 0, m[2], m[3], m[4], 0, m[5], 0, 0, 1, 0, m[6], m[7], 0, m[8]};
  }
  /// Largest difference of corresponding elements.
  static T Distance(const CQXMatrix3<T>& a, const CQXMatrix3<T>& b) {
    T largest = 0;
    for (std::int32_t i = 0; i < 9; ++i) largest = std::max(largest, std::abs(a[i] - b[i]));
    return largest;
  }

  reference::Random<T> random;
};
TYPED_TEST_SUITE(Affine2D, FloatTypes);

TYPED_TEST(Affine2D, MotionsAreThoseOfSpaceInThePlane) {
  using T = TypeParam;
  using X = CQXAffine2DTransform<T>;
  using Y = CQXAffine3DTransform<T>;
  for (int i = 0; i < 20; ++i) {
    const auto t = this->RandomVector(), s = this->RandomVector(), c = this->RandomVector();
    const auto cs = i % 2 == 0 ? CQXVector2<T>() : this->RandomVector();
    const auto t3 = this->InSpace(t), s3 = this->InSpace(s, 1), c3 = this->InSpace(c), cs3 = this->InSpace(cs);
    const T angle = this->random.In(-180, 180), a = this->random.In(-2, 2);
    const CQXVector3<T> z(0, 0, 1);
    CQXMatrix3<T> r;
    r.SetRotationByAngleAxis(angle, z);
    const auto mirror = [&](Y& y) {  // across the axis: -1 along the normal
      CQXMatrix3<T> turn = r;
      y.AddRotation(turn.Transpose());
      y.AddScaling({1, -1, 1}, {});
      y.AddRotation(turn);
    };
    const auto stretch = [&](Y& y) {
      y.AddRotation(r.Transpose());
      y.AddScaling(s3, {});
      y.AddRotation(r);
    };
    const struct {
      std::string name;
      std::function<void(X&)> set, add;
      std::function<void(Y&)> setInSpace, addInSpace;
    } motions[] = {
        {"T", [&](X& x) { x.SetTranslation(t); }, [&](X& x) { x.AddTranslation(t); },
         [&](Y& y) { y.SetTranslation(t3); }, [&](Y& y) { y.AddTranslation(t3); }},
        {"S", [&](X& x) { x.SetScaling(s); }, {}, [&](Y& y) { y.SetScaling(s3); }, {}},
        {"Sc", [&](X& x) { x.SetScaling(s, cs); }, [&](X& x) { x.AddScaling(s, cs); },
         [&](Y& y) { y.SetScaling(s3, cs3); }, [&](Y& y) { y.AddScaling(s3, cs3); }},
        {"R", [&](X& x) { x.SetRotation(angle); }, [&](X& x) { x.AddRotation(angle); },
         [&](Y& y) { y.SetRotation(angle, z); }, [&](Y& y) { y.AddRotation(angle, z); }},
        {"Rc", [&](X& x) { x.SetRotation(angle, c); }, [&](X& x) { x.AddRotation(angle, c); },
         [&](Y& y) { y.SetRotation(r, c3); }, [&](Y& y) { y.AddRotation(r, c3); }},
        {"point reflection", [&](X& x) { x.SetReflection(); }, [&](X& x) { x.AddReflection(); },
         [&](Y& y) { y.SetReflection(); }, [&](Y& y) { y.AddReflection(); }},
        {"reflection", [&](X& x) { x.SetReflection(angle); }, [&](X& x) { x.AddReflection(angle); },
         [&](Y& y) { y.SetToIdentity(), mirror(y); }, mirror},
        {"stretch", [&](X& x) { x.SetStretch(s, angle); }, [&](X& x) { x.AddStretch(s, angle); },
         [&](Y& y) { y.SetToIdentity(), stretch(y); }, stretch},
        {"shear X", [&](X& x) { x.SetShearX(a); }, [&](X& x) { x.AddShearX(a); }, [&](Y& y) { y.SetShearXZ(a, 0); },
         [&](Y& y) { y.AddShearXZ(a, 0); }},
        {"shear Y", [&](X& x) { x.SetShearY(a); }, [&](X& x) { x.AddShearY(a); }, [&](Y& y) { y.SetShearYZ(a, 0); },
         [&](Y& y) { y.AddShearYZ(a, 0); }},
        {"ST", [&](X& x) { x.SetST(t, s, cs); }, {}, [&](Y& y) { y.SetST(t3, s3, cs3); }, {}},
        {"TS", [&](X& x) { x.SetTS(t, s, cs); }, {}, [&](Y& y) { y.SetTS(t3, s3, cs3); }, {}},
        {"RT", [&](X& x) { x.SetRT(t, angle, c); }, {}, [&](Y& y) { y.SetRT(t3, r, c3); }, {}},
        {"TR", [&](X& x) { x.SetTR(t, angle, c); }, {}, [&](Y& y) { y.SetTR(t3, r, c3); }, {}},
        {"SR", [&](X& x) { x.SetSR(angle, c, s, cs); }, {}, [&](Y& y) { y.SetSR(r, c3, s3, cs3); }, {}},
        {"RS", [&](X& x) { x.SetRS(angle, c, s, cs); }, {}, [&](Y& y) { y.SetRS(r, c3, s3, cs3); }, {}},
        {"SRT", [&](X& x) { x.SetSRT(t, angle, c, s, cs); }, {}, [&](Y& y) { y.SetSRT(t3, r, c3, s3, cs3); }, {}},
        {"STR", [&](X& x) { x.SetSTR(t, angle, c, s, cs); }, {}, [&](Y& y) { y.SetSTR(t3, r, c3, s3, cs3); }, {}},
        {"RST", [&](X& x) { x.SetRST(t, angle, c, s, cs); }, {}, [&](Y& y) { y.SetRST(t3, r, c3, s3, cs3); }, {}},
        {"RTS", [&](X& x) { x.SetRTS(t, angle, c, s, cs); }, {}, [&](Y& y) { y.SetRTS(t3, r, c3, s3, cs3); }, {}},
        {"TSR", [&](X& x) { x.SetTSR(t, angle, c, s, cs); }, {}, [&](Y& y) { y.SetTSR(t3, r, c3, s3, cs3); }, {}},
        {"TRS", [&](X& x) { x.SetTRS(t, angle, c, s, cs); }, {}, [&](Y& y) { y.SetTRS(t3, r, c3, s3, cs3); }, {}}};
    for (const auto& motion : motions) {
      const CQXMatrix3<T> start = this->RandomMatrix();  // any bottom row
      X x(start);
      Y y(this->InSpace(start));
      if (motion.add) {
        motion.add(x);
        motion.addInSpace(y);
        EXPECT_LE(this->Distance(x.GetMatrix(), this->InPlane(y.GetMatrix())), 64 * this->eps) << motion.name;
      }
      motion.set(x);
      motion.setInSpace(y);
      EXPECT_LE(this->Distance(x.GetMatrix(), this->InPlane(y.GetMatrix())), 128 * this->eps) << motion.name;
      EXPECT_EQ(x.IsAffine(0), 1) << motion.name;
    }
  }
}

TYPED_TEST(Affine2D, PointsVectorsAndLinesAreTransformedSinglyAndInArrays) {
  using T = TypeParam;
  const CQXAffine2DTransform<T> x(this->RandomMatrix());  // a bottom row that must not be read
  const CQXMatrix3<T>& m = x.GetMatrix();
  std::vector<CQXVector2<T>> source, points(9), vectors(9);
  for (int i = 0; i < 9; ++i) source.push_back(this->RandomVector());
  points = vectors = source;
  x.TransformPoints(-1, nullptr, nullptr);
  x.TransformPointsInPlace(8, points.data());
  x.TransformVectorsInPlace(8, vectors.data());
  for (std::size_t i = 0; i < 9; ++i) {
    auto p = source[i], v = p, q = p, direction = p;
    if (i < 8) {
      x.TransformPointInPlace(p);
      x.TransformVectorInPlace(v);
      EXPECT_EQ(v.X(), m[0] * q.X() + m[1] * q.Y());
      EXPECT_EQ(p.Y(), m[3] * q.X() + m[4] * q.Y() + m[5]);
      x.TransformLine(q, direction, direction, q);  // outputs that are inputs
      EXPECT_EQ((direction - p).NormInf() + (q - v).NormInf(), 0);
    }
    EXPECT_EQ((points[i] - p).NormInf() + (vectors[i] - v).NormInf(), 0);
  }
}

TYPED_TEST(Affine2D, PredicatesAreClosedAndLookAtTheWholeMatrix) {
  using T = TypeParam;
  const T s = T(0.5), c = std::sqrt(T(0.75)), nan = std::numeric_limits<T>::quiet_NaN();
  const struct {
    CQXMatrix3<T> m;
    std::int32_t expected;  // translation, rotation, scaling, Euclidean, orthogonal
  } cases[] = {{{1, 0, 0, 0, 1, 0, 0, 0, 1}, 11111},      {{1, 0, 5, 0, 1, 0, 0, 0, 1}, 10010},
               {{c, -s, 0, s, c, 0, 0, 0, 1}, 1011},      {{c, -s, 0, s, c, 1, 0, 0, 1}, 10},
               {{c, s, 0, s, -c, 0, 0, 0, 1}, 11},        {{2, 0, 0, 0, 3, 0, 0, 0, 1}, 100},
               {{2, 0, 0, 0, 3, 1, 0, 0, 1}, 0},          {{1, 0, 0, 0, 1, 0, T(0.1), 0, 1}, 0},
               {{2, 1, 0, 0, 3, 0, 0, 0, 1}, 0},          {{1, nan, 0, 0, 1, 0, 0, 0, 1}, 0},
               {{1, 0, T(1e-7), 0, 1, 0, 0, 0, 1}, 11111}};
  for (const auto& row : cases) {
    const CQXAffine2DTransform<T> x(row.m);
    EXPECT_EQ(x.IsTranslation() * 10000 + x.IsRotation() * 1000 + x.IsScaling() * 100 + x.IsEuclidean() * 10 +
                  x.IsOrthogonal(),
              row.expected)
        << row.m[0] << ' ' << row.m[1];
  }
}

TYPED_TEST(Affine2D, ExtractedPartsRebuildTheMatrix) {
  using T = TypeParam;
  using V = CQXVector2<T>;
  using X = CQXAffine2DTransform<T>;
  const struct {
    std::string letters;
    std::int32_t (X::*extract)(V&, V&, T&, T&, std::int32_t&) const noexcept;
    void (X::*set)(const V&, T, const V&, const V&, const V&) noexcept;
  } forms[] = {{"SRT", &X::ExtractSRT, &X::SetSRT}, {"STR", &X::ExtractSTR, &X::SetSTR},
               {"RST", &X::ExtractRST, &X::SetRST}, {"RTS", &X::ExtractRTS, &X::SetRTS},
               {"TSR", &X::ExtractTSR, &X::SetTSR}, {"TRS", &X::ExtractTRS, &X::SetTRS}};
  V t, s;
  T angle, stretchAngle;
  std::int32_t reflection;
  for (int i = 0; i < 200; ++i) {
    X x(this->RandomMatrix());
    if (std::abs(x.Get2DMatrix().Det()) < T(0.1)) continue;
    CQXMatrix3<T> whole = x.GetMatrix();
    whole.SetRowVector(2, {0, 0, 1});
    for (const auto& form : forms) {
      ASSERT_EQ((x.*form.extract)(t, s, angle, stretchAngle, reflection), 1);
      EXPECT_EQ(reflection, x.Get2DMatrix().Det() < 0 ? 1 : 0);
      EXPECT_TRUE(s.X() >= s.Y() && s.Y() > 0 && std::abs(angle) <= 180 && std::abs(stretchAngle) <= 90);
      X rebuilt;
      if (reflection != 0) rebuilt.AddReflection(0);
      for (const char letter : form.letters) {
        if (letter == 'T') rebuilt.AddTranslation(t);
        if (letter == 'R') rebuilt.AddRotation(angle);
        if (letter == 'S') rebuilt.AddStretch(s, stretchAngle);
      }
      EXPECT_LE(this->Distance(rebuilt.GetMatrix(), whole), 512 * this->eps) << form.letters;
      // Without stretch the Set operation of the same name gives the matrix, and the factors keep their axes.
      const V factors = this->RandomVector(0.5, 3), shift = this->RandomVector();
      const T turn = this->random.In(-180, 180);
      X plain;
      (plain.*form.set)(shift, turn, {}, factors, {});
      ASSERT_EQ((plain.*form.extract)(t, s, angle, stretchAngle, reflection), 1);
      EXPECT_EQ(stretchAngle, 0);
      EXPECT_LE((s - factors).NormInf() + (t - shift).NormInf(), 256 * this->eps) << form.letters;
      EXPECT_NEAR(std::remainder(angle - turn, T(360)), 0, 512 * this->eps);
    }
  }
  for (const T hostile : {T(0), T(9e-7), std::numeric_limits<T>::quiet_NaN()}) {
    const X x(CQXMatrix2<T>(1, 0, 0, hostile), V());
    for (const auto& form : forms) EXPECT_EQ((x.*form.extract)(t, s, angle, stretchAngle, reflection), 0);
  }
}

TYPED_TEST(Affine2D, TheBaseHoldsCombinesAndInvertsAnyMatrix) {
  using T = TypeParam;
  const CQXMatrix3<T> m = this->RandomMatrix(), e = this->RandomMatrix();
  CQXBase2DTransform<T> base(m);
  EXPECT_EQ(this->Distance(base.Combine(e, 0), m * e) + this->Distance(base.Combine(e, 7), e * m), 0);
  CQXAffine2DTransform<T> affine;
  CQXBase2DTransform<T>& asBase = affine;
  asBase = base;
  EXPECT_EQ(this->Distance(affine.GetMatrix(), m), 0);
  EXPECT_EQ(asBase.GetTypeOfTransform() * 10 + base.GetTypeOfTransform(), QX_TRANSFORM_AFFINE * 10);
  base.AddTransform(base.GetMatrix());
  EXPECT_EQ(this->Distance(base.GetMatrix(), m * m), 0);
  CQXMatrix3<T> inverse;
  affine.SetScaling({T(0.5), T(0.5)});
  EXPECT_EQ(asBase.Invert(inverse, T(0.26)), 0);
  EXPECT_EQ(inverse[0], 0);
  EXPECT_EQ(asBase.Invert(inverse, T(0.24)), 1);
  EXPECT_EQ(inverse[0], 2);
}

}  // namespace

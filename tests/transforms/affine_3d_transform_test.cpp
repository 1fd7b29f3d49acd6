#include <qx/transforms/affine_3d_transform.h>
#include <qx/vectors/vector_functions.h>

#include <algorithm>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "tests/transforms/reference.h"
#include "tests/typed_test.h"

namespace {

using reference::About;
using reference::Distance;
using reference::Linear;
using reference::Matrix;
using reference::Scaling;
using reference::Translation;

template <typename T>
class Affine3D : public ::testing::Test {
 protected:
  static constexpr T eps = std::numeric_limits<T>::epsilon();

  CQXMatrix4<T> RandomMatrix() {
    CQXMatrix4<T> m;
    for (std::int32_t i = 0; i < 16; ++i) m[i] = random.In(-2, 2);
    return m;
  }
  static Matrix Full(const CQXMatrix4<T>& a) {
    Matrix result = Linear(a.GetMatrix());
    for (std::int32_t i = 0; i < 4; ++i) {
      result.m[std::size_t(i)][3] = double(a(i, 3));
      result.m[3][std::size_t(i)] = double(a(3, i));
    }
    return result;
  }
  /// Newton's iteration for the polar form ends one step after it is orthogonal within 1e-6, which leaves up to the
  /// square of that; the axes of a stretch are found to the tolerance itself.
  static constexpr T polarBound = 8192 * eps;
  static double RebuildBound(const CQXMatrix3<T>& u) { return double(polarBound) + (u.IsUnit(0) != 0 ? 0 : 8e-6); }

  CQXAffine3DTransform<T> transform;
  reference::Random<T> random;
};
TYPED_TEST_SUITE(Affine3D, FloatTypes);

TYPED_TEST(Affine3D, ElementaryMotionsAreSetAndAddedAlike) {
  using T = TypeParam;
  using Transform = CQXAffine3DTransform<T>;
  const CQXVector3<T> t = this->random.Vector(-3, 3), s = this->random.Vector(0.5, 2), c = this->random.Vector(-3, 3);
  const T a = this->random.In(-2, 2), b = this->random.In(-2, 2);
  const auto angles = this->random.Angles();
  const T ax = T(angles[0]), ay = T(angles[1]), az = T(angles[2]);
  const CQXVector3<T> zAxis(0, 0, 2);

  CQXMatrix3<T> r;
  r.SetRotationByEulerAngles(ax, ay, az, QX_ROTATIONS_YZX);
  const Matrix euler = reference::Euler(angles, QX_ROTATIONS_YZX);
  Matrix shearXY, shearXZ, shearYZ;
  shearXY.m[0][2] = shearXZ.m[0][1] = shearYZ.m[1][0] = double(a);
  shearXY.m[1][2] = shearXZ.m[2][1] = shearYZ.m[2][0] = double(b);

  struct Motion {
    const char* name;
    std::function<void(Transform&)> set, add;
    Matrix expected;
  };
  const std::vector<Motion> motions = {
      {"translation", [&](Transform& x) { x.SetTranslation(t); }, [&](Transform& x) { x.AddTranslation(t); },
       Translation(t)},
      {"scaling", [&](Transform& x) { x.SetScaling(s); }, [&](Transform& x) { x.AddScaling(s, CQXVector3<T>()); },
       Scaling(s)},
      {"scaling about a point", [&](Transform& x) { x.SetScaling(s, c); }, [&](Transform& x) { x.AddScaling(s, c); },
       About(c, Scaling(s))},
      {"rotation", [&](Transform& x) { x.SetRotation(r); }, [&](Transform& x) { x.AddRotation(r); }, euler},
      {"rotation about a point", [&](Transform& x) { x.SetRotation(r, c); }, [&](Transform& x) { x.AddRotation(r, c); },
       About(c, euler)},
      {"rotation about an axis", [&](Transform& x) { x.SetRotation(90, zAxis); },
       [&](Transform& x) { x.AddRotation(90, zAxis); }, reference::AxisRotation(2, 90)},
      {"angles", [&](Transform& x) { x.SetRotation(ax, ay, az, QX_ROTATIONS_YZX); },
       [&](Transform& x) { x.AddRotation(ax, ay, az, QX_ROTATIONS_YZX); }, euler},
      {"angles about a point", [&](Transform& x) { x.SetRotation(ax, ay, az, QX_ROTATIONS_YZX, c); },
       [&](Transform& x) { x.AddRotation(ax, ay, az, QX_ROTATIONS_YZX, c); }, About(c, euler)},
      {"bad order", [&](Transform& x) { x.SetRotation(ax, ay, az, qxRotationsOrder(17), c); },
       [&](Transform& x) { x.AddRotation(ax, ay, az, qxRotationsOrder(17), c); }, Matrix()},
      {"reflection", [&](Transform& x) { x.SetReflection(); }, [&](Transform& x) { x.AddReflection(); },
       reference::PointReflection()},
      {"shear XY", [&](Transform& x) { x.SetShearXY(a, b); }, [&](Transform& x) { x.AddShearXY(a, b); }, shearXY},
      {"shear XZ", [&](Transform& x) { x.SetShearXZ(a, b); }, [&](Transform& x) { x.AddShearXZ(a, b); }, shearXZ},
      {"shear YZ", [&](Transform& x) { x.SetShearYZ(a, b); }, [&](Transform& x) { x.AddShearYZ(a, b); }, shearYZ}};
  for (const Motion& motion : motions) {
    Transform x(this->RandomMatrix());
    motion.set(x);
    EXPECT_LE(Distance(x.GetMatrix(), motion.expected), 64 * this->eps) << motion.name;
    EXPECT_EQ(x.IsAffine(0), 1) << motion.name;
    const CQXMatrix4<T> start = this->RandomMatrix();  // any bottom row
    x.SetTransform(start);
    motion.add(x);
    EXPECT_LE(Distance(x.GetMatrix(), motion.expected * this->Full(start)), 256 * this->eps) << motion.name;
    EXPECT_EQ(x.GetMatrix().RowVector(3) == start.RowVector(3), 1) << motion.name;
  }

  const T inf = std::numeric_limits<T>::infinity();
  this->transform.SetTS({inf, 1, 2}, {2, 3, 4}, {});  // each axis by itself
  EXPECT_EQ(this->transform.GetTranslation().Y() + this->transform.GetTranslation().Z(), 11);
  // A center of almost zero: the length 3e-5 is guarded in double too.
  for (const T tiny : {T(0), T(1e-7), T(1e-5)}) {
    this->transform.SetScaling(CQXVector3<T>(5, 6, 7), CQXVector3<T>(tiny, tiny, -tiny));
    EXPECT_EQ(this->transform.GetTranslation().NormInf(), 0) << tiny;
  }
}

TYPED_TEST(Affine3D, CompositesActInTheOrderOfTheirLetters) {
  using T = TypeParam;
  using V = CQXVector3<T>;
  using X = CQXAffine3DTransform<T>;
  for (int i = 0; i < 60; ++i) {
    const int order = i % 6;
    const auto qxOrder = static_cast<qxRotationsOrder>(order);
    const bool centered = i % 2 == 0;
    const V t = this->random.Vector(-3, 3), s = this->random.Vector(-2, 2);
    const V c = centered ? this->random.Vector(-3, 3) : V(), cs = centered ? this->random.Vector(-3, 3) : V();
    const auto angles = this->random.Angles();
    const T ax = T(angles[0]), ay = T(angles[1]), az = T(angles[2]);
    CQXMatrix3<T> r;
    r.SetRotationByEulerAngles(ax, ay, az, qxOrder);

    const Matrix rotation = reference::Euler(angles, order), scaling = About(cs, Scaling(s));
    const Matrix translation = Translation(t);
    // Next to the translation the point c is subtracted once; across the scaling the rotation is about c.
    const Matrix rt = Translation(t - c) * rotation, tr = Translation(-c) * rotation * translation;
    const Matrix rc = About(c, rotation);
    X x;
    const struct {
      const char* letters;
      void (X::*set)(const V&, const CQXMatrix3<T>&, const V&, const V&, const V&) noexcept;
      void (X::*setByAngles)(const V&, T, T, T, qxRotationsOrder, const V&, const V&, const V&) noexcept;
      Matrix expected;
    } composites[] = {{"SRT", &X::SetSRT, &X::SetSRT, rt * scaling},
                      {"STR", &X::SetSTR, &X::SetSTR, tr * scaling},
                      {"RTS", &X::SetRTS, &X::SetRTS, scaling * rt},
                      {"TRS", &X::SetTRS, &X::SetTRS, scaling * tr},
                      {"RST", &X::SetRST, &X::SetRST, translation * scaling * rc},
                      {"TSR", &X::SetTSR, &X::SetTSR, rc * scaling * translation}};
    const auto expect = [&](const std::string& letters, const Matrix& expected) {
      EXPECT_LE(Distance(x.GetMatrix(), expected), 512 * this->eps) << letters;
    };
    for (const auto& composite : composites) {
      (x.*composite.set)(t, r, c, s, cs);
      expect(composite.letters, composite.expected);
      x.SetToIdentity();
      (x.*composite.setByAngles)(t, ax, ay, az, qxOrder, c, s, cs);
      expect(composite.letters, composite.expected);
    }
    x.SetST(t, s, cs);
    expect("ST", translation * scaling);
    x.SetTS(t, s, cs);
    expect("TS", scaling * translation);
    for (const bool byAngles : {false, true}) {
      byAngles ? x.SetRT(t, ax, ay, az, qxOrder, c) : x.SetRT(t, r, c);
      expect("RT", rt);
      byAngles ? x.SetTR(t, ax, ay, az, qxOrder, c) : x.SetTR(t, r, c);
      expect("TR", tr);
      byAngles ? x.SetSR(ax, ay, az, qxOrder, c, s, cs) : x.SetSR(r, c, s, cs);
      expect("SR", rc * scaling);
      byAngles ? x.SetRS(ax, ay, az, qxOrder, c, s, cs) : x.SetRS(r, c, s, cs);
      expect("RS", scaling * rc);
    }
  }
}

TYPED_TEST(Affine3D, TheKindIsVirtualAndAssignmentThroughTheBaseCopiesTheMatrix) {
  using T = TypeParam;
  const CQXAffine3DTransform<T> affine(this->RandomMatrix());
  const CQXBase3DTransform<T> general(this->RandomMatrix());
  const CQXBase3DTransform<T>& affineAsBase = affine;
  EXPECT_EQ(affineAsBase.GetTypeOfTransform(), QX_TRANSFORM_AFFINE);
  EXPECT_EQ(general.GetTypeOfTransform(), QX_TRANSFORM_GENERAL);
  CQXAffine3DTransform<T> target;
  CQXBase3DTransform<T>& targetAsBase = target;
  for (const CQXBase3DTransform<T>* source : {&general, &affineAsBase}) {
    targetAsBase = *source;
    EXPECT_TRUE(qxAreAlmostEqual(target.GetMatrix(), source->GetMatrix(), T(0)));
    EXPECT_EQ(targetAsBase.GetTypeOfTransform(), QX_TRANSFORM_AFFINE);
  }
}

TYPED_TEST(Affine3D, InvertComparesTheDeterminantWithItsTolerance) {
  using T = TypeParam;
  CQXMatrix4<T> inverse;
  inverse.SetConstant(7);
  this->transform.SetSRT({1, 2, 3}, 10, 20, 30, QX_ROTATIONS_XYZ, {}, {T(0.5), T(0.5), T(0.5)}, {});  // determinant 1/8
  EXPECT_EQ(this->transform.Invert(inverse, T(0.126)), 0);
  EXPECT_EQ(inverse(3, 3), 7);
  EXPECT_EQ(this->transform.Invert(inverse, T(0.124)), 1);
  EXPECT_EQ((this->transform.GetMatrix() * inverse).IsUnit(32 * this->eps), 1);
}

TYPED_TEST(Affine3D, MatricesCombineInEitherOrderAndWithThemselves) {
  using T = TypeParam;
  const CQXMatrix4<T> m = this->RandomMatrix(), e = this->RandomMatrix();
  CQXBase3DTransform<T> base(m);
  EXPECT_TRUE(qxAreAlmostEqual(base.Combine(e, 0), m * e, T(0)));
  EXPECT_TRUE(qxAreAlmostEqual(base.Combine(e, 7), e * m, T(0)));
  base.AddTransform(base.GetMatrix());
  EXPECT_TRUE(qxAreAlmostEqual(base.GetMatrix(), m * m, T(0)));
}

TYPED_TEST(Affine3D, ArraysAreTransformedAsSinglePointsAre) {
  using T = TypeParam;
  using V = CQXVector3<T>;
  const CQXAffine3DTransform<T> x(this->RandomMatrix());  // a bottom row that must not be read
  const CQXMatrix4<T>& m = x.GetMatrix();
  std::vector<V> source;
  for (int i = 0; i < 20; ++i) source.push_back(this->random.Vector(-5, 5));
  for (const std::int32_t n : {-1, 0, 1, 3, 4, 5, 8, 19}) {
    std::vector<V> points = source, vectors = source, pointsInPlace = source, vectorsInPlace = source;
    x.TransformPoints(n, source.data(), points.data());
    x.TransformVectors(n, source.data(), vectors.data());
    x.TransformPointsInPlace(n, pointsInPlace.data());
    x.TransformVectorsInPlace(n, vectorsInPlace.data());
    for (std::int32_t i = 0; i < 20; ++i) {
      const auto at = static_cast<std::size_t>(i);
      V p = source[at], v = p;
      if (i < n) {  // the order of operations is laid down, so the results are the same to the last bit
        const V image(m(0, 0) * p.X() + m(0, 1) * p.Y() + m(0, 2) * p.Z(),
                      m(1, 0) * p.X() + m(1, 1) * p.Y() + m(1, 2) * p.Z(),
                      m(2, 0) * p.X() + m(2, 1) * p.Y() + m(2, 2) * p.Z());
        x.TransformPointInPlace(p);
        x.TransformVectorInPlace(v);
        EXPECT_EQ((v - image).NormInf() + (p - (image + x.GetTranslation())).NormInf(), 0);
      }
      for (const V& same : {points[at], pointsInPlace[at]}) EXPECT_EQ((same - p).NormInf(), 0);
      for (const V& same : {vectors[at], vectorsInPlace[at]}) EXPECT_EQ((same - v).NormInf(), 0);
    }
  }
  x.TransformPoints(0, nullptr, nullptr);
}

TYPED_TEST(Affine3D, LinesAndPlanesMayBeTransformedInPlace) {
  using T = TypeParam;
  using V = CQXVector3<T>;
  auto& x = this->transform;
  for (int i = 0; i < 40; ++i) {
    const bool keepsAngles = i % 2 == 0;
    const V normal = this->random.Vector(-2, 2), onPlane = this->random.Vector(-2, 2);
    const T scale = this->random.In(0.5, 2);
    x.SetSRT(this->random.Vector(-2, 2), 40, 50, 60, QX_ROTATIONS_XZY, {},
             keepsAngles ? V(scale, scale, scale) : V(1, 2, 3), {});
    V shared = normal, direction;
    x.TransformLine(onPlane, shared, shared, direction);  // the first output is the second input
    EXPECT_EQ((shared - x.TransformPoint(onPlane)).NormInf(), 0);
    EXPECT_EQ((direction - x.TransformVector(normal)).NormInf(), 0);
    CQXVector4<T> image = qxVector3To4(normal, -normal.Dot(onPlane));
    x.TransformPlane(image, image);
    EXPECT_EQ((qxCutVector4To3(image) - x.TransformVector(normal)).NormInf(), 0);
    const V known = keepsAngles ? onPlane : V(normal * (normal.Dot(onPlane) / normal.Dot(normal)));
    EXPECT_NEAR(image.Dot(qxVector3To4(x.TransformPoint(known), 1)), 0, 512 * this->eps);
  }
  CQXVector4<T> image(1, 1, 1, 1);
  x.TransformPlane({0, 0, 0, 5}, image);
  EXPECT_EQ(image.NormInf(), 0);
}

TYPED_TEST(Affine3D, PredicatesLookAtTheWholeMatrix) {
  using T = TypeParam;
  using V = CQXVector3<T>;
  auto& x = this->transform;
  x.SetTranslation(V(1, 2, 3));
  EXPECT_EQ(x.IsOrthogonal(2), 0);
  EXPECT_EQ(x.IsOrthogonal(3), 1);
  x.SetScaling(V(2, 2, 2));
  EXPECT_EQ(x.IsEuclidean(1), 0);
  EXPECT_EQ(x.IsEuclidean(3), 1);
  CQXMatrix4<T> m = x.GetMatrix();
  m(3, 1) = T(2e-6);
  x.SetTransform(m);
  EXPECT_EQ(x.IsEuclidean(10), 0);  // the bottom row has its own bound
  EXPECT_EQ(x.IsAffine(T(1e-5)), 1);
  m.SetConstant(std::numeric_limits<T>::quiet_NaN());
  x.SetTransform(m);
  EXPECT_EQ(x.IsAffine(1) + x.IsEuclidean(1) + x.IsOrthogonal(1) + x.IsScalingByOrigin(1), 0);
}

TYPED_TEST(Affine3D, TheOppositeOrderUndoesARotationByNegatedAngles) {
  using Transform = CQXAffine3DTransform<TypeParam>;
  for (int order = 0; order < 6; ++order) {
    const auto opposite = Transform::GetOppositeRotationOrder(static_cast<qxRotationsOrder>(order));
    this->transform.SetRotation(20, 40, 60, static_cast<qxRotationsOrder>(order));
    this->transform.AddRotation(-20, -40, -60, opposite);
    EXPECT_EQ(this->transform.GetMatrix().IsUnit(8 * this->eps), 1) << order;
  }
  for (const std::int32_t order : {6, 17, -1}) {
    EXPECT_EQ(Transform::GetOppositeRotationOrder(static_cast<qxRotationsOrder>(order)), QX_ROTATIONS_XYZ);
  }
}

TYPED_TEST(Affine3D, ExtractedPartsRebuildTheMatrix) {
  using T = TypeParam;
  using V = CQXVector3<T>;
  using X = CQXAffine3DTransform<T>;
  const struct {
    std::string letters;
    std::int32_t (X::*extract)(V&, V&, CQXMatrix3<T>&, CQXMatrix3<T>&, std::int32_t&) const;
  } forms[] = {{"SRT", &X::ExtractSRT}, {"STR", &X::ExtractSTR}, {"RST", &X::ExtractRST},
               {"RTS", &X::ExtractRTS}, {"TSR", &X::ExtractTSR}, {"TRS", &X::ExtractTRS}};
  auto& x = this->transform;
  V t, s;
  CQXMatrix3<T> r, u;
  std::int32_t hasStretch, order, reflection, closestReflection;
  for (int i = 0; i < 120; ++i) {
    const int kind = i % 3;  // the scaling first, the rotation first, stretch
    const int reflects = i % 2;
    V factors = this->random.Vector(0.5, 3);
    if (i % 5 == 0) factors = V(2, 2, this->random.In(0.5, 3));
    x.SetToIdentity();
    if (kind != 1) x.AddScaling(factors, V());
    if (kind == 2) x.AddShearXY(T(0.5), T(0.25));
    x.AddRotation(T(3 * i + 10), T(5 * i + 20), T(7 * i + 30), QX_ROTATIONS_ZYX);
    if (kind == 1) x.AddScaling(factors, V());
    if (reflects != 0) x.AddReflection();
    x.AddTranslation(this->random.Vector(-3, 3));
    const auto expectParts = [&](const std::string& letters) {
      EXPECT_EQ(reflection, reflects);
      EXPECT_TRUE(r.IsRotation(this->polarBound));
      EXPECT_TRUE(u.IsRotation(64 * this->eps));
      EXPECT_GT(s.GetMinComponent(0), 0);
      if (kind == (letters.find('S') < letters.find('R') ? 0 : 1)) {
        EXPECT_TRUE(u.IsUnit(0));
        EXPECT_LE((s - factors).NormInf(), this->polarBound);
      }
      Matrix product = reflects != 0 ? reference::PointReflection() : Matrix();
      for (const char letter : letters) {
        product = (letter == 'T'   ? Translation(t)
                   : letter == 'R' ? Linear(r)
                                   : Linear(u) * Scaling(s) * Linear(u.Transpose())) *
                  product;
      }
      EXPECT_LE(Distance(x.GetMatrix(), product), this->RebuildBound(u)) << letters << i;
    };
    for (const auto& form : forms) {
      ASSERT_EQ((x.*form.extract)(t, s, r, u, reflection), 1);
      expectParts(form.letters);
    }
    ASSERT_EQ(x.ExtractElementaryTransforms(t, s, r, u, hasStretch, order, reflection), 1);
    expectParts(order == 0 ? "SRT" : "RST");
    EXPECT_EQ(hasStretch, kind == 2 ? 1 : 0);
    if (kind != 2) {
      EXPECT_EQ(order, kind);
    }
    EXPECT_EQ((x.ExtractClosestScaling() - s).NormInf(), 0);
    EXPECT_TRUE(qxAreAlmostEqual(x.ExtractClosestRotation(closestReflection), r, T(0)));
    EXPECT_EQ(closestReflection, reflects);
  }
  for (const T hostile : {T(0), std::numeric_limits<T>::quiet_NaN()}) {
    x.SetScaling(V(1, hostile, 1));
    for (const auto& form : forms) EXPECT_EQ((x.*form.extract)(t, s, r, u, reflection), 0);
    EXPECT_EQ(x.ExtractElementaryTransforms(t, s, r, u, hasStretch, order, reflection), 0);
    EXPECT_EQ(x.ExtractClosestScaling().NormInf(), 0);
    EXPECT_EQ(x.ExtractClosestRotation(closestReflection).IsUnit(0), 1);
    EXPECT_EQ(closestReflection, 0);
  }
}

}  // namespace

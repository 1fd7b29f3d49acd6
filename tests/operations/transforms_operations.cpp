#include "tests/operations/operations.h"

namespace {

constexpr qxRotationsOrder orders[] = {QX_ROTATIONS_XYZ, QX_ROTATIONS_XZY, QX_ROTATIONS_YXZ,
                                       QX_ROTATIONS_YZX, QX_ROTATIONS_ZYX, QX_ROTATIONS_ZXY};

/// Random quaternions and vectors, and quaternions with components at the edges.
template <typename T, typename Function>
void OverQuaternions(const std::string& operation, Function f, bool isPlatform = false) {
  using Q = CQXQuaternion<T>;
  Row<T>(
      "Quaternion " + operation,
      [&](Hash& h) {
        Numbers<T> next(61);
        std::vector<Q> all;
        for (int i = 0; i < 100; ++i) {
          const auto c = next.Array(4);
          all.emplace_back(c[0], c[1], c[2], c[3]);
          all.push_back(all.back());
          all.back().Normalize();
        }
        for (std::size_t i = 0; i < edges<T>.size(); ++i) {
          const auto edge = [i](std::size_t k) { return edges<T>[(i * k) % edges<T>.size()]; };
          all.emplace_back(edge(1), edge(2), edge(3), edge(7));
        }
        for (std::size_t i = 0; i < all.size(); ++i) {
          const auto v = next.template Make<CQXVector3<T>>();
          f(h, Q(all[i]), all[(i * 3 + 1) % all.size()], v);
        }
      },
      isPlatform);
}

template <typename T>
void QuaternionRows() {
  using Q = CQXQuaternion<T>;
  using V = CQXVector3<T>;
  OverQuaternions<T>("arithmetic", [](Hash& h, Q a, const Q& b, const V& v) {
    h(a + b), h(a - b), h(a * v.X()), h(std::as_const(a).Conjugate()), h(std::as_const(a).Negate()), h(a == b),
        h(a != b), h(a.IsIdentity()), h(a.IsUnit()), h(a.IsPure()), h(a.SquaredLength()), h(a.Length());
    a += b;
    a -= Q(v.X(), v);
    h(a);
    a.Normalize();
    h(a);
  });
  OverQuaternions<T>("*", [](Hash& h, Q a, const Q& b, const V&) { h(a * b, b * a); });
  OverQuaternions<T>("*=", [](Hash& h, Q a, const Q& b, const V&) {
    a *= b;
    h(a);
  });
  OverQuaternions<T>(
      "Invert", [](Hash& h, const Q& a, const Q& b, const V&) { h(a.Invert()), h(b.InvertUnit()), h(a * b.Invert()); });
  OverQuaternions<T>("Rotate", [](Hash& h, const Q& a, const Q&, const V& v) { h(a.Rotate(v)), h(a.GetMatrix() * v); });
  OverQuaternions<T>("matrices", [](Hash& h, const Q& a, const Q& b, const V&) {
    h(a.GetMatrix()), h(qxMatrixToQuaternion(b.GetMatrix())), h(Q(a.GetMatrix() * b.GetMatrix()));
  });
  OverQuaternions<T>(
      "Log and Exp",
      [](Hash& h, const Q& a, const Q& b, const V& v) { h(a.Log()), h(b.Exp()), h(a.Pow(v.X())), h(b.Pow(T(2))); },
      true);
  OverQuaternions<T>(
      "angles",
      [](Hash& h, Q a, const Q& b, V v) {
        T x = 0, y = 0, z = 0;
        b.GetAngleAndAxis(x, v);
        a.SetRotation(v.Y() * 4, v);
        h(x, v, a);
        for (const qxRotationsOrder order : orders) {
          h(qxEulerToQuaternion(v.X(), v.Y(), v.Z(), order));
          a.SetByEulerAngles(v.X() * 90, v.Y() * 90, v.Z() * 90, order);
          a.ExtractEulerAngles(order, x, y, z);
          h(a, x, y, z);
        }
      },
      true);
}

/// Random matrices and vectors.
template <typename T, typename Function>
void OverMotions(const std::string& operation, Function f, bool isPlatform = false) {
  using V = CQXVector3<T>;
  Row<T>(
      operation,
      [&](Hash& h) {
        Numbers<T> next(62);
        for (int i = 0; i < 60; ++i) {
          auto a = next.template Make<CQXMatrix4<T>>();
          if (i % 2 == 0) a.SetRowVector(3, CQXVector4<T>(0, 0, 0, 1));
          if (i % 6 == 4) a.SetRowVector(1, a.RowVector(0) * T(-2));
          if (i % 10 == 7) a = a.Transpose() * a;
          CQXAffine3DTransform<T> transform(a);
          const auto t = next.template Make<V>(), s = next.template Make<V>(), c = next.template Make<V>();
          // A rotation without the platform's functions.
          const CQXMatrix3<T> r =
              CQXQuaternion<T>(T(0.6), T(0), T(0.8), T(0)).GetMatrix() *
              CQXQuaternion<T>(T(0.8), T(0.6) * (i % 3 == 0), T(0), T(0.6) * (i % 3 != 0)).GetMatrix();
          f(h, transform, r, t, s, c);
        }
      },
      isPlatform);
}

template <typename T>
void AffineRows() {
  using A = CQXAffine3DTransform<T>;
  using M = CQXMatrix3<T>;
  using V = CQXVector3<T>;
  OverMotions<T>("Affine composite motions", [](Hash& h, A& a, const M& r, const V& t, const V& s, const V& c) {
    const V cs = c * T(0.5);
    a.SetST(t, s, cs), h(a);
    a.SetTS(t, s, cs), h(a);
    a.SetRT(t, r, c), h(a);
    a.SetTR(t, r, c), h(a);
    a.SetSR(r, c, s, cs), h(a);
    a.SetRS(r, c, s, cs), h(a);
    a.SetSRT(t, r, c, s, cs), h(a);
    a.SetSTR(t, r, c, s, cs), h(a);
    a.SetRST(t, r, c, s, cs), h(a);
    a.SetRTS(t, r, c, s, cs), h(a);
    a.SetTSR(t, r, c, s, cs), h(a);
    a.SetTRS(t, r, c, s, cs), h(a);
  });
  OverMotions<T>(
      "Affine motions by angles",
      [](Hash& h, A& a, const M&, const V& t, const V& s, const V& c) {
        const V cs = c * T(0.5);
        const T x = t.X() * 180, y = t.Y() * 180, z = s.X() * 180;
        for (const qxRotationsOrder order : orders) {
          a.SetRotation(x, y, z, order), h(a);
          a.SetRotation(x, y, z, order, c), h(a);
          a.SetRT(t, x, y, z, order, c), h(a);
          a.SetTR(t, x, y, z, order, c), h(a);
          a.SetSR(x, y, z, order, c, s, cs), h(a);
          a.SetRS(x, y, z, order, c, s, cs), h(a);
          a.SetSRT(t, x, y, z, order, c, s, cs), h(a);
          a.SetSTR(t, x, y, z, order, c, s, cs), h(a);
          a.SetRST(t, x, y, z, order, c, s, cs), h(a);
          a.SetRTS(t, x, y, z, order, c, s, cs), h(a);
          a.SetTSR(t, x, y, z, order, c, s, cs), h(a);
          a.SetTRS(t, x, y, z, order, c, s, cs), h(a);
          a.AddRotation(x, y, z, order), h(a);
          a.AddRotation(x, y, z, order, c), h(a, A::GetOppositeRotationOrder(order));
        }
        a.SetRotation(x, s), h(a);
        a.AddRotation(y, c), h(a);
      },
      true);
  OverMotions<T>("Affine elementary motions", [](Hash& h, A& a, const M& r, const V& t, const V& s, const V& c) {
    a.AddTranslation(t), h(a);
    a.AddScaling(s, c), h(a);
    a.AddRotation(r), h(a);
    a.AddRotation(r, c), h(a);
    a.AddReflection(), h(a);
    a.AddShearXY(t.X(), t.Y()), h(a);
    a.AddShearXZ(t.X(), t.Y()), h(a);
    a.AddShearYZ(t.X(), t.Y()), h(a);
    a.SetTranslation(t), h(a);
    a.SetScaling(s), h(a);
    a.SetScaling(s, c), h(a);
    a.SetRotation(r), h(a);
    a.SetRotation(r, c), h(a);
    a.SetReflection(), h(a);
    a.SetShearXY(t.X(), t.Y()), h(a);
    a.SetShearXZ(t.X(), t.Y()), h(a);
    a.SetShearYZ(t.X(), t.Y()), h(a);
  });
  OverMotions<T>("Affine points", [](Hash& h, A& a, const M&, const V& t, const V& s, const V& c) {
    for (std::int32_t n = 0; n < 20; ++n) {
      const std::vector<T> numbers = Numbers<T>(63).Array(60);
      std::vector<V> points(20), result(20);
      for (std::size_t i = 0; i < 20; ++i) points[i] = V(numbers.data() + 3 * i);
      a.TransformPoints(n, points.data(), result.data());
      a.TransformVectorsInPlace(n, points.data());
      h(points, result);
    }
    V p, v;
    CQXVector4<T> plane;
    CQXMatrix4<T> inverse;
    a.TransformLine(t, s, p, v);
    a.TransformPlane(qxVector3To4(c, T(2)), plane);
    h(a.TransformPoint(t)), h(a.TransformVector(s)), h(p), h(v), h(plane), h(a.Invert(inverse)), h(inverse),
        h(a.GetTypeOfTransform()), h(a.IsTranslation()), h(a.IsRotation()), h(a.IsScaling()), h(a.IsScalingByOrigin()),
        h(a.IsEuclidean()), h(a.IsOrthogonal()), h(a.IsAffine());
  });
  OverMotions<T>("Affine extractions", [](Hash& h, A& a, const M& r, const V& c, const V& factors, const V&) {
    const auto extract = [&] {
      V t, s;
      M rotation, u;
      std::int32_t reflection = 0, stretch = 0, order = 0;
      const auto found = [&](std::int32_t code) { h(code, t, s, rotation, u, reflection, stretch, order); };
      found(a.ExtractSRT(t, s, rotation, u, reflection));
      found(a.ExtractSTR(t, s, rotation, u, reflection));
      found(a.ExtractRST(t, s, rotation, u, reflection));
      found(a.ExtractRTS(t, s, rotation, u, reflection));
      found(a.ExtractTSR(t, s, rotation, u, reflection));
      found(a.ExtractTRS(t, s, rotation, u, reflection));
      found(a.ExtractElementaryTransforms(t, s, rotation, u, stretch, order, reflection));
      h(a.ExtractClosestScaling()), h(a.ExtractClosestRotation(reflection)), h(reflection);
    };
    extract();
    a.SetTRS(c, r, V(), factors, V());
    extract();
    a.SetSTR(c, r, V(), factors, V());
    extract();
  });
}

/// The plainest projection, parallel or from the reference point.
template <typename T>
class Camera : public CQXProjective3DTransform<T> {
 public:
  using CQXProjective3DTransform<T>::operator=;

  std::int32_t Initialize() override {
    using V = CQXVector3<T>;
    this->m_localAxis3 = this->m_projectionNormal;
    this->m_localAxis3.Normalize();
    this->FindLocalAxes(this->m_viewUp, this->m_localAxis3);
    const V centre = this->m_prp + this->m_localAxis3 * this->m_distanceToPlane;
    this->m_localOrigin = this->FindCoordinatesCenter(centre, this->m_windowWidth, this->m_windowHeight);
    this->CalculatePlanesCoefficients(centre);
    this->CalculateFrontBackPlanes();
    const V eye = isPerspective ? this->m_prp : V();
    const V weight = isPerspective ? this->m_localAxis3 / this->m_distanceToPlane : V();
    const T weightAtOrigin = isPerspective ? -weight.Dot(eye) : T(1);
    const V axes[] = {this->m_localAxis1, this->m_localAxis2, this->m_localAxis3};
    for (std::int32_t i = 0; i < 3; ++i) {
      const T shift = axes[i].Dot(eye - this->m_localOrigin);
      this->m_matrix.SetRowVector(i, qxVector3To4(axes[i] + weight * shift, weightAtOrigin * shift - axes[i].Dot(eye)));
    }
    this->m_matrix.SetRowVector(3, qxVector3To4(weight, weightAtOrigin));
    return this->m_isReady = 1;
  }

  bool isPerspective = false;
};

template <typename T>
void ProjectionRows() {
  using V2 = CQXVector2<T>;
  using V3 = CQXVector3<T>;
  for (const bool isPerspective : {false, true}) {
    Row<T>(isPerspective ? "Projection perspective" : "Projection parallel", [&](Hash& h) {
      Numbers<T> next(64);
      for (int i = 0; i < 30; ++i) {
        Camera<T> camera;
        camera.isPerspective = isPerspective;
        const auto prp = next.template Make<V3>(), normal = next.template Make<V3>(), up = next.template Make<V3>();
        camera.Set(prp, normal, up, normal, T(1.5), T(2), T(1.25), T(-0.5), T(1.75));
        h(camera.Initialize(), camera);
        camera.UseBackFrontPlanes(i % 2);
        camera.Initialize();
        T a, b, c, d, front, back;
        camera.GetProjectionPlane(a, b, c, d);
        camera.GetViewVolumeCoefficients(front, back);
        h(a), h(b), h(c), h(d), h(front), h(back), h(camera.GetLocalCoordinates()), h(camera.GetViewWindowCenter()),
            h(camera.IsReady());
        for (int k = 0; k < 100; ++k) {
          V3 triangle[3];
          for (V3& corner : triangle) corner = prp + normal * T(1.5) + next.template Make<V3>() * T(k % 3 + 1);
          V2 q, q2, polygon[16], projections[3];
          std::int32_t flags[3] = {}, count = 0;
          h(camera.ProjectPoint(triangle[0], q), q);
          h(camera.ProjectPoints(3, triangle, projections, flags), projections, flags);
          h(camera.ProjectClippedSegment(triangle[0], triangle[1], q, q2), q, q2);
          h(camera.ProjectClippedTriangle(triangle, polygon, count), count);
          for (std::int32_t m = 0; m < count; ++m) h(polygon[m]);
        }
      }
    });
  }
}

template <typename T>
void InterpolationRows() {
  using I = CQXInterpolation;
  const auto overTimes = [](const std::string& operation, auto f, bool isPlatform = false) {
    Row<T>(
        operation,
        [&](Hash& h) {
          Numbers<T> next(65);
          for (int i = 0; i < 40; ++i) f(h, next, next() * 2);
        },
        isPlatform);
  };
  const auto fixed = [](Hash& h, auto a, auto b, auto c, auto d, T t) {
    if constexpr (qxFixedVector<decltype(a)>) {
      h(I::VectorsLinear(a, b, t)), h(I::VectorsQuadratic(a, b, c, T(0), T(0.4), T(1), t)),
          h(I::VectorsCubic(a, b, c, d, T(-1), T(0), T(0.7), T(1), t));
    } else {
      h(I::MatricesLinear(a, b, t)), h(I::MatricesQuadratic(a, b, c, T(0), T(0.4), T(1), t)),
          h(I::MatricesCubic(a, b, c, d, T(-1), T(0), T(0.7), T(1), t));
    }
  };
  const auto four = [&]<typename A>(Hash& h, Numbers<T>& next, T t, std::type_identity<A>) {
    const A a = next.template Make<A>(), b = next.template Make<A>(), c = next.template Make<A>();
    fixed(h, a, b, c, next.template Make<A>(), t);
  };
  overTimes("Interpolation fixed", [&](Hash& h, Numbers<T>& next, T t) {
    four(h, next, t, std::type_identity<CQXVector2<T>>());
    four(h, next, t, std::type_identity<CQXVector3<T>>());
    four(h, next, t, std::type_identity<CQXVector4<T>>());
    four(h, next, t, std::type_identity<CQXMatrix2<T>>());
    four(h, next, t, std::type_identity<CQXMatrix3<T>>());
    four(h, next, t, std::type_identity<CQXMatrix4<T>>());
  });
  overTimes("Interpolation dynamic", [](Hash& h, Numbers<T>& next, T t) {
    for (const std::int32_t n : {0, 1, 3, 4, 5, 8, 17, 36}) {
      std::vector<CQXVectorN<T>> v;
      std::vector<CQXMatrixMN<T>> m;
      for (int k = 0; k < 4; ++k) {
        v.push_back(Made(CQXVectorN<T>(n, next.Array(static_cast<std::size_t>(n)).data())));
        m.emplace_back(n, 3, next.Array(static_cast<std::size_t>(3 * n)).data());
      }
      h(I::VectorsLinear(v[0], v[1], t)), h(I::VectorsQuadratic(v[0], v[1], v[2], T(0), T(0.4), T(1), t)),
          h(I::VectorsCubic(v[0], v[1], v[2], v[3], T(-1), T(0), T(0.7), T(1), t));
      h(I::MatricesLinear(m[0], m[1], t)), h(I::MatricesQuadratic(m[0], m[1], m[2], T(0), T(0.4), T(1), t)),
          h(I::MatricesCubic(m[0], m[1], m[2], m[3], T(-1), T(0), T(0.7), T(1), t));
      auto a = Made(CQXBaseVector<CQXComplex<T>>(n)), b = Made(CQXBaseVector<CQXComplex<T>>(n));
      for (std::int32_t i = 0; i < n; ++i) {
        a[i].Set(v[0][i], v[1][i]);
        b[i].Set(v[2][i], v[3][i]);
      }
      h(I::VectorsLinear(a, b, t));
    }
  });
  overTimes(
      "Interpolation rotations",
      [](Hash& h, Numbers<T>& next, T t) {
        CQXQuaternion<T> q[4];
        for (auto& key : q) {
          const auto c = next.Array(4);
          key.Set(c[0], c[1], c[2], c[3]);
          key.Normalize();
        }
        h(I::Slerp(q[0], q[1], t)), h(I::Squad(q[0], q[1], q[2], q[3], t)),
            h(I::SlerpCubic(q[0], q[1], q[2], q[3], T(-1), T(0), T(1), T(2), t));
        const CQXMatrix3<T> a = q[0].GetMatrix(), b = q[1].GetMatrix(), c = q[2].GetMatrix(), d = q[3].GetMatrix();
        h(I::RotationsLinear(a, b, t)), h(I::RotationsCubic(a, b, c, d, T(-1), T(0), T(1), T(2), t));
        for (const qxRotationsOrder order : orders) {
          T x = 0, y = 0, z = 0;
          I::RotationsLinear<T>(t * 10, 20, 30, 40, t * 50, 60, order, t, x, y, z);
          const CQXVector3<T> e(10, 20, t * 30);
          h(x, y, z, I::RotationsCubic(e, e * T(2), e * T(3), e * T(-1), order, T(-1), T(0), T(1), T(2), t));
        }
        CQXMatrix4<T> m[4];
        for (int k = 0; k < 4; ++k) {
          CQXAffine3DTransform<T> transform;
          transform.SetTRS(next.template Make<CQXVector3<T>>(), q[k].GetMatrix(), CQXVector3<T>(),
                           CQXVector3<T>(2, 2, 2) + next.template Make<CQXVector3<T>>(), CQXVector3<T>());
          m[k] = transform.GetMatrix();
        }
        h(I::TranslationsLinear(m[0], m[1], t)), h(I::ScalingsLinear(m[0], m[1], t)),
            h(I::AffineTransfLinear(m[0], m[1], t)),
            h(I::TranslationsCubic(m[0], m[1], m[2], m[3], T(-1), T(0), T(1), T(2), t)),
            h(I::ScalingsCubic(m[0], m[1], m[2], m[3], T(-1), T(0), T(1), T(2), t)),
            h(I::AffineTransfCubic(m[0], m[1], m[2], m[3], T(-1), T(0), T(1), T(2), t));
      },
      true);
}

template <typename T>
void DifferentialRows() {
  PlatformRow<T>("SLDE2", [](Hash& h) {
    Numbers<T> next(66);
    for (int i = 0; i < 200; ++i) {
      auto a = next.template Make<CQXMatrix2<T>>();
      const T x = a[0], y = a[1];
      if (i % 8 == 1) a = {x, y, -y, x};
      if (i % 8 == 2) a = {x, 0, 0, x};
      if (i % 8 == 3) a = {x, 1, 0, x};
      if (i % 8 == 4) a = {x, y, 2 * x, 2 * y};
      if (i % 8 == 5) a = {0, 1, 0, 0};
      if (i % 8 == 6) a = {0, 0, 0, 0};
      CQXVector2<T> f = next.template Make<CQXVector2<T>>();
      if (i % 3 == 0) f.SetToZero();
      CQXSLDE2<T> system;
      system.SetTransformation(a, f);
      system.SetInitialCondition(x, y, T(0.25));
      system.CalculateGeneralSolution();
      system.CalculateParticularSolution();
      h(system.GetGeneralType()), h(system.GetInhomogenType()), h(system.GetEigenvalues()),
          h(system.TestHomogGeneralSolution());
      for (const T t : {T(-1), T(0), T(0.25), T(2)}) h(system.GetSolutionAtTime(t));
      std::vector<CQXVector2<T>> trajectory(12);
      system.CalculateTrajectory(y, x, 12, trajectory.data(), T(0.125), i % 2);
      h(trajectory);
    }
  });
}

}  // namespace

template <typename T>
void TransformRows() {
  QuaternionRows<T>();
  AffineRows<T>();
  ProjectionRows<T>();
  InterpolationRows<T>();
  DifferentialRows<T>();
}

template void TransformRows<float>();
template void TransformRows<double>();

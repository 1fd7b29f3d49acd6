#include <qx/differential/slde2.h>
#include <qx/interpolation/interpolation.h>
#include <qx/transforms/affine_3d_transform.h>
#include <qx/transforms/parallel_3d_transform.h>
#include <qx/transforms/perspective_3d_transform.h>

#include "fuzz/input.h"

namespace {

template <typename View, typename T>
void Project(Input& input) {
  using V = CQXVector3<T>;
  View view;
  const V prp = input.Make<V>(), direction = input.Make<V>(), up = input.Make<V>(), normal = input.Make<V>();
  const std::vector<T> sizes = input.Numbers<T>(5);
  view.Set(prp, direction, up, normal, sizes[0], sizes[1], sizes[2], sizes[3], sizes[4]);
  view.UseBackFrontPlanes(input.Integer(0, 1));
  view.Initialize();
  while (!input.IsAtEnd()) {
    const V triangle[] = {input.Make<V>(), input.Make<V>(), input.Make<V>()};
    CQXVector2<T> a, b, polygon[16];
    std::int32_t count = 0;
    view.ProjectPoint(triangle[0], a);
    (void)view.ProjectClippedSegment(triangle[0], triangle[1], a, b);
    (void)view.ProjectClippedTriangle(triangle, polygon, count);
  }
}

template <typename T>
void TakeApart(Input& input) {
  using V = CQXVector3<T>;
  const CQXAffine3DTransform<T> transform(input.Make<CQXMatrix4<T>>());
  V t, s;
  CQXMatrix3<T> r, u;
  std::int32_t reflection = 0, stretch = 0, order = 0;
  transform.ExtractSRT(t, s, r, u, reflection);
  transform.ExtractElementaryTransforms(t, s, r, u, stretch, order, reflection);
  (void)transform.ExtractClosestRotation(reflection);
  (void)transform.ExtractClosestScaling();
  const auto other = input.Make<CQXMatrix4<T>>();
  (void)CQXInterpolation::AffineTransfLinear(transform.GetMatrix(), other, input.Number<T>());
  T x, y, z;
  r.SetRotationByEulerAngles(input.Number<T>(), input.Number<T>(), input.Number<T>(),
                             input.Choice<qxRotationsOrder>(7));
  other.GetMatrix().ExtractEulerAngles(input.Choice<qxRotationsOrder>(6), x, y, z);
  const CQXQuaternion<T> q(other[0], other[1], other[2], other[3]);
  (void)CQXInterpolation::Slerp(q.Log(), q.Exp(), input.Number<T>());
}

template <typename T>
void Solve(Input& input) {
  CQXSLDE2<T> system;
  const auto a = input.Make<CQXMatrix2<T>>();
  system.SetTransformation(a, input.Make<CQXVector2<T>>());
  const std::vector<T> c = input.Numbers<T>(4);
  system.SetInitialCondition(c[0], c[1], c[2]);
  system.CalculateGeneralSolution();
  system.CalculateParticularSolution();
  (void)system.GetSolutionAtTime(c[3]);
}

template <typename T>
void Run(Input& input) {
  switch (input.Integer(0, 3)) {
    case 0:
      return Project<CQXParallel3DTransform<T>, T>(input);
    case 1:
      return Project<CQXPerspective3DTransform<T>, T>(input);
    case 2:
      return TakeApart<T>(input);
    default:
      return Solve<T>(input);
  }
}

}  // namespace

QX_FUZZ(Run)

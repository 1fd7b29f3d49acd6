#include <qx/transforms/parallel_3d_transform.h>
#include <qx/transforms/perspective_3d_transform.h>
#include <qx/vectors/vector_functions.h>

#include <algorithm>
#include <limits>

#include "tests/transforms/reference.h"
#include "tests/typed_test.h"

namespace {

/// What the perspective and the parallel view promise alike.
template <typename View>
class Views : public ::testing::Test {
 protected:
  using Element = std::remove_cvref_t<decltype(View().GetDistanceToPlane())>;
  using Vector = CQXVector3<Element>;
  using Point = CQXVector2<Element>;
  static constexpr Element eps = std::numeric_limits<Element>::epsilon();
  static constexpr bool isCentral = std::is_same_v<View, CQXPerspective3DTransform<Element>>;

  /// A view somewhere that looks somewhere, askew, with a window of 8 x 6 at the distance 10 and depths from 5 to 25.
  View RandomView() {
    const Vector normal = random.Vector(-1, 1) + Vector(2, 0, 0), up = random.Vector(-1, 1) + Vector(0, 2, 0);
    View view(random.Vector(-5, 5), normal + random.Vector(-0.3, 0.3), up, normal, 10, 8, 6, -5, 15);
    EXPECT_EQ(view.Initialize(), 1);
    return view;
  }
  Point PointOfWindow() {
    const Element x = random.In(0, 8), y = random.In(0, 6);
    return {x, y};
  }
  /// Window coordinates and distance from the view plane by plain vectors.
  static CQXVector3<double> Project(const View& view, const Vector& point) {
    using W = CQXVector3<double>;
    const auto wide = [](const Vector& v) { return W(double(v.X()), double(v.Y()), double(v.Z())); };
    Vector origin, axis1, axis2, axis3;
    view.GetLocalCoordinates(origin, axis1, axis2, axis3);
    const W p = wide(point), o = wide(origin), n = wide(axis3);
    const W direction = isCentral ? p - wide(view.GetPRP()) : wide(view.GetProjectionDirection());
    const W image = p - direction * ((p - o).Dot(n) / direction.Dot(n)) - o;
    return {image.Dot(wide(axis1)), image.Dot(wide(axis2)), (p - o).Dot(n)};
  }

  reference::Random<Element> random;
};
using ViewTypes = ::testing::Types<CQXPerspective3DTransform<float>, CQXPerspective3DTransform<double>,
                                   CQXParallel3DTransform<float>, CQXParallel3DTransform<double>>;
TYPED_TEST_SUITE(Views, ViewTypes);

TYPED_TEST(Views, PicturesAreUprightAndNotMirrored) {
  using V = typename TestFixture::Vector;
  TypeParam view;
  view.LookAt({0, 0, 10}, {0, 0, 0}, {0, 5, 1});
  view.SetDistanceToPlane(10);
  view.SetViewWindow(8, 6);
  ASSERT_EQ(view.Initialize(), 1);
  typename TestFixture::Point q;
  const struct {
    V p;
    double x, y;
  } points[] = {{{0, 0, 0}, 4, 3}, {{4, 0, 0}, 8, 3}, {{0, 3, 0}, 4, 0}, {{-4, -3, 0}, 0, 6}};
  for (const auto& point : points) {
    view.ProjectPoint(point.p, q);
    EXPECT_NEAR(q.X(), point.x, 16 * this->eps);
    EXPECT_NEAR(q.Y(), point.y, 16 * this->eps);
  }
}

TYPED_TEST(Views, PointsProjectAlongTheirProjectors) {
  for (int i = 0; i < 400; ++i) {
    const TypeParam view = this->RandomView();
    EXPECT_TRUE(view.GetLocalCoordinates().GetMatrix().IsRotation(64 * this->eps));
    typename TestFixture::Vector p;
    typename TestFixture::Point q;
    ASSERT_EQ(view.Unproject(this->PointOfWindow(), this->random.In(-4, 14), p), 1);
    EXPECT_EQ(view.ProjectPoint(p, q), 1);
    const auto expected = this->Project(view, p);
    EXPECT_NEAR(q.X(), expected.X(), 512 * this->eps);
    EXPECT_NEAR(q.Y(), expected.Y(), 512 * this->eps);
  }
}

TYPED_TEST(Views, UnprojectingAndPickingUndoTheProjection) {
  using T = typename TestFixture::Element;
  using V = typename TestFixture::Vector;
  typename TestFixture::Point q;
  V p, origin, direction, onPlane;
  for (int i = 0; i < 400; ++i) {
    TypeParam view = this->RandomView();
    const auto window = this->PointOfWindow();
    const T distance = this->random.In(-4, 14);
    ASSERT_EQ(view.Unproject(window, distance, p), 1);
    view.ProjectPoint(p, q);
    EXPECT_LE((q - window).NormInf(), 512 * this->eps);
    EXPECT_NEAR(this->Project(view, p).Z(), distance, 256 * this->eps);
    ASSERT_EQ(view.FindPickingRay(window, origin, direction), 1);
    EXPECT_NEAR(this->Project(view, origin).Z(), -5, 256 * this->eps);  // on the front plane
    EXPECT_NEAR(direction.SquareLength(), 1, 8 * this->eps);
    EXPECT_LE(((p - origin).Cross(direction)).NormInf(), 1024 * this->eps);
    EXPECT_GT((p - origin).Dot(direction), 0);
    const V normal = direction + this->random.Vector(-0.5, 0.5);
    ASSERT_EQ(view.UnprojectToPlane(window, qxVector3To4(normal, -normal.Dot(p)), onPlane), 1);
    EXPECT_LE((onPlane - p).NormInf(), 2048 * this->eps);
    view.UseBackFrontPlanes(0);
    EXPECT_EQ(view.FindPickingRay(window, origin, direction), 0);  // not ready
    view.Initialize();
    view.FindPickingRay(window, origin, direction);
    const T start = T(this->Project(view, origin + direction).Z() - this->Project(view, origin).Z());
    EXPECT_GT(start, 0);
    if (this->isCentral)
      EXPECT_EQ((origin - view.GetPRP()).NormInf(), 0);
    else
      EXPECT_NEAR(this->Project(view, origin).Z(), 0, 256 * this->eps);
  }
  const TypeParam view = this->RandomView();
  EXPECT_EQ(view.Unproject({1, 1}, -11, p), this->isCentral ? 0 : 1);  // behind the eye
  TypeParam straight;
  straight.LookAt({0, 0, 0}, {0, 0, 5}, {0, 1, 0});
  straight.SetDistanceToPlane(1);
  straight.SetViewWindow(2, 2);
  ASSERT_EQ(straight.Initialize(), 1);
  p = V(7, 7, 7);
  EXPECT_EQ(straight.UnprojectToPlane({1, 1}, {1, 0, 0, -3}, p), 0);  // parallel to the ray
  EXPECT_EQ(p.X(), 7);
}

TYPED_TEST(Views, TheFrustumIsWhatProjectsIntoTheWindow) {
  using T = typename TestFixture::Element;
  using V = typename TestFixture::Vector;
  int inside = 0, boxes = 0;
  for (int i = 0; i < 300; ++i) {
    TypeParam view = this->RandomView();
    CQXVector4<T> planes[6];
    V corners[8];
    typename TestFixture::Point q;
    ASSERT_EQ(view.GetFrustumPlanes(planes) + view.GetFrustumCorners(corners), 2);
    const double w[] = {0, 8, 8, 0}, h[] = {0, 0, 6, 6};
    for (std::size_t k = 0; k < 8; ++k) {
      const auto image = this->Project(view, corners[k]);
      EXPECT_NEAR(image.X(), w[k % 4], 1024 * this->eps);
      EXPECT_NEAR(image.Y(), h[k % 4], 1024 * this->eps);
      EXPECT_NEAR(image.Z(), k < 4 ? -5 : 15, 256 * this->eps);
    }
    V centre;
    for (const V& corner : corners) centre += corner / T(8);
    const V p = centre + this->random.Vector(-12, 12);
    T least = 100;
    for (const auto& plane : planes) {
      EXPECT_NEAR(qxCutVector4To3(plane).SquareLength(), 1, 16 * this->eps);
      EXPECT_GT(plane.Dot(qxVector3To4(centre, 1)), 0);
      least = std::min(least, plane.Dot(qxVector3To4(p, 1)));
    }
    if (std::abs(least) > T(1e-3)) {
      EXPECT_EQ(view.ProjectPoint(p, q), least > 0 ? 1 : 0);
      EXPECT_EQ(view.IsSphereVisible(p, -least * T(0.999)), least > 0 ? 1 : 0);
      EXPECT_EQ(view.IsSphereVisible(p, -least * T(1.001)), least > 0 ? 0 : 1);
      inside += least > 0;
    }
    // A box with a visible point is visible; one that is beyond a single plane is not.
    const V half(this->random.In(0.1, 3), this->random.In(0.1, 3), this->random.In(0.1, 3));
    bool isBeyond = false;
    for (const auto& plane : planes) {
      const T reach = std::abs(plane.X()) * half.X() + std::abs(plane.Y()) * half.Y() + std::abs(plane.Z()) * half.Z();
      isBeyond = isBeyond || plane.Dot(qxVector3To4(p, 1)) + reach < 0;
    }
    EXPECT_EQ(view.IsBoxVisible(p - half, p + half), isBeyond ? 0 : 1);
    boxes += isBeyond;
    view.UseBackFrontPlanes(0);
    EXPECT_EQ(view.GetFrustumPlanes(planes) + view.IsBoxVisible(p, p) + view.IsSphereVisible(p, 100), 0);  // not ready
    view.Initialize();
    ASSERT_EQ(view.GetFrustumPlanes(planes), 1);
    EXPECT_EQ(view.GetFrustumCorners(corners), 0);
    EXPECT_EQ((planes[5] - CQXVector4<T>(0, 0, 0, 1)).NormInf(), 0);
    const V eye = view.GetPRP();
    if (this->isCentral)
      EXPECT_NEAR(planes[4].Dot(qxVector3To4(eye, 1)), 0, 64 * this->eps);
    else
      EXPECT_EQ((planes[4] - CQXVector4<T>(0, 0, 0, 1)).NormInf(), 0);
  }
  EXPECT_GT(std::min({inside, 300 - inside, boxes, 300 - boxes}),
            10);  // compilers draw the arguments in their own order
}

TYPED_TEST(Views, ClipSpacesHaveTheirCornersWhereTheInterfacesWantThem) {
  using T = typename TestFixture::Element;
  const struct {
    qxClipSpace space;
    T top, front;
  } spaces[] = {{QX_CLIP_OPENGL, 1, -1}, {QX_CLIP_DIRECT3D, 1, 0}, {QX_CLIP_VULKAN, -1, 0}};
  const TypeParam view = this->RandomView();
  CQXVector3<T> corners[8];
  view.GetFrustumCorners(corners);
  for (const auto& space : spaces) {
    const CQXMatrix4<T> clip = view.GetClipMatrix(space.space);
    for (std::int32_t k = 0; k < 8; ++k) {
      CQXVector3<T> ndc;
      T w;
      qxVector4To3(clip * qxVector3To4(corners[k], 1), T(1e-6), ndc, w);
      EXPECT_NEAR(ndc.X(), k % 4 == 1 || k % 4 == 2 ? 1 : -1, 1024 * this->eps);
      EXPECT_NEAR(ndc.Y(), k % 4 < 2 ? space.top : -space.top, 1024 * this->eps);
      EXPECT_NEAR(ndc.Z(), k < 4 ? space.front : 1, 1024 * this->eps);
    }
    EXPECT_EQ((qxClipToWindow<T>(space.space, 8, 6) * qxWindowToClip<T>(space.space, 8, 6)).IsUnit(4 * this->eps), 1);
  }
}

TYPED_TEST(Views, TilesShowTheirPartOfTheWindow) {
  for (int i = 0; i < 100; ++i) {
    const TypeParam whole = this->RandomView();
    TypeParam tile = whole;
    ASSERT_EQ(tile.SetWindowTile(2, 1, 3, 4), 1);
    EXPECT_EQ(tile.SetWindowTile(0, 0, 1, 1), 0);  // not ready
    ASSERT_EQ(tile.Initialize(), 1);
    typename TestFixture::Vector p;
    typename TestFixture::Point q;
    const auto window = this->PointOfWindow();
    whole.Unproject(window, this->random.In(-4, 14), p);
    const bool isInside = window.X() > 2 && window.X() < 5 && window.Y() > 1 && window.Y() < 5;
    EXPECT_EQ(tile.ProjectPoint(p, q), isInside ? 1 : 0);
    EXPECT_LE((q - window + typename TestFixture::Point(2, 1)).NormInf(), 1024 * this->eps);
  }
}

TYPED_TEST(Views, ViewsThatDoNotExistAreRefused) {
  using T = typename TestFixture::Element;
  using V = typename TestFixture::Vector;
  const T nan = std::numeric_limits<T>::quiet_NaN();
  const TypeParam good = this->RandomView();
  const struct {
    const char* what;
    void (*spoil)(TypeParam&, T);
  } faults[] = {{"width", [](TypeParam& v, T) { v.SetViewWindow(T(0.49), 1); }},
                {"height", [](TypeParam& v, T) { v.SetViewWindow(1, T(0.49)); }},
                {"window", [](TypeParam& v, T x) { v.SetViewWindow(x, 1); }},
                {"normal", [](TypeParam& v, T) { v.SetProjectionNormal(V()); }},
                {"normal nan", [](TypeParam& v, T x) { v.SetProjectionNormal(V(x, 0, 0)); }},
                {"up", [](TypeParam& v, T) { v.SetViewUpVector(V()); }},
                {"up along the normal", [](TypeParam& v, T) { v.SetViewUpVector(v.GetProjectionNormal() * T(-300)); }},
                {"direction", [](TypeParam& v, T) { v.SetProjectionDirection(-v.GetProjectionNormal()); }},
                {"eye in the target",
                 [](TypeParam& v, T) {
                   v.LookAt({1, 2, 3}, {1, 2, 3}, {0, 1, 0});
                 }},
                {"volume", [](TypeParam& v, T) { v.SetViewVolumeDistances(3, 3); }}};
  for (const auto& fault : faults) {
    TypeParam view = good;
    fault.spoil(view, nan);
    EXPECT_EQ(view.Initialize(), 0) << fault.what;
    EXPECT_EQ(view.IsReady(), 0) << fault.what;
  }
  TypeParam view = good;
  view.SetViewVolumeDistances(-10, 3);  // a front plane through the eye
  EXPECT_EQ(view.Initialize(), this->isCentral ? 0 : 1);
  view = good;
  view.SetDistanceToPlane(0);
  view.SetViewVolumeDistances(1, 2);
  EXPECT_EQ(view.Initialize(), this->isCentral ? 0 : 1);
  view = good;
  view.SetViewWindow(T(0.5), T(0.5));
  EXPECT_EQ(view.Initialize(), 1);
}

TYPED_TEST(Views, AssignmentBetweenKindsCopiesTheViewButNotReadiness) {
  using T = typename TestFixture::Element;
  using Other = std::conditional_t<TestFixture::isCentral, CQXParallel3DTransform<T>, CQXPerspective3DTransform<T>>;
  const TypeParam source = this->RandomView();
  const CQXProjective3DTransform<T>& view = source;
  Other other;
  TypeParam same, whole;
  other = view;
  same = view;
  whole = source;
  EXPECT_EQ(other.IsReady(), 0);
  EXPECT_EQ(other.Initialize(), 1);
  EXPECT_EQ(same.IsReady() + whole.IsReady(), 2);
  EXPECT_EQ(view.GetTypeOfTransform(), this->isCentral ? QX_TRANSFORM_PERSPECTIVE : QX_TRANSFORM_PARALLEL);
  const CQXBase3DTransform<T> unit;
  same = unit;
  EXPECT_EQ(same.GetMatrix().IsUnit(0) + same.IsReady(), 2);
}

template <typename T>
class Perspective : public ::testing::Test {};
TYPED_TEST_SUITE(Perspective, FloatTypes);

// The matrices that the reference pages of OpenGL print for a frustum and for parallel bounds.
TYPED_TEST(Perspective, OpenGLMatricesAreThoseOfItsReferencePages) {
  using T = TypeParam;
  const T eps = std::numeric_limits<T>::epsilon();
  const T l = -1, r = 3, b = T(-1.5), t = T(0.5), n = 2, f = 50;
  CQXPerspective3DTransform<T> view;
  EXPECT_EQ(view.SetOffAxisWindow(l, r, b, t, n), 0);  // no normal yet
  view.LookAt({0, 0, 0}, {0, 0, -1}, {0, 1, 0});
  ASSERT_EQ(view.SetOffAxisWindow(l, r, b, t, n), 1);
  view.SetViewVolumeDepths(n, f);
  ASSERT_EQ(view.Initialize(), 1);
  const CQXMatrix4<T> frustum(2 * n / (r - l), 0, (r + l) / (r - l), 0, 0, 2 * n / (t - b), (t + b) / (t - b), 0, 0, 0,
                              -(f + n) / (f - n), -2 * f * n / (f - n), 0, 0, -1, 0);
  EXPECT_TRUE(qxAreAlmostEqual(view.GetClipMatrix(QX_CLIP_OPENGL), frustum, 16 * eps));

  CQXParallel3DTransform<T> parallel;
  parallel.LookAt({0, 0, 0}, {0, 0, -1}, {0, 1, 0});
  parallel.SetViewWindow(4, 2);
  parallel.SetViewVolumeDistances(n, f);
  ASSERT_EQ(parallel.Initialize(), 1);
  const CQXMatrix4<T> bounds(T(0.5), 0, 0, 0, 0, 1, 0, 0, 0, 0, -2 / (f - n), -(f + n) / (f - n), 0, 0, 0, 1);
  EXPECT_TRUE(qxAreAlmostEqual(parallel.GetClipMatrix(QX_CLIP_OPENGL), bounds, 8 * eps));
}

TYPED_TEST(Perspective, TheFieldOfViewIsAnAngleOfTheWholeHeight) {
  using T = TypeParam;
  const T eps = std::numeric_limits<T>::epsilon();
  CQXPerspective3DTransform<T> view;
  view.LookAt({0, 0, 0}, {0, 0, 7}, {0, 1, 0});
  view.SetFieldOfView(90, T(1.5), 400);
  view.SetViewVolumeDepths(1, 20);
  ASSERT_EQ(view.Initialize(), 1);
  CQXVector2<T> q;
  view.ProjectPoint({0, 5, 5}, q);  // 45 degrees up
  EXPECT_NEAR(q.X(), 300, 1024 * eps);
  EXPECT_NEAR(q.Y(), 0, 1024 * eps);
  EXPECT_EQ(view.ProjectPoint({0, 0, T(0.999)}, q) + view.ProjectPoint({0, 0, T(20.01)}, q), 0);
  T angle, aspect;
  view.GetFieldOfView(angle, aspect);
  EXPECT_NEAR(angle, 90, 128 * eps);
  EXPECT_EQ(aspect, T(1.5));
  for (const T none : {T(0), T(180.5), T(-30)}) {
    view.SetFieldOfView(none, 1, 400);
    view.UseBackFrontPlanes(0);
    EXPECT_EQ(view.Initialize(), 0) << none;
  }
}

}  // namespace

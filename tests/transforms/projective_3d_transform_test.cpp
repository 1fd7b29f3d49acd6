#include <qx/transforms/projective_3d_transform.h>
#include <qx/vectors/vector_functions.h>

#include <algorithm>
#include <limits>
#include <vector>

#include "tests/transforms/reference.h"
#include "tests/typed_test.h"

namespace {

/// The plainest projections: along the normal of the view plane, or from the PRP.
template <typename T>
class Camera : public CQXProjective3DTransform<T> {
  using Base = CQXProjective3DTransform<T>;
  using V = CQXVector3<T>;

 public:
  Camera() noexcept = default;
  using Base::Base;
  using Base::operator=;
  using Base::CalculateFrontBackPlanes;
  using Base::FindBorderType;
  using Base::FindCoordinatesCenter;
  using Base::FindLocalAxes;

  std::int32_t Initialize() override {
    this->m_isReady = 0;
    if (this->m_windowWidth < T(0.5) || this->m_windowHeight < T(0.5)) return 0;
    this->m_localAxis3 = this->m_projectionNormal;
    this->m_localAxis3.Normalize();
    FindLocalAxes(this->m_viewUp, this->m_localAxis3);
    const V center = this->m_prp + this->m_localAxis3 * this->m_distanceToPlane;
    this->m_localOrigin = FindCoordinatesCenter(center, this->m_windowWidth, this->m_windowHeight);
    this->CalculatePlanesCoefficients(center);
    CalculateFrontBackPlanes();
    // Row by row: (p - eye) . axis + weight (eye - origin) . axis, with the weight (p - eye) . axis3 / distance.
    const V eye = isPerspective ? this->m_prp : V();
    const V weight = isPerspective ? this->m_localAxis3 / this->m_distanceToPlane : V();
    const T weightAtOrigin = isPerspective ? -weight.Dot(eye) : T(1);
    const V axes[] = {this->m_localAxis1, this->m_localAxis2, this->m_localAxis3};
    for (std::int32_t i = 0; i < 3; ++i) {
      const T shift = axes[i].Dot(eye - this->m_localOrigin);
      const V row = axes[i] + weight * shift;
      this->m_matrix.SetRowVector(i, qxVector3To4(row, weightAtOrigin * shift - axes[i].Dot(eye)));
    }
    this->m_matrix.SetRowVector(3, qxVector3To4(weight, weightAtOrigin));
    return this->m_isReady = 1;
  }

  bool isPerspective = false;
};

struct Point {
  double x, y;
};

/// Projection by vectors in 64-bit floats: where the line from the eye, or along the normal, meets the view plane.
template <typename T>
struct Model {
  CQXVector3<double> origin, axis1, axis2, axis3, eye;
  bool isPerspective;
  double width, height, front, back;

  explicit Model(const Camera<T>& camera) : isPerspective(camera.isPerspective) {
    CQXVector3<T> o, a1, a2, a3;
    camera.GetLocalCoordinates(o, a1, a2, a3);
    origin = Wide(o), axis1 = Wide(a1), axis2 = Wide(a2), axis3 = Wide(a3), eye = Wide(camera.GetPRP());
    T w, h, f, b;
    camera.GetViewWindowSizes(w, h);
    camera.GetViewVolumeDistances(f, b);
    width = double(w), height = double(h), front = double(f), back = double(b);
  }
  static CQXVector3<double> Wide(const CQXVector3<T>& v) { return {double(v.X()), double(v.Y()), double(v.Z())}; }

  double Depth(const CQXVector3<double>& p) const { return (p - origin).Dot(axis3); }
  Point Project(const CQXVector3<double>& p) const {
    CQXVector3<double> image = p - origin;
    if (isPerspective) image = eye + (p - eye) * ((origin - eye).Dot(axis3) / (p - eye).Dot(axis3)) - origin;
    return {image.Dot(axis1), image.Dot(axis2)};
  }
  bool IsInside(const Point& q) const { return q.x >= 0 && q.x <= width && q.y >= 0 && q.y <= height; }
  /// Distance of a point from the nearest line of a border.
  double Margin(const Point& q) const {
    return std::min({std::abs(q.x), std::abs(q.x - width), std::abs(q.y), std::abs(q.y - height)});
  }
};

/// One step of Sutherland and Hodgman: keeps what is inside; @p cut gives the point between two.
template <typename P, typename Inside, typename Cut>
std::vector<P> Clip(const std::vector<P>& polygon, Inside isInside, Cut cut) {
  std::vector<P> result;
  for (std::size_t i = 0; i < polygon.size(); ++i) {
    const P &a = polygon[i], &b = polygon[(i + 1) % polygon.size()];
    if (isInside(a)) result.push_back(a);
    if (isInside(a) != isInside(b)) result.push_back(cut(a, b));
  }
  return result;
}

std::vector<Point> ClipByWindow(std::vector<Point> polygon, double w, double h) {
  const auto atX = [](double x) {
    return [x](const Point& a, const Point& b) { return Point{x, a.y + (x - a.x) * (b.y - a.y) / (b.x - a.x)}; };
  };
  const auto atY = [](double y) {
    return [y](const Point& a, const Point& b) { return Point{a.x + (y - a.y) * (b.x - a.x) / (b.y - a.y), y}; };
  };
  polygon = Clip(
      polygon, [](const Point& q) { return q.x >= 0; }, atX(0));
  polygon = Clip(
      polygon, [w](const Point& q) { return q.x <= w; }, atX(w));
  polygon = Clip(
      polygon, [](const Point& q) { return q.y >= 0; }, atY(0));
  return Clip(
      polygon, [h](const Point& q) { return q.y <= h; }, atY(h));
}

/// The polygon that the walk along the outline gives, from the true intersection: of the corners of the window between
/// an exit and the next entry a single one stays, two or four are left out, and in the place of three stands the
/// fourth.
std::vector<Point> OutlineOf(const std::vector<Point>& polygon, double w, double h) {
  const auto isCorner = [&](const Point& q) { return (q.x == 0 || q.x == w) && (q.y == 0 || q.y == h); };
  const std::size_t n = polygon.size();
  std::size_t start = 0;
  while (start < n && isCorner(polygon[start])) ++start;
  std::vector<Point> result;
  if (start == n) return result;
  std::vector<Point> run;
  for (std::size_t i = 1; i <= n; ++i) {
    const Point& q = polygon[(start + i) % n];
    if (isCorner(q)) {
      run.push_back(q);
      continue;
    }
    if (run.size() == 1) result.push_back(run[0]);
    if (run.size() == 3) result.push_back({w - run[1].x, h - run[1].y});
    run.clear();
    result.push_back(q);
  }
  return result;
}

template <typename T>
class Projective : public ::testing::Test {
 protected:
  static constexpr T eps = std::numeric_limits<T>::epsilon();

  /// Window coordinates are the x and y of a point, the depth is its z: W = 100, H = 60, front 10, back 50.
  static Camera<T> AxisAligned() {
    Camera<T> camera({50, 30, 0}, {0, 0, 1}, {0, 1, 0}, {0, 0, 1}, 0, 100, 60, 10, 50);
    EXPECT_EQ(camera.Initialize(), 1);
    return camera;
  }

  Camera<T> RandomCamera(bool isPerspective) {
    const CQXVector3<T> prp = random.Vector(-5, 5), up = random.Vector(-1, 1), normal = random.Vector(-1, 1);
    Camera<T> camera(prp, {}, up, normal, 100, 100, 60, -50, 60);
    camera.isPerspective = isPerspective;
    EXPECT_EQ(camera.Initialize(), 1);
    return camera;
  }

  CQXVector3<T> PointBefore(const Camera<T>& camera) {
    CQXVector3<T> origin, a1, a2, a3;
    camera.GetLocalCoordinates(origin, a1, a2, a3);
    return origin + a1 * random.In(-60, 160) + a2 * random.In(-60, 120) + a3 * random.In(-85, 90);
  }

  reference::Random<T> random;
};
TYPED_TEST_SUITE(Projective, FloatTypes);

TYPED_TEST(Projective, TheViewFrameIsOrthonormal) {
  using T = TypeParam;
  for (int i = 0; i < 50; ++i) {
    const Camera<T> camera = this->RandomCamera(i % 2 != 0);
    EXPECT_TRUE(camera.GetLocalCoordinates().GetMatrix().IsRotation(512 * this->eps));  // right-handed
    T a, b, c, d, front, back;
    const CQXVector3<T> center = camera.GetViewWindowCenter();
    camera.GetProjectionPlane(a, b, c, d);
    camera.GetViewVolumeCoefficients(front, back);
    EXPECT_NEAR(CQXVector3<T>(a, b, c).Dot(center) + d, 0, 512 * this->eps);
    EXPECT_EQ(front, d + 50);
    EXPECT_EQ(back, d - 60);
  }
}

TYPED_TEST(Projective, TheVolumeAndTheWindowAreClosed) {
  using T = TypeParam;
  const Camera<T> camera = this->AxisAligned();
  const struct {
    CQXVector3<T> p;
    std::int32_t result;
  } edges[] = {{{5, 5, 10}, 1},    {{5, 5, 50}, 1},     {{0, 0, 20}, 1},
               {{100, 60, 20}, 1}, {{100.5, 1, 20}, 0}, {{1, T(-0.001), 20}, 0}};
  CQXVector2<T> q;
  for (const auto& edge : edges) EXPECT_EQ(camera.ProjectPoint(edge.p, q), edge.result) << edge.p.X();
  const CQXVector3<T> points[] = {edges[0].p, edges[1].p, edges[4].p, {1, 1, 0}};
  CQXVector2<T> projections[4];
  std::int32_t flags[4];
  EXPECT_EQ(camera.ProjectPoints(2, points, projections, flags), QX_LOCATION_INSIDE);
  EXPECT_EQ(camera.ProjectPoints(4, points, projections, flags), QX_LOCATION_CLIPPED);
  EXPECT_EQ(flags[0] * 8 + flags[1] * 4 + flags[2] * 2 + flags[3], 12);
  EXPECT_EQ(camera.ProjectPoints(2, points + 2, projections, flags), QX_LOCATION_OUTSIDE);
  EXPECT_EQ(camera.ProjectPoints(0, nullptr, nullptr, nullptr), QX_LOCATION_INSIDE);
  EXPECT_EQ(camera.FindBorderType({0, 60}, 0), QX_BORDER_LEFT);
  EXPECT_EQ(camera.FindBorderType({0, 60}, 1), QX_BORDER_BOTTOM);
  // A triangle over the whole window has no outline in it.
  const CQXVector3<T> covering[] = {{-1000, -1000, 20}, {1000, -1000, 20}, {50, 2000, 20}};
  CQXVector2<T> out[16];
  std::int32_t count;
  EXPECT_EQ(camera.ProjectClippedTriangle(covering, out, count), QX_LOCATION_OUTSIDE);
}

TYPED_TEST(Projective, WithoutThePlanesWhatIsBehindTheCameraIsProjected) {
  using T = TypeParam;
  Camera<T> camera({0, 0, 0}, {}, {0, 1, 0}, {0, 0, 1}, 10, 100, 60, -5, 50);
  camera.isPerspective = true;
  camera.Initialize();
  const CQXVector3<T> behind(1, 1, -10), inEye(1, 1, 0);
  CQXVector2<T> q(7, 7), q2, out[16];
  EXPECT_EQ(camera.ProjectPoint(behind, q), 0);
  EXPECT_EQ(q.X(), 7);
  camera.UseBackFrontPlanes(0);
  EXPECT_EQ(camera.ProjectPoint(behind, q), 0);  // not ready
  camera.Initialize();
  EXPECT_EQ(camera.ProjectPoint(inEye, q), 0);  // no homogeneous coordinate to divide by
  EXPECT_EQ(q.X(), 7);
  const CQXVector3<T> triangle[] = {behind, inEye, {1, 2, 10}};
  std::int32_t count = 5;
  EXPECT_EQ(camera.ProjectClippedSegment(behind, inEye, q, q2), QX_LOCATION_OUTSIDE);
  EXPECT_EQ(camera.ProjectClippedTriangle(triangle, out, count), QX_LOCATION_OUTSIDE);
  EXPECT_EQ(count, 0);
  EXPECT_EQ(camera.ProjectPoint(behind, q), 1);
  EXPECT_NEAR(std::abs(q.X() - 50), 1, 64 * this->eps);
}

TYPED_TEST(Projective, EverySetterStoresItsValueAndEndsReadiness) {
  using T = TypeParam;
  using C = Camera<T>;
  struct State {
    CQXVector3<T> prp, direction, up, normal;
    T distance, w, h, front, back;
    std::int32_t useVolume;
  };
  const auto stateOf = [](const C& c) {
    State s{c.GetPRP(),
            c.GetProjectionDirection(),
            c.GetViewUpVector(),
            c.GetProjectionNormal(),
            c.GetDistanceToPlane(),
            0,
            0,
            0,
            0,
            c.IsUseViewVolume()};
    c.GetViewWindowSizes(s.w, s.h);
    c.GetViewVolumeDistances(s.front, s.back);
    return s;
  };
  const auto differences = [](const State& a, const State& b) {
    return (a.prp - b.prp).NormInf() + (a.direction - b.direction).NormInf() + (a.up - b.up).NormInf() +
           (a.normal - b.normal).NormInf() + std::abs(a.distance - b.distance) + std::abs(a.w - b.w) +
           std::abs(a.h - b.h) + std::abs(a.front - b.front) + std::abs(a.back - b.back) +
           T(a.useVolume != b.useVolume);
  };
  const C start = this->AxisAligned();
  const State before = stateOf(start);
  State after[8];
  std::fill_n(after, 8, before);
  const struct {
    void (*set)(C&);
    State expected;
  } setters[] = {{[](C& c) { c.SetViewWindow(7, 9); }, (after[0].w = 7, after[0].h = 9, after[0])},
                 {[](C& c) { c.SetViewVolumeDistances(3, 4); }, (after[1].front = 3, after[1].back = 4, after[1])},
                 {[](C& c) { c.UseBackFrontPlanes(0); }, (after[2].useVolume = 0, after[2])},
                 {[](C& c) {
                    c.SetProjectionNormal({1, 2, 3});
                  },
                  (after[3].normal = {1, 2, 3}, after[3])},
                 {[](C& c) {
                    c.SetViewUpVector({4, 5, 6});
                  },
                  (after[4].up = {4, 5, 6}, after[4])},
                 {[](C& c) {
                    c.SetPRP({7, 8, 9});
                  },
                  (after[5].prp = {7, 8, 9}, after[5])},
                 {[](C& c) {
                    c.SetProjectionDirection({1, 0, 2});
                  },
                  (after[6].direction = {1, 0, 2}, after[6])},
                 {[](C& c) { c.SetDistanceToPlane(11); }, (after[7].distance = 11, after[7])}};
  for (const auto& setter : setters) {
    C camera = start;
    setter.set(camera);
    EXPECT_EQ(camera.IsReady(), 0);
    EXPECT_EQ(differences(stateOf(camera), setter.expected), 0);
    EXPECT_GT(differences(stateOf(camera), before), 0);
  }
  C without = start;
  without.UseBackFrontPlanes(0);
  without.SetViewVolumeDistances(3, 4);
  EXPECT_EQ(without.IsUseViewVolume(), 1);  // switched on again
}

TYPED_TEST(Projective, AssignmentCopiesTheViewOrThroughTheBaseTheMatrixAlone) {
  using T = TypeParam;
  const Camera<T> source = this->AxisAligned();
  Camera<T> whole, matrixOnly;
  const CQXProjective3DTransform<T>& asView = source;
  const CQXBase3DTransform<T>& asBase = source;
  static_cast<CQXProjective3DTransform<T>&>(whole) = asView;
  static_cast<CQXBase3DTransform<T>&>(matrixOnly) = asBase;
  for (const auto* copy : {&whole, &matrixOnly}) {
    EXPECT_TRUE(qxAreAlmostEqual(copy->GetMatrix(), source.GetMatrix(), T(0)));
  }
  T w = 0, h = 0;
  whole.GetViewWindowSizes(w, h);
  EXPECT_EQ(w * 1000 + h, 100060);
  EXPECT_EQ(whole.IsReady(), 1);
  EXPECT_TRUE(qxAreAlmostEqual(whole.GetLocalCoordinates(), source.GetLocalCoordinates(), T(0)));
  matrixOnly.GetViewWindowSizes(w, h);
  EXPECT_EQ(w + h, 0);
  EXPECT_EQ(matrixOnly.IsReady(), 0);
  EXPECT_EQ(asBase.GetTypeOfTransform(), QX_TRANSFORM_GENERAL);
}

TYPED_TEST(Projective, AFigureInAPlaneOfTheVolumeIsNotCutFarAway) {
  using T = TypeParam;
  int cuts = 0;
  for (int i = 0; i < 3000; ++i) {
    const Camera<T> camera = this->RandomCamera(i % 2 != 0);
    CQXVector3<T> origin, a1, a2, a3;
    camera.GetLocalCoordinates(origin, a1, a2, a3);
    CQXVector3<T> triangle[3];
    CQXVector2<T> lo(100, 60), hi, images[3];
    std::int32_t flags[3];
    for (CQXVector3<T>& p : triangle) {
      p = origin + a1 * this->random.In(40, 60) + a2 * this->random.In(20, 40) + a3 * T(i % 4 < 2 ? -50 : 60);
    }
    Camera<T> open = camera;
    open.UseBackFrontPlanes(0);
    open.Initialize();
    ASSERT_EQ(open.ProjectPoints(3, triangle, images, flags), QX_LOCATION_INSIDE);
    for (const CQXVector2<T>& q : images) {
      lo = {std::min(lo.X(), q.X()), std::min(lo.Y(), q.Y())};
      hi = {std::max(hi.X(), q.X()), std::max(hi.Y(), q.Y())};
    }
    const T slack = 4096 * this->eps;
    const auto expectInside = [&](const CQXVector2<T>& q) {
      EXPECT_TRUE(q.X() >= lo.X() - slack && q.X() <= hi.X() + slack) << q.X() << ' ' << lo.X() << ' ' << hi.X();
      EXPECT_TRUE(q.Y() >= lo.Y() - slack && q.Y() <= hi.Y() + slack) << q.Y() << ' ' << lo.Y() << ' ' << hi.Y();
    };
    CQXVector2<T> q1, q2, out[16];
    std::int32_t count;
    const auto location = camera.ProjectClippedSegment(triangle[0], triangle[1], q1, q2);
    cuts += int(location) >= 2;
    if (location != QX_LOCATION_OUTSIDE) {
      expectInside(q1);
      expectInside(q2);
    }
    camera.ProjectClippedTriangle(triangle, out, count);
    for (std::int32_t k = 0; k < count; ++k) expectInside(out[k]);
  }
  EXPECT_GT(cuts, 100);
}

TYPED_TEST(Projective, SegmentsAreClippedByAPlaneThenByTheWindow) {
  using T = TypeParam;
  const Camera<T> camera = this->AxisAligned();
  const struct {
    CQXVector3<T> p1, p2;
    std::int32_t result;
    CQXVector2<T> q1, q2;
  } cases[] = {{{10, 10, 20}, {90, 50, 40}, 0, {10, 10}, {90, 50}},
               {{10, 10, 0}, {30, 10, 20}, 3, {20, 10}, {30, 10}},
               {{10, 10, 40}, {30, 10, 60}, 4, {10, 10}, {20, 10}},
               {{10, 10, 60}, {30, 10, 40}, 3, {20, 10}, {30, 10}},
               {{-20, 10, 0}, {30, 10, 20}, 3, {5, 10}, {30, 10}},  // beside the window only before the plane
               {{-40, 10, 0}, {30, 10, 20}, 2, {0, 10}, {30, 10}},  // cut by the plane, then by the window
               {{-10, 30, 20}, {110, 30, 20}, 2, {0, 30}, {100, 30}},
               {{50, 70, 20}, {50, 30, 20}, 2, {50, 60}, {50, 30}},
               {{10, 10, 0}, {20, 20, 60}, 1, {}, {}},  // through the whole volume
               {{10, 10, 0}, {20, 20, 5}, 1, {}, {}},
               {{-10, 10, 20}, {-5, 20, 20}, 1, {}, {}}};
  for (const auto& c : cases) {
    CQXVector2<T> q1(-7, -7), q2(-8, -8);
    EXPECT_EQ(std::int32_t(camera.ProjectClippedSegment(c.p1, c.p2, q1, q2)), c.result);
    const bool isLeft = c.result != 1;
    EXPECT_LE((q1 - (isLeft ? c.q1 : CQXVector2<T>(-7, -7))).NormInf(), 64 * this->eps);
    EXPECT_LE((q2 - (isLeft ? c.q2 : CQXVector2<T>(-8, -8))).NormInf(), 64 * this->eps);
  }
}

TYPED_TEST(Projective, TrianglesAgreeWithASlowClipper) {
  using T = TypeParam;
  using V = CQXVector3<T>;
  using W = CQXVector3<double>;
  int locations[3] = {}, corners = 0, cutByPlane = 0, walksApart = 0;
  for (int i = 0; i < 20000; ++i) {
    Camera<T> camera = this->RandomCamera(i % 2 != 0);
    const bool useVolume = i % 4 < 2;
    if (!useVolume) {
      camera.UseBackFrontPlanes(0);
      camera.Initialize();
    }
    const Model<T> model(camera);
    V triangle[] = {this->PointBefore(camera), this->PointBefore(camera), this->PointBefore(camera)};
    if (i % 5 == 0) triangle[1] = triangle[0] + (triangle[1] - triangle[0]) * T(6);  // beyond several corners
    std::vector<W> polygon;
    bool anyBefore = false, isNear = false;
    int outside = 0;
    for (const V& p : triangle) {
      polygon.push_back(Model<T>::Wide(p));
      const double depth = model.Depth(polygon.back());
      isNear = isNear || (useVolume && std::min(std::abs(depth - model.front), std::abs(depth - model.back)) < 0.05) ||
               (model.isPerspective && !useVolume && depth < -80) ||
               (model.isPerspective && std::abs(depth + 100) < 20);
      anyBefore = anyBefore || depth < model.front;
      outside += depth < model.front || depth > model.back;
    }
    if (isNear) continue;
    CQXVector2<T> out[17];
    out[16] = CQXVector2<T>(T(-7.0), T(-7.0));
    std::int32_t count = -1;
    const qxRelativeLocation location = camera.ProjectClippedTriangle(triangle, out, count);
    ++locations[location];
    EXPECT_LE(count, 12);
    if (useVolume && outside == 3) {
      EXPECT_EQ(location, QX_LOCATION_OUTSIDE);
      continue;
    }
    if (useVolume && outside > 0) {
      const double plane = anyBefore ? model.front : model.back;
      polygon = Clip(
          polygon, [&](const W& p) { return anyBefore ? model.Depth(p) >= plane : model.Depth(p) <= plane; },
          [&](const W& a, const W& b) {
            return a + (b - a) * ((plane - model.Depth(a)) / (model.Depth(b) - model.Depth(a)));
          });
      ++cutByPlane;
    }
    std::vector<Point> projected;
    for (const W& p : polygon) projected.push_back(model.Project(p));
    const std::vector<Point> common = ClipByWindow(projected, model.width, model.height);
    const std::vector<Point> expected = OutlineOf(common, model.width, model.height);
    for (const Point& q : projected) isNear = isNear || model.Margin(q) < 0.01;
    for (std::size_t k = 0; k < common.size(); ++k) {
      const Point &a = common[k], &b = common[(k + 1) % common.size()];
      isNear = isNear || std::hypot(a.x - b.x, a.y - b.y) < 0.01;
    }
    if (isNear) continue;
    walksApart += expected.size() != common.size();
    corners += expected.size() > 4;
    const bool isClipped =
        outside * int(useVolume) > 0 ||
        !std::all_of(projected.begin(), projected.end(), [&](const Point& q) { return model.IsInside(q); });
    EXPECT_EQ(location, expected.empty() ? QX_LOCATION_OUTSIDE : isClipped ? QX_LOCATION_CLIPPED : QX_LOCATION_INSIDE);
    ASSERT_EQ(std::size_t(count), expected.size()) << i;
    // The same points in the same cyclic order.
    double best = expected.empty() ? 0 : 1e9;
    for (std::size_t shift = 0; shift < expected.size(); ++shift) {
      double worst = 0;
      for (std::size_t k = 0; k < expected.size(); ++k) {
        const Point& q = expected[(k + shift) % expected.size()];
        worst = std::max({worst, std::abs(double(out[k].X()) - q.x), std::abs(double(out[k].Y()) - q.y)});
      }
      best = std::min(best, worst);
    }
    EXPECT_LE(best, 2e5 * double(this->eps)) << i;
    EXPECT_EQ(out[16].X(), -7);
  }
  EXPECT_GT(std::min({locations[0], locations[1], locations[2], corners, cutByPlane, walksApart}), 40);
}

TYPED_TEST(Projective, HostileNumbersStayInsideTheBuffers) {
  using T = TypeParam;
  using V = CQXVector3<T>;
  const T hostile[] = {std::numeric_limits<T>::quiet_NaN(),
                       std::numeric_limits<T>::infinity(),
                       -std::numeric_limits<T>::infinity(),
                       std::numeric_limits<T>::max(),
                       -std::numeric_limits<T>::max(),
                       std::numeric_limits<T>::denorm_min(),
                       0,
                       20};
  std::uniform_int_distribution<std::size_t> pick(0, 7);
  const auto any = [&] { return hostile[pick(this->random.engine)]; };
  for (int i = 0; i < 20000; ++i) {
    Camera<T> camera = this->AxisAligned();
    if (i % 3 == 0) {
      camera.Set({any(), any(), any()}, {}, {any(), any(), any()}, {any(), any(), any()}, any(), 100, 60, any(), any());
      camera.isPerspective = true;
      camera.Initialize();
    }
    const V triangle[] = {V(any(), any(), any()), V(any(), any(), any()), V(any(), any(), any())};
    CQXVector2<T> out[17], q1(1, 1), q2(1, 1);
    out[16] = CQXVector2<T>(T(-7.0), T(-7.0));
    std::int32_t count = -1;
    const qxRelativeLocation location = camera.ProjectClippedTriangle(triangle, out, count);
    EXPECT_TRUE(count >= 0 && count <= 16 && (location == QX_LOCATION_OUTSIDE) == (count == 0));
    EXPECT_EQ(out[16].X(), -7);
    for (std::int32_t k = 0; k < count; ++k) {
      EXPECT_TRUE(out[k].X() >= 0 && out[k].X() <= 100 && out[k].Y() >= 0 && out[k].Y() <= 60);
    }
    if (camera.ProjectClippedSegment(triangle[0], triangle[1], q1, q2) != QX_LOCATION_OUTSIDE) {
      EXPECT_TRUE(q1.X() >= 0 && q1.X() <= 100 && q2.Y() >= 0 && q2.Y() <= 60);
    }
  }
}

}  // namespace

#include <qx/interpolation/interpolation.h>
#include <qx/transforms/affine_3d_transform.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <vector>

#include "tests/transforms/reference.h"
#include "tests/typed_test.h"

namespace {

using I = CQXInterpolation;

constexpr qxSlopes rules[] = {QX_SLOPES_CATMULL_ROM, QX_SLOPES_SPLINE, QX_SLOPES_MONOTONE};
constexpr qxEnds allEnds[] = {QX_ENDS_NATURAL, QX_ENDS_CLAMPED, QX_ENDS_CLOSED};

template <typename T>
class Curves : public ::testing::Test {
 protected:
  static constexpr T eps = std::numeric_limits<T>::epsilon();

  std::vector<T> RandomNodes(std::size_t n) {
    std::vector<T> nodes{random.In(-1, 1)};
    while (nodes.size() < n) nodes.push_back(nodes.back() + random.In(0.3, 2));
    return nodes;
  }
  CQXQuaternion<T> RandomRotation() {
    CQXMatrix3<T> r;
    const auto angles = random.Angles();
    r.SetRotationByEulerAngles(T(angles[0]), T(angles[1]), T(angles[2]), QX_ROTATIONS_XYZ);
    CQXQuaternion<T> q(r);
    q.Normalize();
    return q;
  }
  /// Rotations that turn by less than a quarter turn from key to key.
  std::vector<CQXQuaternion<T>> RandomRotations(std::size_t n) {
    std::vector<CQXQuaternion<T>> keys{RandomRotation()};
    while (keys.size() < n) {
      CQXQuaternion<T> step;
      CQXVector3<T> axis = random.Vector(-1, 1);
      axis.Normalize();
      step.SetRotation(random.In(-1.4, 1.4), axis);
      keys.push_back(keys.back() * step * T(keys.size() % 3 == 0 ? -1 : 1));
    }
    return keys;
  }
  /// The rotation vector that carries a to b, in the coordinates of a.
  static CQXVector3<double> Turn(const CQXQuaternion<T>& a, const CQXQuaternion<T>& b) {
    const auto wide = [](const CQXQuaternion<T>& q) {
      return CQXQuaternion<double>(double(q.w), double(q.x), double(q.y), double(q.z));
    };
    CQXQuaternion<double> way = wide(a).InvertUnit() * wide(b);
    if (way.w < 0) way = way * -1.0;
    const double sine = std::hypot(way.x, way.y, way.z);
    return way.GetVector() * (sine == 0 ? 2.0 : 2 * std::atan2(sine, way.w) / sine);
  }

  reference::Random<T> random;
};
TYPED_TEST_SUITE(Curves, FloatTypes);

TYPED_TEST(Curves, NumbersAreInterpolatedAsVectorsAre) {
  using T = TypeParam;
  const T y[] = {2, -1, 4, T(0.5)}, t[] = {0, 1, T(2.5), 4};
  for (const T at : {T(-0.5), T(0.3), T(1), T(3.7)}) {
    const auto v = [&](std::size_t i) { return CQXVector2<T>(y[i], 1); };
    EXPECT_EQ(I::ScalarsLinear(y[0], y[1], at), I::VectorsLinear(v(0), v(1), at).X());
    EXPECT_EQ(I::ScalarsQuadratic(y[0], y[1], y[2], t[0], t[1], t[2], at),
              I::VectorsQuadratic(v(0), v(1), v(2), t[0], t[1], t[2], at).X());
    EXPECT_EQ(I::ScalarsCubic(y[0], y[1], y[2], y[3], t[0], t[1], t[2], t[3], at),
              I::VectorsCubic(v(0), v(1), v(2), v(3), t[0], t[1], t[2], t[3], at).X());
  }
}

TYPED_TEST(Curves, HermitesFormAndItsDerivativesAreThoseOfTheCubic) {
  using T = TypeParam;
  const auto value = [](double x, int k) {  // 2 - x + 3 x^2 - x^3 / 2 and its derivatives
    const double all[] = {2 - x + 3 * x * x - x * x * x / 2, -1 + 6 * x - 1.5 * x * x, 6 - 3 * x, -3.0, 0.0};
    return all[k];
  };
  const double a = -0.5, b = 1.5;
  for (const double u : {0.0, 0.25, 0.7, 1.0, 1.3}) {
    for (int k = 0; k < 5; ++k) {
      EXPECT_NEAR(I::Hermite(T(value(a, 0)), T(value(a, 1)), T(value(b, 0)), T(value(b, 1)), T(b - a), T(u), k),
                  value(a + u * (b - a), k), 128 * this->eps)
          << k;
    }
  }
}

TYPED_TEST(Curves, EveryRuleKeepsItsPromiseOfSmoothness) {
  using T = TypeParam;
  for (const std::size_t n : {3U, 4U, 5U, 12U}) {
    for (const qxSlopes rule : rules) {
      for (const qxEnds ends : allEnds) {
        const auto nodes = this->RandomNodes(n);
        const auto count = static_cast<std::int32_t>(n);
        std::vector<T> y(n), m(n, 7);
        for (T& key : y) key = this->random.In(-3, 3);
        if (ends == QX_ENDS_CLOSED) y.back() = y.front();
        m.front() = T(0.25);
        m.back() = T(-0.5);
        ASSERT_EQ(I::FindSlopes(rule, ends, count, nodes.data(), y.data(), m.data()), 1);
        const auto at = [&](std::size_t i, T u, std::int32_t k) {  // in interval i
          const T h = nodes[i + 1] - nodes[i];
          return I::Hermite(y[i], m[i], y[i + 1], m[i + 1], h, u, k);
        };
        const double bound = 512 * double(this->eps);
        for (std::size_t i = 0; i < n; ++i) {
          EXPECT_NEAR(I::CurveAt(count, nodes.data(), y.data(), m.data(), nodes[i]), y[i], bound);
          EXPECT_NEAR(I::CurveAt(count, nodes.data(), y.data(), m.data(), nodes[i], 1), m[i], bound);
          if (i == 0 || i + 1 == n) continue;
          const T h0 = nodes[i] - nodes[i - 1], h1 = nodes[i + 1] - nodes[i];
          const T d0 = (y[i] - y[i - 1]) / h0, d1 = (y[i + 1] - y[i]) / h1, parabola = (d0 * h1 + d1 * h0) / (h0 + h1);
          if (rule == QX_SLOPES_SPLINE) {
            EXPECT_NEAR(at(i - 1, 1, 2), at(i, 0, 2), 64 * bound);
          }
          if (rule == QX_SLOPES_CATMULL_ROM) {
            EXPECT_NEAR(m[i], parabola, bound);
          }
          if (rule == QX_SLOPES_MONOTONE) {
            EXPECT_LE(std::abs(m[i]), std::abs(parabola) * (1 + 8 * this->eps));
            if (d0 * d1 <= 0) {
              EXPECT_EQ(m[i], 0);
            }
          }
        }
        if (rule == QX_SLOPES_MONOTONE) continue;
        if (ends == QX_ENDS_CLAMPED) {
          EXPECT_EQ(m.front() - m.back(), T(0.75));
        }
        if (ends == QX_ENDS_CLOSED) {
          EXPECT_EQ(m.front(), m.back());
        }
        if (ends == QX_ENDS_NATURAL) {
          EXPECT_LE(std::abs(at(0, 0, 2)) + std::abs(at(n - 2, 1, 2)), 64 * bound);
        }
        if (ends == QX_ENDS_CLOSED && rule == QX_SLOPES_SPLINE) {
          EXPECT_NEAR(at(n - 2, 1, 2), at(0, 0, 2), 64 * bound);
        }
        if (ends == QX_ENDS_CLOSED && rule == QX_SLOPES_CATMULL_ROM) {
          const T h0 = nodes[n - 1] - nodes[n - 2], h1 = nodes[1] - nodes[0];
          EXPECT_NEAR(m[0], ((y[n - 1] - y[n - 2]) / h0 * h1 + (y[1] - y[0]) / h1 * h0) / (h0 + h1), bound);
        }
      }
    }
  }
}

TYPED_TEST(Curves, MonotoneCurvesNeitherOvershootNorSwing) {
  using T = TypeParam;
  // The data set RPN 14 of Fritsch and Carlson, and a staircase.
  const std::vector<T> nodes{T(7.99), T(8.09), T(8.19), T(8.7), T(9.2), 10, 12, 15, 20};
  const std::vector<T> rising{0,           T(2.76429e-5), T(4.37498e-2), T(0.169183), T(0.469428),
                              T(0.943740), T(0.998636),   T(0.999919),   T(0.999994)};
  const std::vector<T> stairs{0, 0, 1, 1, 1, T(0.5), -3, -3, 8};
  std::vector<T> m(9), plain(9);
  for (const auto& y : {rising, stairs}) {
    for (const qxEnds ends : {QX_ENDS_NATURAL, QX_ENDS_CLAMPED}) {
      m.front() = m.back() = 100;
      ASSERT_EQ(I::FindSlopes(QX_SLOPES_MONOTONE, ends, 9, nodes.data(), y.data(), m.data()), 1);
      for (std::size_t i = 0; i < 8; ++i) {
        T before = y[i];
        for (int k = 1; k <= 64; ++k) {
          const T at = I::Hermite(y[i], m[i], y[i + 1], m[i + 1], nodes[i + 1] - nodes[i], T(k) / 64);
          EXPECT_GE((at - before) * (y[i + 1] - y[i]), -8 * this->eps) << i << ' ' << k;
          EXPECT_TRUE(y[i] != y[i + 1] || at == y[i]);
          before = at;
        }
      }
    }
  }
  // Not more than is needed: gentle keys keep the slopes of their parabolas.
  const std::vector<T> gentle{0, T(0.1), T(0.2), T(0.75), T(1.2), T(2.1), T(4.1), T(7.2), 12};
  I::FindSlopes(QX_SLOPES_MONOTONE, QX_ENDS_NATURAL, 9, nodes.data(), gentle.data(), m.data());
  I::FindSlopes(QX_SLOPES_CATMULL_ROM, QX_ENDS_NATURAL, 9, nodes.data(), gentle.data(), plain.data());
  EXPECT_EQ(m, plain);
}

TYPED_TEST(Curves, VectorsAreCurvesComponentByComponent) {
  using T = TypeParam;
  const auto nodes = this->RandomNodes(7);
  std::vector<CQXVector3<T>> keys(7), slopes(7);
  for (auto& key : keys) key = this->random.Vector(-3, 3);
  for (const qxSlopes rule : rules) {
    ASSERT_EQ(I::FindSlopes(rule, QX_ENDS_NATURAL, 7, nodes.data(), keys.data(), slopes.data()), 1);
    for (std::int32_t c = 0; c < 3; ++c) {
      std::vector<T> y, m(7);
      for (const auto& key : keys) y.push_back(key[c]);
      I::FindSlopes(rule, QX_ENDS_NATURAL, 7, nodes.data(), y.data(), m.data());
      for (std::size_t i = 0; i < 7; ++i) EXPECT_EQ(slopes[i][c], m[i]);
      for (const T t : {nodes[0] - 1, nodes[2] + T(0.1), nodes[6] + 1}) {
        EXPECT_EQ(I::CurveAt(7, nodes.data(), keys.data(), slopes.data(), t)[c],
                  I::CurveAt(7, nodes.data(), y.data(), m.data(), t));
      }
    }
  }
}

TYPED_TEST(Curves, ShortCurvesBadNodesAndTimesOutsideHaveTheirResults) {
  using T = TypeParam;
  const T nodes[] = {1, 3, 3, 4}, y[] = {2, 8, 1, 1}, nan = std::numeric_limits<T>::quiet_NaN();
  T m[] = {5, 5, 5, 5};
  EXPECT_EQ(I::FindSlopes(QX_SLOPES_SPLINE, QX_ENDS_NATURAL, 4, nodes, y, m), 0);
  const T unordered[] = {1, nan, 3};
  EXPECT_EQ(I::FindSlopes(QX_SLOPES_SPLINE, QX_ENDS_NATURAL, 3, unordered, y, m) +
                I::FindSlopes(QX_SLOPES_SPLINE, QX_ENDS_NATURAL, 0, nodes, y, m),
            0);
  EXPECT_EQ(m[0], 5);
  for (const qxSlopes rule : rules) {
    m[0] = m[1] = 5;
    EXPECT_EQ(I::FindSlopes(rule, QX_ENDS_CLAMPED, 1, nodes, y, m), 1);
    EXPECT_EQ(m[0], 5);
    EXPECT_EQ(I::FindSlopes(rule, QX_ENDS_CLAMPED, 2, nodes, y, m), 1);
    EXPECT_EQ(m[0] + m[1], 10);
    EXPECT_EQ(I::FindSlopes(rule, QX_ENDS_NATURAL, 2, nodes, y, m), 1);
    EXPECT_NEAR(m[0], 3, 8 * this->eps);
    EXPECT_NEAR(m[1], 3, 8 * this->eps);
    EXPECT_EQ(I::FindSlopes(rule, QX_ENDS_CLOSED, 2, nodes, y, m), 1);
    EXPECT_EQ(m[0] + m[1], 0);
    m[0] = 5;
    EXPECT_EQ(I::FindSlopes(rule, QX_ENDS_NATURAL, 1, nodes, y, m), 1);
    EXPECT_EQ(m[0], 0);
  }
  m[0] = m[1] = 3;
  const auto at = [&](T t, std::int32_t k) { return I::CurveAt(2, nodes, y, m, t, k); };
  EXPECT_EQ(at(0, 0) * 10 + at(4, 0), 28);
  EXPECT_EQ(at(0, 1) + at(4, 1), 0);
  EXPECT_EQ(at(2, 1), 3);
  EXPECT_TRUE(std::isnan(at(nan, 0)));
  EXPECT_EQ(I::CurveAt(1, nodes, y, m, 9), 2);
}

TYPED_TEST(Curves, GridsReproducePolynomialsAndEndAtTheirBorders) {
  using T = TypeParam;
  const std::int32_t rows = 5, columns = 7;
  std::vector<T> bilinear(35), quadratic(35);
  const auto f = [](T x, T y) { return 2 + x - 3 * y + x * y / 2; };
  const auto g = [](T x, T y) { return 1 + x * x - x * y + y * y / 2 - y; };
  for (std::int32_t r = 0; r < rows; ++r) {
    for (std::int32_t c = 0; c < columns; ++c) {
      bilinear[std::size_t(r * columns + c)] = f(T(c), T(r));
      quadratic[std::size_t(r * columns + c)] = g(T(c), T(r));
    }
  }
  const T nan = std::numeric_limits<T>::quiet_NaN(), inf = std::numeric_limits<T>::infinity();
  for (int i = 0; i < 200; ++i) {
    const T x = this->random.In(0, 6), y = this->random.In(0, 4);
    EXPECT_NEAR(I::GridBilinear(rows, columns, bilinear.data(), x, y), f(x, y), 64 * this->eps);
    const T xIn = this->random.In(1, 5), yIn = this->random.In(1, 3);
    EXPECT_NEAR(I::GridBicubic(rows, columns, quadratic.data(), xIn, yIn), g(xIn, yIn), 256 * this->eps);
    for (const auto grid : {&I::GridBilinear<T>, &I::GridBicubic<T>}) {
      const T beyond = this->random.In(1, 9);
      EXPECT_EQ(grid(rows, columns, quadratic.data(), -beyond, y), grid(rows, columns, quadratic.data(), 0, y));
      EXPECT_EQ(grid(rows, columns, quadratic.data(), x, 4 + beyond), grid(rows, columns, quadratic.data(), x, 4));
      const std::int32_t c = i % 7, r = i % 5;
      EXPECT_EQ(grid(rows, columns, quadratic.data(), T(c), T(r)), quadratic[std::size_t(r * columns + c)]);
    }
  }
  // Along a border the samples beyond are those of the border: slopes (0 1 4)/2 at x = 0 ... by hand at x = 1/2, y = 0.
  const T row[] = {0, 1, 4};
  EXPECT_NEAR(I::GridBicubic(1, 3, row, T(0.5), 7), T(0.5) + (T(0.5) - 2) / 8, 8 * this->eps);
  for (const auto grid : {&I::GridBilinear<T>, &I::GridBicubic<T>}) {
    EXPECT_EQ(grid(1, 1, row + 2, -inf, inf), 4);
    EXPECT_EQ(grid(1, 3, row, T(1e30), T(-1e30)), 4);
    EXPECT_EQ(grid(0, 3, nullptr, 1, 1) + grid(3, 0, nullptr, 1, 1), 0);
    EXPECT_TRUE(std::isnan(grid(1, 3, row, nan, 0)));
    EXPECT_TRUE(std::isnan(grid(1, 3, row, 0, nan)));
  }
}

TYPED_TEST(Curves, RotationPathsRunThroughTheirKeysWithContinuousVelocity) {
  using T = TypeParam;
  const T step = std::is_same_v<T, float> ? T(5e-3) : T(1e-5);
  for (int i = 0; i < 60; ++i) {
    const qxEnds ends = allEnds[i % 3];
    const auto nodes = this->RandomNodes(6);
    auto keys = this->RandomRotations(6);
    if (ends == QX_ENDS_CLOSED) {  // back by way of the first ones
      keys[4] = keys[1];
      keys[3] = keys[2];
      keys[5] = keys[0] * T(-1);
    }
    std::vector<CQXVector3<T>> w(6, CQXVector3<T>(T(0.5), -1, T(0.25)));
    ASSERT_EQ(I::FindAngularVelocities(ends, 6, nodes.data(), keys.data(), w.data()), 1);
    if (ends == QX_ENDS_CLAMPED) {
      EXPECT_EQ(w.front().Y() + w.back().Y(), -2);
    }
    if (ends == QX_ENDS_CLOSED) {
      EXPECT_EQ((w.front() - w.back()).NormInf(), 0);
    }
    const auto path = [&](T t) { return I::RotationAt(6, nodes.data(), keys.data(), w.data(), t); };
    for (std::size_t k = 0; k < 6; ++k) {
      EXPECT_LE(this->Turn(path(nodes[k]), keys[k]).NormInf(), 64 * double(this->eps));
      EXPECT_NEAR(path(nodes[k] + T(0.1)).SquaredLength(), 1, 32 * this->eps);
      for (const T side : {-step, step}) {
        if (k == 0 && side < 0) continue;
        if (k == 5 && side > 0) continue;
        const T t = nodes[k] + side;
        const auto velocity = this->Turn(keys[k], path(t)) / double(t - nodes[k]);
        for (std::int32_t c = 0; c < 3; ++c) {
          EXPECT_NEAR(velocity[c], double(w[k][c]), double(40 * step)) << k << ' ' << side;
        }
      }
    }
    EXPECT_LE(this->Turn(path(nodes[0] - 1), keys[0]).NormInf() + this->Turn(path(nodes[5] + 1), keys[5]).NormInf(), 0);
  }
}

TYPED_TEST(Curves, RotationPathsAreTheTextbooksForEqualDistancesAndEvenForAnEvenTurn) {
  using T = TypeParam;
  using Q = CQXQuaternion<T>;
  const T nodes[] = {0, 2, 4, 6};
  CQXVector3<T> w[4], axis(1, 2, -2);
  axis.Normalize();
  Q keys[4], even;
  for (std::size_t k = 0; k < 4; ++k) keys[k].SetRotation(T(k) * T(0.9), axis);
  ASSERT_EQ(I::FindAngularVelocities(QX_ENDS_NATURAL, 4, nodes, keys, w), 1);
  for (const auto& velocity : w) EXPECT_LE((velocity - axis * T(0.45)).NormInf(), 16 * this->eps);
  for (const T t : {T(0.1), T(1.3), T(3.9), T(5)}) {
    even.SetRotation(t * T(0.45), axis);
    EXPECT_LE(this->Turn(I::RotationAt(4, nodes, keys, w, t), even).NormInf(), 64 * double(this->eps));
  }
  // Shoemake's control points q exp(-(log(q^-1 next) + log(q^-1 previous)) / 4), long-hand from rotation vectors.
  const auto turns = this->RandomRotations(4);
  ASSERT_EQ(I::FindAngularVelocities(QX_ENDS_NATURAL, 4, nodes, turns.data(), w), 1);
  Q aligned[4] = {turns[0], turns[1], turns[2], turns[3]};
  const auto dot = [](const Q& a, const Q& b) { return a.w * b.w + a.x * b.x + a.y * b.y + a.z * b.z; };
  for (std::size_t k = 1; k < 4; ++k) {
    if (dot(aligned[k - 1], aligned[k]) < 0) aligned[k] = aligned[k] * T(-1);
  }
  const auto control = [&](std::size_t k) {
    const auto sum = this->Turn(aligned[k], aligned[k + 1]) + this->Turn(aligned[k], aligned[k - 1]);
    const CQXVector3<T> v(T(-sum.X() / 4), T(-sum.Y() / 4), T(-sum.Z() / 4));
    Q turn;
    const T angle = std::sqrt(v.SquareLength());
    turn.SetRotation(angle, v / angle);
    return aligned[k] * turn;
  };
  const T t = T(2.6), u = T(0.3);
  const Q outer = I::Slerp(aligned[1], aligned[2], u), inner = I::Slerp(control(1), control(2), u);
  EXPECT_LE(this->Turn(I::RotationAt(4, nodes, turns.data(), w, t), I::Slerp(outer, inner, 2 * u * (1 - u))).NormInf(),
            256 * double(this->eps));
  EXPECT_EQ(I::FindAngularVelocities(QX_ENDS_NATURAL, 0, nodes, keys, w), 0);
  const T equal[] = {1, 1};
  EXPECT_EQ(I::FindAngularVelocities(QX_ENDS_NATURAL, 2, equal, keys, w), 0);
  ASSERT_EQ(I::FindAngularVelocities(QX_ENDS_NATURAL, 1, nodes, keys, w), 1);
  EXPECT_EQ(w[0].NormInf() + this->Turn(I::RotationAt(1, nodes, keys, w, 5), keys[0]).NormInf(), 0);
  ASSERT_EQ(I::FindAngularVelocities(QX_ENDS_CLOSED, 2, nodes, keys, w), 1);
  EXPECT_LE((w[1] - axis * T(0.45)).NormInf(), 16 * this->eps);
}

TYPED_TEST(Curves, MotionsScaleThenRotateThenTranslate) {
  using T = TypeParam;
  const auto nodes = this->RandomNodes(5);
  std::vector<CQXVector3<T>> t(5), s(5), tSlopes(5), sSlopes(5), w(5);
  const auto r = this->RandomRotations(5);
  for (auto& key : t) key = this->random.Vector(-3, 3);
  for (auto& key : s) key = this->random.Vector(0.5, 2);
  I::FindSlopes(QX_SLOPES_SPLINE, QX_ENDS_NATURAL, 5, nodes.data(), t.data(), tSlopes.data());
  I::FindSlopes(QX_SLOPES_MONOTONE, QX_ENDS_NATURAL, 5, nodes.data(), s.data(), sSlopes.data());
  I::FindAngularVelocities(QX_ENDS_NATURAL, 5, nodes.data(), r.data(), w.data());
  const qxMotion<T> whole{5, nodes.data(), t.data(), tSlopes.data(), r.data(), w.data(), s.data(), sSlopes.data()};
  for (const T time : {nodes[0] - 1, nodes[1], nodes[2] + T(0.2), nodes[4] + 1}) {
    CQXAffine3DTransform<T> expected;
    expected.AddScaling(I::CurveAt(5, nodes.data(), s.data(), sSlopes.data(), time), {});
    expected.AddRotation(I::RotationAt(5, nodes.data(), r.data(), w.data(), time).GetMatrix());
    expected.AddTranslation(I::CurveAt(5, nodes.data(), t.data(), tSlopes.data(), time));
    EXPECT_TRUE(qxAreAlmostEqual(I::MotionAt(whole, time), expected.GetMatrix(), 16 * this->eps));
    qxMotion<T> part = whole;
    part.rotations = nullptr;
    part.stretches = nullptr;
    EXPECT_EQ(I::MotionAt(part, time).IsTranslation(0), 1);
    part.translations = nullptr;
    EXPECT_EQ(I::MotionAt(part, time).IsUnit(0) + I::MotionAt(qxMotion<T>(), time).IsUnit(0), 2);
  }
}

}  // namespace

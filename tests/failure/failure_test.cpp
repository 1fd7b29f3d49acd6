#include <qx/arrays/sorting.h>
#include <qx/arrays/statistics.h>
#include <qx/geometry/geometry.h>
#include <qx/interpolation/interpolation.h>
#include <qx/matrices/matrix_n.h>
#include <qx/solvers/algebra.h>
#include <qx/solvers/optimization.h>
#include <qx/wavelets/channel.h>

#include <cmath>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tests/failure/refusing_new.h"
#include "tests/operations/operations.h"
#include "tests/typed_test.h"

namespace {

/// What an operation says of itself: nothing when it reports failure in its own vocabulary, else its result.
using Outcome = std::optional<std::uint64_t>;

template <typename... A>
Outcome Result(bool isDone, const A&... results) {
  return isDone ? Outcome(Hash()(results...).Value()) : Outcome();
}

struct Case {
  std::string name;
  std::function<Outcome()> run;
};

template <typename T>
std::vector<T> Values(std::size_t count) {
  std::vector<T> values(count);
  for (std::size_t i = 0; i < count; ++i) values[i] = static_cast<T>(static_cast<int>(i * i * 7 % 23) - 9);
  return values;
}

template <typename T>
T Bowl(const CQXVectorN<T>& x) {
  return x.Dot(x);
}
template <typename T>
void BowlSlope(const CQXVectorN<T>& x, CQXVectorN<T>& gradient) {
  for (std::int32_t i = 0; i < x.Dim(); ++i) gradient[i] = 2 * x[i];
}

template <typename T>
std::vector<Case> Cases() {
  using M = CQXMatrixN<T>;
  using V = CQXVectorN<T>;
  static const M a(6, Values<T>(36).data());
  static const M s = a + a.Transpose();
  static const V b(6, Values<T>(6).data());
  static const CQXWaveletFilter<T> filter(QX_WAVELET_2_6);
  static const std::vector<T> samples = Values<T>(20 * 14);
  static const auto tree = [] {
    CQXChannel<T> picture(20, 14, samples.data(), 0, 0);
    picture.SetTypeOfNormalization(QX_NORMALIZATION_2);
    return picture.FWT(&filter, QX_CHANNEL_2D, 2);
  }();
  // Room for the results stands before memory is refused.
  static M x(6), y(6);
  static V v(6);
  static T number;
  static std::int32_t count;
  static std::vector<T> target;
  static std::vector<std::int32_t> indices;
  static std::vector<CQXVector2<T>> points;
  const auto fresh = [] {
    x.SetToZero(), y.SetToZero(), v.SetToZero();
    number = 0, count = -1;
    target = samples;
    indices.assign(samples.size(), -1);
    points.assign(40, CQXVector2<T>());
    for (std::size_t i = 0; i < 40; ++i) points[i] = {samples[i], samples[i + 40]};
  };
  const auto n = static_cast<std::int32_t>(samples.size());
  std::vector<Case> cases = {
      {"product",
       [] {
         const M p = a * s;
         return Result(p.Data() != nullptr, p);
       }},
      {"power",
       [] {
         const M p = a ^ 3;
         return Result(p.Data() != nullptr, p);
       }},
      {"Det",
       [] {
         const T d = a.Det();
         return Result(!std::isnan(d), d);
       }},
      {"IsSingular",
       [] {
         const std::int32_t code = a.IsSingular();
         return Result(code >= 0, code);
       }},
      {"spectral norm",
       [] {
         number = a.Norm(QX_MATRIX_NORM_SPECTRAL);
         return Result(!std::isnan(number), number);
       }},
      {"LU", [] { return Result(a.LU_Decomposition(x, y) == 1, x, y); }},
      {"QR", [] { return Result(a.QR_Decomposition(x, y) == 1, x, y); }},
      {"SVD", [] { return Result(a.SV_Decomposition(x, y, v) == 0, x, y, v); }},
      {"rank",
       [] {
         count = a.CalculateRank();
         return Result(count >= 0, count);
       }},
      {"inverse", [] { return Result(a.Inverse(x) == 1, x); }},
      {"pseudo-inverse", [] { return Result(a.PseudoInverse(x, QX_MATRIX_NORM_SPECTRAL, number) == 1, x, number); }},
      {"system", [] { return Result(a.SolveSystem(b, v) == 1, v); }},
      {"eigenvalues", [] { return Result(s.SymmetricEigensolve(v, x) == QX_STATUS_OK, v, x); }},
      {"spectral form", [] { return Result(s.SpectralDecomposition(x, y, 0) == 1, x, y); }},
      {"polar form", [] { return Result(a.PolarDecomposition(x, y, 0) == 1, x, y); }},
      {"conjugate gradients",
       [] { return Result(CQXAlgebra::SolveByCongugateGradient(a, b, v, T(1e-3), T(0)) == 1, v); }},
      {"L-BFGS",
       [] {
         auto info = QX_OPT_IN_PROGRESS;
         V start(b);
         if (start.Data() == nullptr) return Outcome();
         const T f =
             CQXOptimization::QuasiNewtonLBFGS(6, 3, start, T(1e-6), T(1e-6), T(1e-6), 50, Bowl<T>, BowlSlope<T>, info);
         return Result(info != QX_OPT_INVALID && start.Data() != nullptr, f, start);
       }},
      {"blend of vectors",
       [] {
         const V blend = CQXInterpolation::VectorsLinear(b, b, T(0.5));
         return Result(blend.Data() != nullptr, blend);
       }},
      {"sorting with indices",
       [n] {
         target.assign(target.size(), T(77));
         qxSort(n, samples.data(), target.data(), indices.data(), 1, 0);
         return Result(target[0] != 77, target, indices);
       }},
      {"Median",
       [n] {
         number = CQXStatistics<T>(n, target.data()).Median();
         return Result(!std::isnan(number), number);
       }},
      {"hull",
       [] {
         std::int32_t m = 0;
         CQXGeometry::BuildConvexHull(40, points.data(), m, points.data());
         return Result(m > 0, m, points);
       }},
      {"FWT",
       [] {
         CQXChannel<T> picture(20, 14, samples.data(), 0, 0);
         const bool isMade = picture.GetData() != nullptr;
         const auto result = picture.FWT(&filter, QX_CHANNEL_2D, 2);
         return Result(isMade && result != nullptr && result->IsDecomposed(), result);
       }},
      {"IFWT",
       [] {
         const auto r = tree->IFWT();
         return Result(r != nullptr, r);
       }},
      {"Cut",
       [] {
         const auto r = tree->Cut(3, 2, 9, 7);
         return Result(r != nullptr, r);
       }},
      {"packed form",
       [] {
         const auto r = tree->PackDecomposedChannel();
         return Result(r != nullptr, r);
       }},
      {"EstimateNoise",
       [] {
         number = tree->EstimateNoise();
         return Result(!std::isnan(number), number);
       }},
      {"Combine",
       [] {
         const auto r = tree->Combine(tree.get(), T(2), T(1), nullptr);
         return Result(r != nullptr, r);
       }},
  };
  for (std::int32_t method = 0; method <= 5; ++method) {
    cases.push_back({"CleanBelowThreshold " + std::to_string(method), [method] {
                       T threshold = 2, ratio = T(1.5);
                       const auto r = tree->CleanBelowThreshold(threshold, ratio, 0, qxWaveletDenoising(method));
                       return Result(r != nullptr, r);
                     }});
  }
  fresh();
  return cases;
}

template <typename T>
class Failure : public ::testing::Test {};
TYPED_TEST_SUITE(Failure, FloatTypes);

/// Every request for memory of every operation is refused in turn: the operation lets the exception pass, or reports
/// failure, or gives what it gives otherwise; it leaks nothing.
TYPED_TEST(Failure, RefusedMemoryIsReportedAndNeverGivesAnotherResult) {
  for (const Case& one : Cases<TypeParam>()) {
    (void)one.run();
    const Outcome expected = one.run();
    ASSERT_TRUE(expected) << one.name;
    for (const auto manner : {refusal::Manner::Throws, refusal::Manner::Null}) {
      for (const bool forever : {false, true}) {
        for (std::int64_t k = 0, wasRefused = 1; wasRefused != 0; ++k) {
          const std::int64_t before = refusal::LiveBlocks();
          Outcome outcome;
          refusal::Begin(k, manner, forever);
          try {
            outcome = one.run();
          } catch (const std::bad_alloc&) {
          }
          wasRefused = refusal::End();
          const std::int64_t leaked = refusal::LiveBlocks() - before;
          EXPECT_EQ(outcome.value_or(*expected), *expected) << one.name << ' ' << k << ' ' << int(manner) << forever;
          EXPECT_EQ(leaked, 0) << one.name << ' ' << k << ' ' << int(manner) << forever;
        }
      }
    }
    EXPECT_EQ(one.run(), expected) << one.name << " afterwards";
  }
}

/// Operations in place leave their object as it was, and work when they are called again.
TYPED_TEST(Failure, RefusedMemoryLeavesWhatIsChangedInPlace) {
  using T = TypeParam;
  using Channel = CQXChannel<T>;
  const CQXWaveletFilter<T> filter(QX_WAVELET_2_6);
  const std::vector<T> samples = Values<T>(20 * 14);
  Channel raw(20, 14, samples.data(), 1, 0);
  raw.SetTypeOfNormalization(QX_NORMALIZATION_2);
  Channel tree(raw);
  tree.FWTInPlace(&filter, QX_CHANNEL_2D, 2);
  ASSERT_EQ(tree.GetDepth(), 2);
  const struct {
    const char* name;
    const Channel& from;
    std::function<void(Channel&)> change;
  } cases[] = {
      {"FWTInPlace", raw, [&](Channel& c) { c.FWTInPlace(&filter, QX_CHANNEL_2D, 2); }},
      {"FWTInPlace deeper", tree, [&](Channel& c) { c.FWTInPlace(&filter, QX_CHANNEL_2D, 1); }},
      {"IFWTInPlace", tree, [](Channel& c) { c.IFWTInPlace(); }},
      {"DestroyLowestSubChannel", tree, [](Channel& c) { c.DestroyLowestSubChannel(); }},
      {"CreateOneLevelSubChannels", raw,
       [&](Channel& c) { c.CreateOneLevelSubChannels(&filter, QX_CHANNEL_2D, QX_NORMALIZATION_1); }},
      {"=", raw, [&](Channel& c) { c = tree; }},
      {"Combine", tree, [&](Channel& c) { (void)c.Combine(&c, T(2), T(3), &c); }},
  };
  for (const auto& one : cases) {
    Channel expected(one.from);
    one.change(expected);
    const std::uint64_t before = Hash()(one.from).Value(), after = Hash()(expected).Value();
    for (const auto manner : {refusal::Manner::Throws, refusal::Manner::Null}) {
      for (const bool forever : {false, true}) {
        for (std::int64_t k = 0, wasRefused = 1; wasRefused != 0; ++k) {
          Channel channel(one.from);
          refusal::Begin(k, manner, forever);
          try {
            one.change(channel);
          } catch (const std::bad_alloc&) {
          }
          wasRefused = refusal::End();
          const std::uint64_t found = Hash()(channel).Value();
          EXPECT_TRUE(found == before || found == after) << one.name << ' ' << k << ' ' << int(manner) << forever;
          if (found != after) one.change(channel);
          EXPECT_EQ(Hash()(channel).Value(), after) << one.name << " again " << k << ' ' << int(manner) << forever;
        }
      }
    }
  }
}

}  // namespace

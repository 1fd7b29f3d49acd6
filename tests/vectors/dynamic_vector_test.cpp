#include <qx/vectors/vector_n.h>

#include <cmath>
#include <limits>
#include <utility>
#include <vector>

#include "tests/typed_test.h"

namespace {

constexpr std::int32_t smallest = std::numeric_limits<std::int32_t>::min();

template <typename T>
class BaseVector : public ::testing::Test {
 protected:
  /// Elements far enough apart for the assignment of complex numbers.
  static CQXBaseVector<T> Counted(std::int32_t dimension, std::int32_t from = 1) {
    CQXBaseVector<T> v(dimension);
    for (std::int32_t i = 0; i < dimension; ++i) v[i] = Number(from + i);
    return v;
  }
  static T Number(std::int32_t x) {
    if constexpr (std::is_arithmetic_v<T>) {
      return static_cast<T>(x);
    } else {
      return T(static_cast<decltype(T().Real())>(x), 1);
    }
  }
};
using AllElements = ::testing::Types<std::int32_t, float, double, CQXComplex<float>, CQXComplex<double>>;
TYPED_TEST_SUITE(BaseVector, AllElements);

TYPED_TEST(BaseVector, ConstructionAndCopies) {
  using V = CQXBaseVector<TypeParam>;
  const V empty, zeros(3), zeroByLiteral(3, 0);
  EXPECT_EQ(empty.Dim(), 0);
  EXPECT_EQ(empty.Data(), nullptr);
  EXPECT_EQ(V(0, 0).Data(), nullptr);
  EXPECT_EQ(V(-4).Data(), nullptr);
  EXPECT_TRUE(zeros == zeroByLiteral);
  EXPECT_TRUE(zeros != V(4));
  EXPECT_EQ(empty.Dot(zeros), TypeParam(0));
  const TypeParam source[] = {this->Number(5), this->Number(7)};
  V v(2, source), copy(v);
  copy[0] = this->Number(9);
  EXPECT_EQ(v[0], this->Number(5));
  const V moved(std::move(copy));
  EXPECT_EQ(copy.Dim(), 0);
  EXPECT_EQ(copy.Data(), nullptr);
  EXPECT_EQ(moved[0], this->Number(9));
  EXPECT_EQ(moved[1], this->Number(7));
}

TYPED_TEST(BaseVector, AssignmentKeepsTheDimensionAndSetDimensionErases) {
  CQXBaseVector<TypeParam> v = this->Counted(3, 10);
  v = this->Counted(5);
  EXPECT_TRUE(v == this->Counted(3));
  for (const std::int32_t dimension : {3, 0, 7}) {
    v.SetDimension(dimension);
    EXPECT_TRUE(v == CQXBaseVector<TypeParam>(dimension));
  }
}

TYPED_TEST(BaseVector, PartsAreCutToWhatFits) {
  const CQXBaseVector<TypeParam> source = this->Counted(12, 20);
  const struct {
    std::int32_t start, count, written;
  } cases[] = {{2, 10, 3}, {7, 1, 0}, {5, 1, 0}, {0, 5, 5}, {1, 2, 2}, {-1, 3, 0}, {2, -1, 0}, {4, INT32_MAX, 1}};
  for (const auto& c : cases) {
    CQXBaseVector<TypeParam> v(5);
    v.FillPart(source.Data(), c.start, c.count);
    CQXBaseVector<TypeParam> dumped(12);
    v.DumpPart(c.start, c.count, dumped.Data());
    for (std::int32_t i = 0; i < 5; ++i) {
      const bool inside = i >= c.start && i < c.start + c.written;
      EXPECT_EQ(v[i], inside ? source[i - c.start] : TypeParam(0)) << c.start << ' ' << c.count;
    }
    for (std::int32_t i = 0; i < 12; ++i) EXPECT_EQ(dumped[i], i < c.written ? source[i] : TypeParam(0));
  }
  CQXBaseVector<TypeParam> v = this->Counted(6);
  v.ReplacePart(1, 4, 2, source);
  EXPECT_EQ(v[1], source[4]);
  EXPECT_EQ(v[2], source[5]);
  v.ReplacePart(0, 0, 0, source);
  EXPECT_EQ(v[0], this->Number(1));
  v.ReplacePart(1, 0, 5, v);  // within one vector: in ascending order, one after the other
  EXPECT_EQ(v[5], this->Number(1));
}

TYPED_TEST(BaseVector, ArithmeticFollowsTheElements) {
  using V = CQXBaseVector<TypeParam>;
  const TypeParam two = this->Number(2), three = this->Number(3);
  for (const std::int32_t n : {0, 1, 7, 16, 17, 40}) {
    const V a = this->Counted(n, 3), b = this->Counted(n, 1);
    V added(a), subtracted(a), multiplied(a), divided(a);
    added += b;
    subtracted -= b;
    multiplied *= three;
    divided /= two;
    EXPECT_TRUE(added == a + b && subtracted == a - b && multiplied == a * three && divided == a / two);
    TypeParam dot(0), part(0);
    for (std::int32_t i = 0; i < n; ++i) {
      EXPECT_EQ(added[i], a[i] + b[i]);
      EXPECT_EQ(subtracted[i], a[i] - b[i]);
      EXPECT_EQ(multiplied[i], a[i] * three);
      EXPECT_EQ(divided[i], a[i] / two);
      EXPECT_EQ(a.Negate()[i], -a[i]);
      dot += a[i] * b[i];
      if (i >= 2 && i <= 5) part += a[i] * b[i];
    }
    EXPECT_EQ(a.Dot(b), dot);  // exact: all are small whole numbers
    if (n <= 5) continue;
    EXPECT_EQ(a.DotForPart(2, 5, b), part);
    EXPECT_EQ(a.DotForPart(3, 2, b), TypeParam(0));
  }
  V v = this->Counted(4, 2);
  v *= v[0];  // the factor is taken before the first element changes
  EXPECT_EQ(v[1], three * two);
}

TEST(IntegerVector, NeverTraps) {
  const std::int32_t source[] = {7, -7, smallest, std::numeric_limits<std::int32_t>::max()};
  const CQXBaseVector<std::int32_t> v(4, source);
  EXPECT_EQ((v / 0)[0], smallest);
  EXPECT_EQ((v / -1)[2], smallest);
  EXPECT_EQ((v / 2)[1], -3);
  EXPECT_EQ((v + v)[3], -2);
  EXPECT_EQ(v.Negate()[2], smallest);
  EXPECT_EQ(v.Dot(v), static_cast<std::int32_t>(49u + 49u + 0u + 1u));
}

TEST(ComplexVector, CopiesKeepCloseValuesAndResultsAreExact) {
  using Complex = CQXComplex<double>;
  const Complex close[] = {{1 + 1e-6, 0}, {1e-6, 0}};
  CQXBaseVector<Complex> v(2, Complex(1));
  v.Fill(close);
  EXPECT_EQ(v[0].Real(), 1);  // within the precision of the new value
  CQXBaseVector<Complex> exact(2);
  exact[0].Set(1e-6, 0);
  exact[1].Set(0, 2e-6);
  EXPECT_EQ((exact * Complex(3))[0].Real(), 3e-6);
  EXPECT_EQ((exact + exact)[1].Imag(), 4e-6);
  EXPECT_EQ(CQXBaseVector<Complex>(exact)[0].Real(), 0);
  EXPECT_TRUE(exact == CQXBaseVector<Complex>(2));
  EXPECT_FALSE(exact == CQXBaseVector<Complex>(2, Complex(1e-4)));
  exact[0].SetPrecision(5);
  exact[1].CalculateTrigonForm();
  exact.SetToZero();
  EXPECT_EQ(exact[0].GetPrecision(), QX_TOLERANCE<double>);
  EXPECT_EQ(exact[1].IsTrigCalculated(), 0);
  EXPECT_EQ((exact + exact).Dot(v).Real(), 0);
  EXPECT_EQ((v / Complex(0))[0].Imag(), QX_OVERFLOW_VALUE<double>);
}

template <typename T>
class VectorN : public ::testing::Test {};
TYPED_TEST_SUITE(VectorN, FloatTypes);

TYPED_TEST(VectorN, LengthsAreGuarded) {
  using V = CQXVectorN<TypeParam>;
  V v(3);
  v[0] = TypeParam(1e-5);
  EXPECT_EQ(v.Length(), 0);
  EXPECT_EQ(v.Normalize(), 0);
  EXPECT_EQ(v[0], TypeParam(1e-5));
  EXPECT_EQ(v.IsAlmostZero(0), 1);
  v[0] = 0;
  v[1] = 3;
  v[2] = -4;
  EXPECT_EQ(v.NormEuclidean(), 5);
  EXPECT_EQ(((v + v - v) * 2 / 2).Negate().Length(), 5);  // results stay in the class
  EXPECT_EQ(v.Norm1(), 7);
  EXPECT_EQ(v.NormInf(), 4);
  EXPECT_EQ(v.IsAlmostUnit(4), 1);
  EXPECT_EQ(v.IsAlmostUnit(TypeParam(3.9)), 0);
  EXPECT_EQ(v.Normalize(), 1);
  EXPECT_EQ(v[2], -4 * (TypeParam(1) / 5));
  v.AnnulateSmallComponents(v[1]);  // the bound itself is kept
  EXPECT_NE(v[1], 0);
  v.AnnulateSmallComponents(TypeParam(0.7));
  EXPECT_EQ(v[1], 0);
  V empty;
  EXPECT_EQ(empty.Normalize(), 0);
  EXPECT_EQ(empty.Length() + empty.Norm1() + empty.NormInf() + empty.GetMinComponent(0), 0);
  EXPECT_EQ(empty.GetIndexOfMinComponent(0) + empty.GetIndexOfMaxComponent(1), 0);
  v[0] = std::numeric_limits<TypeParam>::quiet_NaN();
  EXPECT_TRUE(std::isnan(v.Length()));
  EXPECT_EQ(v.IsAlmostZero(1), 0);
}

TYPED_TEST(VectorN, ExtremesTakeTheLowestIndexOfEquals) {
  const struct {
    std::vector<TypeParam> v;
    std::int32_t flag, minIndex, maxIndex;
  } cases[] = {{{1, -3, 3}, 0, 1, 2},      {{-2}, 1, 0, 0},
               {{2, -2}, 7, 0, 0},         {{2, -2, -2}, 0, 1, 0},
               {{5, 4, 4, 6, 6}, 0, 1, 3}, {{-5, 4, -4, 6, -6}, 1, 1, 3}};
  for (const auto& c : cases) {
    const CQXVectorN<TypeParam> v(static_cast<std::int32_t>(c.v.size()), c.v.data());
    EXPECT_EQ(v.GetIndexOfMinComponent(c.flag), c.minIndex);
    EXPECT_EQ(v.GetIndexOfMaxComponent(c.flag), c.maxIndex);
    const TypeParam low = v[c.minIndex], high = v[c.maxIndex];
    EXPECT_EQ(v.GetMinComponent(c.flag), c.flag != 0 ? std::abs(low) : low);
    EXPECT_EQ(v.GetMaxComponent(c.flag), c.flag != 0 ? std::abs(high) : high);
  }
}

TYPED_TEST(VectorN, TheOrderOfASumDependsOnItsLengthAlone) {
  for (const std::int32_t n : {15, 16, 17, 31, 32, 33, 47, 100}) {
    CQXVectorN<TypeParam> a(n), b(n);
    for (std::int32_t i = 0; i < n; ++i) {
      a[i] = std::sqrt(static_cast<TypeParam>(i + 2));
      b[i] = 1 / a[n - 1 - i] - TypeParam(0.25);
    }
    TypeParam sums[16] = {};
    for (std::int32_t i = 0; i < n; ++i) sums[n <= 16 ? 0 : i % 16] += a[i] * b[i];
    for (const int half : {8, 4, 2, 1}) {
      for (int j = 0; j < half; ++j) sums[j] += sums[j + half];
    }
    EXPECT_EQ(a.Dot(b), sums[0]) << n;
    EXPECT_EQ(a.DotForPart(0, n - 1, b), sums[0]) << n;
  }
}

TYPED_TEST(VectorN, SumsTakeEveryElementAtEveryLength) {
  TypeParam squares = 0, absolutes = 0;  // exact: all are small whole numbers
  for (std::int32_t n = 1; n < 100; ++n) {
    CQXVectorN<TypeParam> v(n);
    for (std::int32_t i = 0; i < n; ++i) v[i] = static_cast<TypeParam>(i % 7 - 3);
    squares += v[n - 1] * v[n - 1];
    absolutes += std::abs(v[n - 1]);
    EXPECT_EQ(v.SquareLength(), squares);
    EXPECT_EQ(v.Dot(v), squares);
    EXPECT_EQ(v.Norm1(), absolutes);
  }
}

}  // namespace

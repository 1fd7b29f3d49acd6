#include <qx/foundation/complex.h>

#include <limits>
#include <numbers>

#include "tests/typed_test.h"

namespace {

template <typename T>
class Complex : public ::testing::Test {
 protected:
  static constexpr T eps = std::numeric_limits<T>::epsilon();

  static void ExpectParts(const CQXComplex<T>& z, T real, T imag, T bound) {
    EXPECT_NEAR(z.Real(), real, bound);
    EXPECT_NEAR(z.Imag(), imag, bound);
  }
};
TYPED_TEST_SUITE(Complex, FloatTypes);

TYPED_TEST(Complex, AnglesAreBroughtIntoOneTurnExceptNegativeMultiples) {
  const struct {
    TypeParam given, stored;
  } cases[] = {{-360, 360}, {-720, 360}, {-30, 330}, {720, 0}, {360, 0}, {359, 359}, {-390, 330}, {810, 90}};
  for (const auto& c : cases) {
    CQXComplex<TypeParam> z;
    z.SetInTrigForm(1, c.given);
    EXPECT_EQ(z.AngleInDegrees(), c.stored) << c.given;
    EXPECT_EQ(z.Magn(), TypeParam(1));
    const TypeParam radians = c.given * std::numbers::pi_v<TypeParam> / 180;
    this->ExpectParts(z, std::cos(radians), std::sin(radians), 64 * this->eps);
  }
}

TYPED_TEST(Complex, TheTwoWaysToRadiansDifferByOneTurnBelowTheRealAxis) {
  const TypeParam pi = std::numbers::pi_v<TypeParam>;
  CQXComplex<TypeParam> z(0, -2);
  EXPECT_NEAR(z.AngleInRadians(), 3 * pi / 2, 8 * this->eps);
  EXPECT_EQ(z.IsTrigCalculated(), 0);
  EXPECT_NEAR(z.AngleInDegrees(), 270, 512 * this->eps);
  z.CalculateTrigonForm();
  EXPECT_NEAR(z.AngleInRadians(), -pi / 2, 8 * this->eps);
  EXPECT_NEAR(z.AngleInDegrees(), 270, 512 * this->eps);
}

TYPED_TEST(Complex, InPlaceArithmeticLeavesACalculatedFormBehind) {
  CQXComplex<TypeParam> z;
  z.Set(3, 4);
  EXPECT_EQ(z.Magn(), 5);
  z.CalculateTrigonForm();
  z += TypeParam(1);
  EXPECT_EQ(z.Magn(), 5);
  EXPECT_EQ(z.SquareMagn(), 25);
  EXPECT_EQ(z.Real(), 4);
  z.Set(z.Real(), z.Imag());
  EXPECT_EQ(z.SquareMagn(), 32);
  const CQXComplex<TypeParam>& itself = z;
  z *= itself;  // both parts are formed before either is stored
  this->ExpectParts(z, 0, 32, 0);
  z /= itself;
  this->ExpectParts(z, 1, 0, 0);
}

TYPED_TEST(Complex, AssignmentKeepsACloseOldValue) {
  CQXComplex<TypeParam> z(1);
  z = CQXComplex<TypeParam>(1, TypeParam(1e-5));
  EXPECT_EQ(z.Imag(), 0);
  z = CQXComplex<TypeParam>(1, 1);
  EXPECT_EQ(z.Imag(), 1);
  EXPECT_EQ(z.IsTrigCalculated(), 0);
  z = TypeParam(-2);
  z.SetPrecision(10);
  z = CQXComplex<TypeParam>(5, 0);  // 7 apart, within the precision of the left side
  EXPECT_EQ(z.Real(), -2);
  z = TypeParam(-2) + TypeParam(1e-3);  // a real value is compared exactly
  EXPECT_EQ(z.Real(), TypeParam(-2) + TypeParam(1e-3));
}

TYPED_TEST(Complex, DivisionByAlmostZeroOverflowsBothParts) {
  const TypeParam overflow = QX_OVERFLOW_VALUE<TypeParam>;
  EXPECT_EQ(static_cast<double>(overflow), 3.4028234663852886e+38);
  const CQXComplex<TypeParam> z(3, 4), tiny(0, TypeParam(1e-5));
  CQXComplex<TypeParam> inPlace(3, 4), byScalar(3, 4);
  inPlace /= tiny;
  byScalar /= TypeParam(0);
  for (const auto& quotient :
       {z / tiny, z / TypeParam(0), z / QX_TOLERANCE<TypeParam>, tiny.Invert(), inPlace, byScalar}) {
    this->ExpectParts(quotient, overflow, overflow, 0);
  }
  byScalar.Set(3, 4);
  byScalar /= QX_TOLERANCE<TypeParam>;  // in place the bound itself divides
  EXPECT_EQ(byScalar.Real(), 3 / QX_TOLERANCE<TypeParam>);
  this->ExpectParts(z / CQXComplex<TypeParam>(0, 2), 2, TypeParam(-1.5), 0);
}

TYPED_TEST(Complex, PowersAndRoots) {
  const CQXComplex<TypeParam> twoI(0, 2);
  for (std::int32_t n = -7; n <= 7; ++n) {
    CQXComplex<TypeParam> expected(1);
    for (std::int32_t i = 0; i < std::abs(n); ++i) expected *= n > 0 ? twoI : twoI.Invert();
    const CQXComplex<TypeParam> power = twoI.Power(n);
    this->ExpectParts(power, expected.Real(), expected.Imag(), 2048 * this->eps);
  }
  EXPECT_EQ(CQXComplex<TypeParam>().Power(0).Magn(), 0);
  EXPECT_EQ(CQXComplex<TypeParam>(TypeParam(0.001)).Power(-20).Magn(), std::numeric_limits<TypeParam>::max());

  CQXComplex<TypeParam> roots[5];
  const CQXComplex<TypeParam> z(-1, -3);
  EXPECT_EQ(z.Roots(5, roots), 1);
  for (const auto& root : roots) {
    CQXComplex<TypeParam> product(1);
    for (int i = 0; i < 5; ++i) product *= root;
    this->ExpectParts(product, -1, -3, 256 * this->eps);
  }
  EXPECT_EQ(z.Roots(0, nullptr), 1);
  EXPECT_EQ(CQXComplex<TypeParam>().Roots(2, nullptr), 0);
}

TYPED_TEST(Complex, RoundingTreatsEachPartByItself) {
  const TypeParam near = 2 + QX_TOLERANCE<TypeParam> / 2;
  const struct {
    TypeParam value, floor, ceil, round;
  } cases[] = {{TypeParam(-1.5), -2, -1, -2}, {TypeParam(2.5), 2, 3, 3}, {-2, -2, -2, -2},
               {-near, -2, -2, -2},           {near, 2, 2, 2},           {TypeParam(0.25), 0, 1, 0}};
  for (const auto& c : cases) {
    for (const auto& z : {CQXComplex<TypeParam>(c.value, 7), CQXComplex<TypeParam>(7, c.value)}) {
      const bool inReal = z.Imag() == 7;
      const auto part = [inReal](const CQXComplex<TypeParam>& w) { return inReal ? w.Real() : w.Imag(); };
      EXPECT_EQ(part(z.Floor()), c.floor);
      EXPECT_EQ(part(z.Ceil()), c.ceil);
      EXPECT_EQ(part(z.Round()), c.round);
    }
  }
  for (const TypeParam beyond : {TypeParam(1e20), TypeParam(-1e20), std::numeric_limits<TypeParam>::quiet_NaN()}) {
    const CQXComplex<TypeParam> z(beyond, beyond);
    for (const auto& whole : {z.Floor(), z.Ceil(), z.Round()}) {
      this->ExpectParts(whole, TypeParam(-2147483648.0), TypeParam(-2147483648.0), 0);
    }
  }
}

TYPED_TEST(Complex, ComparisonsKeepTheirBoundaries) {
  const CQXComplex<TypeParam> zero, small(TypeParam(1e-5)), one(1);
  EXPECT_EQ(qxAbs(small), 0);
  EXPECT_EQ(qxAreAlmostEqual(zero, small, TypeParam(1e-12)), 1);  // the guarded distance is 0
  EXPECT_EQ(qxAreAlmostEqual(one, one, 0), 0);
  EXPECT_EQ(qxAreAlmostEqual(one, zero, 1), 0);
  EXPECT_EQ(qxIsAlmostZero(one, 1), 0);
  CQXComplex<TypeParam> exact(1);
  exact.SetPrecision(1);
  EXPECT_EQ(exact == zero, 0);  // at the precision itself it is neither
  EXPECT_EQ(exact != zero, 0);
}

}  // namespace

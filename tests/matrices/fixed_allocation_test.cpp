#include <qx/matrices/matrix2.h>
#include <qx/matrices/matrix3.h>
#include <qx/matrices/matrix4.h>
#include <qx/vectors/vector_functions.h>

#include <atomic>
#include <cstdlib>
#include <functional>
#include <new>

#include "tests/fixed_test.h"

namespace {

std::atomic<std::int64_t> allocationsNb{0};
/// Number of blocks that are granted before one is refused; negative grants all.
std::atomic<std::int64_t> grantsNb{-1};

}  // namespace

// Not inlined: the compiler would take malloc and free apart from new and delete and warn of a mismatch.
[[gnu::noinline]] void* operator new(std::size_t bytes) {
  ++allocationsNb;
  if (void* block = std::malloc(bytes)) return block;
  throw std::bad_alloc();
}
// Refuses by null, which a sanitizer would report here.
__attribute__((noinline, no_sanitize("undefined"))) void* operator new[](std::size_t bytes) {
  return grantsNb >= 0 && grantsNb-- == 0 ? nullptr : operator new(bytes);
}
[[gnu::noinline]] void operator delete(void* block) noexcept { std::free(block); }
[[gnu::noinline]] void operator delete[](void* block) noexcept { operator delete(block); }
[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept { operator delete(block); }
[[gnu::noinline]] void operator delete[](void* block, std::size_t) noexcept { operator delete(block); }

namespace {

template <typename M>
class FixedAllocation : public ::testing::Test {};
using AllMatrices = ::testing::Types<CQXMatrix2<float>, CQXMatrix3<float>, CQXMatrix4<float>, CQXMatrix2<double>,
                                     CQXMatrix3<double>, CQXMatrix4<double>>;
TYPED_TEST_SUITE(FixedAllocation, AllMatrices);

TYPED_TEST(FixedAllocation, NothingAllocatesButTheSortOfEigenvalues) {
  using T = typename TypeParam::Element;
  using V = typename TypeParam::Vector;
  const std::int64_t before = allocationsNb;
  TypeParam m, target, lower, upper;
  m.SetDiagonal(3);
  V v = m.RowVector(0), x;
  m = m * m + m / 2 - m.Transpose() * T(2);
  std::int32_t codes = m.Inverse(target) + m.SolveSystem(v, x) + m.LU_Decomposition(lower, upper);
  codes += m.QR_Decomposition(lower, upper) + m.SV_Decomposition(lower, upper, v) + m.CalculateSingularNumbers(v);
  codes += m.PolarDecomposition(lower, upper, 1);
  T sum = m.Norm(QX_MATRIX_NORM_SPECTRAL) + m.ConditionNumber(QX_MATRIX_NORM_SPECTRAL);
  if constexpr (TypeParam::RowsNb() == 3) {
    m.FindEigenvalues(x[0], x[1], x[2]);
    m.FindEigenvectorsReal(1, target.Data());
    v.DecomposeInBasis(v, x, v, x[0], x[1], x[2]);
    m.ExtractEulerAngles(QX_ROTATIONS_ZXY, x[0], x[1], x[2]);
    m.ExtractRotationAngleAxis(sum, v);
    qxOrthonormalize(v, x);
  }
  EXPECT_EQ(allocationsNb, before);
  EXPECT_EQ(codes, 4);
  EXPECT_EQ(m.SymmetricEigensolve(v, target), QX_STATUS_OK);  // the count does count
  EXPECT_GT(allocationsNb, before);
  EXPECT_EQ(sum, sum);
}

TYPED_TEST(FixedAllocation, RefusedMemoryIsNoSuccess) {
  using T = typename TypeParam::Element;
  struct Results {
    TypeParam first, second;
    typename TypeParam::Vector values;
  };
  TypeParam a = Ramp<TypeParam>(1);
  a(0, 0) += 30;
  a(1, 1) -= 40;
  const TypeParam s = a + a.Transpose();
  const std::function<bool(Results&)> operations[] = {
      [&](Results& r) { return s.SymmetricEigensolve(r.values, r.first) == QX_STATUS_OK; },
      [&](Results& r) { return s.SpectralDecomposition(r.first, r.second, 0) == 1; }};
  for (const auto& operation : operations) {
    Results expected;
    ASSERT_TRUE(operation(expected));
    for (std::int64_t k = 0, left = -1; left < 0; ++k) {
      Results r;
      grantsNb = k;
      const bool isDone = operation(r);
      left = grantsNb.exchange(-1);
      // Where memory is refused a result may be found on another road.
      EXPECT_LT(Difference(r.first, isDone ? expected.first : TypeParam()), 64 * eps<T>);
      EXPECT_LT(Difference(r.second, isDone ? expected.second : TypeParam()), 64 * eps<T>);
      EXPECT_LT(Difference(r.values, isDone ? expected.values : decltype(r.values)()), 64 * eps<T>);
    }
  }
}

}  // namespace

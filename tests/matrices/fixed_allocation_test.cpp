#include <qx/matrices/matrix2.h>
#include <qx/matrices/matrix3.h>
#include <qx/matrices/matrix4.h>
#include <qx/vectors/vector_functions.h>

#include <atomic>
#include <cstdlib>
#include <new>

#include "tests/typed_test.h"

namespace {

std::atomic<std::int64_t> allocationsNb{0};

}  // namespace

// Not inlined: the compiler would take malloc and free apart from new and delete and warn of a mismatch.
[[gnu::noinline]] void* operator new(std::size_t bytes) {
  ++allocationsNb;
  if (void* block = std::malloc(bytes)) return block;
  throw std::bad_alloc();
}
[[gnu::noinline]] void* operator new[](std::size_t bytes) { return operator new(bytes); }
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

TYPED_TEST(FixedAllocation, OnlyWhatIsHandedOnAllocates) {
  using T = typename TypeParam::Element;
  using V = typename TypeParam::Vector;
  const std::int64_t before = allocationsNb;
  TypeParam m, target, lower, upper;
  m.SetDiagonal(3);
  m(0, 1) = 1;
  V v = m.RowVector(0), x;
  m = m * m + m / 2 - m.Transpose() * T(2);
  m.Inverse(target);
  m.SolveSystem(v, x);
  m.DiagInverse(target);
  m.LU_Decomposition(lower, upper);
  m.AnnulateRelativelyDiagonal(3);
  T sum = m.Det() + m.Norm(QX_MATRIX_NORM_ROW_SUM) + m.ConditionNumber(QX_MATRIX_NORM_EUCLIDEAN) +
          m.CorrelationCoefficient(target) + static_cast<T>(m.IsRotation() + (m == target));
  if constexpr (requires { m.FindEigenvectorsReal(T(1), m.Data()); }) {
    T vectors[9];
    sum += static_cast<T>(m.FindEigenvectorsReal(1, vectors));
  }
  if constexpr (TypeParam::RowsNb() == 3) {
    T a, b, c;
    sum += static_cast<T>(m.FindEigenvalues(a, b, c) + m.FindAnySolution(v, x) + v.DecomposeInBasis(v, x, v, a, b, c));
    m.SetRotationByEulerAngles(10, 20, 30, QX_ROTATIONS_YXZ);
    m.ExtractEulerAngles(QX_ROTATIONS_ZXY, a, b, c);
    m.SetRotationByAngleAxis(a, v);
    m.ExtractRotationAngleAxis(a, v);
    sum += static_cast<T>(qxOrthonormalize(v, x)) + qxFindAngleInDegrees(v, x);
  }
  if constexpr (TypeParam::RowsNb() == 4) {
    m.RotateXAxis(1, 0);
    m.InverseCoordinateMatrix(target);
    sum += qxCutVector4To3(v).Length();
  }
  v.Normalize();
  sum += v.Length() + v.GetMaxComponent(1);
  EXPECT_EQ(allocationsNb, before);

  V singular;
  m.CalculateSingularNumbers(singular);  // the count does count
  EXPECT_GT(allocationsNb, before);
  EXPECT_EQ(sum, sum);
}

}  // namespace

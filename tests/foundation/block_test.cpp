#include <qx/foundation/block.h>
#include <qx/foundation/complex.h>

#include <limits>
#include <new>
#include <utility>

#include <gtest/gtest.h>

namespace {

TEST(Block, IsMovedAndNeverShared) {
  qxBlock<int> a = qxMakeBlock<int>(2);
  a[1] = 7;
  int* const block = a.get();
  qxBlock<int> b = std::move(a);
  EXPECT_EQ(a.get(), nullptr);
  EXPECT_EQ(b.get(), block);
  qxBlock<int>& same = b;
  b = std::move(same);
  EXPECT_EQ(b.get(), block);
  EXPECT_EQ(b[1], 7);
  a = qxMakeBlock<int>(1);
  int* const other = a.get();
  a.swap(b);
  EXPECT_EQ(a.get(), block);
  EXPECT_EQ(b.get(), other);
  a.reset();
  EXPECT_TRUE(a == nullptr);
  qxReleaseBlock(b.release());
  EXPECT_FALSE(b != nullptr);
}

TEST(Block, OfComplexNumbersIsConstructedAndOfNothingIsNotNull) {
  const qxBlock<CQXComplex<float>> numbers = qxMakeBlock<CQXComplex<float>>(3);
  EXPECT_EQ(numbers[2].Real(), 0);
  EXPECT_EQ(numbers[2].GetPrecision(), 1e-7f);
  EXPECT_NE(qxMakeBlock<double>(0).get(), nullptr);
  EXPECT_EQ(qxElementCount(-1, -1), 0u);
  EXPECT_EQ(qxElementCount(1 << 16, 1 << 16), std::size_t{1} << 32);
}

}  // namespace

#include <qx/matrices/matrix_mn.h>

#include <sstream>
#include <utility>
#include <vector>

#include "tests/typed_test.h"

namespace {

template <typename T>
class BaseMatrix : public ::testing::Test {
 protected:
  /// Elements 10 r + c + 1.
  static CQXBaseMatrix<T> Counted(std::int32_t rows, std::int32_t columns) {
    CQXBaseMatrix<T> m(rows, columns);
    for (std::int32_t r = 0; r < rows; ++r) {
      for (std::int32_t c = 0; c < columns; ++c) m(r, c) = Number(10 * r + c + 1);
    }
    return m;
  }
  static T Number(std::int32_t x) {
    if constexpr (std::is_arithmetic_v<T>) {
      return static_cast<T>(x);
    } else {
      return T(static_cast<decltype(T().Real())>(x), 1);
    }
  }
};
using AllElements = ::testing::Types<float, double, CQXComplex<float>, CQXComplex<double>>;
TYPED_TEST_SUITE(BaseMatrix, AllElements);

TYPED_TEST(BaseMatrix, ConstructionAndAssignmentKeepTheShape) {
  using M = CQXBaseMatrix<TypeParam>;
  EXPECT_EQ(M(3, 0).Data(), nullptr);  // two sizes, not a null source
  EXPECT_EQ(M(-2, 5).Data(), nullptr);
  const M source = this->Counted(2, 3);
  M copy(source), turned(3, 2), small(1, 2);
  EXPECT_TRUE(M(2, 3, source.Data()) == source);
  EXPECT_FALSE(M(3, 2, source.Data()) == source);
  turned = source;  // flat
  EXPECT_EQ(turned.RowsNb(), 3);
  EXPECT_EQ(turned(2, 1), source(1, 2));
  small = source;
  EXPECT_EQ(small[1], source(0, 1));
  const M moved(std::move(copy));
  EXPECT_TRUE(moved == source);
  EXPECT_EQ(copy.RowsNb() + copy.ColsNb(), 0);
}

TYPED_TEST(BaseMatrix, DiagonalRowsAndColumns) {
  CQXBaseMatrix<TypeParam> m = this->Counted(2, 3);
  const CQXBaseMatrix<TypeParam> source = this->Counted(3, 4);
  const auto expectElements = [&](const std::vector<std::int32_t>& expected) {
    for (std::int32_t i = 0; i < 6; ++i) EXPECT_EQ(m[i], this->Number(expected[static_cast<std::size_t>(i)]));
  };
  EXPECT_EQ(m.Trace(), this->Number(1) + this->Number(12));
  EXPECT_EQ(m.Diagonal().Dim(), 2);
  EXPECT_EQ(m.Diagonal()[1], this->Number(12));
  m.SetRowVector(0, source.RowVector(2));
  m.SetColVector(1, source.ColVector(3));
  expectElements({21, 4, 23, 11, 14, 13});

  m = this->Counted(2, 3);
  m.CopyPartRow(1, 1, 2, 2, 0, source);
  m.CopyPartColumn(0, 0, 2, 3, 1, source);
  m.CopyPartRow(0, 0, 0, 9, 9, source);
  m.CopyPartColumn(0, 0, -1, 9, 9, source);
  expectElements({14, 2, 3, 24, 21, 22});
  m.SetPartRowVector(0, 1, 2, 1, source.RowVector(0));
  m.SetPartColVector(2, 0, 2, 1, source.ColVector(0));
  expectElements({14, 2, 11, 24, 21, 21});

  m.SetDiagonal(this->Number(7));
  EXPECT_EQ(m(1, 1), this->Number(7));
  EXPECT_EQ(m(1, 2), TypeParam(0));
  m.SetElement(0, 1, this->Number(5));
  m.MulElement(0, 1, this->Number(2));
  m.AddToElement(0, 1, this->Number(1));
  EXPECT_EQ(m(0, 1), this->Number(5) * this->Number(2) + this->Number(1));
  EXPECT_EQ(CQXBaseMatrix<TypeParam>(0, 4).Trace(), TypeParam(0));
}

TYPED_TEST(BaseMatrix, RowsAndColumnsMayComeFromTheMatrixItself) {
  const CQXBaseMatrix<TypeParam> source = this->Counted(4, 5);
  const auto expectTheSame = [&](auto change) {
    CQXBaseMatrix<TypeParam> fromItself(source), fromCopy(source);
    change(fromItself, fromItself);
    change(fromCopy, source);
    for (std::int32_t i = 0; i < 20; ++i) EXPECT_EQ(fromItself[i], fromCopy[i]) << i;
  };
  for (std::int32_t offset = 0; offset < 16; ++offset) {
    for (std::int32_t place = 0; place < 4; ++place) {
      expectTheSame([=](auto& m, const auto& from) { m.SetColumn(place, from.Data() + offset); });
      expectTheSame([=](auto& m, const auto& from) { m.SetRow(place, from.Data() + offset); });
      expectTheSame([=](auto& m, const auto& from) { m.CopyPartRow(place, 1, 3, offset % 4, offset / 8, from); });
      expectTheSame([=](auto& m, const auto& from) { m.CopyPartColumn(place, 1, 3, offset % 5, offset / 8, from); });
    }
  }
}

TYPED_TEST(BaseMatrix, AProductWithTooFewRowsIsZero) {
  using M = CQXBaseMatrix<TypeParam>;
  const M a = this->Counted(2, 3);
  EXPECT_TRUE(a * this->Counted(2, 4) == M(2, 4));
  EXPECT_EQ((a * this->Counted(2, 4).ColVector(0))[1], TypeParam(0));
  EXPECT_EQ((a * this->Counted(4, 1))(0, 0), (a * this->Counted(3, 1))(0, 0));
}

TYPED_TEST(BaseMatrix, RectanglesAreTestedAgainstTheRowCount) {
  using M = CQXBaseMatrix<TypeParam>;
  const M source = this->Counted(1, 100);
  M square(3);
  square.FillPart(0, 0, 2, 2, source.Data(), 0);
  EXPECT_EQ(square(2, 0), source[2]);
  EXPECT_EQ(square(0, 1), source[3]);
  square.FillPart(1, 0, 2, 1, source.Data(), 7);
  EXPECT_EQ(square(1, 1), source[1]);
  EXPECT_EQ(square(2, 0), source[2]);

  M wide(2, 4);
  wide.FillPart(0, 0, 1, 3, source.Data(), 1);
  EXPECT_TRUE(wide == M(2, 4));
  const std::int32_t bad[][4] = {{-1, 0, 0, 0}, {0, -1, 0, 0}, {1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 2, 0}, {0, 0, 0, 2}};
  for (const auto& range : bad) wide.FillPart(range[0], range[1], range[2], range[3], source.Data(), 1);
  EXPECT_TRUE(wide == M(2, 4));

  M tall(4, 2);  // columns 0 to 3 pass: they wrap into the next row, and end at the end of the block
  tall.FillPart(2, 0, 3, 3, source.Data(), 1);
  const std::int32_t expected[] = {0, 0, 0, 0, 1, 2, 5, 6};
  for (std::int32_t i = 0; i < 8; ++i) EXPECT_EQ(tall[i], expected[i] == 0 ? TypeParam(0) : this->Number(expected[i]));
  tall.FillPart(2, 0, 3, 3, source.Data(), 0);  // of two that meet in one place the later one stays, column by column
  const std::int32_t laterColumn[] = {0, 0, 0, 0, 1, 3, 5, 7};
  for (std::int32_t i = 4; i < 8; ++i) EXPECT_EQ(tall[i], this->Number(laterColumn[i]));
  M dumped(1, 8);
  tall.DumpPart(2, 0, 3, 3, dumped.Data(), 0);  // column by column
  const TypeParam byColumns[] = {tall[4], tall[6], tall[5], tall[7], tall[6], TypeParam(0), tall[7], TypeParam(0)};
  for (std::int32_t i = 0; i < 8; ++i) EXPECT_EQ(dumped[i], byColumns[i]);
}

TYPED_TEST(BaseMatrix, ProductsAddInAscendingOrder) {
  using M = CQXBaseMatrix<TypeParam>;
  const std::int32_t cases[][3] = {{1, 1, 1}, {2, 3, 4}, {5, 7, 9}, {4, 8, 16}, {13, 300, 11}, {3, 0, 2}, {17, 5, 1}};
  for (const auto& [rows, depth, columns] : cases) {
    M a(rows, depth), b(depth, columns);
    for (std::int32_t i = 0; i < rows * depth; ++i) a[i] = TypeParam(1) / this->Number(i % 89 + 1);
    for (std::int32_t i = 0; i < depth * columns; ++i) b[i] = TypeParam(1) / this->Number(i % 97 + 3);
    const M product = a * b, transposed = product.Transpose();
    const CQXBaseVector<TypeParam> column = a * b.ColVector(0);
    for (std::int32_t r = 0; r < rows; ++r) {
      for (std::int32_t k = 0; k < columns; ++k) {
        TypeParam sum(0);
        for (std::int32_t i = 0; i < depth; ++i) sum += a(r, i) * b(i, k);
        if constexpr (std::is_arithmetic_v<TypeParam>) {
          EXPECT_EQ(product(r, k), sum);  // to the last bit
        } else {
          EXPECT_EQ(product(r, k).Real(), sum.Real());
          EXPECT_EQ(product(r, k).Imag(), sum.Imag());
        }
        EXPECT_EQ(transposed(k, r), product(r, k));
      }
      EXPECT_EQ(column[r], product(r, 0));
    }
  }
}

TYPED_TEST(BaseMatrix, ElementWiseArithmetic) {
  using M = CQXBaseMatrix<TypeParam>;
  const M a = this->Counted(3, 2), b = this->Counted(2, 3);  // flat: the shapes are not compared
  const TypeParam factor = this->Number(3);
  M inPlace(a);
  inPlace += b;
  EXPECT_EQ(inPlace(2, 1), a(2, 1) + b(1, 2));
  EXPECT_TRUE(inPlace == a + b);
  EXPECT_TRUE(inPlace - b == a);
  inPlace -= b;
  inPlace *= factor;
  EXPECT_TRUE(inPlace == a * factor && inPlace / factor == a);
  inPlace /= factor;
  EXPECT_TRUE(inPlace == a);
  EXPECT_TRUE(a.Negate() + a == M(3, 2));
  inPlace[0] = factor;
  inPlace *= inPlace[0];  // the factor is taken before the first element changes
  EXPECT_EQ(inPlace[5], a[5] * factor);
  inPlace.SetConstant(factor);
  inPlace += inPlace;
  EXPECT_EQ(inPlace[3], factor + factor);
}

TEST(MatrixText, PrintsTheRectangleOrTheWhole) {
  const double elements[] = {1, 2, 3, 4};
  const CQXMatrixMN<double> m(2, elements);
  ::testing::internal::CaptureStdout();
  m.PrintPartOfMatrix(0, 0, 1, 1);
  m.PrintPartOfMatrix(0, 0, 1, 2);
  m.PrintPartOfMatrix(1, 1, 0, 1);
  m.PrintPartOfMatrix(-1, 0, 1, 1);
  m.PrintPartOfMatrix(1, 1, 1, 1);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "( 1 2 )\n( 3 4 )\n\n( 4 )\n\n");
  std::ostringstream text;
  CQXBaseMatrix<CQXComplex<float>> complex(1, 2);
  complex(0, 0).Set(1, -2);
  text << m << complex << CQXBaseMatrix<float>(0);
  EXPECT_EQ(text.str(), "( 1 2 )\n( 3 4 )\n\n( 1 - 2*i  0 + 0*i  )\n\n");
}

TEST(ComplexMatrix, ResultsAreExactAndZeroesAreFresh) {
  using Complex = CQXComplex<double>;
  CQXBaseMatrix<Complex> m(2);
  for (std::int32_t i = 0; i < 4; ++i) m[i].Set(1e-6 * (i + 1), 0);
  EXPECT_EQ((m + m)[1].Real(), 4e-6);
  EXPECT_EQ((m * m)(0, 0).Real(), 1e-6 * 1e-6 + 2e-6 * 3e-6);
  EXPECT_EQ(m.Transpose()(1, 0).Real(), 2e-6);
  EXPECT_TRUE(m == CQXBaseMatrix<Complex>(2));  // guarded distances
  m[0].CalculateTrigonForm();
  m[1].SetPrecision(3);
  m.SetToZero();
  EXPECT_EQ(m[0].IsTrigCalculated(), 0);
  EXPECT_EQ(m[1].GetPrecision(), QX_TOLERANCE<double>);
}

}  // namespace

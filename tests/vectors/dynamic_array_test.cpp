#include <qx/geometry/geometry.h>
#include <qx/matrices/matrix2.h>
#include <qx/matrices/matrix4.h>
#include <qx/matrices/matrix_n.h>
#include <qx/transforms/quaternion.h>
#include <qx/vectors/vector2.h>
#include <qx/vectors/vector4.h>
#include <qx/vectors/vector_n.h>

#include <algorithm>
#include <span>
#include <type_traits>
#include <utility>
#include <vector>

#include "tests/typed_test.h"

namespace {

/// What the tests need of a class: an object whose first element is a number, of one of two sizes where it has a size.
template <typename Object>
struct Maker {
  static constexpr bool hasSizes = false;
  static Object Make(std::int32_t number, std::int32_t) {
    Object object;
    First(object) = static_cast<typename Object::Element>(number);
    return object;
  }
  static auto& First(Object& object) { return *object.Data(); }
  static std::int32_t Size(const Object&) { return 0; }
};
template <typename T>
struct Maker<CQXQuaternion<T>> {
  static constexpr bool hasSizes = false;
  static CQXQuaternion<T> Make(std::int32_t number, std::int32_t) { return {static_cast<T>(number), 0, 0, 0}; }
  static T& First(CQXQuaternion<T>& q) { return q[0]; }
  static std::int32_t Size(const CQXQuaternion<T>&) { return 0; }
};
template <typename Object>
requires std::derived_from<Object, CQXDynamicArray<typename Object::Element>>
struct Maker<Object> {
  static constexpr bool hasSizes = true;
  static Object Make(std::int32_t number, std::int32_t size) {
    Object object(size);
    for (auto& element : object) element = static_cast<Part>(number);
    return object;
  }
  static auto& First(Object& object) { return object[0]; }
  static std::int32_t Size(const Object& object) { return static_cast<std::int32_t>(object.end() - object.begin()); }
  using Part = std::conditional_t<std::is_arithmetic_v<typename Object::Element>, typename Object::Element, float>;
};

template <typename Object>
class Exchange : public ::testing::Test {
 protected:
  using Make = Maker<Object>;

  /// The numbers 1, 2, ... of sizes 2, 3, 2, 3, ..., or all of size 2.
  static std::vector<Object> Row(std::int32_t count, bool isMixed) {
    std::vector<Object> row;
    for (std::int32_t i = 1; i <= count; ++i) row.push_back(Make::Make(i, isMixed ? 2 + i % 2 : 2));
    return row;
  }
  /// Every object must be whole: its size and all of its elements are those that it was made with.
  static void ExpectOrder(std::vector<Object>& row, const std::vector<std::int32_t>& numbers, bool isMixed) {
    ASSERT_EQ(row.size(), numbers.size());
    for (std::size_t i = 0; i < row.size(); ++i) {
      Object expected = Make::Make(numbers[i], isMixed ? 2 + numbers[i] % 2 : 2);
      EXPECT_EQ(Make::Size(row[i]), Make::Size(expected)) << i;
      EXPECT_TRUE(row[i] == expected) << i << ' ' << Number(row[i]);
    }
  }
  static double Number(Object& object) {
    if constexpr (std::is_class_v<std::remove_reference_t<decltype(Make::First(object))>>) {
      return static_cast<double>(Make::First(object).Real());
    } else {
      return static_cast<double>(Make::First(object));
    }
  }
};
using Everything =
    ::testing::Types<CQXBaseVector<std::int32_t>, CQXBaseVector<float>, CQXBaseVector<double>,
                     CQXBaseVector<CQXComplex<float>>, CQXBaseVector<CQXComplex<double>>, CQXVectorN<float>,
                     CQXVectorN<double>, CQXBaseMatrix<float>, CQXBaseMatrix<CQXComplex<double>>, CQXMatrixMN<float>,
                     CQXMatrixMN<double>, CQXMatrixN<float>, CQXMatrixN<double>, CQXVector2<float>, CQXVector3<double>,
                     CQXVector4<float>, CQXMatrix2<double>, CQXMatrix3<float>, CQXMatrix4<double>,
                     CQXQuaternion<float>>;
TYPED_TEST_SUITE(Exchange, Everything);

TYPED_TEST(Exchange, AlgorithmsLoseNothing) {
  using M = Maker<TypeParam>;
  for (const bool isMixed : {false, true}) {
    std::vector<TypeParam> row = this->Row(5, isMixed);
    std::swap(row[0], row[1]);
    std::ranges::swap(row[2], row[3]);
    this->ExpectOrder(row, {2, 1, 4, 3, 5}, isMixed);
    using std::swap;
    swap(row[0], row[4]);
    swap(row[1], row[1]);
    this->ExpectOrder(row, {5, 1, 4, 3, 2}, isMixed);
    std::rotate(row.begin(), row.begin() + 2, row.end());
    this->ExpectOrder(row, {4, 3, 2, 5, 1}, isMixed);
    std::sort(row.begin(), row.end(), [this](auto& a, auto& b) { return this->Number(a) < this->Number(b); });
    this->ExpectOrder(row, {1, 2, 3, 4, 5}, isMixed);
    row.reserve(7);
    row.insert(row.begin() + 1, M::Make(6, 2));
    row.insert(row.begin(), row[3]);
    this->ExpectOrder(row, {3, 1, 6, 2, 3, 4, 5}, isMixed);
  }
  std::vector<TypeParam> row = this->Row(40, true);
  std::reverse(row.begin(), row.end());
  std::ranges::sort(row, [this](auto& a, auto& b) { return this->Number(a) < this->Number(b); });
  std::vector<std::int32_t> ascending;
  for (std::int32_t i = 1; i <= 40; ++i) ascending.push_back(i);
  this->ExpectOrder(row, ascending, true);
}

TYPED_TEST(Exchange, EraseAssignsOverWhatKeepsItsSize) {
  using M = Maker<TypeParam>;
  std::vector<TypeParam> row = this->Row(4, false);
  row.erase(row.begin() + 1);
  this->ExpectOrder(row, {1, 3, 4}, false);
  row = this->Row(4, true);
  row.erase(row.begin());
  EXPECT_EQ(this->Number(row[0]), 2);
  EXPECT_EQ(M::Size(row[0]), M::Size(M::Make(1, 3)));  // the size of the erased one
  EXPECT_EQ(M::Size(row[1]), M::Size(M::Make(2, 2)));
}

template <typename Object>
class Moved : public ::testing::Test {};
using Dynamic = ::testing::Types<CQXBaseVector<std::int32_t>, CQXBaseVector<CQXComplex<float>>, CQXVectorN<double>,
                                 CQXBaseMatrix<double>, CQXMatrixMN<float>, CQXMatrixN<double>>;
TYPED_TEST_SUITE(Moved, Dynamic);

TYPED_TEST(Moved, OnlyWhatWasMovedFromTakesSizeAndBlock) {
  using M = Maker<TypeParam>;
  TypeParam two = M::Make(5, 2), three = M::Make(7, 3), kept = M::Make(9, 2);
  kept = std::move(three);
  EXPECT_EQ(M::Size(kept), M::Size(two));
  EXPECT_EQ(M::Size(three), M::Size(M::Make(0, 3)));  // an assignment that copies takes nothing away
  three = M::Make(1, 2);                              // shorter: what lies beyond its end stays
  EXPECT_EQ(three[M::Size(two) - 1], typename TypeParam::Element(1));
  EXPECT_EQ(three[M::Size(two)], typename TypeParam::Element(7));

  const auto* const block = three.Data();
  TypeParam target(std::move(three));
  EXPECT_EQ(target.Data(), block);
  EXPECT_EQ(M::Size(three), 0);
  three = two;  // a copy
  EXPECT_TRUE(three == two);
  EXPECT_NE(three.Data(), two.Data());
  three = target;  // no longer moved from
  EXPECT_EQ(M::Size(three), M::Size(two));
  TypeParam other(std::move(three));
  three = std::move(target);
  EXPECT_EQ(three.Data(), block);
  target = std::move(three);
  TypeParam& self = target;
  target = std::move(self);
  EXPECT_EQ(target.Data(), block);
  TypeParam empty(0);
  empty = two;  // empty, but not moved from
  EXPECT_EQ(M::Size(empty), 0);
  swap(target, other);  // found by its arguments alone
  EXPECT_EQ(other.Data(), block);
  const std::span<const typename TypeParam::Element> elements(std::as_const(other));
  EXPECT_EQ(elements.data(), block);
}

TEST(MovedVector, SetDimensionEndsTheState) {
  CQXVectorN<float> v(3), w(std::move(v));
  v.SetDimension(2);
  v = w;
  EXPECT_EQ(v.Dim(), 2);
}

TEST(MovedMatrix, ResultsGoAlongAndAVirtualBaseIsNoWayAround) {
  const double elements[] = {3, 0, 0, 0, 2, 0};
  CQXMatrixMN<double> a(2, 3, elements), target(a);
  CQXMatrixMN<double> u(2), v(3);
  CQXVectorN<double> singular(2);
  ASSERT_EQ(a.SV_Decomposition(u, v, singular), 0);
  a.SetRank(2);
  CQXMatrixMN<double> moved(std::move(target));
  target = std::move(a);
  EXPECT_EQ(target.GetRank(), 2);
  EXPECT_EQ(target.IsSingCalculated(), 1);
  CQXBaseMatrix<double>& base = target;
  base = CQXBaseMatrix<double>(2, 3);  // by the virtual operator: what was remembered is forgotten
  EXPECT_EQ(target.IsSingCalculated(), 0);
  CQXMatrixN<double> square(2), squareMoved(std::move(square));
  square = std::move(moved);  // its leading square
  EXPECT_EQ(square.Size(), 2);
  EXPECT_EQ(square.ColsNb(), 2);
  EXPECT_EQ(square(1, 1), 2);
  EXPECT_EQ(square(0, 1) + square(1, 0), 0);
}

TYPED_TEST(Moved, AShorterRightSideIsNotReadPastItsEnd) {
  using M = Maker<TypeParam>;
  using T = typename TypeParam::Element;
  const TypeParam shorter = M::Make(2, 2);
  TypeParam a = M::Make(5, 3);
  const std::int32_t last = M::Size(a) - 1;
  const TypeParam sum = a + shorter, difference = a - shorter;
  EXPECT_EQ(sum[0], T(7));
  EXPECT_EQ(difference[0], T(3));
  EXPECT_EQ(sum[last], T(5));
  EXPECT_EQ(difference[last], T(5));
  a += shorter;
  EXPECT_EQ(a[0], T(7));
  EXPECT_EQ(a[last], T(5));
  a -= shorter;
  EXPECT_EQ(a[0], T(5));
  EXPECT_EQ((shorter + a)[0], T(7));
}

}  // namespace

#include <qx/arrays/sorting.h>
#include <qx/vectors/vector2.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <random>
#include <utility>
#include <vector>

#include "tests/typed_test.h"

namespace {

using SortedTypes = ::testing::Types<std::int8_t, std::uint8_t, std::int16_t, std::uint16_t, std::int32_t,
                                     std::uint32_t, std::int64_t, std::uint64_t, float, double>;

template <typename T>
class Sorting : public ::testing::Test {
 protected:
  using Limits = std::numeric_limits<T>;
  static constexpr bool isFloat = std::is_floating_point_v<T>;

  static std::int32_t Size(const std::vector<T>& values) { return static_cast<std::int32_t>(values.size()); }

  /// Small numbers with many ties, now and then an extreme one; floats with zeros of both signs.
  std::vector<T> MakeValues(std::int32_t n, bool withNotANumbers) {
    std::vector<T> values(static_cast<std::size_t>(n));
    for (T& value : values) {
      const int draw = static_cast<int>(m_engine() % 20);
      value = static_cast<T>(std::is_signed_v<T> ? draw % 9 - 4 : draw % 9);
      if (draw == 17) value = Limits::max();
      if (draw == 18) value = Limits::lowest();
      if (isFloat && value == 0 && draw < 9) value = -value;
      if (withNotANumbers && draw >= 15) value = Limits::quiet_NaN();
    }
    return values;
  }

  /// Every value fits into a long double, the absolute ones too.
  static long double Key(T value, bool absolute) {
    const long double key = value;
    return absolute ? std::fabs(key) : key;
  }

  /// Quicksort by the book: both sides by recursion, on indices only.
  static void SortModel(const std::vector<long double>& keys, std::vector<std::int32_t>& order, int first, int last,
                        bool ascending) {
    if (first >= last) return;
    const auto key = [&](int at) { return keys[static_cast<std::size_t>(order[static_cast<std::size_t>(at)])]; };
    const long double pivot = key((first + last) / 2);
    int i = first, j = last;
    while (true) {
      for (; ascending ? key(i) < pivot : key(i) > pivot; ++i) {
      }
      for (; ascending ? key(j) > pivot : key(j) < pivot; --j) {
      }
      if (j < i) break;
      std::swap(order[static_cast<std::size_t>(i++)], order[static_cast<std::size_t>(j--)]);
      if (j < i) break;
    }
    SortModel(keys, order, first, j, ascending);
    SortModel(keys, order, i, last, ascending);
  }

  static std::vector<std::int32_t> Order(const std::vector<T>& values, bool ascending, bool absolute) {
    std::vector<long double> keys;
    std::vector<std::int32_t> order;
    for (const T value : values) {
      order.push_back(static_cast<std::int32_t>(keys.size()));
      keys.push_back(Key(value, absolute));
    }
    SortModel(keys, order, 0, Size(values) - 1, ascending);
    return order;
  }

  /// The same numbers with the same signs, zeros and not-a-numbers included.
  static void ExpectSame(const std::vector<T>& a, const std::vector<T>& b) {
    ASSERT_EQ(a.size(), b.size());
    for (std::size_t i = 0; i < a.size(); ++i) {
      EXPECT_TRUE(a[i] == b[i] || (a[i] != a[i] && b[i] != b[i])) << i;
      if constexpr (isFloat) {
        EXPECT_EQ(std::signbit(a[i]), std::signbit(b[i])) << i;
      }
    }
  }

  std::mt19937 m_engine{20240607};
};
TYPED_TEST_SUITE(Sorting, SortedTypes);

TYPED_TEST(Sorting, EveryFormMakesTheExchangesOfTheModel) {
  using T = TypeParam;
  for (std::int32_t n = 0; n < 70; ++n) {
    for (int flags = 0; flags < 8; ++flags) {
      const bool ascending = (flags & 1) != 0, absolute = (flags & 2) != 0, withNotANumbers = (flags & 4) != 0;
      if (withNotANumbers && !this->isFloat) continue;
      const std::vector<T> source = this->MakeValues(n, withNotANumbers);
      const std::vector<std::int32_t> order = this->Order(source, ascending, absolute);
      std::vector<T> expected;
      for (const std::int32_t i : order) expected.push_back(source[static_cast<std::size_t>(i)]);

      std::vector<T> array = source, target(source.size());
      std::vector<std::int32_t> indices(source.size());
      CQXSorting<T> sorting(n, array.data(), 1, ascending, absolute);
      sorting.SortReturnIndices(indices.data());
      EXPECT_EQ(indices, order);
      std::fill(indices.begin(), indices.end(), -1);
      sorting.Sort(target.data(), indices.data());
      EXPECT_EQ(indices, order);
      this->ExpectSame(target, expected);
      this->ExpectSame(array, source);
      qxSort(n, source.data(), target.data(), indices.data(), ascending, absolute);
      EXPECT_EQ(indices, order);
      this->ExpectSame(target, expected);
      qxSort(n, source.data(), target.data(), ascending, absolute);
      this->ExpectSame(target, expected);
      sorting.Sort();
      this->ExpectSame(array, expected);
      if (withNotANumbers) continue;
      EXPECT_EQ(sorting.IsArraySorted(0, n - 1), 1);
      EXPECT_EQ(qxIsArraySorted(n, array.data(), 0, ascending, absolute), 1);
      if (n == 0 || this->Key(array[0], absolute) == this->Key(array.back(), absolute)) continue;
      EXPECT_EQ(qxIsArraySorted(n, array.data(), 0, !ascending, absolute), 0);
    }
  }
}

TYPED_TEST(Sorting, RangesLeaveTheRestAlone) {
  using T = TypeParam;
  const std::vector<T> source{9, 3, 7, 5, 1, 8};
  std::vector<T> array = source, target(6, 0);
  CQXSorting<T> sorting(6, array.data(), 1, 1, 0);
  sorting.Sort(4, 4);
  sorting.Sort(4, 2);
  EXPECT_EQ(array, source);
  sorting.Sort(1, 4, target.data());
  EXPECT_EQ(array, (std::vector<T>{9, 1, 3, 5, 7, 8}));
  EXPECT_EQ(target, (std::vector<T>{1, 3, 5, 7, 0, 0}));
  EXPECT_EQ(sorting.IsArraySorted(1, 5), 1);
  EXPECT_EQ(sorting.IsArraySorted(0, 5), 0);
  qxSort(2, 5, 6, source.data(), target.data(), 0, 0);
  EXPECT_EQ(target, (std::vector<T>{9, 3, 8, 7, 5, 1}));
  qxSort(-3, source.data(), target.data(), 1, 0);
  EXPECT_EQ(target[0], 9);
}

TYPED_TEST(Sorting, PrivateCopiesBelongToTheObject) {
  using T = TypeParam;
  std::vector<T> array{4, 2, 6}, target(3);
  CQXSorting<T> own(3, array.data(), 0, 1, 0), copy(own), assigned;
  assigned = own;
  own.Sort();
  EXPECT_EQ(array[0], 4);
  EXPECT_EQ(own.GetArray()[0], 2);
  EXPECT_EQ(copy.GetArray()[0], 4);
  EXPECT_EQ(assigned.GetArray()[0], 4);
  own.SetArray(2, own.GetArray() + 1);  // out of its own copy
  EXPECT_EQ(own.GetArray()[1], 6);
  own.SetData(100, 1, 0, 0);  // a copy does not grow, and stays private
  std::int32_t n = 0, inPlace = 0, ascending = 1, absolute = 1;
  own.GetData(n, inPlace, ascending, absolute);
  EXPECT_EQ((std::vector<std::int32_t>{n, inPlace, ascending, absolute}), (std::vector<std::int32_t>{2, 1, 0, 0}));
  own.Sort(target.data());
  EXPECT_EQ(target, (std::vector<T>{6, 4, 0}));

  CQXSorting<T> moved(std::move(copy)), shared(3, array.data(), 7, 1, 0);
  const CQXSorting<T> sharedToo(shared);
  moved.Sort();
  shared.Sort();
  EXPECT_EQ(moved.GetArray()[0], 2);
  EXPECT_EQ(sharedToo.GetArray(), array.data());
  EXPECT_EQ(array, (std::vector<T>{2, 4, 6}));
  for (const std::int32_t size : {0, std::numeric_limits<std::int32_t>::min()}) {
    CQXSorting<T> empty(size, nullptr, 0, 1, 0), none;
    empty.Sort(nullptr, nullptr);
    EXPECT_EQ(empty.IsArraySorted(0, -1), 1);
    none.SetData(5, 1, 1, 0);  // a size, but no array
    none.Sort(target.data());
    EXPECT_EQ(target[0], 6);
  }
}

TYPED_TEST(Sorting, LongArraysOfEveryShapeEnd) {
  using T = TypeParam;
  constexpr std::int32_t n = 50000;
  std::vector<T> array(n), target(n);
  std::vector<std::int32_t> indices(n);
  for (std::size_t shape = 0; shape < 4; ++shape) {
    for (std::int32_t i = 0; i < n; ++i) {
      const std::int32_t values[] = {7, i, n - i, static_cast<std::int32_t>(this->m_engine())};
      array[static_cast<std::size_t>(i)] = static_cast<T>(values[shape]);
    }
    qxSort(n, array.data(), target.data(), indices.data(), 1, 1);
    EXPECT_EQ(qxIsArraySorted(n, target.data(), 0, 1, 1), 1);
    qxSort(n, array.data(), target.data(), 1, 0);
    EXPECT_TRUE(std::is_sorted(target.begin(), target.end()));
  }
}

TYPED_TEST(Sorting, PartitionStepsSplitAtTheMiddleElement) {
  using T = TypeParam;
  for (int round = 0; round < 200; ++round) {
    std::vector<T> array = this->MakeValues(9, false);
    std::vector<typename CQXSorting<T>::qxSortIndexData> records;
    for (const T value : array) records.push_back({value, 0});
    const T pivot = array[4];
    CQXSorting<T> sorting(9, array.data(), 1, 0, 0);
    std::int32_t i = 0, j = 8, recordI = 0, recordJ = 8;
    sorting.DescendingPartition(i, j);
    sorting.DescendingPartition(recordI, recordJ, records.data());
    EXPECT_TRUE(j < i && i == recordI && j == recordJ);
    for (std::int32_t at = 0; at < 9; ++at) {
      const T value = array[static_cast<std::size_t>(at)];
      EXPECT_EQ(value, records[static_cast<std::size_t>(at)].value);
      EXPECT_TRUE((at >= i || value >= pivot) && (at <= j || value <= pivot));
    }
  }
}

TYPED_TEST(Sorting, TolerancesAreExact) {
  using T = TypeParam;
  std::vector<T> values{0, 1, 2, 100, 126, 127, std::numeric_limits<T>::max(), std::numeric_limits<T>::lowest()};
  if (std::is_signed_v<T>) values.insert(values.end(), {T(-1), T(-2), T(-100), T(-127)});
  for (const T a : values) {
    for (const T b : values) {
      for (const T tolerance : values) {
        if (this->isFloat && std::fabs(Sorting<T>::Key(tolerance, true)) > 1000) continue;  // sums would round
        const T pair[] = {a, b};
        for (const bool absolute : {false, true}) {
          const long double keyA = this->Key(a, absolute), keyB = this->Key(b, absolute), bound = tolerance;
          if (this->isFloat && std::fabs(keyA) + std::fabs(keyB) > 1e6L) continue;
          EXPECT_EQ(qxIsArraySorted(2, pair, tolerance, 1, absolute), !(keyB - keyA < -bound));
          EXPECT_EQ(qxIsArraySorted(2, pair, tolerance, 0, absolute), !(keyA - keyB < -bound));
        }
      }
    }
  }
}

TYPED_TEST(Sorting, PairsGoByTheFirstKeyAndInRunsByTheSecond) {
  using T = TypeParam;
  const std::vector<T> source{5, 1, 3, 9, 4, 2, 3, 1, 9, 9, 5, 0};
  std::vector<T> target(12);
  qxSort2DArray(6, source.data(), target.data(), 0, 0, 1, 0);
  EXPECT_EQ(target, (std::vector<T>{3, 1, 3, 9, 4, 2, 5, 0, 5, 1, 9, 9}));
  qxSort2DArray(6, source.data(), target.data(), 0, 1, 0, 0);
  EXPECT_EQ(target, (std::vector<T>{9, 9, 3, 9, 4, 2, 5, 1, 3, 1, 5, 0}));
  // Runs of first keys within 1 of the run's first: 3 3 4 | 5 5 | 9.
  qxSort2DArray(6, source.data(), target.data(), 1, 0, 1, 0);
  EXPECT_EQ(target, (std::vector<T>{3, 1, 4, 2, 3, 9, 5, 0, 5, 1, 9, 9}));
  std::vector<T> lone{1, 2};
  qxSort2DArray(0, lone.data(), lone.data(), 1, 0, 1, 0);
  qxSort2DArray(1, lone.data(), lone.data(), 1, 0, 1, 0);
  EXPECT_EQ(lone, (std::vector<T>{1, 2}));
  if constexpr (std::is_signed_v<T>) {
    std::vector<T> pairs{-5, 3, 2, -7, -2, 1, 4, 0};
    qxSort2DArray(4, pairs.data(), pairs.data(), 0, 0, 0, 1);
    EXPECT_EQ(pairs, (std::vector<T>{-5, 3, 4, 0, 2, -7, -2, 1}));
  }
  if constexpr (TestFixture::isFloat) {
    CQXVector2<T> vectors[] = {{9, 9}, {2, 5}, {1, 5}, {4, 3}, {0, 0}};
    qxSort2DVectors(1, 3, vectors, vectors, 0, 1, 1);
    const T expected[][2] = {{9, 9}, {4, 3}, {1, 5}, {2, 5}, {0, 0}};
    for (int i = 0; i < 5; ++i) EXPECT_TRUE(vectors[i].X() == expected[i][0] && vectors[i].Y() == expected[i][1]) << i;
    qxSort2DVectors<T>(3, 2, nullptr, nullptr, 0, 0, 1);
  }
}

}  // namespace

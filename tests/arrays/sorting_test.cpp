#include <qx/arrays/sorting.h>
#include <qx/vectors/vector2.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>
#include <random>
#include <utility>
#include <vector>

#include "tests/typed_test.h"

namespace {

using SortedTypes = ::testing::Types<std::int8_t, std::uint8_t, std::int16_t, std::uint16_t, std::int32_t,
                                     std::uint32_t, std::int64_t, std::uint64_t, float, double>;

/// A key, which every value and magnitude fits into, with the place that it came from.
using KeyAndPlace = std::pair<long double, std::int32_t>;

template <typename T>
class Sorting : public ::testing::Test {
 protected:
  using Limits = std::numeric_limits<T>;
  static constexpr bool isFloat = std::is_floating_point_v<T>;

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

  static long double Key(T value, bool absolute) {
    const long double key = value;
    return absolute ? std::fabs(key) : key;
  }

  /// One step of quicksort by the book.
  static void PartitionModel(KeyAndPlace* model, std::int32_t& i, std::int32_t& j, bool ascending) {
    const auto isBefore = [=](long double a, long double b) { return ascending ? a < b : a > b; };
    const long double pivot = model[(i + j) / 2].first;
    while (true) {
      while (isBefore(model[i].first, pivot)) ++i;
      while (isBefore(pivot, model[j].first)) --j;
      if (j < i) break;
      std::swap(model[i++], model[j--]);
      if (j < i) break;
    }
  }

  /// Quicksort by the book: both sides by recursion.
  static void SortModel(KeyAndPlace* model, std::int32_t first, std::int32_t last, bool ascending) {
    if (first >= last) return;
    std::int32_t i = first, j = last;
    PartitionModel(model, i, j, ascending);
    SortModel(model, first, j, ascending);
    SortModel(model, i, last, ascending);
  }

  std::mt19937 m_engine{20240607};
};
TYPED_TEST_SUITE(Sorting, SortedTypes);

TYPED_TEST(Sorting, EveryFormMakesTheExchangesOfTheModel) {
  using T = TypeParam;
  for (std::int32_t n = 0; n < 1000; n += n < 70 ? 1 : 29 + n % 3) {  // past two blocks of comparisons
    for (int flags = 0; flags < 8; ++flags) {
      const bool ascending = (flags & 1) != 0, absolute = (flags & 2) != 0, withNotANumbers = (flags & 4) != 0;
      if (withNotANumbers && !this->isFloat) continue;
      const std::vector<T> source = this->MakeValues(n, withNotANumbers);
      std::vector<KeyAndPlace> model;
      for (const T value : source) model.emplace_back(this->Key(value, absolute), model.size());
      this->SortModel(model.data(), 0, n - 1, ascending);
      std::vector<T> sorted;
      std::vector<std::int32_t> order;
      for (const auto& [key, place] : model) {
        order.push_back(place);
        sorted.push_back(source[static_cast<std::size_t>(place)]);
      }

      // Bits are compared: signs of zeros and not-a-numbers count.
      std::vector<T> array = source, target(source.size());
      std::vector<std::int32_t> indices(source.size());
      const auto expectBits = [&](const std::vector<T>& values, const std::vector<T>& expected) {
        EXPECT_TRUE(std::equal(values.begin(), values.end(), expected.begin(),
                               [](const T& a, const T& b) { return std::memcmp(&a, &b, sizeof(T)) == 0; }));
        std::fill(target.begin(), target.end(), T(99));
      };
      CQXSorting<T> sorting(n, array.data(), 1, ascending, absolute);
      sorting.SortReturnIndices(indices.data());
      EXPECT_EQ(indices, order);
      std::fill(indices.begin(), indices.end(), -1);
      sorting.Sort(target.data(), indices.data());
      EXPECT_EQ(indices, order);
      expectBits(target, sorted);
      expectBits(array, source);
      qxSort(n, source.data(), target.data(), ascending, absolute);
      expectBits(target, sorted);
      sorting.Sort();
      expectBits(array, sorted);
      if (withNotANumbers) continue;
      EXPECT_EQ(sorting.IsArraySorted(0, n - 1), 1);
    }
  }
}

TYPED_TEST(Sorting, EveryPartitionIsOneStepOfTheModel) {
  using T = TypeParam;
  using S = CQXSorting<T>;
  for (const std::int32_t n : {2, 3, 9, 64, 65, 66, 127, 128, 129, 400}) {
    std::vector<T> values = this->MakeValues(n, false);
    std::vector<typename S::qxSortIndexData> byValue;
    std::vector<typename S::qxSortAbsIndexData> byMagnitude;
    for (const T value : values) {
      const auto place = static_cast<std::int32_t>(byValue.size());
      using Magnitude = typename S::qxSortAbsIndexData::Magnitude;
      byValue.push_back({value, place});
      byMagnitude.push_back({value, static_cast<Magnitude>(this->Key(value, true)), place});
    }
    for (const bool ascending : {false, true}) {
      for (const bool absolute : {false, true}) {
        std::vector<KeyAndPlace> model;
        for (const T value : values) model.emplace_back(this->Key(value, absolute), model.size());
        std::int32_t i = 1, j = n - 1, iOfModel = 1, jOfModel = n - 1;
        this->PartitionModel(model.data(), iOfModel, jOfModel, ascending);
        auto records = byValue;
        auto magnitudes = byMagnitude;
        std::vector<T> array = values;
        S sorting(n, array.data(), 1, 0, 0);
        if (absolute) {
          ascending ? S::AscendingPartition(i, j, magnitudes.data()) : S::DescendingPartition(i, j, magnitudes.data());
        } else {
          ascending ? S::AscendingPartition(i, j, records.data()) : S::DescendingPartition(i, j, records.data());
          std::int32_t k = 1, l = n - 1;
          ascending ? sorting.AscendingPartition(k, l) : sorting.DescendingPartition(k, l);
          EXPECT_EQ(std::make_pair(k, l), std::make_pair(i, j));
        }
        EXPECT_EQ(std::make_pair(i, j), std::make_pair(iOfModel, jOfModel)) << n;
        for (std::size_t k = 0; k < model.size(); ++k) {
          EXPECT_EQ(absolute ? magnitudes[k].index : records[k].index, model[k].second) << n << ' ' << k;
          EXPECT_TRUE(absolute || array[k] == records[k].value);
        }
      }
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
  qxSort(2, 5, 6, source.data(), target.data(), 0, 0);
  EXPECT_EQ(target, (std::vector<T>{9, 3, 8, 7, 5, 1}));
  qxSort(std::numeric_limits<std::int32_t>::min(), source.data(), target.data(), 1, 0);
  EXPECT_EQ(target[0], 9);
}

TYPED_TEST(Sorting, PrivateCopiesBelongToTheObject) {
  using T = TypeParam;
  std::vector<T> array{4, 2, 6}, target(3);
  CQXSorting<T> own(3, array.data(), 0, 1, 0), copy(own), assigned;
  assigned = own;
  own.Sort();
  for (const T first : {array[0], copy.GetArray()[0], assigned.GetArray()[0]}) EXPECT_EQ(first, 4);
  own.SetArray(2, own.GetArray() + 1);  // out of its own copy
  own.SetData(100, 1, 0, 0);            // a copy does not grow, and stays private
  own.Sort(target.data());
  EXPECT_EQ(target, (std::vector<T>{6, 4, 0}));

  CQXSorting<T> moved(std::move(copy)), shared(3, array.data(), 7, 1, 0);
  const CQXSorting<T> sharedToo(shared);
  moved.Sort();
  EXPECT_EQ(moved.GetArray()[0], 2);
  EXPECT_EQ(array[0], 4);
  shared.Sort();
  EXPECT_EQ(sharedToo.GetArray(), array.data());
  EXPECT_EQ(array, (std::vector<T>{2, 4, 6}));
  CQXSorting<T> empty(std::numeric_limits<std::int32_t>::min(), nullptr, 0, 1, 0), none;
  empty.Sort(nullptr, nullptr);
  EXPECT_EQ(empty.IsArraySorted(0, -1), 1);
  none.SetData(5, 1, 1, 0);  // a size, but no array
  none.Sort(target.data());
  EXPECT_EQ(target[0], 6);
}

TYPED_TEST(Sorting, TolerancesAreExact) {
  using T = TypeParam;
  std::vector<T> values{0, 1, 2, 100, 126, 127};
  if (std::is_signed_v<T>) values.insert(values.end(), {T(-1), T(-2), T(-100), T(-127)});
  if (!this->isFloat) values.insert(values.end(), {std::numeric_limits<T>::max(), std::numeric_limits<T>::lowest()});
  for (const T a : values) {
    for (const T b : values) {
      for (const T tolerance : values) {
        for (const bool absolute : {false, true}) {
          const T pair[] = {a, b};
          const long double step = this->Key(b, absolute) - this->Key(a, absolute), bound = tolerance;
          EXPECT_EQ(qxIsArraySorted(2, pair, tolerance, 1, absolute), !(step < -bound));
          EXPECT_EQ(qxIsArraySorted(2, pair, tolerance, 0, absolute), !(-step < -bound));
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
  qxSort2DArray<T>(0, nullptr, nullptr, 1, 0, 1, 0);
  if constexpr (TestFixture::isFloat) {
    CQXVector2<T> vectors[] = {{9, 9}, {2, 5}, {1, 5}, {4, 3}, {0, 0}};
    qxSort2DVectors(1, 3, vectors, vectors, 0, 1, 1);
    const T expected[][2] = {{9, 9}, {4, 3}, {1, 5}, {2, 5}, {0, 0}};
    for (int i = 0; i < 5; ++i) EXPECT_TRUE(vectors[i].X() == expected[i][0] && vectors[i].Y() == expected[i][1]) << i;
    qxSort2DVectors<T>(3, 2, nullptr, nullptr, 0, 0, 1);
  }
}

}  // namespace

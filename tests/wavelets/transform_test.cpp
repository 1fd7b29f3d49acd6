#include <qx/wavelets/channel.h>
#include <qx/wavelets/lifting.h>

#include <cmath>
#include <utility>
#include <vector>

#include "tests/wavelets/wavelet_test.h"

namespace {

template <typename T>
class Transform : public ::testing::Test {};
TYPED_TEST_SUITE(Transform, FloatTypes);

/// The transform written down slowly, in double, on the interleaved picture: each step gives every sample of one parity
/// the weighted sum of its neighbours at odd distances, mirrored at the first and last sample.
class SlowTransform {
 public:
  template <typename T>
  SlowTransform(const CQXWaveletFilter<T>& filter, std::int32_t code) {
    const auto add = [this](bool toLow, const T* coefficients, std::int32_t size) {
      m_steps.push_back({toLow, std::vector<double>(coefficients, coefficients + size)});
    };
    if (code < 6) {
      add(false, filter.DualCoefficients(), filter.GetDualSize());
      add(true, filter.PrimeCoefficients(), filter.GetPrimeSize());
    } else {
      add(true, filter.PrimeCoefficients(), filter.GetPrimeSize());
      add(false, filter.DualCoefficients(), filter.GetDualSize());
      add(true, filter.Prime2Coefficients(), filter.GetPrimeSize2());
    }
  }

  /// Runs over @p size samples @p stride apart, the first at the absolute coordinate @p offset.
  void Run(double* samples, std::int32_t size, std::int32_t stride, std::int32_t offset, bool alongColumns) const {
    if (size < 2) return;
    for (const auto& [toLow, coefficients] : m_steps) {
      const auto taps = static_cast<std::int32_t>(coefficients.size());
      for (std::int32_t i = 0; i < size; ++i) {
        if (((i + offset) % 2 == 0) != toLow) continue;
        // Along columns the two-coefficient step leaves out the last odd row when the even rows are one more.
        if (alongColumns && taps == 2 && i % 2 != 0 && size % 2 != 0 && i + 2 >= size) continue;
        double sum = 0;
        for (std::int32_t k = 0; k < taps; ++k) {
          std::int32_t j = i + 2 * k - taps + 1;
          while (j < 0 || j >= size) j = j < 0 ? -j : 2 * (size - 1) - j;
          sum += coefficients[static_cast<std::size_t>(k)] * samples[j * stride];
        }
        samples[i * stride] += sum;
      }
    }
  }

 private:
  struct Step {
    bool toLow;
    std::vector<double> coefficients;
  };
  std::vector<Step> m_steps;
};

constexpr std::pair<std::int32_t, std::int32_t> offsets[] = {{0, 0}, {1, 0}, {0, -3}, {-5, 7}};
constexpr qxChannelType allTypes[] = {QX_CHANNEL_ROWS, QX_CHANNEL_COLUMNS, QX_CHANNEL_2D};

/// Sweeps wavelets, types, sizes 1 to 9 squared and offsets of both signs.
template <typename T, typename Check>
void ForEachCase(Check check) {
  for (std::int32_t code = 0; code < waveletsCount; ++code) {
    const CQXWaveletFilter<T> filter(WaveletOf(code));
    for (const qxChannelType type : allTypes) {
      for (const auto& [x, y] : offsets) {
        for (std::int32_t size = 0; size < 81; ++size) {
          check(filter, type, MakeNoisyChannel<T>(size % 9 + 1, size / 9 + 1, x, y));
        }
        // More rows than the transform keeps in work at a time.
        for (const std::int32_t rows : {38, 71}) check(filter, type, MakeNoisyChannel<T>(4, rows, x, y));
      }
    }
  }
}

template <typename T>
bool IsRefused(qxChannelType type, const CQXChannel<T>& channel) {
  return (type != QX_CHANNEL_COLUMNS && channel.GetRowsNb() < 2) ||
         (type != QX_CHANNEL_ROWS && channel.GetColsNb() < 2);
}

TYPED_TEST(Transform, OneLevelIsTheSlowTransformDealtOutByParity) {
  ForEachCase<TypeParam>([](const auto& filter, qxChannelType type, CQXChannel<TypeParam> picture) {
    const std::int32_t columns = picture.GetColsNb(), rows = picture.GetRowsNb();
    const std::int32_t x0 = picture.GetOffsetX(), y0 = picture.GetOffsetY();
    std::vector<double> slow(picture.GetData(), picture.GetData() + columns * rows);
    const SlowTransform transform(filter, filter.GetWavelet());
    const bool byColumns = type != QX_CHANNEL_COLUMNS, byRows = type != QX_CHANNEL_ROWS;
    for (std::int32_t r = 0; byColumns && r < rows; ++r)
      transform.Run(&slow[static_cast<std::size_t>(r * columns)], columns, 1, x0, false);
    for (std::int32_t c = 0; byRows && c < columns; ++c)
      transform.Run(&slow[static_cast<std::size_t>(c)], rows, columns, y0, true);

    const bool refused = IsRefused(type, picture);
    const qxOwner<CQXChannel<TypeParam>> level(picture.FWTStep(&filter, type));
    ASSERT_EQ(level == nullptr, refused);
    if (refused) return;
    std::int32_t seen = 0;
    for (std::int32_t band = 0; band < level->GetSubChannelsNb(); ++band) {
      const CQXChannel<TypeParam>& samples = *(*level)[band];
      const bool highX = type == QX_CHANNEL_2D ? band == 1 || band == 2 : byColumns && band == 1;
      const bool highY = type == QX_CHANNEL_2D ? band == 1 || band == 3 : byRows && band == 1;
      for (std::int32_t r = 0; r < samples.GetRowsNb(); ++r) {
        for (std::int32_t c = 0; c < samples.GetColsNb(); ++c, ++seen) {
          // A band coordinate k stands for the absolute coordinate 2 k, or 2 k + 1 in a high band.
          const std::int32_t x = byColumns ? 2 * (c + samples.GetOffsetX()) + highX : c + samples.GetOffsetX();
          const std::int32_t y = byRows ? 2 * (r + samples.GetOffsetY()) + highY : r + samples.GetOffsetY();
          const double expected = slow[static_cast<std::size_t>((y - y0) * columns + x - x0)];
          ASSERT_NEAR(static_cast<double>(samples(r, c)), expected, 20 * std::numeric_limits<TypeParam>::epsilon())
              << filter.GetWavelet() << " type " << type << " band " << band << " of " << columns << " x " << rows;
        }
      }
    }
    ASSERT_EQ(seen, columns * rows);
  });
}

TYPED_TEST(Transform, OnePassOverMemoryGivesTheBitsOfTheSingleSteps) {
  ForEachCase<TypeParam>([](const auto& filter, qxChannelType type, CQXChannel<TypeParam> picture) {
    if (IsRefused(type, picture)) return;
    CQXChannel<TypeParam> level(picture.GetColsNb(), picture.GetRowsNb(), picture.GetOffsetX(), picture.GetOffsetY());
    level.CreateOneLevelSubChannels(&filter, type, QX_NORMALIZATION_NONE);
    level.Split(picture);
    if (type == QX_CHANNEL_2D) {
      level.LiftDirect(level[0], level[2], 1);
      level.LiftDirect(level[3], level[1], 1);
      level.LiftDirect(level[0], level[3], 0);
      level.LiftDirect(level[2], level[1], 0);
    } else {
      level.LiftDirect(level[0], level[1], type == QX_CHANNEL_ROWS);
    }
    CQXChannel<TypeParam> copy(picture);
    const qxOwner<CQXChannel<TypeParam>> fused(copy.FWTStep(&filter, type));
    ASSERT_EQ(qxAreChannelsAlmostEqual(level, *fused, 0), 1) << filter.GetWavelet() << " type " << type;

    const auto back = fused->IFWTStep();
    if (type == QX_CHANNEL_2D) {
      level.LiftInverse(level[0], level[3], 0);
      level.LiftInverse(level[2], level[1], 0);
      level.LiftInverse(level[0], level[2], 1);
      level.LiftInverse(level[3], level[1], 1);
    } else {
      level.LiftInverse(level[0], level[1], type == QX_CHANNEL_ROWS);
    }
    CQXChannel<TypeParam> united(picture);
    level.Unite(&united);
    ASSERT_EQ(united.RawChannelIsAlmostEqual(*back, 0), 1) << filter.GetWavelet() << " type " << type;
  });
}

TYPED_TEST(Transform, InverseGivesTheSamplesBack) {
  for (std::int32_t normalization = 0; normalization <= 2; ++normalization) {
    ForEachCase<TypeParam>([normalization](const auto& filter, qxChannelType type, CQXChannel<TypeParam> picture) {
      picture.SetTypeOfNormalization(static_cast<qxWaveletNormalization>(normalization));
      CQXChannel<TypeParam> consumed(picture);
      const auto tree = consumed.FWT(&filter, type, 3);
      const bool refused = IsRefused(type, picture);
      ASSERT_EQ(tree->IsDecomposed(), refused ? 0 : 1);
      ASSERT_EQ(consumed.GetData() == nullptr, !refused);
      // 3_3 is no low-pass: its bands grow from level to level, and the error with them.
      const TypeParam bound =
          (filter.GetWavelet() == QX_WAVELET_3_3 ? 5000 : 50) * std::numeric_limits<TypeParam>::epsilon();
      const auto before = tree->CloneDecomposedChannel();
      ASSERT_EQ(picture.RawChannelIsAlmostEqual(*tree->IFWT(), bound), 1) << filter.GetWavelet() << " type " << type;
      ASSERT_EQ(qxAreChannelsAlmostEqual(*before, *tree, 0), 1);
      CQXChannel<TypeParam> inPlace(*tree);
      inPlace.IFWTInPlace();
      const auto raw = tree->DestroyingIFWT();
      ASSERT_EQ(inPlace.RawChannelIsAlmostEqual(*raw, 0), 1);
      ASSERT_EQ(tree->GetSubChannelsNb(), 0);
    });
  }
}

TYPED_TEST(Transform, ARectangleOfTheInverseIsTheCropOfTheWhole) {
  for (std::int32_t code = 0; code < waveletsCount; ++code) {
    const CQXWaveletFilter<TypeParam> filter(WaveletOf(code));
    for (const qxChannelType type : allTypes) {
      CQXChannel<TypeParam> picture = MakeNoisyChannel<TypeParam>(61, 83, code % 2, -3);
      picture.SetTypeOfNormalization(QX_NORMALIZATION_2);
      const auto tree = picture.FWT(&filter, type, 3);
      const auto whole = tree->IFWT();
      constexpr std::int32_t rectangles[][4] = {
          {0, 0, 61, 83}, {7, 11, 9, 5}, {60, 82, 1, 1}, {20, 0, 41, 40}, {33, 50, 2, 33}};
      for (const auto& [x, y, width, height] : rectangles) {
        const auto part = tree->IFWT(x, y, width, height);
        ASSERT_EQ(part->RawChannelIsAlmostEqual(*whole->Cut(x, y, width, height), 0), 1) << code << " type " << type;
      }
      EXPECT_EQ(tree->IFWT(60, 0, 2, 1), nullptr);
      EXPECT_EQ(tree->IFWT(0, 0, 0, 1), nullptr);
    }
  }
}

TYPED_TEST(Transform, NormalizationScalesEachLevelByItsPower) {
  const CQXWaveletFilter<TypeParam> filter(QX_WAVELET_4_2);
  for (const qxChannelType type : allTypes) {
    CQXChannel<TypeParam> picture = MakeNoisyChannel<TypeParam>(32, 32), scaled(picture);
    scaled.SetTypeOfNormalization(QX_NORMALIZATION_1);
    auto plain = picture.FWT(&filter, type, 3);
    const auto tree = scaled.FWT(&filter, type, 3);
    const double low = 2, high = -0.25, step = type == QX_CHANNEL_2D ? low * low : low;
    for (std::int32_t level = 1; level <= 3; ++level) {
      for (std::int32_t band = level < 3 ? 1 : 0; band < tree->GetSubChannelsNb(); ++band) {
        double factor = std::pow(step, level - 1);
        if (type == QX_CHANNEL_2D) {
          factor *= band == 0 ? low * low : band == 1 ? high * high : low * high;
        } else {
          factor *= band == 0 ? low : high;
        }
        plain->SubChannel(level, band)->EnhanceRawData(static_cast<TypeParam>(factor));
      }
    }
    EXPECT_EQ(qxAreChannelsAlmostEqual(*plain, *tree, 0), 1) << type;
  }
}

TYPED_TEST(Transform, RefusalsLeaveTheChannelAsItWas) {
  const CQXWaveletFilter<TypeParam> filter(QX_WAVELET_2_2), other(QX_WAVELET_1_1);
  CQXChannel<TypeParam> picture = MakeNoisyChannel<TypeParam>(8, 8);
  const CQXChannel<TypeParam> before(picture);
  EXPECT_EQ(picture.FWTStep(nullptr, QX_CHANNEL_2D), nullptr);
  EXPECT_EQ(picture.FWT(nullptr, QX_CHANNEL_2D, 1), nullptr);
  EXPECT_EQ(picture.IFWTStep(), nullptr);
  EXPECT_EQ(qxAreChannelsAlmostEqual(picture, before, 0), 1);

  picture.FWTInPlace(&filter, QX_CHANNEL_2D, 1);
  EXPECT_EQ(picture.FWTStep(&other, QX_CHANNEL_2D), nullptr);
  EXPECT_EQ(picture.FWTStep(&filter, QX_CHANNEL_ROWS), nullptr);
  EXPECT_EQ(picture.FWTStep(&filter, QX_CHANNEL_2D), &picture);
  EXPECT_EQ(picture.GetDepth(), 2);
  EXPECT_EQ(picture.FWT(&filter, QX_CHANNEL_2D, 50)->GetDepth(), 3);  // 8, 4, 2, 1: the rest is left out

  picture.SetFilter(&filter);
  picture[0]->SetSubChannel(nullptr, 2);
  EXPECT_EQ(picture.IFWT(), nullptr);
  EXPECT_EQ(picture.DestroyingIFWT(), nullptr);
  picture.IFWTInPlace();
  EXPECT_EQ(picture.IsDecomposed(), 1);

  // After SetWavelet() the arrays are too short for the schedule of the new code: the step is left out both ways.
  CQXWaveletFilter<TypeParam> shortArrays(QX_WAVELET_1_1);
  shortArrays.SetWavelet(QX_WAVELET_4_6);
  CQXChannel<TypeParam> odd(before);
  const auto tree = odd.FWT(&shortArrays, QX_CHANNEL_2D, 2);
  EXPECT_EQ(tree->IFWT()->RawChannelIsAlmostEqual(before, 100 * std::numeric_limits<TypeParam>::epsilon()), 1);
}

TYPED_TEST(Transform, BandsThatDoNotFitTogetherAreLeftInTheirBlocks) {
  const CQXWaveletFilter<TypeParam> filter(QX_WAVELET_2_6);
  CQXChannel<TypeParam> wide = MakeNoisyChannel<TypeParam>(9, 8), narrow = MakeNoisyChannel<TypeParam>(2, 8);
  wide.SetFilter(&filter);
  for (const std::int32_t direction : {0, 1}) {
    wide.LiftDirect(&wide, &narrow, direction);
    wide.LiftInverse(&narrow, &wide, direction);
    wide.LiftDirect(&wide, nullptr, direction);
  }
  EXPECT_EQ(wide(7, 8), MakeNoisyChannel<TypeParam>(9, 8)(7, 8));
  for (const bool decomposed : {false, true}) {
    CQXChannel<TypeParam> picture = MakeNoisyChannel<TypeParam>(6, 6), large = MakeNoisyChannel<TypeParam>(50, 50);
    const auto tree = picture.FWT(&filter, QX_CHANNEL_2D, 2);
    tree->SetSubChannel(large.FWT(&filter, QX_CHANNEL_2D, decomposed ? 1 : 0), 0);
    const auto packed = tree->PackDecomposedChannel();
    EXPECT_EQ((*packed)(0, 0), 0);
    EXPECT_EQ((*packed)(3, 3), (*(*tree)[QX_SUBCHANNEL_HH])(0, 0));
  }
}

TYPED_TEST(Transform, ALowBandMayGoOnWithAnotherTypeAndWavelet) {
  const CQXWaveletFilter<TypeParam> filter(QX_WAVELET_2_6), other(QX_WAVELET_4_2);
  for (const qxChannelType type : {QX_CHANNEL_ROWS, QX_CHANNEL_COLUMNS, QX_CHANNEL_2D}) {
    CQXChannel<TypeParam> picture = MakeNoisyChannel<TypeParam>(41, 37, 1, 0);
    picture.SetTypeOfNormalization(QX_NORMALIZATION_2);
    const CQXChannel<TypeParam> before(picture);
    const auto tree = picture.FWT(&filter, QX_CHANNEL_2D, 1);
    (*tree)[0]->FWTInPlace(&other, type, 2);
    EXPECT_EQ(tree->IFWT()->RawChannelIsAlmostEqual(before, 500 * std::numeric_limits<TypeParam>::epsilon()), 1);
    EXPECT_EQ(tree->IFWT(20, 19, 9, 8)->RawChannelIsAlmostEqual(*tree->IFWT()->Cut(20, 19, 9, 8), 0), 1) << type;
  }
}

TYPED_TEST(Transform, LiftingStepsAreTheirSumsAndTheInverseTakesThemBack) {
  using Step = void (CQXLifting<TypeParam>::*)(std::int32_t, const TypeParam*, qxChannelType);
  using View = CQXLifting<TypeParam>;
  constexpr struct {
    std::int32_t taps;
    Step lift, inverse;
  } steps[] = {{2, &View::LiftUsing2Coef, &View::InvLiftUsing2Coef},
               {4, &View::LiftUsing4Coef, &View::InvLiftUsing4Coef},
               {6, &View::LiftUsing6Coef, &View::InvLiftUsing6Coef}};
  const TypeParam c[] = {TypeParam(0.5), -2, 3, TypeParam(0.25), -1, 4};
  for (const auto& [taps, lift, inverse] : steps) {
    for (std::int32_t variant = 0; variant < 16; ++variant) {
      const bool toLow = (variant & 1) != 0, highLeads = (variant & 2) != 0, byRows = (variant & 4) != 0;
      const std::int32_t even = 7, odd = 7 - (variant >> 3);
      const std::int32_t low = highLeads ? odd : even, high = highLeads ? even : odd;
      auto a = byRows ? MakeNoisyChannel<TypeParam>(low, 3) : MakeNoisyChannel<TypeParam>(3, low);
      auto b = byRows ? MakeNoisyChannel<TypeParam>(high, 3, 0, 0, 9) : MakeNoisyChannel<TypeParam>(3, high, 0, 0, 9);
      if (highLeads) byRows ? a.SetOffsetX(1) : a.SetOffsetY(1);
      const CQXChannel<TypeParam> a0(a), b0(b);
      CQXLifting<TypeParam> view(&a, &b, byRows);
      EXPECT_EQ(view.GetEven(), highLeads ? b.GetData() : a.GetData());
      EXPECT_EQ(view.GetOdd(), highLeads ? a.GetData() : b.GetData());
      (view.*lift)(toLow, c, QX_CHANNEL_2D);
      (view.*lift)(toLow, nullptr, byRows ? QX_CHANNEL_ROWS : QX_CHANNEL_COLUMNS);
      EXPECT_EQ(a.RawChannelIsAlmostEqual(a0, 0) + b.RawChannelIsAlmostEqual(b0, 0), 2);
      (view.*lift)(toLow, c, byRows ? QX_CHANNEL_ROWS : QX_CHANNEL_COLUMNS);

      const CQXChannel<TypeParam>&source = toLow ? b0 : a0, &before = toLow ? a0 : b0, &after = toLow ? a : b;
      const bool toOdd = toLow == highLeads;
      const std::int32_t sources = toOdd ? even : odd, targets = toOdd ? odd : even;
      for (std::int32_t k = 0; k < targets; ++k) {
        double sum = 0;
        for (std::int32_t i = 0; i < taps; ++i) {
          const std::int32_t j =
              qxSymExtension(k + (toOdd ? 1 : 0) - taps / 2 + i, sources, !toOdd, (even == odd) == toOdd);
          sum += static_cast<double>(c[i] * (byRows ? source(1, j) : source(j, 1)));
        }
        // The two-coefficient step along columns leaves the last odd row out when the even rows are one more.
        if (taps == 2 && !byRows && toOdd && even != odd && k == targets - 1) sum = 0;
        const TypeParam difference = byRows ? after(1, k) - before(1, k) : after(k, 1) - before(k, 1);
        EXPECT_NEAR(static_cast<double>(difference), sum, 64 * std::numeric_limits<TypeParam>::epsilon()) << taps;
      }
      (view.*inverse)(toLow, c, byRows ? QX_CHANNEL_ROWS : QX_CHANNEL_COLUMNS);
      const TypeParam bound = 16 * std::numeric_limits<TypeParam>::epsilon();
      EXPECT_EQ(a.RawChannelIsAlmostEqual(a0, bound) + b.RawChannelIsAlmostEqual(b0, bound), 2);
    }
  }
}

TEST(SymExtension, FoldsOntoTheMirroredBand) {
  for (std::int32_t size = 1; size <= 6; ++size) {
    for (std::int32_t flags = 0; flags < 4; ++flags) {
      const std::int32_t left = flags & 1, right = flags >> 1;
      for (std::int32_t index = -20; index <= 20; ++index) {
        std::int32_t expected = index;
        if (size == 1 && flags == 0) expected = 0;
        while (expected < 0 || expected >= size) {
          expected = expected < 0 ? -expected - left : 2 * (size - 1) - expected + right;
        }
        EXPECT_EQ(qxSymExtension(index, size, left, right), expected) << index << " of " << size << " flags " << flags;
      }
    }
  }
  EXPECT_EQ(qxSymExtension(3, 0, 0, 0), 0);
  EXPECT_EQ(qxSymExtension(std::numeric_limits<std::int32_t>::min(), 4, 0, 0), 2);
}

}  // namespace

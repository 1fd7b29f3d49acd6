#include <qx/wavelets/channel.h>

#include <string>
#include <utility>

#include "tests/wavelets/wavelet_test.h"

namespace {

constexpr qxChannelType allTypes[] = {QX_CHANNEL_ROWS, QX_CHANNEL_COLUMNS, QX_CHANNEL_2D};

template <typename T>
class Channel : public ::testing::Test {
 protected:
  const CQXWaveletFilter<T> m_filter{QX_WAVELET_2_4};

  qxOwner<CQXChannel<T>> MakeTree(qxChannelType type, std::int32_t depth, std::int32_t columns = 21,
                                  std::int32_t rows = 17, std::int32_t offset = 0) const {
    CQXChannel<T> picture = MakeNoisyChannel<T>(columns, rows, offset, -offset);
    picture.SetTypeOfNormalization(QX_NORMALIZATION_1);
    return picture.FWT(&m_filter, type, depth);
  }

  static std::string Printed(const CQXChannel<T>& channel) {
    ::testing::internal::CaptureStdout();
    channel.Print();
    return ::testing::internal::GetCapturedStdout();
  }
};
TYPED_TEST_SUITE(Channel, FloatTypes);

TYPED_TEST(Channel, CopiesAreDeepAndOwnershipMovesOnce) {
  qxOwner<CQXChannel<TypeParam>> tree = this->MakeTree(QX_CHANNEL_2D, 2);
  CQXChannel<TypeParam> copy(*tree), assigned;
  assigned = copy;
  (*assigned.SubChannel(2, 1))(0, 0) += 1;
  EXPECT_EQ(qxAreChannelsAlmostEqual(*tree, copy, 0), 1);
  EXPECT_EQ(qxAreChannelsAlmostEqual(assigned, copy, 0), 0);
  EXPECT_EQ(assigned.RawChannelIsAlmostEqual(copy, 0), 1);  // the top alone has no samples
  assigned.CopyDecomposedChannel(*assigned.SubChannel(0));  // the source goes with the tree that it stands in
  EXPECT_EQ(assigned.GetDepth(), 1);
  EXPECT_EQ(assigned.GetColsNb(), 11);
  assigned.CopyRawChannel(*assigned.SubChannel(0));
  EXPECT_EQ(assigned.IsDecomposed(), 0);
  EXPECT_EQ(assigned.GetColsNb(), 6);

  const CQXChannel<TypeParam> moved(std::move(copy));
  EXPECT_EQ(qxAreChannelsAlmostEqual(moved, *tree, 0), 1);
  EXPECT_EQ(copy.GetSubChannelsNb(), 0);

  tree->SetSubChannel(qxMakeOwner<CQXChannel<TypeParam>>(), 4);
  tree->SetSubChannel(qxMakeOwner<CQXChannel<TypeParam>>(), -1);
  EXPECT_EQ((*tree)[4], nullptr);
  EXPECT_EQ((*tree)[-1], nullptr);
  EXPECT_EQ(tree->SubChannel(9, 1), nullptr);
}

TYPED_TEST(Channel, SwapsOfAChannelWithItsOwnSubChannelCopy) {
  const auto tree = this->MakeTree(QX_CHANNEL_2D, 2), before = tree->CloneDecomposedChannel();
  std::swap(*tree, *tree->SubChannel(0));
  EXPECT_EQ(qxAreChannelsAlmostEqual(*tree, *(*before)[0], 0), 1);
  CQXChannel<TypeParam> a(*before), b;
  std::swap(a, b);
  EXPECT_EQ(qxAreChannelsAlmostEqual(b, *before, 0), 1);
  EXPECT_EQ(a.GetSubChannelsNb(), 0);
  EXPECT_EQ(b.SubChannel(2, 1)->Parent(), b[0]);
  EXPECT_EQ(b.Parent(), nullptr);
}

TYPED_TEST(Channel, OneLevelIsClonedWithWhatStandsBelow) {
  const auto tree = this->MakeTree(QX_CHANNEL_2D, 2);
  CQXChannel<TypeParam> target = MakeNoisyChannel<TypeParam>(3, 3);
  tree->CloneOneLevelSubChannels(&target);
  EXPECT_EQ(target.IFWT()->RawChannelIsAlmostEqual(*tree->IFWT(), 0), 1);
  const CQXChannel<TypeParam> held(target);
  MakeNoisyChannel<TypeParam>(3, 3).CloneOneLevelSubChannels(&target);
  EXPECT_EQ(qxAreChannelsAlmostEqual(held, target, 0), 1);
}

TYPED_TEST(Channel, AMillionLevelsNeedNoStack) {
  // One column of two rows goes on for ever along its rows: the guard looks at the other direction.
  CQXChannel<TypeParam> channel = MakeNoisyChannel<TypeParam>(1, 2);
  channel.FWTInPlace(&this->m_filter, QX_CHANNEL_ROWS, 1000000);
  EXPECT_EQ(channel.GetDepth(), 1000000);
  const qxOwner<CQXChannel<TypeParam>> clone = channel.CloneDecomposedChannel();
  EXPECT_EQ(qxAreChannelsAlmostEqual(channel, *clone, 0), 1);
  clone->Enhance(TypeParam(0));
  EXPECT_EQ(
      clone->CleanDirectly(1, 1, 0)->DestroyingIFWT()->RawChannelIsAlmostEqual(MakeNoisyChannel<TypeParam>(1, 2), 0),
      1);
  clone->Clean();
}

TYPED_TEST(Channel, PackedFormHoldsEveryBandAndUnpacks) {
  for (const qxChannelType type : allTypes) {
    for (const std::int32_t offset : {0, 3}) {
      const auto tree = this->MakeTree(type, 2, 21, 17, offset);
      const auto packed = tree->PackDecomposedChannel();
      EXPECT_EQ(packed->GetOffsetX(), offset);
      const std::int32_t lowColumns = type == QX_CHANNEL_COLUMNS ? 0 : tree->GetLowColsNb();
      const std::int32_t lowRows = type == QX_CHANNEL_ROWS ? 0 : tree->GetLowRowsNb();
      EXPECT_EQ((*packed)(lowRows, lowColumns), (*(*tree)[1])(0, 0));
      EXPECT_EQ((*packed)(0, 0), (*tree->SubChannel(2, 0))(0, 0));
      const auto unpacked = packed->UnpackDecomposedChannel(&this->m_filter, type, 2, QX_NORMALIZATION_1);
      EXPECT_EQ(qxAreChannelsAlmostEqual(*unpacked, *tree, 0), 1) << type;
      EXPECT_EQ(unpacked->IFWT()->RawChannelIsAlmostEqual(*tree->IFWT(), 0), 1);
      EXPECT_EQ(packed->UnpackDecomposedChannel(&this->m_filter, QX_CHANNEL_2D, 9, QX_NORMALIZATION_1), nullptr);
    }
  }
}

TYPED_TEST(Channel, CutAndPasteKeepAbsolutePlaces) {
  for (const qxChannelType type : allTypes) {
    for (const std::int32_t offset : {0, 3}) {
      const auto tree = this->MakeTree(type, 2, 21, 17, offset);
      const auto piece = tree->Cut(5, 2, 10, 13);
      EXPECT_EQ(piece->GetOffsetX(), offset + 5);
      EXPECT_EQ(piece->GetDepth(), 2);
      // A transform of the same rectangle has its bands in the same places.
      CQXChannel<TypeParam> shape = MakeNoisyChannel<TypeParam>(10, 13, offset + 5, 2 - offset);
      const auto other = shape.FWT(&this->m_filter, type, 2);
      for (std::int32_t level = 1; level <= 2; ++level) {
        for (std::int32_t band = level == 1 ? 1 : 0; band < tree->GetSubChannelsNb(); ++band) {
          const CQXChannel<TypeParam>&from = *tree->SubChannel(level, band), &to = *piece->SubChannel(level, band);
          EXPECT_EQ(to.GetColsNb(), other->SubChannel(level, band)->GetColsNb());
          EXPECT_EQ(to.GetRowsNb(), other->SubChannel(level, band)->GetRowsNb());
          for (std::int32_t r = 0; r < to.GetRowsNb(); ++r) {
            for (std::int32_t c = 0; c < to.GetColsNb(); ++c) {
              EXPECT_EQ(to(r, c),
                        from(r + to.GetOffsetY() - from.GetOffsetY(), c + to.GetOffsetX() - from.GetOffsetX()));
            }
          }
        }
      }
      // Cleaned, pasted back and cut again it is the piece; the other way is one call.
      CQXChannel<TypeParam> blank(*tree), direct(*tree);
      blank.Clean();
      direct.Clean();
      blank.Paste(*piece);
      EXPECT_EQ(qxAreChannelsAlmostEqual(*blank.Cut(5, 2, 10, 13), *piece, 0), 1);
      type == QX_CHANNEL_ROWS      ? direct.CutAndPasteRows(*tree, 5, 2, 10, 13)
      : type == QX_CHANNEL_COLUMNS ? direct.CutAndPasteColumns(*tree, 5, 2, 10, 13)
                                   : direct.CutAndPaste2D(*tree, 5, 2, 10, 13);
      EXPECT_EQ(qxAreChannelsAlmostEqual(direct, blank, 0), 1);
      EXPECT_EQ(tree->Cut(5, 2, 17, 1), nullptr);
      EXPECT_EQ(tree->CutFromRawChannel(0, 0, 1, 1), nullptr);
      EXPECT_EQ(tree->CutRectForRows(0, 0, 4, 4) != nullptr, type == QX_CHANNEL_ROWS);
    }
  }
  // Raw channels: clipped at the border; trees and samples do not mix.
  CQXChannel<TypeParam> picture = MakeNoisyChannel<TypeParam>(6, 5), target(6, 5, 3, 2);
  target.Initialize();
  target.Paste(picture);
  EXPECT_EQ(target(0, 0), picture(2, 3));
  EXPECT_EQ(target(2, 2), picture(4, 5));
  EXPECT_EQ(target(3, 0), 0);
  EXPECT_EQ(picture.Cut(0, 0, 7, 1), nullptr);
}

TYPED_TEST(Channel, PrintsEveryBandUnderItsHeader) {
  CQXChannel<TypeParam> channel;
  EXPECT_EQ(this->Printed(channel), "Raw channel is empty.\n");
  const TypeParam samples[] = {1, 2, 3, 4};
  EXPECT_EQ(this->Printed(CQXChannel<TypeParam>(2, 2, samples, 0, 0)), "Raw channel: \n( 1 2 )\n( 3 4 )\n\n");

  CQXChannel<TypeParam> tree(2, 2, 0, 0);
  tree.CreateOneLevelSubChannels(&this->m_filter, QX_CHANNEL_2D, QX_NORMALIZATION_NONE);
  tree[QX_SUBCHANNEL_HL]->Destroy();
  EXPECT_EQ(this->Printed(tree),
            "Decomposedd channel with a depth of decomposition 1\n"
            "High frequency channels for level 1\nLH: \n( 0 )\n\nHL channel for level 1 is empty.\nHH: \n( 0 )\n\n"
            "Low  frequency channel LL for level 1\n( 0 )\n\n");
  CQXChannel<TypeParam> rows(1, 2, 0, 0);
  rows.CreateOneLevelSubChannels(&this->m_filter, QX_CHANNEL_ROWS, QX_NORMALIZATION_NONE);
  EXPECT_EQ(this->Printed(rows),
            "Decomposedd channel with a depth of decomposition 1\n"
            "High frequency channel for level 1 is empty.\nLow  frequency channel for level 1\n( 0 )\n( 0 )\n\n");
}

}  // namespace

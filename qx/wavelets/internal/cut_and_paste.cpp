#include <qx/foundation/internal/instantiate.h>
#include <qx/wavelets/internal/channel_tree.h>
#include <qx/wavelets/internal/cut_and_paste.h>

#include <algorithm>

namespace qxInternal {

namespace {

/// Where each band of a level of this extent stands in the packed form of the level.
Rect PackedPlace(qxChannelType type, std::int32_t band, const Rect& extent) {
  const Rect low = BandRect(type, QX_SUBCHANNEL_LL, extent);
  const Rect own = BandRect(type, band, extent);
  const std::int64_t left = IsHighInColumns(type, band) ? low.right - low.left : 0;
  const std::int64_t top = IsHighInRows(type, band) ? low.bottom - low.top : 0;
  return {left, top, left + own.right - own.left, top + own.bottom - own.top};
}

/// Moves a band into the packed block or out of it. Bands that are missing or of another size are passed over.
template <typename Channel, typename Move>
void MovePackedBand(const Rect& place, Channel* band, Move move) {
  if (band == nullptr || band->GetData() == nullptr || place.IsEmpty()) return;
  if (band->GetColsNb() != place.Columns() || band->GetRowsNb() != place.Rows()) return;
  move(*band, static_cast<std::int32_t>(place.left), static_cast<std::int32_t>(place.top));
}

/// Moves all bands of a tree, each with its place in the packed block.
template <typename Channel, typename Move>
void MovePackedBands(Channel& tree, Move move) {
  Channel* level = &tree;
  Rect extent = Extent(tree);
  for (; level != nullptr && level->IsDecomposed() != 0; level = level->SubChannel(0)) {
    const qxChannelType type = level->GetType();
    if (BandsCount(type) != level->GetSubChannelsNb()) return;
    for (std::int32_t band = 1; band < level->GetSubChannelsNb(); ++band) {
      MovePackedBand(PackedPlace(type, band, extent), level->SubChannel(band), move);
    }
    extent = BandRect(type, 0, extent);
  }
  MovePackedBand(Rect{0, 0, extent.right - extent.left, extent.bottom - extent.top}, level, move);
}

}  // namespace

template <qxReal T>
qxOwner<CQXChannel<T>> CutSamples(const CQXChannel<T>& source, const Rect& rect) {
  qxOwner<CQXChannel<T>> piece = MakeRaw<T>(rect);
  if (piece != nullptr) PasteRect(source, *piece, rect);
  return piece;
}

template <qxReal T>
qxOwner<CQXChannel<T>> CutRaw(const CQXChannel<T>& source, const Rect& rect) {
  if (source.IsDecomposed() != 0 || rect.IsEmpty() || !Extent(source).Contains(rect)) return nullptr;
  qxOwner<CQXChannel<T>> piece = source.GetData() != nullptr ? CutSamples(source, rect) : MakeShell<T>(rect);
  if (piece != nullptr) {
    piece->SetDecompositionTypes(source.GetFilter(), source.GetType(), source.GetTypeOfNormalization());
  }
  return piece;
}

template <qxReal T>
qxOwner<CQXChannel<T>> CutTree(const CQXChannel<T>& source, qxChannelType type, const Rect& rect) {
  if (source.IsDecomposed() == 0 || source.GetType() != type || rect.IsEmpty() || !Extent(source).Contains(rect)) {
    return nullptr;
  }
  const std::int32_t depth = ForEachLevel(source, [](const CQXChannel<T>&, std::int32_t) {});
  // A rectangle may have fewer rows than a transform asks for, so the levels are made one by one.
  qxOwner<CQXChannel<T>> piece = MakeShell<T>(rect);
  CQXChannel<T>* level = piece.get();
  for (std::int32_t i = 1; i <= depth && level != nullptr; ++i, level = level->SubChannel(0)) {
    if (!MakeBands(*level, source.GetFilter(), type, source.GetTypeOfNormalization(), i == depth)) return nullptr;
  }
  if (piece == nullptr) return nullptr;
  piece->Clean();
  PasteTree(source, *piece, type, rect);
  return piece;
}

template <qxReal T>
void PasteRect(const CQXChannel<T>& source, CQXChannel<T>& target, const Rect& rect) {
  const Rect from = Extent(source);
  const Rect to = Extent(target);
  const Rect common = rect.ClippedTo(from).ClippedTo(to);
  if (common.IsEmpty() || source.GetData() == nullptr || target.GetData() == nullptr) return;
  qxInsertPartRectData(source.GetData(), target.GetData(), source.GetColsNb(),
                       static_cast<std::int32_t>(common.left - from.left),
                       static_cast<std::int32_t>(common.top - from.top), target.GetColsNb(),
                       static_cast<std::int32_t>(common.left - to.left), static_cast<std::int32_t>(common.top - to.top),
                       common.Columns(), common.Rows());
}

template <qxReal T>
void PasteTree(const CQXChannel<T>& source, CQXChannel<T>& target, qxChannelType type, Rect rect) {
  if (target.IsDecomposed() == 0 || source.IsDecomposed() == 0 || target.GetType() != type ||
      source.GetType() != type || target.GetFilterType() != source.GetFilterType() ||
      target.GetDepth() != source.GetDepth()) {
    return;
  }
  const CQXChannel<T>* from = &source;
  CQXChannel<T>* to = &target;
  while (from->IsDecomposed() != 0 && to->IsDecomposed() != 0) {
    for (std::int32_t band = 1; band < BandsCount(type); ++band) {
      if (from->SubChannel(band) == nullptr || to->SubChannel(band) == nullptr) continue;
      PasteRect(*from->SubChannel(band), *to->SubChannel(band), BandRect(type, band, rect));
    }
    rect = BandRect(type, 0, rect);
    from = from->SubChannel(0);
    to = to->SubChannel(0);
    if (from == nullptr || to == nullptr) return;
  }
  PasteRect(*from, *to, rect);
}

template <qxReal T>
qxOwner<CQXChannel<T>> Packed(const CQXChannel<T>& tree) {
  qxOwner<CQXChannel<T>> packed = CloneRaw(tree);
  if (packed == nullptr || tree.IsDecomposed() == 0) return packed;
  packed->Initialize();
  if (packed->GetData() == nullptr) return nullptr;
  MovePackedBands(tree, [&packed](const CQXChannel<T>& band, std::int32_t x, std::int32_t y) {
    qxInsertRectData(band.GetData(), packed->GetData(), packed->GetColsNb(), x, y, band.GetColsNb(), band.GetRowsNb());
  });
  return packed;
}

template <qxReal T>
qxOwner<CQXChannel<T>> Unpacked(const CQXChannel<T>& packed, const CQXWaveletFilter<T>* filter, qxChannelType type,
                                std::int32_t depth, qxWaveletNormalization normalization) {
  if (filter == nullptr || packed.GetData() == nullptr || packed.IsDecomposed() != 0) return nullptr;
  qxOwner<CQXChannel<T>> tree = MakeTree<T>(Extent(packed), filter, type, depth, normalization);
  if (tree == nullptr) return nullptr;
  MovePackedBands(*tree, [&packed](CQXChannel<T>& band, std::int32_t x, std::int32_t y) {
    qxExtractRectData(packed.GetData(), packed.GetColsNb(), x, y, band.GetColsNb(), band.GetRowsNb(), band.GetData());
  });
  return tree;
}

#define QX_INSTANTIATE(T)                                                                                   \
  template qxOwner<CQXChannel<T>> CutSamples(const CQXChannel<T>&, const Rect&);                            \
  template qxOwner<CQXChannel<T>> CutRaw(const CQXChannel<T>&, const Rect&);                                \
  template qxOwner<CQXChannel<T>> CutTree(const CQXChannel<T>&, qxChannelType, const Rect&);                \
  template void PasteRect(const CQXChannel<T>&, CQXChannel<T>&, const Rect&);                               \
  template void PasteTree(const CQXChannel<T>&, CQXChannel<T>&, qxChannelType, Rect);                       \
  template qxOwner<CQXChannel<T>> Packed(const CQXChannel<T>&);                                             \
  template qxOwner<CQXChannel<T>> Unpacked(const CQXChannel<T>&, const CQXWaveletFilter<T>*, qxChannelType, \
                                           std::int32_t, qxWaveletNormalization);
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE

}  // namespace qxInternal

#include <qx/wavelets/channel.h>
#include <qx/wavelets/internal/band_geometry.h>

#include <utility>

using qxInternal::AllowsLevel;
using qxInternal::BandRect;
using qxInternal::BandsCount;
using qxInternal::Extent;
using qxInternal::MakeShell;
using qxInternal::Rect;
using qxInternal::RectAt;

namespace {

/// Copies what a rectangle in absolute coordinates holds of the source's samples to the same place in the target.
template <qxReal T>
void CopyRect(const CQXChannel<T>& source, CQXChannel<T>& target, const Rect& rect) {
  const Rect from = Extent(source);
  const Rect to = Extent(target);
  const Rect common = rect.ClippedTo(from).ClippedTo(to);
  if (common.IsEmpty() || source.GetData() == nullptr || target.GetData() == nullptr) return;
  qxInsertPartRectData(
      source.GetData(), target.GetData(), source.GetColsNb(), static_cast<std::int32_t>(common.left - from.left),
      static_cast<std::int32_t>(common.top - from.top), target.GetColsNb(),
      static_cast<std::int32_t>(common.left - to.left), static_cast<std::int32_t>(common.top - to.top),
      static_cast<std::int32_t>(common.right - common.left), static_cast<std::int32_t>(common.bottom - common.top));
}

/// Where each band of a level of this extent stands in the packed form of the level.
Rect PackedPlace(qxChannelType type, std::int32_t band, const Rect& extent) {
  const Rect low = BandRect(type, QX_SUBCHANNEL_LL, extent);
  const Rect own = BandRect(type, band, extent);
  const std::int64_t left = qxInternal::IsHighInColumns(type, band) ? low.right - low.left : 0;
  const std::int64_t top = qxInternal::IsHighInRows(type, band) ? low.bottom - low.top : 0;
  return {left, top, left + own.right - own.left, top + own.bottom - own.top};
}

/// Moves a band into the packed block or out of it. Bands that are missing or of another size are passed over.
template <typename T, typename Band, typename Move>
void MovePackedBand(const Rect& place, Band* band, Move move) {
  if (band == nullptr || band->GetData() == nullptr || place.IsEmpty()) return;
  if (band->GetColsNb() != place.right - place.left || band->GetRowsNb() != place.bottom - place.top) return;
  move(*band, static_cast<std::int32_t>(place.left), static_cast<std::int32_t>(place.top));
}

/// Moves all bands of a tree, each with its place in the packed block.
template <typename T, typename Channel, typename Move>
void MovePackedBands(Channel& tree, Move move) {
  Channel* level = &tree;
  Rect extent = Extent(tree);
  for (; level != nullptr && level->IsDecomposed() != 0; level = level->SubChannel(0)) {
    const qxChannelType type = level->GetType();
    if (BandsCount(type) != level->GetSubChannelsNb()) return;
    for (std::int32_t band = 1; band < level->GetSubChannelsNb(); ++band) {
      MovePackedBand<T>(PackedPlace(type, band, extent), level->SubChannel(band), move);
    }
    extent = BandRect(type, 0, extent);
  }
  MovePackedBand<T>(Rect{0, 0, extent.right - extent.left, extent.bottom - extent.top}, level, move);
}

}  // namespace

template <qxReal T>
std::unique_ptr<CQXChannel<T>> CQXChannel<T>::PackDecomposedChannel() const {
  if (m_decomposed == 0) return CloneRawChannel();
  std::unique_ptr<CQXChannel> packed = CloneRawChannel();
  packed->Initialize();
  MovePackedBands<T>(*this, [&packed](const CQXChannel& band, std::int32_t x, std::int32_t y) {
    qxInsertRectData(band.GetData(), packed->GetData(), packed->GetColsNb(), x, y, band.GetColsNb(), band.GetRowsNb());
  });
  return packed;
}

template <qxReal T>
std::unique_ptr<CQXChannel<T>> CQXChannel<T>::UnpackDecomposedChannel(const CQXWaveletFilter<T>* filter,
                                                                      qxChannelType type, std::int32_t depth,
                                                                      qxWaveletNormalization normalization) const {
  if (filter == nullptr || m_data == nullptr || m_decomposed != 0) return nullptr;
  auto tree = std::make_unique<CQXChannel>(m_columns, m_rows, m_offsetX, m_offsetY);
  CQXChannel* level = tree.get();
  for (std::int32_t i = 0; i < depth; ++i, level = level->SubChannel(0)) {
    if (BandsCount(type) == 0 || !AllowsLevel(type, level->m_columns, level->m_rows)) return nullptr;
    level->CreateOneLevelSubChannels(filter, type, normalization);
  }
  if (level == tree.get()) tree->Initialize();
  tree->SetDecompositionTypes(filter, type, normalization);
  MovePackedBands<T>(*tree, [this](CQXChannel& band, std::int32_t x, std::int32_t y) {
    qxExtractRectData(m_data.get(), m_columns, x, y, band.GetColsNb(), band.GetRowsNb(), band.GetData());
  });
  return tree;
}

template <qxReal T>
std::unique_ptr<CQXChannel<T>> CQXChannel<T>::Cut(std::int32_t x, std::int32_t y, std::int32_t width,
                                                  std::int32_t height) const {
  return m_decomposed != 0 ? CutFromDecomposedChannel(x, y, width, height) : CutFromRawChannel(x, y, width, height);
}

template <qxReal T>
std::unique_ptr<CQXChannel<T>> CQXChannel<T>::CutFromRawChannel(std::int32_t x, std::int32_t y, std::int32_t width,
                                                                std::int32_t height) const {
  const Rect rect = RectAt(*this, x, y, width, height);
  if (m_decomposed != 0 || rect.IsEmpty() || !Extent(*this).Contains(rect)) return nullptr;
  std::unique_ptr<CQXChannel> piece = MakeShell<CQXChannel>(rect);
  piece->SetDecompositionTypes(m_filter, m_type, m_normalization);
  if (m_data != nullptr) {
    piece->TakeUninitialisedSamples();
    qxExtractRectData(m_data.get(), m_columns, x, y, width, height, piece->m_data.get());
  }
  return piece;
}

/// The rectangle of a tree of the given type: first the levels, with bands that cover it, then their coefficients.
template <qxReal T>
std::unique_ptr<CQXChannel<T>> CQXChannel<T>::CutTree(qxChannelType type, std::int32_t x, std::int32_t y,
                                                      std::int32_t width, std::int32_t height) const {
  const Rect rect = RectAt(*this, x, y, width, height);
  if (m_decomposed == 0 || m_type != type || rect.IsEmpty() || !Extent(*this).Contains(rect)) return nullptr;
  std::unique_ptr<CQXChannel> piece = MakeShell<CQXChannel>(rect);
  CQXChannel* target = piece.get();
  for (const CQXChannel* level = this; level != nullptr && level->m_decomposed != 0; level = level->SubChannel(0)) {
    target->CreateOneLevelSubChannels(m_filter, type, m_normalization);
    target = target->SubChannel(0);
  }
  piece->PasteTree(type, *this, x, y, width, height);
  return piece;
}

template <qxReal T>
std::unique_ptr<CQXChannel<T>> CQXChannel<T>::CutFromDecomposedChannel(std::int32_t x, std::int32_t y,
                                                                       std::int32_t width, std::int32_t height) const {
  switch (m_type) {
    case QX_CHANNEL_ROWS:
      return CutRectForRows(x, y, width, height);
    case QX_CHANNEL_COLUMNS:
      return CutRectForColumns(x, y, width, height);
    case QX_CHANNEL_2D:
      return CutRectFor2D(x, y, width, height);
    default:
      return nullptr;
  }
}

template <qxReal T>
std::unique_ptr<CQXChannel<T>> CQXChannel<T>::CutRectForRows(std::int32_t x, std::int32_t y, std::int32_t width,
                                                             std::int32_t height) const {
  return CutTree(QX_CHANNEL_ROWS, x, y, width, height);
}

template <qxReal T>
std::unique_ptr<CQXChannel<T>> CQXChannel<T>::CutRectForColumns(std::int32_t x, std::int32_t y, std::int32_t width,
                                                                std::int32_t height) const {
  return CutTree(QX_CHANNEL_COLUMNS, x, y, width, height);
}

template <qxReal T>
std::unique_ptr<CQXChannel<T>> CQXChannel<T>::CutRectFor2D(std::int32_t x, std::int32_t y, std::int32_t width,
                                                           std::int32_t height) const {
  return CutTree(QX_CHANNEL_2D, x, y, width, height);
}

template <qxReal T>
void CQXChannel<T>::Paste(const CQXChannel& source) {
  source.m_decomposed != 0 ? PasteDecomposedChannel(source) : PasteRawChannel(source);
}

template <qxReal T>
void CQXChannel<T>::PasteRawChannel(const CQXChannel& source) {
  CopyRect(source, *this, Extent(source));
}

/// Copies the coefficients of a rectangle of a tree, level by level, when both trees are of the given type.
template <qxReal T>
void CQXChannel<T>::PasteTree(qxChannelType type, const CQXChannel& source, std::int32_t x, std::int32_t y,
                              std::int32_t width, std::int32_t height) {
  if (m_decomposed == 0 || source.m_decomposed == 0 || m_type != type || source.m_type != type ||
      GetFilterType() != source.GetFilterType() || GetDepth() != source.GetDepth()) {
    return;
  }
  Rect rect = RectAt(source, x, y, width, height);
  const CQXChannel* from = &source;
  CQXChannel* to = this;
  while (from->m_decomposed != 0 && to->m_decomposed != 0) {
    for (std::int32_t band = 1; band < BandsCount(type); ++band) {
      if (from->SubChannel(band) == nullptr || to->SubChannel(band) == nullptr) continue;
      CopyRect(*from->SubChannel(band), *to->SubChannel(band), BandRect(type, band, rect));
    }
    rect = BandRect(type, 0, rect);
    from = from->SubChannel(0);
    to = to->SubChannel(0);
    if (from == nullptr || to == nullptr) return;
  }
  CopyRect(*from, *to, rect);
}

template <qxReal T>
void CQXChannel<T>::PasteDecomposedChannel(const CQXChannel& source) {
  PasteTree(source.m_type, source, 0, 0, source.m_columns, source.m_rows);
}

template <qxReal T>
void CQXChannel<T>::PasteRectForRows(const CQXChannel& source) {
  CutAndPasteRows(source, 0, 0, source.m_columns, source.m_rows);
}

template <qxReal T>
void CQXChannel<T>::PasteRectForColumns(const CQXChannel& source) {
  CutAndPasteColumns(source, 0, 0, source.m_columns, source.m_rows);
}

template <qxReal T>
void CQXChannel<T>::PasteRectFor2D(const CQXChannel& source) {
  CutAndPaste2D(source, 0, 0, source.m_columns, source.m_rows);
}

template <qxReal T>
void CQXChannel<T>::CutAndPasteRows(const CQXChannel& source, std::int32_t x, std::int32_t y, std::int32_t width,
                                    std::int32_t height) {
  PasteTree(QX_CHANNEL_ROWS, source, x, y, width, height);
}

template <qxReal T>
void CQXChannel<T>::CutAndPasteColumns(const CQXChannel& source, std::int32_t x, std::int32_t y, std::int32_t width,
                                       std::int32_t height) {
  PasteTree(QX_CHANNEL_COLUMNS, source, x, y, width, height);
}

template <qxReal T>
void CQXChannel<T>::CutAndPaste2D(const CQXChannel& source, std::int32_t x, std::int32_t y, std::int32_t width,
                                  std::int32_t height) {
  PasteTree(QX_CHANNEL_2D, source, x, y, width, height);
}

template class CQXChannel<float>;
template class CQXChannel<double>;

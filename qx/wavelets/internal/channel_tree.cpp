#include <qx/foundation/internal/instantiate.h>
#include <qx/wavelets/internal/channel_tree.h>

#include <algorithm>
#include <utility>

namespace qxInternal {

template <qxReal T>
bool HasRawBands(const CQXChannel<T>& level, std::int32_t firstBand) {
  const qxChannelType type = level.GetType();
  const std::int32_t count = BandsCount(type);
  if (level.IsDecomposed() == 0 || count == 0 || level.GetSubChannelsNb() != count) return false;
  for (std::int32_t band = firstBand; band < count; ++band) {
    const CQXChannel<T>* channel = level.SubChannel(band);
    if (channel == nullptr || channel->GetData() == nullptr) return false;
    if (Extent(*channel) != BandRect(type, band, Extent(level))) return false;
  }
  return true;
}

template <qxReal T>
bool IsComplete(const CQXChannel<T>& tree) {
  const CQXChannel<T>* channel = &tree;
  for (; channel->IsDecomposed() != 0; channel = channel->SubChannel(0)) {
    const CQXChannel<T>* low = channel->SubChannel(0);
    if (low == nullptr || channel->GetFilter() == nullptr) return false;
    if (!HasRawBands(*channel, low->IsDecomposed() != 0 ? 1 : 0)) return false;
    if (Extent(*low) != BandRect(channel->GetType(), 0, Extent(*channel))) return false;
  }
  return channel == &tree || channel->GetData() != nullptr;
}

template <qxReal T>
qxOwner<CQXChannel<T>> MakeShell(const Rect& rect) {
  return qxMakeOwner<CQXChannel<T>>(rect.Columns(), rect.Rows(), static_cast<std::int32_t>(rect.left),
                                    static_cast<std::int32_t>(rect.top));
}

template <qxReal T>
qxOwner<CQXChannel<T>> MakeRaw(const Rect& rect) {
  qxOwner<CQXChannel<T>> channel = MakeShell<T>(rect);
  if (channel == nullptr) return nullptr;
  qxBlock<T> samples = qxMakeBlock<T>(rect.Count());
  if (samples == nullptr) return nullptr;
  channel->SetData(std::move(samples));
  return channel;
}

template <qxReal T>
bool MakeBands(CQXChannel<T>& level, const CQXWaveletFilter<T>* filter, qxChannelType type,
               qxWaveletNormalization normalization, bool isLast) {
  level.SetDecompositionTypes(filter, type, normalization);
  level.SetSubChannelsNb(BandsCount(type));
  for (std::int32_t band = 0; band < BandsCount(type); ++band) {
    const Rect rect = BandRect(type, band, Extent(level));
    qxOwner<CQXChannel<T>> channel = band == 0 && !isLast ? MakeShell<T>(rect) : MakeRaw<T>(rect);
    if (channel == nullptr) return false;
    channel->SetDecompositionTypes(filter, type, normalization);
    level.SetSubChannel(std::move(channel), band);
  }
  level.SetDecompositionFlag(BandsCount(type) != 0 ? 1 : 0);
  return true;
}

template <qxReal T>
qxOwner<CQXChannel<T>> MakeTree(const Rect& rect, const CQXWaveletFilter<T>* filter, qxChannelType type,
                                std::int32_t depth, qxWaveletNormalization normalization) {
  qxOwner<CQXChannel<T>> tree = depth > 0 ? MakeShell<T>(rect) : MakeRaw<T>(rect);
  if (tree == nullptr) return nullptr;
  tree->SetDecompositionTypes(filter, type, normalization);
  CQXChannel<T>* level = tree.get();
  for (; depth > 0; --depth, level = level->SubChannel(0)) {
    if (BandsCount(type) == 0 || !AllowsLevel(type, level->GetColsNb(), level->GetRowsNb())) return nullptr;
    if (!MakeBands(*level, filter, type, normalization, depth == 1)) return nullptr;
  }
  return tree;
}

template <qxReal T>
qxOwner<CQXChannel<T>> CloneRaw(const CQXChannel<T>& source) {
  const bool hasSamples = source.GetData() != nullptr;
  qxOwner<CQXChannel<T>> clone = hasSamples ? MakeRaw<T>(Extent(source)) : MakeShell<T>(Extent(source));
  if (clone == nullptr) return nullptr;
  if (hasSamples) std::copy_n(source.GetData(), CountOf(source), clone->GetData());
  clone->SetDecompositionTypes(source.GetFilter(), source.GetType(), source.GetTypeOfNormalization());
  return clone;
}

template <qxReal T>
qxOwner<CQXChannel<T>> CloneTree(const CQXChannel<T>& source) {
  qxOwner<CQXChannel<T>> clone = CloneRaw(source);
  const CQXChannel<T>* from = &source;
  for (CQXChannel<T>* to = clone.get(); to != nullptr; to = NextInTree(to, clone.get())) {
    to->SetSubChannelsNb(from->GetSubChannelsNb());
    for (std::int32_t i = 0; i < from->GetSubChannelsNb(); ++i) {
      if (from->SubChannel(i) == nullptr) continue;
      qxOwner<CQXChannel<T>> child = CloneRaw(*from->SubChannel(i));
      if (child == nullptr) return nullptr;
      to->SetSubChannel(std::move(child), i);
    }
    to->SetDecompositionFlag(from->IsDecomposed());
    from = NextInTree(from, &source);
  }
  return clone;
}

#define QX_INSTANTIATE(T)                                                                                           \
  template bool HasRawBands(const CQXChannel<T>&, std::int32_t);                                                    \
  template bool IsComplete(const CQXChannel<T>&);                                                                   \
  template qxOwner<CQXChannel<T>> MakeShell<T>(const Rect&);                                                        \
  template qxOwner<CQXChannel<T>> MakeRaw<T>(const Rect&);                                                          \
  template bool MakeBands(CQXChannel<T>&, const CQXWaveletFilter<T>*, qxChannelType, qxWaveletNormalization, bool); \
  template qxOwner<CQXChannel<T>> MakeTree(const Rect&, const CQXWaveletFilter<T>*, qxChannelType, std::int32_t,    \
                                           qxWaveletNormalization);                                                 \
  template qxOwner<CQXChannel<T>> CloneRaw(const CQXChannel<T>&);                                                   \
  template qxOwner<CQXChannel<T>> CloneTree(const CQXChannel<T>&);
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE

}  // namespace qxInternal

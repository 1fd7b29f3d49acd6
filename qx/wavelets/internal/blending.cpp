#include <qx/foundation/internal/instantiate.h>
#include <qx/kernels/wavelet_kernels.h>
#include <qx/wavelets/internal/blending.h>
#include <qx/wavelets/internal/channel_transform.h>

#include <cmath>

namespace qxInternal {

namespace {

template <qxReal T>
void BlendBand(CQXChannel<T>& band, const CQXChannel<T>* with, T own, T others) {
  if (band.GetData() == nullptr || with == nullptr || with->GetData() == nullptr) return;
  if (band.GetColsNb() != with->GetColsNb() || band.GetRowsNb() != with->GetRowsNb()) return;
  qxKernels::Blend(CountOf(band), band.GetData(), with->GetData(), own, others, band.GetData());
}

}  // namespace

template <qxReal T>
void MultiplyHighBands(CQXChannel<T>& level, T factor) {
  ForEachHighBand(level, [factor](CQXChannel<T>& band, std::int32_t) { MultiplySamples(band, factor); });
}

template <qxReal T>
void MultiplyTree(CQXChannel<T>& tree, T factor) {
  for (CQXChannel<T>* channel = &tree; channel != nullptr; channel = NextInTree(channel, &tree)) {
    MultiplySamples(*channel, factor);
  }
}

template <qxReal T>
void EnhanceLevels(CQXChannel<T>& tree, T factor) {
  if (std::abs(factor - 1) < T(0.000001)) return;
  T working = factor;
  for (CQXChannel<T>* level = &tree; level != nullptr && level->IsDecomposed() != 0; level = level->SubChannel(0)) {
    MultiplyHighBands(*level, working);
    working = factor <= 1 ? working * 2 : working / 2;
    if (factor <= 1 ? working >= 1 : working <= 1) return;
  }
}

template <qxReal T>
void EditLevels(CQXChannel<T>& tree, const T* factors) {
  CQXChannel<T>* level = &tree;
  for (; level != nullptr && level->IsDecomposed() != 0; level = level->SubChannel(0)) {
    MultiplyHighBands(*level, *factors++);
  }
  if (level != nullptr && level != &tree) MultiplySamples(*level, *factors);
}

template <qxReal T>
qxOwner<CQXChannel<T>> Blended(const CQXChannel<T>& tree, const CQXChannel<T>* other, const BlendFactors<T>& factors) {
  qxOwner<CQXChannel<T>> blend = CloneTree(tree);
  CQXChannel<T>* target = blend.get();
  std::int32_t i = 0;
  for (; target != nullptr && target->IsDecomposed() != 0 && other != nullptr && other->IsDecomposed() != 0; ++i) {
    ForEachHighBand(*target, [&](CQXChannel<T>& band, std::int32_t b) {
      BlendBand(band, other->SubChannel(b), factors.Own(i), factors.Others(i));
    });
    target = target->SubChannel(0);
    other = other->SubChannel(0);
  }
  if (target != nullptr) BlendBand(*target, other, factors.Own(i), factors.Others(i));
  return blend;
}

#define QX_INSTANTIATE(T)                             \
  template void EnhanceLevels(CQXChannel<T>&, T);     \
  template void EditLevels(CQXChannel<T>&, const T*); \
  template void MultiplyHighBands(CQXChannel<T>&, T); \
  template void MultiplyTree(CQXChannel<T>&, T);      \
  template qxOwner<CQXChannel<T>> Blended(const CQXChannel<T>&, const CQXChannel<T>*, const BlendFactors<T>&);
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE

}  // namespace qxInternal

#include <qx/foundation/internal/instantiate.h>
#include <qx/matrices/matrix_mn.h>
#include <qx/wavelets/internal/channel_print.h>

#include <iostream>
#include <string_view>

namespace qxInternal {

namespace {

template <qxReal T>
bool IsEmpty(const CQXChannel<T>* band) {
  return band == nullptr || band->GetData() == nullptr || band->GetColsNb() <= 0 || band->GetRowsNb() <= 0;
}

template <qxReal T>
void PrintBlock(std::string_view header, const CQXChannel<T>& band) {
  std::cout << header << '\n' << CQXMatrixMN<T>(band.GetRowsNb(), band.GetColsNb(), band.GetData());
}

/// Writes "<name><level>" and the band, or "<emptyName><level> is empty.".
template <qxReal T>
void PrintBand(std::string_view name, std::string_view emptyName, std::int32_t level, const CQXChannel<T>* band) {
  if (IsEmpty(band)) {
    std::cout << emptyName << level << " is empty.\n";
  } else {
    std::cout << name << level;
    PrintBlock("", *band);
  }
}

template <qxReal T>
void PrintHighBand2D(std::string_view name, std::int32_t level, const CQXChannel<T>* band) {
  if (IsEmpty(band)) {
    std::cout << name << " channel for level " << level << " is empty.\n";
  } else {
    std::cout << name;
    PrintBlock(": ", *band);
  }
}

}  // namespace

template <qxReal T>
void PrintChannel(const CQXChannel<T>& top) {
  if (top.IsDecomposed() == 0) {
    IsEmpty(&top) ? void(std::cout << "Raw channel is empty.\n") : PrintBlock("Raw channel: ", top);
    return;
  }
  std::cout << "Decomposedd channel with a depth of decomposition " << top.GetDepth() << '\n';
  const CQXChannel<T>* channel = &top;
  for (std::int32_t level = 1; channel != nullptr && channel->IsDecomposed() != 0; ++level) {
    const CQXChannel<T>* low = channel->SubChannel(0);
    const bool isLast = low == nullptr || low->IsDecomposed() == 0;
    if (channel->GetType() == QX_CHANNEL_2D) {
      std::cout << "High frequency channels for level " << level << '\n';
      PrintHighBand2D("LH", level, channel->SubChannel(QX_SUBCHANNEL_LH));
      PrintHighBand2D("HL", level, channel->SubChannel(QX_SUBCHANNEL_HL));
      PrintHighBand2D("HH", level, channel->SubChannel(QX_SUBCHANNEL_HH));
      if (isLast) {
        PrintBand("Low  frequency channel LL for level ", "Low frequency channel LL for level ", level, low);
      }
    } else {
      constexpr std::string_view high = "High frequency channel for level ";
      PrintBand(high, high, level, channel->SubChannel(QX_SUBCHANNEL_HIGH));
      if (isLast) PrintBand("Low  frequency channel for level ", "Low frequency channel for level ", level, low);
    }
    channel = low;
  }
}

#define QX_INSTANTIATE(T) template void PrintChannel(const CQXChannel<T>&);
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE

}  // namespace qxInternal

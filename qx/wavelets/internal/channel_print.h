#pragma once

#include <qx/foundation/scalar.h>
#include <qx/wavelets/channel.h>

namespace qxInternal {

/// CQXChannel::Print().
template <qxReal T>
void PrintChannel(const CQXChannel<T>& channel);

}  // namespace qxInternal

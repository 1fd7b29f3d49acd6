#pragma once

#include <qx/foundation/owner.h>
#include <qx/foundation/scalar.h>
#include <qx/wavelets/channel.h>

#include <cstdint>

namespace qxInternal {

/// A raw channel of another size: sample i of a direction stands at (i + 1/2) step - 1/2 of the source, where @p stepX
/// and @p stepY are the distances of the new samples, above 0.
/// @return null for a channel without samples, a size below 1 and when memory was refused with null
template <qxReal T>
[[nodiscard]] qxOwner<CQXChannel<T>> Resampled(const CQXChannel<T>& source, std::int32_t columns, std::int32_t rows,
                                               double stepX, double stepY, qxResampling method);

}  // namespace qxInternal

#pragma once

#include <qx/foundation/scalar.h>
#include <qx/solvers/optimization.h>

#include <cmath>

/// @file
/// What a residual costs. Internal, not part of the interface.

namespace qxSolvers {

/// Loss of a squared residual in units of the squared scale.
template <qxReal T>
struct RobustLoss {
  QX_ROBUST_LOSS kind;
  T scale;

  [[nodiscard]] T Cost(T residual) const {
    const T z = Square(residual);
    switch (kind) {
      case QX_LOSS_HUBER:
        return scale * scale * (z <= 1 ? z : 2 * std::sqrt(z) - 1);
      case QX_LOSS_SOFT_L1:
        return scale * scale * (2 * (std::sqrt(1 + z) - 1));
      case QX_LOSS_CAUCHY:
        return scale * scale * std::log1p(z);
      default:
        return residual * residual;
    }
  }

  /// Derivative of the cost by the squared residual: the weight that the squared residual has at its place.
  [[nodiscard]] T Weight(T residual) const {
    const T z = Square(residual);
    switch (kind) {
      case QX_LOSS_HUBER:
        return z <= 1 ? T(1) : 1 / std::sqrt(z);
      case QX_LOSS_SOFT_L1:
        return 1 / std::sqrt(1 + z);
      case QX_LOSS_CAUCHY:
        return 1 / (1 + z);
      default:
        return 1;
    }
  }

 private:
  [[nodiscard]] T Square(T residual) const { return (residual / scale) * (residual / scale); }
};

}  // namespace qxSolvers

#pragma once

#include <qx/foundation/api.h>
#include <qx/foundation/scalar.h>
#include <qx/grids/grid.h>

#include <cstdint>

/// Finite differences of samples at equal distances: derivatives of the orders 1 and 2 with the accuracies 2, 4 and 6,
/// for float and double. All of it is static; an object holds nothing.
///
/// Accuracy p means that the error goes with the power p of the step, and that polynomials of a degree below order + p
/// are derived exactly but for rounding. Inside, accuracy / 2 neighbours on each side are used; nearer to the border
/// the first or last order + accuracy samples, one-sided, at the same accuracy. Sums are formed in 64-bit floats, of
/// differences from the sample itself: the derivative of a constant is exactly 0.
///
/// All functions return 1; 0 when the order or accuracy is none of these, a line has less than order + accuracy
/// samples, or there is no memory: the results are untouched.
template <qxReal T>
class QX_API CQXDerivative {
 public:
  /// Derivative of @p n samples.
  /// @param step distance of the samples
  /// @param[out] result room for @p n numbers; must not overlap the values
  static std::int32_t Derive(std::int32_t n, const T* values, T step, std::int32_t order, std::int32_t accuracy,
                             T* result);

  /// Derivative along the rows of a grid.
  /// @param[out] result takes the size of the grid; may be @p grid
  static std::int32_t DeriveAlongX(const CQXGrid<T>& grid, T step, std::int32_t order, std::int32_t accuracy,
                                   CQXGrid<T>& result);
  /// Derivative along the columns of a grid.
  /// @param[out] result takes the size of the grid; may be @p grid
  static std::int32_t DeriveAlongY(const CQXGrid<T>& grid, T step, std::int32_t order, std::int32_t accuracy,
                                   CQXGrid<T>& result);

  /// Sum of both second derivatives of a grid.
  /// @param[out] result takes the size of the grid; may be @p grid
  static std::int32_t Laplacian(const CQXGrid<T>& grid, T step, std::int32_t accuracy, CQXGrid<T>& result);

  /// Weights of samples at any places in the derivative at another one: the sum of weight times sample is the
  /// derivative of the polynomial through the samples (Fornberg 1988).
  /// @param n number of samples, at least order + 1; places must differ
  /// @param order from 0, which interpolates
  /// @param[out] weights room for @p n numbers
  /// @return 1; 0 when n is not above the order or the order is negative, and when there is no memory.
  static std::int32_t FindWeights(std::int32_t n, const T* places, T at, std::int32_t order, T* weights);
};

extern template class QX_API CQXDerivative<float>;
extern template class QX_API CQXDerivative<double>;

#include <qx/grids/derivative.h>

#include <algorithm>
#include <utility>

namespace {

/// Fornberg's recursion over the samples: the weights of all orders up to @p order for the first samples at each step.
/// @param table room for n (order + 1) numbers, those of one sample side by side; the wanted ones are the last of each
void FindAllWeights(std::int32_t n, const double* places, double at, std::int32_t order, double* table) {
  const auto weight = [&](std::int32_t sample, std::int32_t k) -> double& {
    return table[static_cast<std::size_t>(sample) * static_cast<std::size_t>(order + 1) + static_cast<std::size_t>(k)];
  };
  std::fill_n(table, static_cast<std::size_t>(n) * static_cast<std::size_t>(order + 1), 0.0);
  weight(0, 0) = 1;
  double product = 1;
  for (std::int32_t i = 1; i < n; ++i) {
    const std::int32_t highest = std::min(i, order);
    double nextProduct = 1;
    for (std::int32_t j = 0; j < i; ++j) {
      const double distance = places[i] - places[j];
      nextProduct *= distance;
      if (j == i - 1) {
        for (std::int32_t k = highest; k >= 0; --k) {
          const double lower = k > 0 ? k * weight(j, k - 1) : 0;
          weight(i, k) = product * (lower - (places[j] - at) * weight(j, k)) / nextProduct;
        }
      }
      for (std::int32_t k = highest; k >= 0; --k) {
        const double lower = k > 0 ? k * weight(j, k - 1) : 0;
        weight(j, k) = ((places[i] - at) * weight(j, k) - lower) / distance;
      }
    }
    product = nextProduct;
  }
}

/// The weights of every place in a line: those of the inside, and of each place near the begin.
class Stencils {
 public:
  Stencils(std::int32_t order, std::int32_t accuracy, double step)
      : m_order(order), m_half(accuracy / 2), m_borderSize(order + accuracy) {
    const double scale = order == 1 ? 1 / step : 1 / (step * step);
    Find(2 * m_half + 1, m_half, scale, m_inside);
    for (std::int32_t i = 0; i < m_half; ++i) Find(m_borderSize, i, scale, m_border[i]);
  }

  [[nodiscard]] static bool Exist(std::int32_t order, std::int32_t accuracy, std::int32_t n) {
    return (order == 1 || order == 2) && (accuracy == 2 || accuracy == 4 || accuracy == 6) && n >= order + accuracy;
  }

  /// Calls use(i, first, stride, size, weights) for each place i of a line: weight k belongs to sample first + k
  /// stride.
  template <typename Use>
  void ForEach(std::int32_t n, Use use) const {
    for (std::int32_t i = 0; i < m_half; ++i) use(i, 0, 1, m_borderSize, m_border[i]);
    for (std::int32_t i = m_half; i < n - m_half; ++i) use(i, i - m_half, 1, 2 * m_half + 1, m_inside);
    double mirrored[largestSize];
    for (std::int32_t i = 0; i < m_half; ++i) {
      for (std::int32_t k = 0; k < m_borderSize; ++k) mirrored[k] = m_order == 1 ? -m_border[i][k] : m_border[i][k];
      use(n - 1 - i, n - 1, -1, m_borderSize, mirrored);
    }
  }

 private:
  static constexpr std::int32_t largestSize = 8;

  void Find(std::int32_t size, std::int32_t at, double scale, double* weights) const {
    constexpr double places[largestSize] = {0, 1, 2, 3, 4, 5, 6, 7};
    double table[largestSize * 3];
    FindAllWeights(size, places, at, m_order, table);
    for (std::int32_t k = 0; k < size; ++k) weights[k] = table[k * (m_order + 1) + m_order] * scale;
  }

  std::int32_t m_order;
  std::int32_t m_half;
  std::int32_t m_borderSize;
  double m_inside[largestSize] = {};
  double m_border[3][largestSize] = {};
};

template <qxReal T>
void DeriveLine(const Stencils& stencils, std::int32_t n, const T* values, T* result) {
  stencils.ForEach(n, [=](std::int32_t i, std::int32_t first, std::int32_t stride, std::int32_t size, const double* w) {
    const double own = static_cast<double>(values[i]);
    double sum = 0;
    for (std::int32_t k = 0; k < size; ++k) sum += w[k] * (static_cast<double>(values[first + k * stride]) - own);
    result[i] = static_cast<T>(sum);
  });
}

}  // namespace

template <qxReal T>
std::int32_t CQXDerivative<T>::Derive(std::int32_t n, const T* values, T step, std::int32_t order,
                                      std::int32_t accuracy, T* result) {
  if (!Stencils::Exist(order, accuracy, n)) return 0;
  DeriveLine(Stencils(order, accuracy, static_cast<double>(step)), n, values, result);
  return 1;
}

template <qxReal T>
std::int32_t CQXDerivative<T>::DeriveAlongX(const CQXGrid<T>& grid, T step, std::int32_t order, std::int32_t accuracy,
                                            CQXGrid<T>& result) {
  if (!Stencils::Exist(order, accuracy, grid.Width())) return 0;
  CQXGrid<T> derivative(grid.Width(), grid.Height());
  if (derivative.Data() == nullptr) return 0;
  const Stencils stencils(order, accuracy, static_cast<double>(step));
  for (std::int32_t y = 0; y < grid.Height(); ++y) {
    DeriveLine(stencils, grid.Width(), &grid(0, y), &derivative(0, y));
  }
  result = std::move(derivative);
  return 1;
}

template <qxReal T>
std::int32_t CQXDerivative<T>::DeriveAlongY(const CQXGrid<T>& grid, T step, std::int32_t order, std::int32_t accuracy,
                                            CQXGrid<T>& result) {
  if (!Stencils::Exist(order, accuracy, grid.Height())) return 0;
  CQXGrid<T> derivative(grid.Width(), grid.Height());
  if (derivative.Data() == nullptr) return 0;
  const Stencils stencils(order, accuracy, static_cast<double>(step));
  stencils.ForEach(grid.Height(), [&](std::int32_t y, std::int32_t first, std::int32_t stride, std::int32_t size,
                                      const double* weights) {
    for (std::int32_t x = 0; x < grid.Width(); ++x) {
      const double own = static_cast<double>(grid(x, y));
      double sum = 0;
      for (std::int32_t k = 0; k < size; ++k) {
        sum += weights[k] * (static_cast<double>(grid(x, first + k * stride)) - own);
      }
      derivative(x, y) = static_cast<T>(sum);
    }
  });
  result = std::move(derivative);
  return 1;
}

template <qxReal T>
std::int32_t CQXDerivative<T>::Laplacian(const CQXGrid<T>& grid, T step, std::int32_t accuracy, CQXGrid<T>& result) {
  CQXGrid<T> alongX, alongY;
  if (DeriveAlongX(grid, step, 2, accuracy, alongX) == 0 || DeriveAlongY(grid, step, 2, accuracy, alongY) == 0)
    return 0;
  const T* const added = alongY.Data();
  std::transform(alongX.Data(), alongX.Data() + alongX.Count(), added, alongX.Data(), [](T a, T b) { return a + b; });
  result = std::move(alongX);
  return 1;
}

template <qxReal T>
std::int32_t CQXDerivative<T>::FindWeights(std::int32_t n, const T* places, T at, std::int32_t order, T* weights) {
  if (order < 0 || n <= order) return 0;
  const std::size_t size = static_cast<std::size_t>(n);
  const std::size_t width = static_cast<std::size_t>(order) + 1;
  const qxBlock<double> table = qxMakeBlock<double>(size * (width + 1));
  if (table == nullptr) return 0;
  double* const wide = table.get() + size * width;
  std::transform(places, places + n, wide, [](T x) { return static_cast<double>(x); });
  FindAllWeights(n, wide, static_cast<double>(at), order, table.get());
  for (std::size_t i = 0; i < size; ++i) weights[i] = static_cast<T>(table[i * width + width - 1]);
  return 1;
}

template class CQXDerivative<float>;
template class CQXDerivative<double>;

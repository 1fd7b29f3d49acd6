#include <qx/foundation/block.h>
#include <qx/foundation/internal/instantiate.h>
#include <qx/kernels/array_kernels.h>
#include <qx/kernels/rotation_kernels.h>
#include <qx/matrices/matrix_mn.h>
#include <qx/solvers/internal/levenberg_marquardt.h>
#include <qx/solvers/internal/robust_loss.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

namespace qxSolvers {

namespace {

/// Brings the first n columns of a row-major matrix of n + 1 columns to upper triangular form by reflections; the last
/// column, the right side, goes along. @p column has room for as many elements as there are rows.
template <qxReal T>
void Triangularize(std::size_t rows, std::size_t n, T* a, T* column) {
  const std::size_t stride = n + 1;
  for (std::size_t k = 0; k < n && k + 1 < rows; ++k) {
    T scale = 0;  // squares of a tiny tail would vanish
    for (std::size_t i = k; i < rows; ++i) scale = std::max(scale, std::abs(a[i * stride + k]));
    if (scale == 0) continue;
    for (std::size_t i = k; i < rows; ++i) column[i] = a[i * stride + k] / scale;
    const T norm = std::sqrt(qxKernels::SumOfSquares(rows - k, column + k));
    const T sign = column[k] < 0 ? T(-1) : T(1);
    const T up = column[k] + sign * norm;
    qxKernels::ReflectFromLeft(up, -sign * norm * up, rows - k - 1, column + k + 1, n - k, a + k * stride + k + 1,
                               a + (k + 1) * stride + k + 1, stride);
    a[k * stride + k] = -sign * norm * scale;
    for (std::size_t i = k + 1; i < rows; ++i) a[i * stride + k] = 0;
  }
}

/// One minimisation, with all that it works on. The blocks are row-major with the residuals as the last column.
template <qxReal T>
class LevenbergMarquardt {
 public:
  LevenbergMarquardt(std::int32_t n, std::int32_t m, CQXVectorN<T>& x, const CQXLeastSquaresOptions<T>& options,
                     const ResidualFunctions<T>& functions)
      : m_options(options),
        m_functions(functions),
        m_x(x),
        m_loss{options.loss, options.lossScale},
        m_n(static_cast<std::size_t>(n)),
        m_m(static_cast<std::size_t>(m)),
        m_residuals(m),
        m_trialResiduals(m),
        m_jacobian(m, n),
        m_linear(qxMakeBlock<T>((m_m + m_n) * (m_n + 1))),
        m_damped(qxMakeBlock<T>(2 * m_n * (m_n + 1))),
        m_column(qxMakeBlock<T>(m_m + 2 * m_n)),
        m_vectors(qxMakeBlock<T>(4 * m_n)) {}

  [[nodiscard]] bool HasMemory() const {
    return m_residuals.Data() != nullptr && m_trialResiduals.Data() != nullptr && m_jacobian.Data() != nullptr &&
           m_linear != nullptr && m_damped != nullptr && m_column != nullptr && m_vectors != nullptr;
  }

  T Minimize(QX_OPTIMIZATION_INFO& info) {
    for (std::size_t i = 0; i < m_n; ++i) m_x.Data()[i] = Keep(i, m_x.Data()[i]);
    qxKernels::SetToZero(m_n, Scales());
    m_f = Evaluate(m_residuals);
    info = std::isfinite(m_f) ? QX_OPT_IN_PROGRESS : QX_OPT_INVALID;
    for (std::int32_t iteration = 0; info == QX_OPT_IN_PROGRESS; ++iteration) {
      Linearize();
      if (ProjectedGradientNorm() <= m_options.gTol) {
        info = QX_OPT_GRADIENT_CONVERGED;
      } else if (iteration >= m_options.maxIterations) {
        info = QX_OPT_ITERATION_LIMIT;
      } else {
        info = TakeStep();
      }
    }
    return m_f;
  }

 private:
  [[nodiscard]] T* Start() { return m_vectors.get(); }
  [[nodiscard]] T* Step() { return Start() + m_n; }
  [[nodiscard]] T* Gradient() { return Step() + m_n; }
  [[nodiscard]] T* Scales() { return Gradient() + m_n; }

  [[nodiscard]] T Lower(std::size_t i) const {
    const bool has = m_options.constraints != nullptr &&
                     (m_options.constraints[i] == QX_LOWER_BOUND || m_options.constraints[i] == QX_BOTH_BOUNDS);
    return has ? m_options.lower[i] : -std::numeric_limits<T>::infinity();
  }
  [[nodiscard]] T Upper(std::size_t i) const {
    const bool has = m_options.constraints != nullptr &&
                     (m_options.constraints[i] == QX_UPPER_BOUND || m_options.constraints[i] == QX_BOTH_BOUNDS);
    return has ? m_options.upper[i] : std::numeric_limits<T>::infinity();
  }
  [[nodiscard]] T Keep(std::size_t i, T value) const {
    value = value < Lower(i) ? Lower(i) : value;
    return value > Upper(i) ? Upper(i) : value;
  }
  /// Whether variable @p i stands at a bound and the function falls beyond it.
  [[nodiscard]] bool IsHeld(std::size_t i) {
    const T x = m_x.Data()[i], slope = Gradient()[i];
    return (x <= Lower(i) && slope > 0) || (x >= Upper(i) && slope < 0);
  }

  [[nodiscard]] T Evaluate(CQXVectorN<T>& residuals) {
    m_functions.residuals(m_x, residuals, m_functions.user);
    T sum = 0;
    for (std::size_t i = 0; i < m_m; ++i) sum += m_loss.Cost(residuals.Data()[i]);
    return sum;
  }

  /// Forward differences with the root of the rounding unit as relative step, backward at an upper bound.
  void EstimateJacobian() {
    const T relative = std::sqrt(std::numeric_limits<T>::epsilon());
    for (std::size_t k = 0; k < m_n; ++k) {
      const T x = m_x.Data()[k];
      T step = x != 0 ? relative * std::abs(x) : relative;
      if (x + step > Upper(k)) step = -step;
      m_x.Data()[k] = x + step;
      const T exact = m_x.Data()[k] - x;
      m_functions.residuals(m_x, m_trialResiduals, m_functions.user);
      m_x.Data()[k] = x;
      for (std::size_t i = 0; i < m_m; ++i) {
        m_jacobian.Data()[i * m_n + k] = (m_trialResiduals.Data()[i] - m_residuals.Data()[i]) / exact;
      }
    }
  }

  /// The weighted residuals and their Jacobian at x as a least squares problem in triangular form, its gradient, and
  /// the scales of the variables: the largest norms that their columns ever had (J. J. More, 1978).
  void Linearize() {
    if (m_functions.jacobian != nullptr) {
      m_functions.jacobian(m_x, m_jacobian, m_functions.user);
    } else {
      EstimateJacobian();
    }
    T* const gradient = Gradient();
    T* const scales = Scales();
    const std::size_t stride = m_n + 1;
    qxKernels::SetToZero(m_n, gradient);
    for (std::size_t i = 0; i < m_m; ++i) {
      const T residual = m_residuals.Data()[i], weight = std::sqrt(m_loss.Weight(residual));
      T* row = m_linear.get() + i * stride;
      qxKernels::Product(m_n, m_jacobian.Data() + i * m_n, weight, row);
      row[m_n] = weight * residual;
      qxKernels::AddMultiple(m_n, 2 * row[m_n], row, gradient);
    }
    for (std::size_t k = 0; k < m_n; ++k) {
      for (std::size_t i = 0; i < m_m; ++i) m_column[i] = m_linear[i * stride + k];
      scales[k] = std::max(scales[k], std::sqrt(qxKernels::SumOfSquares(m_m, m_column.get())));
      if (!(scales[k] > 0)) scales[k] = 1;
      if (!IsHeld(k)) continue;
      for (std::size_t i = 0; i < m_m; ++i) m_linear[i * stride + k] = 0;
    }
    // With less residuals than variables rows of zeros make it square.
    qxKernels::SetToZero(m_n * stride, m_linear.get() + m_m * stride);
    Triangularize(std::max(m_m, m_n), m_n, m_linear.get(), m_column.get());
  }

  /// Largest magnitude; of a component that points out of a bound only the distance to the bound counts.
  [[nodiscard]] T ProjectedGradientNorm() {
    T norm = 0;
    for (std::size_t i = 0; i < m_n; ++i) {
      const T slope = Gradient()[i], x = m_x.Data()[i];
      const T projected = std::max(std::min(slope, x - Lower(i)), x - Upper(i));
      if (!(std::abs(projected) <= norm)) norm = std::abs(projected);
    }
    return norm;
  }

  /// Solves the linear problem with the damping as further rows; the step goes from x to a point within the bounds.
  /// @return square of the residuals that the linear problem expects there
  [[nodiscard]] T FindStep() {
    const std::size_t stride = m_n + 1;
    T* const damped = m_damped.get();
    T* const step = Step();
    qxKernels::Copy(m_n * stride, m_linear.get(), damped);
    qxKernels::SetToZero(m_n * stride, damped + m_n * stride);
    const T root = std::sqrt(m_damping);
    for (std::size_t i = 0; i < m_n; ++i) damped[(m_n + i) * stride + i] = root * Scales()[i];
    Triangularize(2 * m_n, m_n, damped, m_column.get());
    for (std::size_t i = m_n; i-- > 0;) {
      const T* row = damped + i * stride;
      T sum = -row[m_n];
      for (std::size_t k = i + 1; k < m_n; ++k) sum -= row[k] * step[k];
      step[i] = row[i] != 0 ? sum / row[i] : T(0);
    }
    T square = 0;
    for (std::size_t i = 0; i < m_n; ++i) step[i] = Keep(i, Start()[i] + step[i]) - Start()[i];
    for (std::size_t i = 0; i < m_n; ++i) {
      const T* row = m_linear.get() + i * stride;
      T sum = row[m_n];
      for (std::size_t k = i; k < m_n; ++k) sum += row[k] * step[k];
      square += sum * sum;
    }
    return square;
  }

  /// Tries steps with more and more damping until one brings a smaller value. The damping is ruled as by H. B. Nielsen,
  /// Damping parameter in Marquardt's method (1999).
  [[nodiscard]] QX_OPTIMIZATION_INFO TakeStep() {
    qxKernels::Copy(m_n, m_x.Data(), Start());
    T square = 0;  // of what the linear problem has to win from
    for (std::size_t i = 0; i < m_n; ++i) square += m_linear[i * (m_n + 1) + m_n] * m_linear[i * (m_n + 1) + m_n];
    constexpr T smallestDamping = std::numeric_limits<T>::epsilon() * std::numeric_limits<T>::epsilon();
    constexpr int maxTrials = 60;
    T growth = 2;
    for (int trial = 0; trial < maxTrials; ++trial) {
      const T predicted = square - FindStep();
      const bool isShort = IsStepShort();
      qxKernels::Sum(m_n, Start(), Step(), m_x.Data());
      for (std::size_t i = 0; i < m_n; ++i) m_x.Data()[i] = Keep(i, m_x.Data()[i]);
      const T f = Evaluate(m_trialResiduals);
      const T decrease = m_f - f, ratio = decrease / predicted;
      const bool isLittle = predicted <= m_options.fTol * m_f && decrease <= m_options.fTol * m_f;
      if (decrease > 0 && ratio > T(1e-4)) {
        m_f = f;
        qxKernels::Copy(m_m, m_trialResiduals.Data(), m_residuals.Data());
        const T cube = (2 * ratio - 1) * (2 * ratio - 1) * (2 * ratio - 1);
        m_damping = std::max(m_damping * std::clamp(1 - cube, T(1) / 3, T(1)), smallestDamping);
        if (isLittle) return QX_OPT_FUNCTION_CONVERGED;
        return isShort ? QX_OPT_STEP_CONVERGED : QX_OPT_IN_PROGRESS;
      }
      qxKernels::Copy(m_n, Start(), m_x.Data());
      if (isLittle) return QX_OPT_FUNCTION_CONVERGED;
      if (isShort) return std::isfinite(f) ? QX_OPT_STEP_CONVERGED : QX_OPT_LINE_SEARCH_FAILED;
      m_damping *= growth;
      growth *= 2;
    }
    return QX_OPT_LINE_SEARCH_FAILED;
  }

  /// Whether the step is short beside x, both in the scales of the variables.
  [[nodiscard]] bool IsStepShort() {
    T step = 0, x = 0;
    for (std::size_t i = 0; i < m_n; ++i) {
      step = std::max(step, Scales()[i] * std::abs(Step()[i]));
      x = std::max(x, Scales()[i] * std::abs(Start()[i]));
    }
    return step <= m_options.xTol * x;
  }

  const CQXLeastSquaresOptions<T>& m_options;
  const ResidualFunctions<T>& m_functions;
  CQXVectorN<T>& m_x;
  RobustLoss<T> m_loss;
  std::size_t m_n;
  std::size_t m_m;
  CQXVectorN<T> m_residuals;
  CQXVectorN<T> m_trialResiduals;
  CQXMatrixMN<T> m_jacobian;
  qxBlock<T> m_linear;
  qxBlock<T> m_damped;
  qxBlock<T> m_column;
  qxBlock<T> m_vectors;
  T m_f = 0;
  T m_damping = T(1e-3);
};

template <qxReal T>
bool IsPossible(std::int32_t n, std::int32_t m, const CQXVectorN<T>& x, const CQXLeastSquaresOptions<T>& options) {
  if (n < 1 || m < 1 || x.Dim() < n || x.Data() == nullptr || !(options.xTol > 0) || !(options.fTol > 0) ||
      !(options.gTol > 0) || options.maxIterations < 1 || !(options.lossScale > 0)) {
    return false;
  }
  for (std::int32_t i = 0; options.constraints != nullptr && i < n; ++i) {
    const std::int32_t kind = options.constraints[i];
    if (kind < QX_UNCONSTRAINED || kind > QX_UPPER_BOUND) return false;
    if (kind == QX_BOTH_BOUNDS && options.upper[i] < options.lower[i]) return false;
  }
  return true;
}

}  // namespace

template <qxReal T>
T MinimizeSquares(std::int32_t n, std::int32_t m, CQXVectorN<T>& x, const CQXLeastSquaresOptions<T>& options,
                  const ResidualFunctions<T>& functions, QX_OPTIMIZATION_INFO& info) {
  info = QX_OPT_INVALID;
  if (!IsPossible(n, m, x, options)) return std::numeric_limits<T>::quiet_NaN();
  LevenbergMarquardt<T> method(n, m, x, options, functions);
  return method.HasMemory() ? method.Minimize(info) : std::numeric_limits<T>::quiet_NaN();
}

#define QX_INSTANTIATE(T)                                                                                  \
  template T MinimizeSquares(std::int32_t, std::int32_t, CQXVectorN<T>&, const CQXLeastSquaresOptions<T>&, \
                             const ResidualFunctions<T>&, QX_OPTIMIZATION_INFO&);
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE

}  // namespace qxSolvers

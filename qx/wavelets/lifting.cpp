#include <qx/wavelets/channel.h>
#include <qx/wavelets/internal/lifting_schedule.h>
#include <qx/wavelets/lifting.h>

#include <algorithm>
#include <cstddef>
#include <utility>

std::int32_t qxSymExtension(std::int32_t index, std::int32_t size, std::int32_t leftHalf,
                            std::int32_t rightHalf) noexcept {
  const std::int64_t left = leftHalf != 0 ? 1 : 0;
  const std::int64_t period = 2 * std::int64_t{size} - 2 + left + (rightHalf != 0 ? 1 : 0);
  if (period <= 0) return 0;
  std::int64_t folded = index;
  if (folded < 0) folded = -folded - left;
  folded %= period;
  if (folded >= size) folded = period - folded - left;
  return static_cast<std::int32_t>(folded);
}

template <qxReal T>
CQXLifting<T>::CQXLifting(const CQXChannel<T>* low, const CQXChannel<T>* high, std::int32_t direction) noexcept
    : m_direction(direction) {
  if (low == nullptr || high == nullptr) return;
  m_highLeads = direction == 0 ? low->m_offsetY != high->m_offsetY : low->m_offsetX != high->m_offsetX;
  const CQXChannel<T>* even = m_highLeads != 0 ? high : low;
  const CQXChannel<T>* odd = m_highLeads != 0 ? low : high;
  m_even = even->m_data.get();
  m_odd = odd->m_data.get();
  m_evenColumns = even->m_columns;
  m_oddColumns = odd->m_columns;
  m_evenRows = even->m_rows;
  m_oddRows = odd->m_rows;
}

template <qxReal T>
void CQXLifting<T>::Apply(const qxInternal::LiftingStep<T>& step, bool alongColumns, bool subtract) noexcept {
  if (m_even == nullptr || m_odd == nullptr) return;
  const bool toOdd = step.DestinationIsOdd();
  T* destination = toOdd ? m_odd : m_even;
  const T* source = toOdd ? m_even : m_odd;
  if (alongColumns) {
    const std::int32_t columns = std::min(m_evenColumns, m_oddColumns);
    if (columns <= 0) return;
    for (std::int32_t row = 0; row < step.DestinationSize(); ++row) {
      step.LiftAcross(step.SumAt(row), row, destination, source, static_cast<std::size_t>(columns), subtract);
    }
  } else {
    const std::ptrdiff_t destinationColumns = toOdd ? m_oddColumns : m_evenColumns;
    const std::ptrdiff_t sourceColumns = toOdd ? m_evenColumns : m_oddColumns;
    for (std::int32_t row = 0; row < std::min(m_evenRows, m_oddRows); ++row) {
      step.LiftRow(destination + row * destinationColumns, source + row * sourceColumns, subtract);
    }
  }
}

template <qxReal T>
void CQXLifting<T>::Step(std::int32_t target, const T* coefficients, std::int32_t taps, qxChannelType type,
                         bool subtract) noexcept {
  if ((type != QX_CHANNEL_ROWS && type != QX_CHANNEL_COLUMNS) || coefficients == nullptr) return;
  const bool alongColumns = type == QX_CHANNEL_COLUMNS;
  const std::int32_t evenSize = alongColumns ? m_evenRows : m_evenColumns;
  const std::int32_t oddSize = alongColumns ? m_oddRows : m_oddColumns;
  if (!qxInternal::AreInterleaving(evenSize, oddSize)) return;
  const bool toOdd = (target == 0) == (m_highLeads == 0);
  Apply(qxInternal::LiftingStep<T>(toOdd, coefficients, taps, evenSize, oddSize, alongColumns), alongColumns, subtract);
}

template <qxReal T>
void CQXLifting<T>::Run(const CQXWaveletFilter<T>& filter, bool inverse) noexcept {
  const bool alongColumns = m_direction == 0;
  const qxInternal::LiftingSchedule<T> schedule(filter, alongColumns ? m_evenRows : m_evenColumns,
                                                alongColumns ? m_oddRows : m_oddColumns, m_highLeads != 0,
                                                alongColumns);
  for (std::int32_t i = 0; i < schedule.Count(); ++i) Apply(schedule.Step(i, inverse), alongColumns, inverse);
}

// clang-format off
template <qxReal T>
void CQXLifting<T>::LiftUsing2Coef(std::int32_t target, const T* coefficients, qxChannelType type) noexcept { Step(target, coefficients, 2, type, false); }
template <qxReal T>
void CQXLifting<T>::LiftUsing4Coef(std::int32_t target, const T* coefficients, qxChannelType type) noexcept { Step(target, coefficients, 4, type, false); }
template <qxReal T>
void CQXLifting<T>::LiftUsing6Coef(std::int32_t target, const T* coefficients, qxChannelType type) noexcept { Step(target, coefficients, 6, type, false); }
template <qxReal T>
void CQXLifting<T>::InvLiftUsing2Coef(std::int32_t target, const T* coefficients, qxChannelType type) noexcept { Step(target, coefficients, 2, type, true); }
template <qxReal T>
void CQXLifting<T>::InvLiftUsing4Coef(std::int32_t target, const T* coefficients, qxChannelType type) noexcept { Step(target, coefficients, 4, type, true); }
template <qxReal T>
void CQXLifting<T>::InvLiftUsing6Coef(std::int32_t target, const T* coefficients, qxChannelType type) noexcept { Step(target, coefficients, 6, type, true); }
// clang-format on

template class CQXLifting<float>;
template class CQXLifting<double>;

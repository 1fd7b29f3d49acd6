#include <qx/foundation/internal/instantiate.h>
#include <qx/wavelets/channel.h>
#include <qx/wavelets/internal/lifting_step.h>
#include <qx/wavelets/lifting.h>

#include <algorithm>
#include <cstddef>

std::int32_t qxSymExtension(std::int32_t index, std::int32_t size, std::int32_t leftHalf,
                            std::int32_t rightHalf) noexcept {
  return qxInternal::FoldedIndex(index, size, leftHalf != 0, rightHalf != 0);
}

template <qxReal T>
CQXLifting<T>::CQXLifting(const CQXChannel<T>* low, const CQXChannel<T>* high, std::int32_t direction) noexcept {
  if (low == nullptr || high == nullptr) return;
  m_highLeads = direction == 0 ? low->GetOffsetY() != high->GetOffsetY() : low->GetOffsetX() != high->GetOffsetX();
  const CQXChannel<T>* even = m_highLeads != 0 ? high : low;
  const CQXChannel<T>* odd = m_highLeads != 0 ? low : high;
  m_even = const_cast<T*>(even->GetData());
  m_odd = const_cast<T*>(odd->GetData());
  m_evenColumns = even->GetColsNb();
  m_oddColumns = odd->GetColsNb();
  m_evenRows = even->GetRowsNb();
  m_oddRows = odd->GetRowsNb();
}

template <qxReal T>
void CQXLifting<T>::Apply(const qxInternal::LiftingStep<T>& step, bool alongColumns, bool subtract) noexcept {
  if (m_even == nullptr || m_odd == nullptr) return;
  const bool toOdd = step.DestinationIsOdd();
  T* destination = toOdd ? m_odd : m_even;
  const T* source = toOdd ? m_even : m_odd;
  if (alongColumns) {
    const std::ptrdiff_t columns = std::min(m_evenColumns, m_oddColumns);
    if (columns <= 0) return;
    const auto rowOf = [source, columns](std::int32_t row) { return source + row * columns; };
    for (std::int32_t row = 0; row < step.DestinationSize(); ++row, destination += columns) {
      step.LiftAcross(step.SumAt(row), destination, rowOf, static_cast<std::size_t>(columns), subtract);
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
void CQXLifting<T>::LiftUsing2Coef(std::int32_t target, const T* coefficients, qxChannelType type) noexcept {
  Step(target, coefficients, 2, type, false);
}

template <qxReal T>
void CQXLifting<T>::LiftUsing4Coef(std::int32_t target, const T* coefficients, qxChannelType type) noexcept {
  Step(target, coefficients, 4, type, false);
}

template <qxReal T>
void CQXLifting<T>::LiftUsing6Coef(std::int32_t target, const T* coefficients, qxChannelType type) noexcept {
  Step(target, coefficients, 6, type, false);
}

template <qxReal T>
void CQXLifting<T>::InvLiftUsing2Coef(std::int32_t target, const T* coefficients, qxChannelType type) noexcept {
  Step(target, coefficients, 2, type, true);
}

template <qxReal T>
void CQXLifting<T>::InvLiftUsing4Coef(std::int32_t target, const T* coefficients, qxChannelType type) noexcept {
  Step(target, coefficients, 4, type, true);
}

template <qxReal T>
void CQXLifting<T>::InvLiftUsing6Coef(std::int32_t target, const T* coefficients, qxChannelType type) noexcept {
  Step(target, coefficients, 6, type, true);
}

#define QX_INSTANTIATE(T) template class CQXLifting<T>;
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE

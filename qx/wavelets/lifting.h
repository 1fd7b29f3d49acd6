#pragma once

#include <qx/foundation/api.h>
#include <qx/foundation/scalar.h>
#include <qx/wavelets/wavelet_types.h>

#include <cstdint>

template <qxReal T>
class CQXChannel;
namespace qxInternal {
template <qxReal T>
class LiftingStep;
}

/// Folds an index that runs off either end of a band back into it.
///
/// This is the whole-sample symmetric extension of the interleaved signal about its first and last samples, seen from
/// one band: the reflection repeats the end sample of the band where the flag of that end is non-zero.
/// @param leftHalf 0 reflects about the first sample, otherwise about half a step before it
/// @param rightHalf the same at the last sample
/// @return the folded index; 0 where the extension has no period (a band of one sample between whole reflections, or an
/// empty band)
[[nodiscard]] QX_API std::int32_t qxSymExtension(std::int32_t index, std::int32_t size, std::int32_t leftHalf,
                                                 std::int32_t rightHalf) noexcept;

/// A short-lived view of the low and high band of one signal as the even and odd samples of an interleaved sequence.
///
/// A lifting step adds to one band a short symmetric combination of the other; the inverse step subtracts it again. The
/// view owns nothing and writes into the samples of the two channels, which must outlive it, though the constructor
/// takes them as constant. A step whose bands are
/// null, empty, of sizes that do not interleave, or without samples changes nothing. Two views over the same channels
/// must not run at once.
///
/// One gap is part of the contract: along columns the two-coefficient step leaves the last odd row out when the number
/// of rows is odd and the even rows lead; the step along rows has no such gap. The inverse step leaves the same row
/// out, so reconstruction stays exact.
template <qxReal T>
class QX_API CQXLifting {
 public:
  /// @param direction 0: the bands interleave by rows; otherwise by columns
  CQXLifting(const CQXChannel<T>* low, const CQXChannel<T>* high, std::int32_t direction) noexcept;

  /// The band on the even and on the odd local positions. The high band is the even one when the offsets of the two
  /// channels along the direction differ.
  [[nodiscard]] T* GetEven() const noexcept { return m_even; }
  /// The band on the odd local positions.
  [[nodiscard]] T* GetOdd() const noexcept { return m_odd; }

  /// Lifting steps: @p target 0 updates the high band from the low one, otherwise the low from the high one.
  ///
  /// @param coefficients as many as the name of the step says
  /// @param type QX_CHANNEL_ROWS lifts along each row, QX_CHANNEL_COLUMNS along each column; any other value does
  /// nothing
  void LiftUsing2Coef(std::int32_t target, const T* coefficients, qxChannelType type) noexcept;
  /// LiftUsing2Coef() with four coefficients.
  void LiftUsing4Coef(std::int32_t target, const T* coefficients, qxChannelType type) noexcept;
  /// LiftUsing2Coef() with six coefficients.
  void LiftUsing6Coef(std::int32_t target, const T* coefficients, qxChannelType type) noexcept;
  /// The inverse of LiftUsing2Coef(): subtracts what it added.
  void InvLiftUsing2Coef(std::int32_t target, const T* coefficients, qxChannelType type) noexcept;
  /// The inverse of LiftUsing4Coef(): subtracts what it added.
  void InvLiftUsing4Coef(std::int32_t target, const T* coefficients, qxChannelType type) noexcept;
  /// The inverse of LiftUsing6Coef(): subtracts what it added.
  void InvLiftUsing6Coef(std::int32_t target, const T* coefficients, qxChannelType type) noexcept;

 private:
  void Apply(const qxInternal::LiftingStep<T>& step, bool alongColumns, bool subtract) noexcept;
  void Step(std::int32_t target, const T* coefficients, std::int32_t taps, qxChannelType type, bool subtract) noexcept;

  T* m_even = nullptr;
  T* m_odd = nullptr;
  std::int32_t m_evenColumns = 0;
  std::int32_t m_evenRows = 0;
  std::int32_t m_oddColumns = 0;
  std::int32_t m_oddRows = 0;
  std::int32_t m_highLeads = 0;
};

extern template class QX_API CQXLifting<float>;
extern template class QX_API CQXLifting<double>;

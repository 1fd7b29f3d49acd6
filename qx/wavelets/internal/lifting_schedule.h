#pragma once

#include <qx/foundation/scalar.h>
#include <qx/wavelets/internal/lifting_step.h>
#include <qx/wavelets/wavelet_filter.h>

#include <cstdint>

namespace qxInternal {

/// The lifting steps of a wavelet in forward order, apart from any signal.
///
/// A step whose array is shorter than its taps, as after CQXWaveletFilter::SetWavelet(), is left out.
template <qxReal T>
class WaveletSteps {
 public:
  struct Step {
    bool updatesLow;
    const T* coefficients;
    std::int32_t taps;
  };

  explicit WaveletSteps(const CQXWaveletFilter<T>& filter) {
    const std::int32_t code = filter.GetWavelet();
    const std::int32_t wavelet = code >= QX_WAVELET_1_1 && code <= QX_WAVELET_4_6 ? code : QX_WAVELET_2_2;
    const std::int32_t lastTaps = 2 + 2 * (wavelet % 3);
    if (wavelet < QX_WAVELET_3_1) {
      Add(false, filter.DualCoefficients(), filter.GetDualSize(), 2);
      Add(true, filter.PrimeCoefficients(), filter.GetPrimeSize(), lastTaps);
    } else {
      Add(true, filter.PrimeCoefficients(), filter.GetPrimeSize(), 2);
      Add(false, filter.DualCoefficients(), filter.GetDualSize(), 2);
      Add(true, filter.Prime2Coefficients(), filter.GetPrimeSize2(), lastTaps);
    }
  }

  [[nodiscard]] std::int32_t Count() const { return m_count; }
  /// Step @p i of the forward transform, or of the inverse transform.
  [[nodiscard]] const Step& At(std::int32_t i, bool inverse) const { return m_steps[inverse ? m_count - 1 - i : i]; }

 private:
  void Add(bool updatesLow, const T* coefficients, std::int32_t size, std::int32_t taps) {
    if (coefficients != nullptr && size >= taps) m_steps[m_count++] = {updatesLow, coefficients, taps};
  }

  std::int32_t m_count = 0;
  Step m_steps[3] = {};
};

/// The lifting steps of a wavelet along one direction of a signal of known size.
template <qxReal T>
class LiftingSchedule {
 public:
  /// No steps.
  LiftingSchedule() = default;

  /// No steps when a band is empty or the sizes do not interleave.
  LiftingSchedule(const CQXWaveletFilter<T>& filter, std::int32_t evenSize, std::int32_t oddSize, bool highLeads,
                  bool alongColumns) {
    if (!AreInterleaving(evenSize, oddSize)) return;
    const WaveletSteps<T> steps(filter);
    for (; m_count < steps.Count(); ++m_count) {
      const auto& [updatesLow, coefficients, taps] = steps.At(m_count, false);
      m_steps[m_count] = LiftingStep<T>(updatesLow == highLeads, coefficients, taps, evenSize, oddSize, alongColumns);
    }
  }

  [[nodiscard]] std::int32_t Count() const { return m_count; }

  /// Step @p i of the forward transform, or of the inverse transform.
  [[nodiscard]] const LiftingStep<T>& Step(std::int32_t i, bool inverse) const {
    return m_steps[inverse ? m_count - 1 - i : i];
  }

  /// Runs all steps along one row of each band.
  void LiftRow(T* even, T* odd, bool inverse) const {
    for (std::int32_t i = 0; i < m_count; ++i) {
      const LiftingStep<T>& step = Step(i, inverse);
      step.DestinationIsOdd() ? step.LiftRow(odd, even, inverse) : step.LiftRow(even, odd, inverse);
    }
  }

 private:
  std::int32_t m_count = 0;
  LiftingStep<T> m_steps[3];
};

}  // namespace qxInternal

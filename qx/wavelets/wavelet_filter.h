#pragma once

#include <qx/foundation/api.h>
#include <qx/foundation/block.h>
#include <qx/foundation/scalar.h>
#include <qx/wavelets/wavelet_types.h>

#include <cstdint>

/// One of the twelve lifting wavelets: its coefficient arrays, the reach of its filters and its normalisation factors.
///
/// The coefficients are those of the biorthogonal spline wavelets of Cohen, Daubechies and Feauveau (1992), factored
/// into lifting steps (Daubechies and Sweldens, 1998). Families 1 and 2 run the dual array on the high band, then the
/// prime array on the low band; families 3 and 4 run prime on low, dual on high, prime2 on low.
///
/// The arrays are tables of the library: a filter takes no memory, and pointers to its arrays stay readable for ever. A
/// filter that has been built may be read by any number of channels and threads. Channels hold a pointer to it and do
/// not own it: the filter outlives them.
template <qxReal T>
class QX_API CQXWaveletFilter : public qxBlockAllocated {
 public:
  /// No wavelet: type -1, no arrays, all numbers 0, both shifts -1.
  CQXWaveletFilter() noexcept = default;

  /// The filter of the wavelet, as Set(@p type) makes it.
  explicit CQXWaveletFilter(qxWaveletType type) noexcept { Set(type); }

  /// Copies the type, the sizes, the reach and the shifts. The arrays of the copy hold zeros and its norms are 0: the
  /// copy has the shape of the wavelet and none of its numbers. Call Set() on it, or assign, to have these.
  CQXWaveletFilter(const CQXWaveletFilter& other) noexcept;

  /// Copies every field, the norms included; both objects then share the arrays of @p other.
  CQXWaveletFilter& operator=(const CQXWaveletFilter& other) noexcept = default;

  ~CQXWaveletFilter() = default;

  /// Stores the code, builds its wavelet and sets both shifts to -1. A code that is not one of the twelve is stored and
  /// builds 2_2.
  void Set(qxWaveletType type) noexcept;
  /// Set() for the stored code.
  void Set() noexcept { Set(m_type); }

  /// Stores the code alone: the arrays, norms and reach keep describing the old wavelet until Set() is called.
  void SetWavelet(qxWaveletType type) noexcept { m_type = type; }
  /// Which wavelet this is.
  [[nodiscard]] qxWaveletType GetWavelet() const noexcept { return m_type; }

  /// Replaces the arrays by zeros of the present sizes; prime2 is null when its size is 0.
  void AllocateMemory() noexcept;

  // Builders of one wavelet each: they set sizes, arrays, norms and reach.

  /// Builds the wavelet 1_1; the stored code and the shifts stay.
  void Set1_1() noexcept { Build(QX_WAVELET_1_1); }
  /// Builds the wavelet 1_3; the stored code and the shifts stay.
  void Set1_3() noexcept { Build(QX_WAVELET_1_3); }
  /// Builds the wavelet 1_5; the stored code and the shifts stay.
  void Set1_5() noexcept { Build(QX_WAVELET_1_5); }
  /// Builds the wavelet 2_2; the stored code and the shifts stay.
  void Set2_2() noexcept { Build(QX_WAVELET_2_2); }
  /// Builds the wavelet 2_4; the stored code and the shifts stay.
  void Set2_4() noexcept { Build(QX_WAVELET_2_4); }
  /// Builds the wavelet 2_6; the stored code and the shifts stay.
  void Set2_6() noexcept { Build(QX_WAVELET_2_6); }
  /// Builds the wavelet 3_1; the stored code and the shifts stay.
  void Set3_1() noexcept { Build(QX_WAVELET_3_1); }
  /// Builds the wavelet 3_3; the stored code and the shifts stay.
  void Set3_3() noexcept { Build(QX_WAVELET_3_3); }
  /// Builds the wavelet 3_5; the stored code and the shifts stay.
  void Set3_5() noexcept { Build(QX_WAVELET_3_5); }
  /// Builds the wavelet 4_2; the stored code and the shifts stay.
  void Set4_2() noexcept { Build(QX_WAVELET_4_2); }
  /// Builds the wavelet 4_4; the stored code and the shifts stay.
  void Set4_4() noexcept { Build(QX_WAVELET_4_4); }
  /// Builds the wavelet 4_6; the stored code and the shifts stay.
  void Set4_6() noexcept { Build(QX_WAVELET_4_6); }

  /// The stored arrays; null when there is none.
  [[nodiscard]] const T* PrimeCoefficients() const noexcept { return m_prime; }
  /// The coefficients of the dual step; null when there are none.
  [[nodiscard]] const T* DualCoefficients() const noexcept { return m_dual; }
  /// The coefficients of the second prime step; null when there are none.
  [[nodiscard]] const T* Prime2Coefficients() const noexcept { return m_prime2; }

  /// Number of coefficients of the prime step.
  [[nodiscard]] std::int32_t GetPrimeSize() const noexcept { return m_primeSize; }
  /// Number of coefficients of the dual step.
  [[nodiscard]] std::int32_t GetDualSize() const noexcept { return m_dualSize; }
  /// Number of coefficients of the second prime step.
  [[nodiscard]] std::int32_t GetPrimeSize2() const noexcept { return m_prime2Size; }

  /// First tap of the low-pass synthesis filter.
  [[nodiscard]] std::int32_t GetPrimeStartInd() const noexcept { return m_primeStart; }
  /// Last tap of the low-pass synthesis filter.
  [[nodiscard]] std::int32_t GetPrimeEndInd() const noexcept { return m_primeEnd; }
  /// First tap of the dual of the low-pass synthesis filter.
  [[nodiscard]] std::int32_t GetDualStartInd() const noexcept { return m_dualStart; }
  /// Last tap of the dual of the low-pass synthesis filter.
  [[nodiscard]] std::int32_t GetDualEndInd() const noexcept { return m_dualEnd; }

  /// Factor of the low band: norm 0 for 0, norm 1 for any other index. Norm 0 keeps the energy, norm 1 the range.
  [[nodiscard]] T GetLowNorm(std::int32_t index) const noexcept { return index == 0 ? m_lowNorm0 : m_lowNorm1; }
  /// Factor of the high band, by index as above.
  [[nodiscard]] T GetHighNorm(std::int32_t index) const noexcept { return index == 0 ? m_highNorm0 : m_highNorm1; }

  /// Reserved: -1.
  [[nodiscard]] std::int32_t GetLowShift() const noexcept { return m_lowShift; }
  /// Reserved: -1.
  [[nodiscard]] std::int32_t GetHighShift() const noexcept { return m_highShift; }

 private:
  void Build(qxWaveletType type) noexcept;

  qxWaveletType m_type = static_cast<qxWaveletType>(-1);
  std::int32_t m_primeSize = 0;
  std::int32_t m_dualSize = 0;
  std::int32_t m_prime2Size = 0;
  std::int32_t m_primeStart = 0;
  std::int32_t m_primeEnd = 0;
  std::int32_t m_dualStart = 0;
  std::int32_t m_dualEnd = 0;
  std::int32_t m_lowShift = -1;
  std::int32_t m_highShift = -1;
  T m_lowNorm0 = 0;
  T m_highNorm0 = 0;
  T m_lowNorm1 = 0;
  T m_highNorm1 = 0;
  const T* m_prime = nullptr;
  const T* m_dual = nullptr;
  const T* m_prime2 = nullptr;
};

extern template class QX_API CQXWaveletFilter<float>;
extern template class QX_API CQXWaveletFilter<double>;

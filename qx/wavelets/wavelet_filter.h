#pragma once

#include <qx/foundation/api.h>
#include <qx/foundation/block.h>
#include <qx/foundation/scalar.h>
#include <qx/wavelets/wavelet_types.h>

#include <cstdint>
#include <memory>
#include <vector>

/// One of the twelve lifting wavelets: its coefficient arrays, the reach of its filters and its normalisation factors.
///
/// The coefficients are those of the biorthogonal spline wavelets of Cohen, Daubechies and Feauveau (1992), factored
/// into lifting steps (Daubechies and Sweldens, 1998). Families 1 and 2 run the dual array on the high band, then the
/// prime array on the low band; families 3 and 4 run prime on low, dual on high, prime2 on low.
///
/// A filter that has been built may be read by any number of channels and threads. Channels hold a pointer to it and do
/// not own it: the filter outlives them.
template <qxReal T>
class QX_API CQXWaveletFilter : public qxBlockAllocated {
 public:
  /// No wavelet: type -1, no arrays, all numbers 0, both shifts -1.
  CQXWaveletFilter() noexcept = default;

  /// The filter of the wavelet, as Set(@p type) makes it.
  explicit CQXWaveletFilter(qxWaveletType type) { Set(type); }

  /// Copies the type, the sizes, the reach and the shifts. The new arrays hold zeros and the norms are 0: the copy has
  /// the shape of the wavelet and none of its numbers. Call Set() on it, or assign, to have these.
  CQXWaveletFilter(const CQXWaveletFilter& other);

  /// Copies every field, the norms included; both objects then share the arrays of @p other. The arrays held before
  /// stay readable until this object goes.
  CQXWaveletFilter& operator=(const CQXWaveletFilter& other);

  ~CQXWaveletFilter() = default;

  /// Stores the code, builds its wavelet and sets both shifts to -1. A code that is not one of the twelve is stored and
  /// builds 2_2. Arrays held before stay readable until this object goes; refused memory changes nothing.
  void Set(qxWaveletType type);
  /// Set() for the stored code.
  void Set() { Set(m_type); }

  /// Stores the code alone: the arrays, norms and reach keep describing the old wavelet until Set() is called.
  void SetWavelet(qxWaveletType type) noexcept { m_type = type; }
  /// Which wavelet this is.
  [[nodiscard]] qxWaveletType GetWavelet() const noexcept { return m_type; }

  /// Takes new arrays of the present sizes, filled with zeros; prime2 is null when its size is 0. Arrays held before
  /// stay readable until this object goes.
  void AllocateMemory();

  // Each builder sets sizes, arrays, norms and reach of one wavelet; the stored code and the shifts stay.
  /// Sizes, arrays, norms and reach of QX_WAVELET_1_1.
  void Set1_1();
  /// Sizes, arrays, norms and reach of QX_WAVELET_1_3.
  void Set1_3();
  /// Sizes, arrays, norms and reach of QX_WAVELET_1_5.
  void Set1_5();
  /// Sizes, arrays, norms and reach of QX_WAVELET_2_2.
  void Set2_2();
  /// Sizes, arrays, norms and reach of QX_WAVELET_2_4.
  void Set2_4();
  /// Sizes, arrays, norms and reach of QX_WAVELET_2_6.
  void Set2_6();
  /// Sizes, arrays, norms and reach of QX_WAVELET_3_1.
  void Set3_1();
  /// Sizes, arrays, norms and reach of QX_WAVELET_3_3.
  void Set3_3();
  /// Sizes, arrays, norms and reach of QX_WAVELET_3_5.
  void Set3_5();
  /// Sizes, arrays, norms and reach of QX_WAVELET_4_2.
  void Set4_2();
  /// Sizes, arrays, norms and reach of QX_WAVELET_4_4.
  void Set4_4();
  /// Sizes, arrays, norms and reach of QX_WAVELET_4_6.
  void Set4_6();

  /// Coefficients of the prime lifting step; null when there are none.
  [[nodiscard]] const T* PrimeCoefficients() const noexcept { return Array(&Arrays::prime); }
  /// Coefficients of the dual lifting step; null when there are none.
  [[nodiscard]] const T* DualCoefficients() const noexcept { return Array(&Arrays::dual); }
  /// Coefficients of the second prime lifting step; null when there are none.
  [[nodiscard]] const T* Prime2Coefficients() const noexcept { return Array(&Arrays::prime2); }

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
  struct Arrays {
    qxBlock<T> prime;
    qxBlock<T> dual;
    qxBlock<T> prime2;
  };

  [[nodiscard]] const T* Array(qxBlock<T> Arrays::*array) const noexcept {
    return m_arrays.empty() ? nullptr : ((*m_arrays.back()).*array).get();
  }

  Arrays& PutInForce(std::int32_t primeSize, std::int32_t dualSize, std::int32_t prime2Size);
  void Build(qxWaveletType type);

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
  // The last ones are in force; the earlier ones are kept for those who still hold pointers into them.
  std::vector<std::shared_ptr<Arrays>, qxBlockAllocator<std::shared_ptr<Arrays>>> m_arrays;
};

extern template class QX_API CQXWaveletFilter<float>;
extern template class QX_API CQXWaveletFilter<double>;

#include <qx/wavelets/wavelet_filter.h>

#include <algorithm>
#include <initializer_list>
#include <utility>

namespace {

/// Coefficients as whole numbers over one denominator, divided in the element type.
struct Fractions {
  std::int32_t denominator;
  std::int32_t size;
  std::int32_t numerators[6];
};

struct Family {
  Fractions dual;
  Fractions first;  // the prime array of the families that begin with the low band
  double lowNorm0, highNorm0, lowNorm1;
  std::int32_t highNorm1Denominator;
  std::int32_t primeStart, primeEnd;
};

struct Wavelet {
  std::int32_t family;
  Fractions update;  // the last step on the low band: prime of families 1 and 2, prime2 of families 3 and 4
  std::int32_t dualStart, dualEnd;
};

// The root of 2 ends one unit in the last place below the correctly rounded one, in every factor.
constexpr Family families[] = {
    {{1, 2, {-1, 0}}, {1, 0, {}}, 1.414213562373095, -0.7071067811865475, 1, -2, 0, 1},
    {{2, 2, {-1, -1}}, {1, 0, {}}, 1.414213562373095, -0.7071067811865475, 1, -2, 0, 2},
    {{8, 2, {-9, -3}}, {3, 2, {-1, 0}}, 2.1213203435596424, -0.4714045207910316, 2, -12, -1, 2},
    {{1, 2, {-1, -1}}, {4, 2, {-1, -1}}, 2.82842712474619, 0.35355339059327373, 2, -4, -1, 3},
};

constexpr Wavelet wavelets[] = {
    {0, {2, 2, {0, 1}}, 0, 1},
    {0, {16, 4, {0, 1, 8, -1}}, -2, 3},
    {0, {256, 6, {0, -3, 22, 128, -22, 3}}, -4, 5},
    {1, {4, 2, {1, 1}}, -2, 2},
    {1, {64, 4, {-3, 19, 19, -3}}, -4, 4},
    {1, {512, 6, {5, -39, 162, 162, -39, 5}}, -6, 6},
    {2, {9, 2, {0, 4}}, -1, 2},
    {2, {36, 4, {0, 3, -16, -3}}, -3, 4},  // the signs are the reverse of those of 3_5
    {2, {288, 6, {0, -5, 34, 128, -34, 5}}, -5, 6},
    {3, {16, 2, {3, 3}}, -3, 3},
    {3, {128, 4, {-5, 29, 29, -5}}, -5, 5},
    {3, {4096, 6, {35, -265, 998, 998, -265, 35}}, -7, 7},
};

template <qxReal T>
void Divide(const Fractions& fractions, qxBlock<T>& target) {
  for (std::int32_t i = 0; i < fractions.size; ++i) {
    target[static_cast<std::size_t>(i)] =
        static_cast<T>(fractions.numerators[i]) / static_cast<T>(fractions.denominator);
  }
}

template <qxReal T>
qxBlock<T> MakeZeros(std::int32_t size) {
  const std::size_t count = size > 0 ? static_cast<std::size_t>(size) : 0;
  qxBlock<T> block = qxMakeBlockOrThrow<T>(count);
  std::fill_n(block.get(), count, T(0));
  return block;
}

}  // namespace

template <qxReal T>
CQXWaveletFilter<T>::CQXWaveletFilter(const CQXWaveletFilter& other)
    : m_type(other.m_type),
      m_primeSize(other.m_primeSize),
      m_dualSize(other.m_dualSize),
      m_prime2Size(other.m_prime2Size),
      m_primeStart(other.m_primeStart),
      m_primeEnd(other.m_primeEnd),
      m_dualStart(other.m_dualStart),
      m_dualEnd(other.m_dualEnd),
      m_lowShift(other.m_lowShift),
      m_highShift(other.m_highShift) {
  AllocateMemory();
}

template <qxReal T>
CQXWaveletFilter<T>& CQXWaveletFilter<T>::operator=(const CQXWaveletFilter& other) {
  if (this == &other) return *this;
  if (other.m_arrays.empty()) {
    m_arrays.emplace_back(std::allocate_shared<Arrays>(qxBlockAllocator<Arrays>()));
  } else {
    m_arrays.push_back(other.m_arrays.back());
  }
  m_type = other.m_type;
  m_primeSize = other.m_primeSize;
  m_dualSize = other.m_dualSize;
  m_prime2Size = other.m_prime2Size;
  m_primeStart = other.m_primeStart;
  m_primeEnd = other.m_primeEnd;
  m_dualStart = other.m_dualStart;
  m_dualEnd = other.m_dualEnd;
  m_lowShift = other.m_lowShift;
  m_highShift = other.m_highShift;
  m_lowNorm0 = other.m_lowNorm0;
  m_highNorm0 = other.m_highNorm0;
  m_lowNorm1 = other.m_lowNorm1;
  m_highNorm1 = other.m_highNorm1;
  return *this;
}

template <qxReal T>
void CQXWaveletFilter<T>::Set(qxWaveletType type) {
  Build(type);
  m_type = type;
  m_lowShift = -1;
  m_highShift = -1;
}

template <qxReal T>
void CQXWaveletFilter<T>::AllocateMemory() {
  PutInForce(m_primeSize, m_dualSize, m_prime2Size);
}

/// Takes new arrays and only then stores their sizes, so that refused memory leaves sizes and arrays that fit.
template <qxReal T>
typename CQXWaveletFilter<T>::Arrays& CQXWaveletFilter<T>::PutInForce(std::int32_t primeSize, std::int32_t dualSize,
                                                                      std::int32_t prime2Size) {
  auto arrays = std::allocate_shared<Arrays>(qxBlockAllocator<Arrays>());
  arrays->prime = MakeZeros<T>(primeSize);
  arrays->dual = MakeZeros<T>(dualSize);
  if (prime2Size != 0) arrays->prime2 = MakeZeros<T>(prime2Size);
  m_arrays.push_back(std::move(arrays));
  m_primeSize = primeSize;
  m_dualSize = dualSize;
  m_prime2Size = prime2Size;
  return *m_arrays.back();
}

template <qxReal T>
void CQXWaveletFilter<T>::Build(qxWaveletType type) {
  const bool known = type >= QX_WAVELET_1_1 && type <= QX_WAVELET_4_6;
  const Wavelet& wavelet = wavelets[known ? type : QX_WAVELET_2_2];
  const Family& family = families[wavelet.family];
  const bool beginsWithLow = family.first.size != 0;
  const Fractions& prime = beginsWithLow ? family.first : wavelet.update;
  Arrays& arrays = PutInForce(prime.size, family.dual.size, beginsWithLow ? wavelet.update.size : 0);
  Divide(prime, arrays.prime);
  Divide(family.dual, arrays.dual);
  if (beginsWithLow) Divide(wavelet.update, arrays.prime2);

  m_lowNorm0 = static_cast<T>(family.lowNorm0);
  m_highNorm0 = static_cast<T>(family.highNorm0);
  m_lowNorm1 = static_cast<T>(family.lowNorm1);
  m_highNorm1 = 1 / static_cast<T>(family.highNorm1Denominator);
  m_primeStart = family.primeStart;
  m_primeEnd = family.primeEnd;
  m_dualStart = wavelet.dualStart;
  m_dualEnd = wavelet.dualEnd;
}

// clang-format off
template <qxReal T> void CQXWaveletFilter<T>::Set1_1() { Build(QX_WAVELET_1_1); }
template <qxReal T> void CQXWaveletFilter<T>::Set1_3() { Build(QX_WAVELET_1_3); }
template <qxReal T> void CQXWaveletFilter<T>::Set1_5() { Build(QX_WAVELET_1_5); }
template <qxReal T> void CQXWaveletFilter<T>::Set2_2() { Build(QX_WAVELET_2_2); }
template <qxReal T> void CQXWaveletFilter<T>::Set2_4() { Build(QX_WAVELET_2_4); }
template <qxReal T> void CQXWaveletFilter<T>::Set2_6() { Build(QX_WAVELET_2_6); }
template <qxReal T> void CQXWaveletFilter<T>::Set3_1() { Build(QX_WAVELET_3_1); }
template <qxReal T> void CQXWaveletFilter<T>::Set3_3() { Build(QX_WAVELET_3_3); }
template <qxReal T> void CQXWaveletFilter<T>::Set3_5() { Build(QX_WAVELET_3_5); }
template <qxReal T> void CQXWaveletFilter<T>::Set4_2() { Build(QX_WAVELET_4_2); }
template <qxReal T> void CQXWaveletFilter<T>::Set4_4() { Build(QX_WAVELET_4_4); }
template <qxReal T> void CQXWaveletFilter<T>::Set4_6() { Build(QX_WAVELET_4_6); }
// clang-format on

template class CQXWaveletFilter<float>;
template class CQXWaveletFilter<double>;

#include <qx/foundation/internal/instantiate.h>
#include <qx/wavelets/wavelet_filter.h>

#include <cstddef>
#include <iterator>

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

constexpr std::int32_t largestSize = 6;

/// The coefficients of all wavelets as numbers.
template <qxReal T>
struct Tables {
  T dual[std::size(families)][largestSize] = {};
  T first[std::size(families)][largestSize] = {};
  T update[std::size(wavelets)][largestSize] = {};
};

template <qxReal T>
constexpr void Divide(const Fractions& fractions, T* target) {
  for (std::int32_t i = 0; i < fractions.size; ++i) {
    target[i] = static_cast<T>(fractions.numerators[i]) / static_cast<T>(fractions.denominator);
  }
}

template <qxReal T>
constexpr Tables<T> MakeTables() {
  Tables<T> tables;
  for (std::size_t i = 0; i < std::size(families); ++i) {
    Divide(families[i].dual, tables.dual[i]);
    Divide(families[i].first, tables.first[i]);
  }
  for (std::size_t i = 0; i < std::size(wavelets); ++i) Divide(wavelets[i].update, tables.update[i]);
  return tables;
}

template <qxReal T>
constexpr Tables<T> tables = MakeTables<T>();

template <qxReal T>
constexpr T zeros[largestSize] = {};

}  // namespace

template <qxReal T>
CQXWaveletFilter<T>::CQXWaveletFilter(const CQXWaveletFilter& other) noexcept : CQXWaveletFilter() {
  *this = other;
  AllocateMemory();
  m_lowNorm0 = m_highNorm0 = m_lowNorm1 = m_highNorm1 = 0;
}

template <qxReal T>
void CQXWaveletFilter<T>::Set(qxWaveletType type) noexcept {
  Build(type);
  m_type = type;
  m_lowShift = -1;
  m_highShift = -1;
}

template <qxReal T>
void CQXWaveletFilter<T>::AllocateMemory() noexcept {
  m_prime = zeros<T>;
  m_dual = zeros<T>;
  m_prime2 = m_prime2Size != 0 ? zeros<T> : nullptr;
}

template <qxReal T>
void CQXWaveletFilter<T>::Build(qxWaveletType type) noexcept {
  const bool known = type >= QX_WAVELET_1_1 && type <= QX_WAVELET_4_6;
  const std::int32_t code = known ? type : QX_WAVELET_2_2;
  const Wavelet& wavelet = wavelets[code];
  const Family& family = families[wavelet.family];
  const bool beginsWithLow = family.first.size != 0;

  m_primeSize = beginsWithLow ? family.first.size : wavelet.update.size;
  m_dualSize = family.dual.size;
  m_prime2Size = beginsWithLow ? wavelet.update.size : 0;
  m_prime = beginsWithLow ? tables<T>.first[wavelet.family] : tables<T>.update[code];
  m_dual = tables<T>.dual[wavelet.family];
  m_prime2 = beginsWithLow ? tables<T>.update[code] : nullptr;

  m_lowNorm0 = static_cast<T>(family.lowNorm0);
  m_highNorm0 = static_cast<T>(family.highNorm0);
  m_lowNorm1 = static_cast<T>(family.lowNorm1);
  m_highNorm1 = 1 / static_cast<T>(family.highNorm1Denominator);
  m_primeStart = family.primeStart;
  m_primeEnd = family.primeEnd;
  m_dualStart = wavelet.dualStart;
  m_dualEnd = wavelet.dualEnd;
}

#define QX_INSTANTIATE(T) template class CQXWaveletFilter<T>;
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE

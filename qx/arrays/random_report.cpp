#include <qx/arrays/random.h>
#include <qx/foundation/block.h>
#include <qx/foundation/tolerance.h>

#include <algorithm>
#include <cmath>
#include <iostream>

template <qxReal T>
void CQXRandom<T>::TestFloatRandomArray(std::int32_t n, const T* data, std::int32_t firstToPrint) const {
  std::ostream& out = std::cout;
  T mean = m_mean;
  T deviation = m_sigma;
  const char* distribution = "Normal.";
  if (m_distribution == 0) {
    mean = m_lower + m_range * T(0.5);
    deviation = m_range / T(3.4641016151377544);  // sqrt(12)
    distribution = "Uniform.";
    for (std::int32_t i = 0; i < n; ++i) {
      if (data[i] < m_lower || data[i] > m_lower + m_range) {
        out << "Element " << data[i] << " with index " << i << " is out the given segment for uniform distribution\n";
      }
    }
  } else if (m_distribution == 2) {
    mean = deviation = 1 / m_rate;
    distribution = "Exponential.";
  }

  double sum = 0;
  for (std::int32_t i = 0; i < n; ++i) sum += static_cast<double>(data[i]);
  const double sampleMean = sum / n;
  double squares = 0;
  for (std::int32_t i = 0; i < n; ++i) {
    const double distance = static_cast<double>(data[i]) - sampleMean;
    squares += distance * distance;
  }
  const T statisticalMean = static_cast<T>(sampleMean);
  const T statisticalDeviation = static_cast<T>(qxGuardedSqrt(squares / (static_cast<double>(n) - 1)));
  const T meanDifference = std::abs(mean - statisticalMean);
  const T deviationDifference = std::abs(deviation - statisticalDeviation);
  const T count = static_cast<T>(n);

  out << "Type of algorithm: "
      << (m_algorithm == 1   ? "Xorshift 64 bits. "
          : m_algorithm == 2 ? "SWB. "
                             : "Xorshift 32 bits. ")
      << " Type of distribution: " << distribution << '\n';
  out << "Number of generated random values = " << n << '\n';
  if (firstToPrint != 0) {
    out << "First " << firstToPrint << " values: ";
    for (std::int32_t i = 0; i < std::min(firstToPrint, n); ++i) out << data[i] << ' ';
    out << '\n';
  }
  out << "Theoretical values: mean = " << mean << ", standard deviation = " << deviation << '\n';
  out << "Statistical values: mean = " << statisticalMean << ", standard deviation = " << statisticalDeviation << '\n';
  out << "Difference in means = " << meanDifference << ", relative difference dif/n = " << meanDifference / count
      << '\n';
  out << "Difference in SD = " << deviationDifference << ", relative difference dif/n = " << deviationDifference / count
      << '\n';
}

template <qxReal T>
template <typename Integer>
void CQXRandom<T>::TestIntegers(Integer left, Integer right, std::int32_t n, const Integer* data,
                                std::int32_t firstToPrint) {
  const qxBlock<T> values = qxMakeBlock<T>(static_cast<std::size_t>(std::max(n, 0)));
  if (values == nullptr) return;
  std::transform(data, data + std::max(n, 0), values.get(), [](Integer x) { return static_cast<T>(x); });
  m_lower = static_cast<T>(left);
  m_range = static_cast<T>(right) - m_lower;
  std::cout << "Segment: left end = " << left << ", right end = " << right << '\n';
  TestFloatRandomArray(n, values.get(), firstToPrint);
}

template <qxReal T>
void CQXRandom<T>::TestIntegerRandomArray(std::int32_t left, std::int32_t right, std::int32_t n,
                                          const std::int32_t* data, std::int32_t firstToPrint) {
  TestIntegers(left, right, n, data, firstToPrint);
}

template <qxReal T>
void CQXRandom<T>::TestIntegerRandomArray(std::int64_t left, std::int64_t right, std::int32_t n,
                                          const std::int64_t* data, std::int32_t firstToPrint) {
  TestIntegers(left, right, n, data, firstToPrint);
}

template class CQXRandom<float>;
template class CQXRandom<double>;

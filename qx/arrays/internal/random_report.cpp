#include <qx/arrays/internal/random_report.h>
#include <qx/foundation/internal/instantiate.h>
#include <qx/foundation/tolerance.h>

#include <algorithm>
#include <cmath>
#include <iostream>

namespace qxArrays {

namespace {

template <qxReal T>
struct Moments {
  T mean;
  T deviation;
};

template <qxReal T>
Moments<T> MomentsOf(const RandomLaw<T>& law) {
  if (law.distribution == 0) return {law.lower + law.range * T(0.5), law.range / T(3.4641016151377544)};  // sqrt(12)
  if (law.distribution == 2) return {1 / law.rate, 1 / law.rate};
  return {law.mean, law.sigma};
}

template <qxReal T>
Moments<T> MomentsOf(std::int32_t n, const T* data) {
  double sum = 0;
  for (std::int32_t i = 0; i < n; ++i) sum += static_cast<double>(data[i]);
  const double mean = sum / n;
  double squares = 0;
  for (std::int32_t i = 0; i < n; ++i) {
    const double distance = static_cast<double>(data[i]) - mean;
    squares += distance * distance;
  }
  return {static_cast<T>(mean), static_cast<T>(qxGuardedSqrt(squares / (static_cast<double>(n) - 1)))};
}

template <qxReal T>
void WriteStrangers(std::ostream& out, const RandomLaw<T>& law, std::int32_t n, const T* data) {
  for (std::int32_t i = 0; i < n; ++i) {
    if (data[i] < law.lower || data[i] > law.lower + law.range) {
      out << "Element " << data[i] << " with index " << i << " is out the given segment for uniform distribution\n";
    }
  }
}

template <qxReal T>
void WriteDifference(std::ostream& out, const char* what, T a, T b, std::int32_t n) {
  const T difference = std::abs(a - b);
  out << "Difference in " << what << " = " << difference
      << ", relative difference dif/n = " << difference / static_cast<T>(n) << '\n';
}

const char* NameOfAlgorithm(std::int32_t algorithm) {
  if (algorithm == 1) return "Xorshift 64 bits. ";
  return algorithm == 2 ? "SWB. " : "Xorshift 32 bits. ";
}

const char* NameOfDistribution(std::int32_t distribution) {
  if (distribution == 0) return "Uniform.";
  return distribution == 2 ? "Exponential." : "Normal.";
}

}  // namespace

template <qxReal T>
void WriteRandomReport(const RandomLaw<T>& law, std::int32_t n, const T* data, std::int32_t firstToPrint) {
  std::ostream& out = std::cout;
  if (law.distribution == 0) WriteStrangers(out, law, n, data);
  const Moments<T> theory = MomentsOf(law);
  const Moments<T> sample = MomentsOf(n, data);
  out << "Type of algorithm: " << NameOfAlgorithm(law.algorithm)
      << " Type of distribution: " << NameOfDistribution(law.distribution) << '\n';
  out << "Number of generated random values = " << n << '\n';
  if (firstToPrint != 0) {
    out << "First " << firstToPrint << " values: ";
    for (std::int32_t i = 0; i < std::min(firstToPrint, n); ++i) out << data[i] << ' ';
    out << '\n';
  }
  out << "Theoretical values: mean = " << theory.mean << ", standard deviation = " << theory.deviation << '\n';
  out << "Statistical values: mean = " << sample.mean << ", standard deviation = " << sample.deviation << '\n';
  WriteDifference(out, "means", theory.mean, sample.mean, n);
  WriteDifference(out, "SD", theory.deviation, sample.deviation, n);
}

void WriteSegment(std::int64_t left, std::int64_t right) {
  std::cout << "Segment: left end = " << left << ", right end = " << right << '\n';
}

#define QX_INSTANTIATE(T) template void WriteRandomReport(const RandomLaw<T>&, std::int32_t, const T*, std::int32_t);
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE

}  // namespace qxArrays

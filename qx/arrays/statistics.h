#pragma once

#include <qx/foundation/api.h>
#include <qx/foundation/scalar.h>

#include <cstdint>

/// Level of significance of a test: how often a good sample fails, in percent. A higher level is a stricter test.
/// A value that is not listed counts as 5 percent, except in KolmogorovSmirnovTest().
enum qxSignificanceLevel : std::int32_t { QX_SIGNIFICANCE_20 = 0, QX_SIGNIFICANCE_10 = 1, QX_SIGNIFICANCE_5 = 2 };

/// Probability with which a confidence interval holds the true value.
enum qxProbability : std::int32_t {
  QX_PROBABILITY_90 = 0,
  QX_PROBABILITY_95 = 1,
  QX_PROBABILITY_99 = 2,  ///< any value that is not listed counts as this one
  QX_PROBABILITY_995 = 3  ///< 99.5 percent
};

/// Grade of a cascade of tests.
enum qxStatisticalTest : std::int32_t {
  QX_TEST_PASSED_STRICT = 0,  ///< every test passed at its strictest level
  QX_TEST_PASSED = 1,
  QX_TEST_DOUBTFUL = 2,
  QX_TEST_FAILED = 3
};

/// Statistics of an array that belongs to the caller: moments, confidence intervals, goodness of fit, randomness.
///
/// Sums run in array order in double for both element types. Nothing is reported: too small a sample gives the result
/// of the formula, mostly not a number, and not-a-numbers fail no comparison, so that they may well pass a test. Where
/// work memory is refused without an exception, Median() gives not a number, a test fails and a filter does nothing.
///
/// Objects may be used from different threads; the filters write the array.
template <qxReal T>
class QX_API CQXStatistics {
 public:
  /// No data.
  CQXStatistics() noexcept = default;
  /// Looks at @p n elements of @p data.
  CQXStatistics(std::int32_t n, T* data) noexcept : m_size(n), m_data(data) {}

  /// Looks at @p n elements of the same data.
  void SetSize(std::int32_t n) noexcept { m_size = n; }
  /// Looks at @p n elements of @p data.
  void SetData(std::int32_t n, T* data) noexcept {
    m_size = n;
    m_data = data;
  }

  /// Sum of the elements over n; not a number for an empty array.
  [[nodiscard]] T Mean() const noexcept;

  /// The middle element of the sorted array, or half the sum of the two middle ones. The array is not changed; O(n).
  ///
  /// With not-a-numbers among the elements it is the middle of what CQXSorting makes of them.
  /// @return not a number for an empty array, and where memory was refused by a null.
  [[nodiscard]] T Median() const;

  /// Sample variance (sum of x^2 - n mean^2) / (n - 1) by the one-pass form.
  ///
  /// The form cancels: it is wrong in all digits, and may be negative, when the mean exceeds the deviation by 1e7 and
  /// more. Subtract a constant near the mean from such data first.
  /// @return not a number for one element.
  [[nodiscard]] T Variance() const noexcept;
  /// The same formula about the given mean.
  [[nodiscard]] T Variance(T mean) const noexcept;

  /// Square root of Variance() where that is 1e-6 or more, 0 otherwise: a deviation below 0.001 reads as 0. Scale data
  /// of small spread first. A variance that is not a number gives 0.
  [[nodiscard]] T StandardDeviation() const noexcept;
  /// The same from Variance(mean).
  [[nodiscard]] T StandardDeviation(T mean) const noexcept;

  /// Sum of x^2.
  [[nodiscard]] T Momentum2() const noexcept;
  /// Sum of x y over the first min(size, @p n) elements of the array and of @p other.
  [[nodiscard]] T MixMomentum(std::int32_t n, const T* other) const noexcept;

  /// Interval of the true mean of a normal sample of this size: mean -+ z sd / sqrt(n), z = 1.645, 1.96, 2.58, 2.81.
  void MeanConfidenceInterval(qxProbability probability, T mean, T standardDeviation, T& low, T& high) const noexcept;

  /// Interval of the true variance of a normal sample of this size: (n - 1) variance / (0.5 (s + z)^2) to
  /// (n - 1) variance / (0.5 (s - z)^2) with s = sqrt(2 n - 3) and z = 1.28, 1.645, 2.33, 2.58 (R. A. Fisher's
  /// approximation of chi-square). It is meaningless where s is not well above z: n below 6.
  void VarianceConfidenceInterval(qxProbability probability, T variance, T& low, T& high) const noexcept;

  /// Limits that hold at least the share @p p of any distribution: mean -+ k sd with k = sqrt(1 / (1 - p)), and
  /// k = 999.9999999999998 for p above 0.999999 (P. L. Chebyshev's inequality).
  static void ChebyshevLimits(T p, T mean, T standardDeviation, T& low, T& high) noexcept;

  /// Pearson's correlation coefficient over the first min(size, @p n) elements, in two passes: -1 to 1 up to rounding,
  /// 0 where either array is constant or empty.
  [[nodiscard]] T CorrelationCoefficient(std::int32_t n, const T* other) const noexcept;

  /// Fits other = a x + b to the first min(size, @p n) elements x of the array by least squares.
  ///
  /// Where all x are equal, a is 0 and b the mean of @p other.
  /// @param n number of elements of @p other
  /// @param other the dependent values
  /// @param withVariance other than 0: the variance of the residuals is calculated too, for GetResidualVariance()
  /// @param a slope
  /// @param b intercept
  /// @return 1; 0 for fewer than 3 elements: then @p a and @p b stay untouched and the object has no data any more.
  std::int32_t LinearRegression(std::int32_t n, const T* other, std::int32_t withVariance, T& a, T& b) noexcept;

  /// Sum of the squared residuals of the last LinearRegression() over n - 2.
  /// @return 1; 0 when the last regression did not calculate it: then @p variance stays untouched.
  std::int32_t GetResidualVariance(T& variance) const noexcept;

  /// Kolmogorov-Smirnov test: 1 when the greatest distance between the empirical and the assumed distribution function
  /// is within c / sqrt(n), c = 1.07, 1.22, 1.36 by level, 0 otherwise. Any other level has c = 0.
  ///
  /// From 1024 elements on the sorted data is dealt in turn into n / 1024 samples, each of which must be within c / 32.
  /// The normal distribution function is a closed approximation with an error below 4e-5. O(n log n).
  /// @param a left end of the segment, or the mean
  /// @param b right end of the segment, or the standard deviation
  /// @param level level of significance
  /// @param kind 0: uniform distribution on a..b; otherwise normal distribution
  [[nodiscard]] std::int32_t KolmogorovSmirnovTest(T a, T b, qxSignificanceLevel level, std::int32_t kind) const;

  /// Chi-square test of a uniform distribution on @p a .. @p b with 20 bins: 1 when chi-square is at most 25.0, 28.4,
  /// 31.4 by level, 0 otherwise; 0 too when an element lies a bin's width or more below @p a or above @p b.
  [[nodiscard]] std::int32_t TestEquidistribution(T a, T b, qxSignificanceLevel level) const noexcept;

  /// Runs up and down: 1 when there are more than ((n + 1) + z sqrt(n - 1)) / 2 of them, z = -0.84, -1.28, -1.645 by
  /// level, 0 otherwise. A run ends where rising turns into falling or back; equal neighbours end nothing. Data that
  /// swings more often than chance would have it passes.
  [[nodiscard]] std::int32_t RunsUpAndDownTest(qxSignificanceLevel level) const noexcept;

  /// 0 when abs(Mean() - mean) / StandardDeviation() is above z = 1.28, 1.645, 1.96 by level, 1 otherwise.
  ///
  /// The deviation is that of one element and not of the mean: this asks whether the given mean is a likely element,
  /// and passes far more often than a test of the mean, for which call MeanConfidenceInterval().
  [[nodiscard]] std::int32_t TestNormalMean(T mean, qxSignificanceLevel level) const noexcept;

  /// 1 when Variance() is within (1 -+ z sqrt(2 / (n - 1))) @p variance, bounds included, z = 1.28, 1.645, 1.96 by
  /// level, 0 otherwise.
  [[nodiscard]] std::int32_t TestNormalVariance(T variance, qxSignificanceLevel level) const noexcept;

  /// Rank of the ordering of @p k elements, 0 to k! - 1, another one for each of the k! orderings; ascending order has
  /// the rank k! - 1. Equal elements rank as if the first were the larger.
  ///
  /// The largest of the first m elements gives a digit of base m, its place, and the last of them takes that place; m
  /// runs from k down to 1 (after D. E. Knuth, The Art of Computer Programming 2, algorithm 3.3.2P).
  /// @return 0 for k below 2 and, beyond 12 elements, the rank modulo 2^32.
  [[nodiscard]] static std::int32_t PermutationValue(std::int32_t k, const T* block);

  /// Chi-square test of the orderings of the n / k successive blocks of @p k elements, all k! of which should be
  /// equally frequent: 1 passed, 0 failed; 0 for k below 1 or above 12. Choose k so that n / k is well above k!.
  [[nodiscard]] std::int32_t PermutationTest(std::int32_t k, qxSignificanceLevel level) const;

  /// Cascade on a normal distribution: KolmogorovSmirnovTest(), TestNormalMean(), TestNormalVariance().
  ///
  /// Each scores 0, 1 or 3 for the first of the levels 20, 10 and 5 percent that it passes, 10 for none. A sum of 0 is
  /// the grade 0, below 4 grade 1, below 10 grade 2, otherwise 3.
  /// @param mean mean
  /// @param variance variance for TestNormalVariance(), and the same number as the standard deviation of the
  ///   Kolmogorov-Smirnov test: both hold only for a variance of 1. Standardise the data first.
  [[nodiscard]] qxStatisticalTest TestNormality(T mean, T variance) const;

  /// Cascade on a uniform distribution on @p a .. @p b: KolmogorovSmirnovTest() and TestEquidistribution(), scored as
  /// in TestNormality(). A sum of 0 is the grade 0, below 3 grade 1, below 10 grade 2, otherwise 3.
  [[nodiscard]] qxStatisticalTest TestUniformity(T a, T b) const;

  /// Cascade on randomness: RunsUpAndDownTest() and PermutationTest(), graded as in TestUniformity().
  ///
  /// The block length of the second, 3 to 6, is drawn afresh from the wall clock, so that two calls on the same data
  /// can differ.
  [[nodiscard]] qxStatisticalTest TestRandomness() const;

  /// Replaces each element by the mean of the @p width elements centred on it, an even width counting as the next odd
  /// one; at the ends the mean of those that exist. A width of 1 or less does nothing. O(n width).
  void AverageFiltering(std::int32_t width);
  /// The same for the elements from @p first to @p last, both included and cut to the array: nothing outside them is
  /// read or written.
  void AverageFiltering(std::int32_t width, std::int32_t first, std::int32_t last);

  /// The same as AverageFiltering() with Gaussian weights exp(-d^2 / (2 sigma^2)), half the width being three sigma.
  void GaussFiltering(std::int32_t width);
  /// The same for the elements from @p first to @p last, both included and cut to the array: nothing outside them is
  /// read or written.
  void GaussFiltering(std::int32_t width, std::int32_t first, std::int32_t last);

 private:
  [[nodiscard]] double MeanInDouble() const noexcept;
  [[nodiscard]] double SumOfProducts(std::int32_t n, const T* other) const noexcept;
  [[nodiscard]] double VarianceInDouble(double mean) const noexcept;
  [[nodiscard]] double DeviationInDouble(double mean) const noexcept;
  template <typename Weight>
  void Smooth(std::int32_t width, std::int32_t first, std::int32_t last, Weight weight);

  std::int32_t m_size = 0;
  T* m_data = nullptr;
  std::int32_t m_hasResidualVariance = 0;
  T m_residualVariance = 0;
};

extern template class QX_API CQXStatistics<float>;
extern template class QX_API CQXStatistics<double>;

#include <qx/arrays/random.h>
#include <qx/arrays/sorting.h>
#include <qx/arrays/statistics.h>
#include <qx/vectors/vector2.h>

#include "fuzz/input.h"

namespace {

template <typename T>
void Run(Input& input) {
  const std::int32_t n = input.Integer(0, 60), first = input.Integer(0, 60), last = input.Integer(0, 60);
  const std::int32_t flags = input.Integer(0, 3);
  std::vector<T> data = input.Numbers<T>(static_cast<std::size_t>(n)), target(data.size());
  std::vector<std::int32_t> indices(data.size());
  qxSort(n, data.data(), target.data(), flags % 2, flags / 2);
  qxSort(n, data.data(), target.data(), indices.data(), flags % 2, flags / 2);
  qxSort2DArray(n / 2, data.data(), target.data(), input.Number<T>(), flags / 2, flags % 2, 0);
  CQXStatistics<T> statistics(n, data.data());
  const auto level = input.Choice<qxSignificanceLevel>(4);
  const T a = input.Number<T>(), b = input.Number<T>();
  T x = 0, y = 0;
  (void)statistics.Median();
  (void)statistics.KolmogorovSmirnovTest(a, b, level, input.Integer(0, 2));
  (void)statistics.TestEquidistribution(a, b, level);
  (void)statistics.PermutationTest(input.Integer(-1, 14), level);
  (void)statistics.TestNormality(a, b);
  (void)statistics.TestUniformity(a, b);
  statistics.LinearRegression(n, target.data(), 1, x, y);
  statistics.AverageFiltering(input.Integer(-2, 70), first, last);
  statistics.GaussFiltering(input.Integer(-2, 70), first, last);
  CQXRandom<T> random;
  random.SetAlgorithm(input.Integer(0, 3));
  const std::vector<T> lags = input.Numbers<T>(32);
  random.SetSWBSeeds(lags.data());
  random.SetSWBState(input.Integer(-40, 40), input.Number<T>());
  random.SetXorshift32Seeds(input.Byte(), input.Byte(), input.Byte(), input.Byte());
  switch (input.Integer(0, 2)) {
    case 0:
      random.SetUniform(a, b);
      break;
    case 1:
      random.SetNormal(a, b);
      break;
    default:
      random.SetExponential(a);
  }
  random.Initialize();
  for (int i = 0; i < 40; ++i) (void)random.GetNumber();
  (void)random.GetIntegerNumber32(input.Byte() - 128, std::numeric_limits<std::int32_t>::max());
  (void)random.GetIntegerNumber64(std::numeric_limits<std::int64_t>::min(), input.Byte());
}

}  // namespace

QX_FUZZ(Run)

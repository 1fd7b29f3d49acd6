#pragma once

#include <qx/matrices/matrix_mn.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "tests/typed_test.h"

/// Matrices of many kinds, and residuals in units of the rounding error.
namespace residuals {

inline const std::vector<std::string> kinds = {"random",     "hilbert",     "vandermonde", "rank deficient",
                                               "graded up",  "graded down", "zero",        "diagonal",
                                               "bidiagonal", "zero rows",   "equal",       "tiny"};

template <typename T>
CQXMatrixMN<T> Make(const std::string& kind, std::int32_t rows, std::int32_t columns) {
  CQXMatrixMN<T> m(rows, columns);
  std::mt19937_64 generator(static_cast<std::uint64_t>(rows * 1000 + columns));
  const auto number = [&] { return static_cast<double>(generator() >> 11) / 4503599627370496.0 - 1; };
  const std::int32_t rank = std::max(1, std::min(rows, columns) / 2);
  std::vector<double> left(static_cast<std::size_t>(rows * rank)), right(static_cast<std::size_t>(columns * rank));
  for (double& x : left) x = number();
  for (double& x : right) x = number();
  const double steps = std::max(1, std::max(rows, columns) - 1);
  for (std::int32_t r = 0; r < rows; ++r) {
    for (std::int32_t c = 0; c < columns; ++c) {
      double x = number();
      if (kind == "hilbert") x = 1.0 / (r + c + 1);
      if (kind == "vandermonde") x = std::pow((r + 1.0) / rows, c);
      if (kind == "rank deficient") {
        x = 0;
        for (std::int32_t k = 0; k < rank; ++k) {
          x += left[static_cast<std::size_t>(r * rank + k)] * right[static_cast<std::size_t>(c * rank + k)];
        }
      }
      if (kind == "graded up") x *= std::pow(10.0, 24.0 * std::max(r, c) / steps - 12);
      if (kind == "graded down") x *= std::pow(10.0, 12 - 24.0 * std::max(r, c) / steps);
      if (kind == "zero") x = 0;
      if (kind == "diagonal" && r != c) x = 0;
      if (kind == "bidiagonal" && r != c && r + 1 != c) x = 0;
      if (kind == "zero rows" && (r % 3 == 1 || c % 4 == 2)) x = 0;
      if (kind == "equal") x = 1;
      if (kind == "tiny") x *= 1e-30;
      m(r, c) = static_cast<T>(x);
    }
  }
  return m;
}

/// Largest absolute element, without the guard of the norms.
template <typename T>
double Largest(const CQXBaseMatrix<T>& m) {
  double largest = 0;
  for (std::int32_t i = 0; i < m.RowsNb() * m.ColsNb(); ++i) {
    if (!(std::abs(static_cast<double>(m[i])) <= largest)) largest = std::abs(static_cast<double>(m[i]));
  }
  return largest;
}

/// Root of the sum of squares, which stays in the range of double: the elements are between 1e-31 and 1e13.
template <typename T>
double Size(const CQXBaseMatrix<T>& m) {
  double sum = 0;
  for (std::int32_t i = 0; i < m.RowsNb() * m.ColsNb(); ++i) sum += std::pow(static_cast<double>(m[i]), 2);
  return std::sqrt(sum);
}

/// The largest residuals that the tests met, printed when the program ends.
struct Table {
  std::map<std::string, double> largest;
  ~Table() {
    for (const auto& [name, value] : largest) std::printf("largest residual %-44s %8.2f eps\n", name.c_str(), value);
  }
};

/// Expects residual / (eps scale) to be at most the bound; a residual of 0 passes for every scale.
template <typename T>
void ExpectSmall(const std::string& name, double residual, double scale, double bound) {
  const double inEps = residual == 0 ? 0 : residual / (static_cast<double>(std::numeric_limits<T>::epsilon()) * scale);
  EXPECT_LE(inEps, bound) << name;
  static Table table;
  double& largest = table.largest[name + (sizeof(T) == 4 ? ", float" : ", double")];
  largest = std::max(largest, inEps);
}

/// Distance of Q^T Q from the unit matrix.
template <typename T>
double LossOfOrthogonality(const CQXMatrixMN<T>& Q) {
  CQXMatrixMN<T> product = Q.Transpose() * Q;
  for (std::int32_t i = 0; i < Q.ColsNb(); ++i) product(i, i) -= 1;
  return Size(product);
}

}  // namespace residuals

#pragma once

#include <array>
#include <cstddef>

/// x' = a x + f in 64-bit floats, solved apart from the eigenvalues.
template <std::size_t N>
struct Reference {
  using State = std::array<double, N>;

  double a[N][N];
  State f;

  /// The state after @p time from @p start by the Taylor series of the exponential in small steps; four of its terms
  /// are the classical method of Runge and Kutta.
  State Exact(const State& start, double time) const {
    constexpr int steps = 64;
    const long double h = static_cast<long double>(time) / steps;
    std::array<long double, N> x;
    for (std::size_t r = 0; r < N; ++r) x[r] = start[r];
    for (int step = 0; step < steps; ++step) {
      std::array<long double, N> term = x;
      for (int n = 1; n < 16; ++n) {
        const std::array<long double, N> y = term;
        for (std::size_t r = 0; r < N; ++r) {
          long double rate = n == 1 ? f[r] : 0;
          for (std::size_t c = 0; c < N; ++c) rate += a[r][c] * y[c];
          term[r] = rate * h / n;
          x[r] += term[r];
        }
      }
    }
    State result;
    for (std::size_t r = 0; r < N; ++r) result[r] = static_cast<double>(x[r]);
    return result;
  }
};

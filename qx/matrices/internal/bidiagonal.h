#pragma once

#include <qx/foundation/scalar.h>

#include <cstddef>
#include <cstdint>

/// @file
/// Internal. From a matrix to bidiagonal form, and from there to singular numbers.

namespace qxMatrices {

/// Bidiagonal matrix on its way to diagonal form: d[i] on the diagonal, e[i] joins d[i - 1] and d[i], e[0] is unused.
/// The rows of left and right are the columns of U and V; null where they are not wanted.
template <qxReal T>
struct Bidiagonal {
  std::size_t size;
  T* d;
  T* e;
  T* left;
  std::size_t leftLength;
  T* right;
  std::size_t rightLength;
};

/// Length of (a, b): sqrt(a^2 + b^2) without overflow; 0 when @p b is the larger and within QX_TOLERANCE of zero.
template <qxReal T>
[[nodiscard]] T Pythagoras(T a, T b) noexcept;

/// Rotation that turns (a, b) into (r, 0): c = a / r, s = b / r. An r below 1.5 tolerance gives c = 1, s = 0.
template <qxReal T>
void Givens1(T a, T b, T& c, T& s, T& r, T tolerance) noexcept;

/// Makes ones on the diagonal of rows x columns elements, zeros elsewhere.
template <qxReal T>
void SetToUnit(std::size_t rows, std::size_t columns, T* target) noexcept;

/// Reduces @p a, which is not wider than high and is destroyed, by reflections, and collects them as rows of the first
/// @p leftCount columns of U, and of V.
/// @return 0; 2 when memory was refused.
template <qxReal T>
std::int32_t ReduceToBidiagonal(std::size_t rows, std::size_t columns, T* a, std::size_t leftCount,
                                Bidiagonal<T>& target);

/// Clears the row of a zero diagonal element: rotates its superdiagonal element out to the right.
template <qxReal T>
void ZeroRightTransform(Bidiagonal<T>& b, std::size_t zero, std::size_t last) noexcept;
/// Clears the column of a zero last diagonal element: rotates the superdiagonal element above it out upwards.
template <qxReal T>
void ZeroUpperTransform(Bidiagonal<T>& b, std::size_t first, std::size_t zero) noexcept;

/// Implicitly shifted QR sweeps over the block first .. last, until it splits before @p index.
/// @param sweeps is raised by the number of sweeps
/// @param rotations 4 size elements: cosines and sines of one sweep, right and left
/// @return 0; 1 after 30 sweeps.
template <qxReal T>
std::int32_t IterateOnBlock(Bidiagonal<T>& b, std::size_t first, std::size_t last, T tolerance, std::size_t& index,
                            std::size_t& sweeps, T* rotations) noexcept;
/// Drives IterateOnBlock() over the blocks between negligible superdiagonal elements, 30 sweeps for each column at
/// most.
/// @return 0; 1 without convergence, 2 when memory was refused.
template <qxReal T>
std::int32_t IterateOnBlocks(Bidiagonal<T>& b, T tolerance);
/// Turns the bidiagonal into descending singular numbers that are not negative. @return as IterateOnBlocks()
template <qxReal T>
std::int32_t FindSingularNumbers(Bidiagonal<T>& b, T tolerance);

}  // namespace qxMatrices

#pragma once

#include <qx/foundation/api.h>
#include <qx/matrices/matrix2.h>
#include <qx/vectors/vector2.h>

#include <cstdint>

/// Eigenstructure of the matrix of a system of two linear differential equations, and the form of the homogeneous
/// solution that goes with it. C is the matrix of the constants, col0 and col1 its columns.
enum qxSLDE2GeneralType : std::int32_t {
  QX_SLDE2_GENERAL_NONE = 0,          ///< not classified
  QX_SLDE2_2_EXPONENTS = 1,           ///< two real eigenvalues: C (exp(l0 t), exp(l1 t))
  QX_SLDE2_1_EXP_1_EIGENVECTOR = 2,   ///< a double eigenvalue, one eigenvector: (col0 + col1 t) exp(l t)
  QX_SLDE2_1_EXP_2_EIGENVECTORS = 3,  ///< a double eigenvalue, two eigenvectors: (col0 + col1) exp(l t)
  QX_SLDE2_COMPLEX = 4                ///< a complex pair a +- i b: C (exp(a t) cos(b t), exp(a t) sin(b t))
};

/// Case of the constant forcing, and the form of the particular solution.
enum qxSLDE2InhomogenType : std::int32_t {
  QX_SLDE2_HOMOGENEOUS = 0,               ///< no forcing
  QX_SLDE2_INHOM_REGULAR = 1,             ///< no eigenvalue is zero: a constant
  QX_SLDE2_INHOM_ZERO_EXPONENT = 2,       ///< the first of two real eigenvalues is zero: degree 1
  QX_SLDE2_INHOM_ZERO_1_EIGENVECTOR = 3,  ///< a double zero, one eigenvector: degree 2
  QX_SLDE2_INHOM_ZERO_2_EIGENVECTORS = 4  ///< a double zero, two eigenvectors, so the matrix is zero: degree 1
};

/// System of two linear differential equations with constant coefficients, x'(t) = A x(t) + f with x(t0) = x0, solved
/// in closed form: nothing is integrated numerically.
///
/// Call SetTransformation(), SetInitialCondition(), CalculateGeneralSolution() and CalculateParticularSolution() in
/// this order, then GetSolutionAtTime() as often as wanted; CalculateTrajectory() stands for the initial condition at
/// the time 0, the particular solution and a row of samples.
///
/// Mind the sign of the forcing. In the regular case (QX_SLDE2_INHOM_REGULAR) the constant y with A y = f is added, so
/// the function that is returned solves x' = A x - f: pass -f there to solve x' = A x + f. The other cases solve
/// x' = A x + f. GetInhomogenType() tells which one it is.
///
/// No errors are reported. The precision is an absolute bound (see SetPrecision()), so scale systems whose coefficients
/// are far from 1. Where a small linear system counts as singular, its unknowns are 0:
/// - in the regular case, abs(det(A)) below the precision, such as that of a double eigenvalue of 1e-4: the particular
///   solution is 0.
/// - the constants, when the determinant of the basis at t0 is below the precision: the homogeneous part is 0 and the
///   initial condition does not hold. It happens for negative exponents times t0 that are large, where a smaller
///   precision or an earlier t0 helps, and for eigenvalues that are almost a double one.
///
/// Distinct objects may be used from different threads, and one object for reading once it is calculated.
template <typename T>
class QX_API CQXSLDE2 {
 public:
  /// A = 0, f = 0, x0 = 0 and t0 = 0, not classified, with the precision 1e-6.
  CQXSLDE2() noexcept = default;
  /// SetTransformation() on a new object.
  CQXSLDE2(const CQXMatrix2<T>& A, const CQXVector2<T>& f) noexcept { SetTransformation(A, f); }

  /// Stores the matrix and the forcing, and forgets all that was calculated; initial condition and precision stay.
  ///
  /// The system is homogeneous when f is almost zero at 1e-6, whatever the precision is; f is then ignored. By the
  /// guarded length that holds for components up to some 3e-5 (float: 3e-4).
  void SetTransformation(const CQXMatrix2<T>& A, const CQXVector2<T>& f) noexcept;

  /// Sets x(t0) = (x, y). CalculateParticularSolution() has to follow.
  void SetInitialCondition(T x, T y, T t0) noexcept;

  /// Classifies the matrix and the forcing, and finds the basis of the general solution and the particular solution of
  /// the inhomogeneous system.
  ///
  /// Real eigenvalues that differ by the precision or less, and those whose discriminant (the square of half their
  /// difference) is within the precision, count as a double one. When the basis vector that a double eigenvalue asks
  /// for comes out as exactly zero, the other unit vector and QX_SLDE2_1_EXP_2_EIGENVECTORS take its place, so that the
  /// initial condition holds.
  ///
  /// A complex pair needs a small block of memory. When it is refused by an exception, the system is not classified;
  /// when by a null, the basis is zero.
  void CalculateGeneralSolution();

  /// Finds the constants of the general solution for the initial condition. Nothing happens before
  /// CalculateGeneralSolution().
  void CalculateParticularSolution() noexcept;

  /// Solution at the time @p t; the zero vector before CalculateGeneralSolution().
  [[nodiscard]] CQXVector2<T> GetSolutionAtTime(T t) const noexcept;

  /// Sets x(0) = (x, y) and writes the solution at the times 0, h, 2 h, ..., (n - 1) h to @p out.
  ///
  /// The first sample is (x, y) itself. For @p n below 2 only the initial condition is stored, and nothing is written.
  /// @param n number of samples
  /// @param out room for n vectors
  /// @param forward h is @p dt, and -dt for 0
  void CalculateTrajectory(T x, T y, std::int32_t n, CQXVector2<T>* out, T dt, std::int32_t forward) noexcept;

  [[nodiscard]] qxSLDE2GeneralType GetGeneralType() const noexcept { return m_generalType; }
  [[nodiscard]] qxSLDE2InhomogenType GetInhomogenType() const noexcept { return m_inhomogenType; }
  /// Two real eigenvalues, the one of the smaller absolute value first; a double one twice; or the real and the
  /// positive imaginary part of a complex pair. Those within the precision of zero are exactly 0. The zero vector
  /// before CalculateGeneralSolution().
  [[nodiscard]] CQXVector2<T> GetEigenvalues() const noexcept { return m_eigenvalues; }

  [[nodiscard]] T GetPrecision() const noexcept { return m_precision; }
  /// Sets the absolute bound of the next calculations, 1e-6 by default for both element types: what discriminants,
  /// eigenvalues, their difference, elements of A - l I and determinants are compared with. Nothing is classified
  /// again.
  void SetPrecision(T precision) noexcept { m_precision = precision; }

  /// Verifies the basis of the general solution: 1 when the vectors satisfy the equations of their type, such as
  /// A v = l v, within the precision; 0 otherwise and for QX_SLDE2_GENERAL_NONE.
  ///
  /// Vectors are compared by their guarded distance, so differences up to some 3e-5 (float: 3e-4) pass. Eigenvalues
  /// that were taken for a double one may fail.
  [[nodiscard]] std::int32_t TestHomogGeneralSolution() const noexcept;
  /// Returns 1 always; kept for callers that run both tests.
  [[nodiscard]] std::int32_t TestInhomSolution() const noexcept { return 1; }

 private:
  void FindTypeOfGeneralSolution();
  void FindComplexBasis();
  /// Finds the basis of a double eigenvalue; sets the general type and the inhomogeneous type of a zero one.
  void FindBasisOfDoubleEigenvalue() noexcept;
  void SolveInhomogeneous() noexcept;

  void SetMatrix_2_Exponents() noexcept;
  void SetMatrix_1_Exp_1_Eigenvector() noexcept;
  void SetMatrix_1_Exp_2_Eigenvectors() noexcept;
  void SetMatrixComplexCase() noexcept;

  [[nodiscard]] CQXVector2<T> Solution_2_Exponents(T t) const noexcept;
  [[nodiscard]] CQXVector2<T> Solution_1_Exp_1_Eigenvector(T t) const noexcept;
  [[nodiscard]] CQXVector2<T> Solution_1_Exp_2_Eigenvectors(T t) const noexcept;
  [[nodiscard]] CQXVector2<T> SolutionComplexCase(T t) const noexcept;

  /// The constants c with W c = x0, less the particular solution at t0; zero when W is singular within the precision.
  [[nodiscard]] CQXVector2<T> FindCoefficients(const CQXMatrix2<T>& W) const noexcept;
  void FindParticularSolutionAtTime(T t, CQXVector2<T>& out) const noexcept;
  /// v = c1 times the first plus c2 times the second basis vector; untouched when they are dependent.
  void DecomposeVectorByEigenvectors(const CQXVector2<T>& v, T& c1, T& c2) const noexcept;

  [[nodiscard]] bool IsZero(T eigenvalue) const noexcept {
    return eigenvalue >= -m_precision && eigenvalue <= m_precision;
  }

  CQXMatrix2<T> m_A;
  CQXVector2<T> m_f;
  CQXVector2<T> m_x0;
  T m_t0 = 0;
  std::int32_t m_homogeneous = 1;
  qxSLDE2GeneralType m_generalType = QX_SLDE2_GENERAL_NONE;
  qxSLDE2InhomogenType m_inhomogenType = QX_SLDE2_HOMOGENEOUS;
  CQXVector2<T> m_eigenvalues;
  CQXMatrix2<T> m_C;
  CQXVector2<T> m_eigenvectors[2];
  CQXVector2<T> m_polynomial[2];
  std::int32_t m_coefficientsNb = 0;
  std::int32_t m_shift = 0;  ///< power of the time that goes with the first coefficient
  T m_precision = T(1e-6);
};

extern template class QX_API CQXSLDE2<float>;
extern template class QX_API CQXSLDE2<double>;

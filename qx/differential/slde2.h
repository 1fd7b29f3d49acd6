#pragma once

#include <qx/foundation/api.h>
#include <qx/foundation/scalar.h>
#include <qx/matrices/matrix2.h>
#include <qx/vectors/vector2.h>

#include <cstdint>

/// Eigenstructure of the matrix of a CQXSLDE2, and with it the form of the homogeneous solution. C are the constant
/// vectors, l the eigenvalues, a +- ib a complex pair.
enum qxSLDE2GeneralType : std::int32_t {
  QX_SLDE2_GENERAL_NONE = 0,          ///< not classified
  QX_SLDE2_2_EXPONENTS = 1,           ///< two real eigenvalues: C (e^(l1 t), e^(l2 t))
  QX_SLDE2_1_EXP_1_EIGENVECTOR = 2,   ///< a double one with one eigenvector: C0 e^(l t) + C1 t e^(l t)
  QX_SLDE2_1_EXP_2_EIGENVECTORS = 3,  ///< a double one with two eigenvectors: (C0 + C1) e^(l t)
  QX_SLDE2_COMPLEX = 4                ///< a complex pair: C (e^(a t) cos b t, e^(a t) sin b t)
};

/// Form of the particular solution of a CQXSLDE2.
enum qxSLDE2InhomogenType : std::int32_t {
  QX_SLDE2_HOMOGENEOUS = 0,               ///< no forcing: none
  QX_SLDE2_INHOM_REGULAR = 1,             ///< no eigenvalue is zero, or a complex pair: a constant
  QX_SLDE2_INHOM_ZERO_EXPONENT = 2,       ///< two real eigenvalues, the first is zero: degree 1
  QX_SLDE2_INHOM_ZERO_1_EIGENVECTOR = 3,  ///< a double zero with one eigenvector: degree 2
  QX_SLDE2_INHOM_ZERO_2_EIGENVECTORS = 4  ///< a double zero with two eigenvectors: degree 1
};

/// System of two linear differential equations with constant coefficients, x'(t) = A x(t) + f with x(t0) = x0, solved
/// in closed form from the eigenvalues of A. Nothing is integrated numerically.
///
/// Order of calls: SetTransformation(), SetInitialCondition(), CalculateGeneralSolution(), which needs A and f alone,
/// CalculateParticularSolution() after every change of the initial condition, then GetSolutionAtTime().
/// CalculateTrajectory() takes care of the initial condition by itself.
///
/// What the contract means for callers:
/// - For a forcing with the inhomogeneous type QX_SLDE2_INHOM_REGULAR the constant that is added is y with A y = f. The
///   function then solves x' = A x - f: hand in -f for x' = A x + f. The other types solve x' = A x + f as it stands.
/// - The precision, 1e-6 unless it is set, is an absolute band: it decides which eigenvalues count as equal, as zero
///   and as real, and which systems of equations count as singular. Scale the time so that eigenvalues are of the
///   order of 1.
/// - Constants that cannot be solved for are 0. That happens to nearly double roots, to a small determinant of A, and
///   where e^(l t0) carries the determinant below the precision: a large negative exponent times t0 needs a smaller
///   precision, or t0 = 0.
/// - A forcing that cannot be decomposed in the eigenvectors has no effect: with the inhomogeneous types 2 and 3, where
///   the two vectors of the basis are so nearly parallel that CQXVector2::DecomposeInBasis() refuses them at the
///   precision. That sliver of matrices lies where an eigenvalue is zero and the other one is small beside the
///   elements off the diagonal.
///
/// No operation reports failure. A calculated object may be read from several threads; distinct objects are
/// independent.
template <qxReal T>
class QX_API CQXSLDE2 {
 public:
  /// Sets A and f. Clears the types, the eigenvalues and everything calculated; the initial condition and the precision
  /// stay. A forcing of almost zero, by CQXVector2::IsAlmostZero() at 1e-6 whatever the precision, counts as none.
  void SetTransformation(const CQXMatrix2<T>& a, const CQXVector2<T>& f) noexcept;
  /// Sets x(t0) = (x, y).
  void SetInitialCondition(T x, T y, T t0) noexcept;
  /// Classifies A and finds the basis of the solution and the particular solution.
  ///
  /// Real eigenvalues that differ by no more than the precision, and those with the square of half their difference
  /// within it, count as a double one. A complex pair needs a small block of memory: when it is refused by an exception
  /// the system is not classified and has no solution, also none of before; when by a null its homogeneous solution is
  /// zero.
  void CalculateGeneralSolution();
  /// Finds the constants of the initial condition; nothing when the system is not classified.
  void CalculateParticularSolution() noexcept;
  /// The state at time @p t; the zero vector when the system is not classified.
  [[nodiscard]] CQXVector2<T> GetSolutionAtTime(T t) const noexcept;
  /// Sets x(0) = (x, y) and writes the states at the times 0, dt, 2 dt, ... to @p out, or at 0, -dt, -2 dt, ... when
  /// @p forward is 0. Each time is the index times the step. CalculateGeneralSolution() must have run.
  /// @param n number of states; below 2 only the initial condition is set
  /// @param[out] out room for @p n states; the first is (x, y)
  void CalculateTrajectory(T x, T y, std::int32_t n, CQXVector2<T>* out, T dt, std::int32_t forward) noexcept;

  /// The class of the homogeneous system.
  [[nodiscard]] qxSLDE2GeneralType GetGeneralType() const noexcept { return m_generalType; }
  /// The class of the forcing.
  [[nodiscard]] qxSLDE2InhomogenType GetInhomogenType() const noexcept { return m_inhomogenType; }
  /// Two real eigenvalues, the one of smaller magnitude first; a double one twice; or the real and the positive
  /// imaginary part of a pair. Those within the precision of zero are exactly 0.
  [[nodiscard]] CQXVector2<T> GetEigenvalues() const noexcept { return m_eigenvalues; }
  /// The tolerance of this object.
  [[nodiscard]] T GetPrecision() const noexcept { return m_precision; }
  /// Changes later calculations; nothing is classified anew.
  void SetPrecision(T precision) noexcept { m_precision = precision; }

  /// 1 when the basis of the solution satisfies its equations: qxAreAlmostEqual() at the precision; 0 otherwise, and
  /// when the system is not classified. By the guarded distance, differences of some 3e-5 (float: 3e-4) pass; roots
  /// that were taken for a double one may fail.
  [[nodiscard]] std::int32_t TestHomogGeneralSolution() const noexcept;
  /// 1 always.
  [[nodiscard]] std::int32_t TestInhomSolution() const noexcept { return 1; }

 private:
  void FindTypeOfGeneralSolution();
  void FindEigenvectorsOfPair();
  void FindEigenvectorsOfDoubleRoot();
  void FindEigenvectorsOfTwoRoots();
  [[nodiscard]] CQXVector2<T> FindGeneralizedVector(T eigenvalue, const CQXVector2<T>& v) const noexcept;
  void SolveInhomogeneous() noexcept;
  void FindParticularSolutionAtTime(T t, CQXVector2<T>& out) const noexcept;
  void DecomposeVectorByEigenvectors(const CQXVector2<T>& v, T& c1, T& c2) const noexcept;

  // The constants of each general type for the initial condition.
  [[nodiscard]] CQXVector2<T> FindCoefficients(const CQXMatrix2<T>& w) const noexcept;
  void SetMatrix_2_Exponents() noexcept;
  void SetMatrix_1_Exp_1_Eigenvector() noexcept;
  void SetMatrix_1_Exp_2_Eigenvectors() noexcept;
  void SetMatrixComplexCase() noexcept;

  // The homogeneous solution of each general type.
  [[nodiscard]] CQXVector2<T> Solution_2_Exponents(T t) const noexcept;
  [[nodiscard]] CQXVector2<T> Solution_1_Exp_1_Eigenvector(T t) const noexcept;
  [[nodiscard]] CQXVector2<T> Solution_1_Exp_2_Eigenvectors(T t) const noexcept;
  [[nodiscard]] CQXVector2<T> SolutionComplexCase(T t) const noexcept;

  [[nodiscard]] bool IsWithinPrecision(T x) const noexcept { return x >= -m_precision && x <= m_precision; }

  CQXMatrix2<T> m_a;
  CQXVector2<T> m_f;
  CQXVector2<T> m_x0;
  T m_t0 = 0;
  bool m_isHomogeneous = true;
  qxSLDE2GeneralType m_generalType = QX_SLDE2_GENERAL_NONE;
  qxSLDE2InhomogenType m_inhomogenType = QX_SLDE2_HOMOGENEOUS;
  CQXVector2<T> m_eigenvalues;
  CQXMatrix2<T> m_c;
  CQXVector2<T> m_eigenvectors[2];
  CQXVector2<T> m_coefficients[2];
  std::int32_t m_coefficientsNb = 0;
  std::int32_t m_shift = 0;
  T m_precision = T(1e-6);
};

extern template class QX_API CQXSLDE2<float>;
extern template class QX_API CQXSLDE2<double>;

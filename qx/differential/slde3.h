#pragma once

#include <qx/foundation/api.h>
#include <qx/foundation/scalar.h>
#include <qx/matrices/matrix3.h>
#include <qx/vectors/vector3.h>

#include <cstdint>

/// Eigenstructure of the matrix of a CQXSLDE3: its Jordan form.
enum qxSLDE3GeneralType : std::int32_t {
  QX_SLDE3_GENERAL_NONE = 0,          ///< not classified
  QX_SLDE3_3_EXPONENTS = 1,           ///< three real eigenvalues
  QX_SLDE3_2_EXP_3_EIGENVECTORS = 2,  ///< a simple and a double one, three eigenvectors
  QX_SLDE3_2_EXP_2_EIGENVECTORS = 3,  ///< a simple and a double one, two eigenvectors: t e^(l t) occurs
  QX_SLDE3_1_EXP_3_EIGENVECTORS = 4,  ///< a triple one, three eigenvectors: a multiple of the unit matrix
  QX_SLDE3_1_EXP_2_EIGENVECTORS = 5,  ///< a triple one, two eigenvectors: t e^(l t) occurs
  QX_SLDE3_1_EXP_1_EIGENVECTOR = 6,   ///< a triple one, one eigenvector: t^2 e^(l t) occurs
  QX_SLDE3_1_EXP_COMPLEX = 7          ///< a real one and a complex pair
};

/// Form of the particular solution of a CQXSLDE3.
enum qxSLDE3InhomogenType : std::int32_t {
  QX_SLDE3_HOMOGENEOUS = 0,        ///< no forcing: none
  QX_SLDE3_INHOM_REGULAR = 1,      ///< no eigenvalue is zero: a constant
  QX_SLDE3_INHOM_ZERO_SIMPLE = 2,  ///< one eigenvalue is zero: degree 1
  QX_SLDE3_INHOM_ZERO_DOUBLE = 3,  ///< two eigenvalues are zero: degree 1 or 2
  QX_SLDE3_INHOM_ZERO_TRIPLE = 4   ///< all eigenvalues are zero: degree 1 to 3
};

/// System of three linear differential equations with constant coefficients, x'(t) = A x(t) + f with x(t0) = x0, solved
/// in closed form from the eigenvalues of A. Nothing is integrated numerically.
///
/// Order of calls as in CQXSLDE2: SetTransformation(), SetInitialCondition(), CalculateGeneralSolution(), which needs A
/// and f alone, CalculateParticularSolution() after every change of the initial condition, then GetSolutionAtTime().
/// CalculateTrajectory() takes care of the initial condition by itself. Unlike there, every forcing has the sign of the
/// equation.
///
/// With the real eigenvalue l, the two others m +- sqrt(s), s < 0 for a complex pair, and the time from t0 the matrix
/// exponential is Newton's interpolation polynomial of e^(x t) at the three:
///
///     e^(A t) = e^(m t) (cosh(sqrt(s) t) I + sinh(sqrt(s) t) / sqrt(s) (A - m I) + h(t) ((A - m I)^2 - s I)),
///     h(t) = (e^((l - m) t) - cosh(sqrt(s) t) - (l - m) sinh(sqrt(s) t) / sqrt(s)) / ((l - m)^2 - s),
///
/// where close eigenvalues take the power series of h. It holds for every Jordan form, so that a solution stays right
/// when eigenvalues are nearly equal: the general type says what it looks like and decides nothing. Only an eigenvalue
/// that counts as zero changes the particular solution. All of it is computed in 64-bit floats (Putzer 1966; McCurdy,
/// Ng and Parlett 1984).
///
/// The precision, 1e-6 unless it is set, is an absolute band: eigenvalues that differ by no more count as equal, and
/// those within it of zero as zero; so do differences that rounding of the elements can cause. Scale the time so that
/// eigenvalues are of the order of 1. No operation reports failure or takes memory. A calculated object may be read
/// from several threads; distinct objects are independent.
template <qxReal T>
class QX_API CQXSLDE3 {
 public:
  /// Sets A and f. Clears the types, the eigenvalues and everything calculated; the initial condition and the precision
  /// stay. A forcing of almost zero, by CQXVector3::IsAlmostZero() at 1e-6 whatever the precision, counts as none.
  void SetTransformation(const CQXMatrix3<T>& a, const CQXVector3<T>& f) noexcept;
  /// Sets x(t0) = (x, y, z).
  void SetInitialCondition(T x, T y, T z, T t0) noexcept;
  /// Classifies A and finds the particular solution.
  void CalculateGeneralSolution() noexcept;
  /// Finds the constants of the initial condition; nothing when the system is not classified.
  void CalculateParticularSolution() noexcept;
  /// The state at time @p t; the zero vector when the system is not classified.
  [[nodiscard]] CQXVector3<T> GetSolutionAtTime(T t) const noexcept;
  /// Sets x(0) = (x, y, z) and writes the states at the times 0, dt, 2 dt, ... to @p out, or at 0, -dt, -2 dt, ... when
  /// @p forward is 0. Each time is the index times the step. CalculateGeneralSolution() must have run.
  /// @param n number of states; below 2 only the initial condition is set
  /// @param[out] out room for @p n states; the first is (x, y, z)
  void CalculateTrajectory(T x, T y, T z, std::int32_t n, CQXVector3<T>* out, T dt, std::int32_t forward) noexcept;

  /// The class of the homogeneous system.
  [[nodiscard]] qxSLDE3GeneralType GetGeneralType() const noexcept { return m_generalType; }
  /// The class of the forcing.
  [[nodiscard]] qxSLDE3InhomogenType GetInhomogenType() const noexcept { return m_inhomogenType; }
  /// Three real eigenvalues by ascending magnitude, equal ones as often as they count; or the real one, and the real
  /// and the positive imaginary part of a pair. Those that count as zero are exactly 0.
  [[nodiscard]] CQXVector3<T> GetEigenvalues() const noexcept { return m_eigenvalues; }
  /// The tolerance of this object.
  [[nodiscard]] T GetPrecision() const noexcept { return m_precision; }
  /// Changes later calculations; nothing is classified anew.
  void SetPrecision(T precision) noexcept { m_precision = precision; }

  /// 1 when A satisfies the equation of its eigenvalues, ((A - m I)^2 - s I) (A - l I) = 0, within the precision times
  /// the cube of 1 and its row sum norm; 0 otherwise, and when the system is not classified.
  [[nodiscard]] std::int32_t TestHomogGeneralSolution() const noexcept;
  /// 1 when the particular solution satisfies its equation at the times 0 and 1 within the precision times its size; 0
  /// otherwise, and when the system is not classified.
  [[nodiscard]] std::int32_t TestInhomSolution() const noexcept;

 private:
  using Vector = CQXVector3<double>;
  using Matrix = CQXMatrix3<double>;

  void FindEigenvalues() noexcept;
  [[nodiscard]] qxSLDE3GeneralType FindJordanForm() const noexcept;
  void FindTypeOfGeneralSolution() noexcept;
  void SolveInhomogeneous() noexcept;
  [[nodiscard]] Vector ParticularSolutionAt(double time) const noexcept;
  [[nodiscard]] Vector ParticularVelocityAt(double time) const noexcept;

  Matrix m_a;
  Vector m_f;
  Vector m_x0;
  double m_t0 = 0;
  bool m_isHomogeneous = true;
  qxSLDE3GeneralType m_generalType = QX_SLDE3_GENERAL_NONE;
  qxSLDE3InhomogenType m_inhomogenType = QX_SLDE3_HOMOGENEOUS;
  CQXVector3<T> m_eigenvalues;
  double m_real = 0;         ///< l
  double m_mean = 0;         ///< m
  double m_square = 0;       ///< s
  Vector m_c[3];             ///< constants of the initial condition, one for each function of the time
  Vector m_coefficients[4];  ///< of the particular solution, by powers of the time from t0
  T m_precision = T(1e-6);
};

extern template class QX_API CQXSLDE3<float>;
extern template class QX_API CQXSLDE3<double>;

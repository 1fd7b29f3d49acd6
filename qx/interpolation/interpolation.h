#pragma once

#include <qx/foundation/api.h>
#include <qx/foundation/polynomial.h>
#include <qx/foundation/rotations_order.h>
#include <qx/foundation/scalar.h>
#include <qx/interpolation/curve_rules.h>
#include <qx/matrices/base_matrix.h>
#include <qx/matrices/matrix2.h>
#include <qx/matrices/matrix3.h>
#include <qx/matrices/matrix4.h>
#include <qx/matrices/matrix_mn.h>
#include <qx/matrices/matrix_n.h>
#include <qx/transforms/quaternion.h>
#include <qx/vectors/base_vector.h>
#include <qx/vectors/vector2.h>
#include <qx/vectors/vector3.h>
#include <qx/vectors/vector4.h>
#include <qx/vectors/vector_n.h>

#include <cmath>
#include <concepts>
#include <cstdint>
#include <type_traits>

/// The number type of a number or a fixed vector.
template <typename V>
struct qxCurveElement;
template <qxReal T>
struct qxCurveElement<T> {
  using Type = T;  ///< the number itself
};
template <qxFixedVector V>
struct qxCurveElement<V> {
  using Type = typename V::Element;  ///< that of the components
};

/// A motion through keys: the arrays of three curves over the same nodes, borrowed, for CQXInterpolation::MotionAt(). A
/// curve that is null stands for no translation, no rotation, or factors of 1.
template <qxReal T>
struct qxMotion {
  std::int32_t n = 0;                                ///< number of keys
  const T* nodes = nullptr;                          ///< their times, ascending strictly
  const CQXVector3<T>* translations = nullptr;       ///< keys of the translation
  const CQXVector3<T>* velocities = nullptr;         ///< its slopes, by FindSlopes()
  const CQXQuaternion<T>* rotations = nullptr;       ///< keys of the rotation, of length 1
  const CQXVector3<T>* angularVelocities = nullptr;  ///< by FindAngularVelocities()
  const CQXVector3<T>* stretches = nullptr;          ///< keys of the factors of scaling along the axes
  const CQXVector3<T>* stretchVelocities = nullptr;  ///< their slopes, by FindSlopes()
};

/// Blends of vectors, matrices, rotations and affine transforms between two, three or four keys, for float and double.
///
/// Everything is static; an object holds nothing. Linear forms take the time as a fraction: 0 gives the first key, 1
/// the second one up to rounding, and a time outside [0, 1] extrapolates. Quadratic and cubic forms take a node, the
/// time of its key, for each key, and evaluate the one polynomial through all keys. Nodes may stand in any order;
/// nothing guards equal ones, whose division gives infinities and results that are not numbers.
///
/// Keys of run-time size must have the same shape; the result takes that of the first key and is obtained in one
/// allocation. When memory is refused by a null, the result has its sizes and no elements. Each function may be called
/// from any thread.
class QX_API CQXInterpolation {
 public:
  /// A time or a node: it takes no part in the deduction of the element type, so that plain numbers can be given.
  template <qxReal T>
  using Time = qxNonDeduced<T>;

  // ---- Numbers: the forms of the vectors, below, for a single one

  /// a + (b - a) t.
  template <qxReal T>
  [[nodiscard]] static constexpr T ScalarsLinear(T a, Time<T> b, Time<T> t) noexcept {
    return a + (b - a) * t;
  }
  /// The quadratic polynomial through three keys.
  template <qxReal T>
  [[nodiscard]] static constexpr T ScalarsQuadratic(T a, Time<T> b, Time<T> c, Time<T> t0, Time<T> t1, Time<T> t2,
                                                    Time<T> t) noexcept {
    return qxQuadraticAt<T, T>(InverseVandermondeMatrix<T>(t0, t1, t2).Data(), t, a, b, c);
  }
  /// The cubic polynomial through four keys.
  template <qxReal T>
  [[nodiscard]] static constexpr T ScalarsCubic(T a, Time<T> b, Time<T> c, Time<T> d, Time<T> t0, Time<T> t1,
                                                Time<T> t2, Time<T> t3, Time<T> t) noexcept {
    return qxCubicAt<T, T>(InverseVandermondeMatrix<T>(t0, t1, t2, t3).Data(), t, a, b, c, d);
  }

  // ---- Curves through any number of keys, numbers or fixed vectors: FindSlopes() once, then CurveAt().
  //
  // A curve is cubic between neighbouring keys and runs through them with the slopes given. The nodes are the times of
  // the keys and ascend strictly.

  /// The cubic over one interval of length @p h by Hermite's form, with the values and the slopes at its two ends, at
  /// the fraction @p u of it; or one of its derivatives by time.
  /// @param derivative 0 the value, 1 the velocity, 2 the acceleration, 3 its change; others give 0
  template <typename V>
  [[nodiscard]] static constexpr V Hermite(const V& y0, const V& m0, const V& y1, const V& m1,
                                           typename qxCurveElement<V>::Type h, typename qxCurveElement<V>::Type u,
                                           std::int32_t derivative = 0) noexcept {
    const V d = (y1 - y0) / h;
    const V k2 = d * 3 - m0 * 2 - m1, k3 = m0 + m1 - d * 2;
    if (derivative == 0) return y0 + (m0 + (k2 + k3 * u) * u) * (u * h);
    if (derivative == 1) return m0 + (k2 * 2 + k3 * (3 * u)) * u;
    if (derivative == 2) return (k2 * 2 + k3 * (6 * u)) / h;
    return derivative == 3 ? k3 * 6 / (h * h) : V();
  }

  /// The slopes of a curve at its keys; vectors component by component, O(n).
  ///
  /// QX_SLOPES_MONOTONE is the method of F. N. Fritsch and R. E. Carlson, Monotone piecewise cubic interpolation (SIAM
  /// J. Numer. Anal. 17, 1980), with the slopes of parabolas to start from. With QX_ENDS_CLAMPED the first and the last
  /// slope are read and, except by QX_SLOPES_MONOTONE, kept. With QX_ENDS_CLOSED the last key should equal the first.
  /// @param slopes room for @p n
  /// @return 1; 0 when n < 1, the nodes do not ascend strictly, or memory was refused (the spline takes a block of 2 n
  /// numbers): nothing is written.
  template <typename V>
  static std::int32_t FindSlopes(qxSlopes rule, qxEnds ends, std::int32_t n,
                                 const typename qxCurveElement<V>::Type* nodes, const V* values, V* slopes);

  /// The point of a curve, or a derivative as in Hermite(), at the time @p t; O(log n). The curve ends at its first and
  /// last key: outside it stays there, at rest. Take the time of a closed curve modulo its period.
  /// @param n at least 1
  template <typename V>
  [[nodiscard]] static V CurveAt(std::int32_t n, const typename qxCurveElement<V>::Type* nodes, const V* values,
                                 const V* slopes, typename qxCurveElement<V>::Type t,
                                 std::int32_t derivative = 0) noexcept {
    if (t < nodes[0] || n == 1) return derivative == 0 ? values[0] : V();
    if (t > nodes[n - 1]) return derivative == 0 ? values[n - 1] : V();
    const std::int32_t i = FindInterval(n, nodes, t);
    const typename qxCurveElement<V>::Type h = nodes[i + 1] - nodes[i];
    return Hermite(values[i], slopes[i], values[i + 1], slopes[i + 1], h, (t - nodes[i]) / h, derivative);
  }

  /// The interval i, from 0 to n - 2, with nodes[i] <= t < nodes[i + 1]; the first or the last for times outside, the
  /// first for not a number. @param n at least 2
  template <qxReal T>
  [[nodiscard]] static constexpr std::int32_t FindInterval(std::int32_t n, const T* nodes, Time<T> t) noexcept {
    std::int32_t low = 0, high = n - 1;
    while (high - low > 1) {
      const std::int32_t middle = low + (high - low) / 2;
      (t >= nodes[middle] ? low : high) = middle;
    }
    return low;
  }

  // ---- Gridded data, rows x columns by rows: the value at column x and row y, which need not be whole. Coordinates
  // outside the grid count as those of its border. Both sizes are at least 1, otherwise the value is 0; not a number
  // among the coordinates gives not a number.

  /// Bilinear: exact at the samples, and linear along rows and columns between them.
  template <qxReal T>
  [[nodiscard]] static T GridBilinear(std::int32_t rows, std::int32_t columns, const T* data, Time<T> x,
                                      Time<T> y) noexcept;
  /// Bicubic: exact at the samples, with continuous first derivatives, from the 4 x 4 samples around; samples beyond
  /// the border are those of the border.
  ///
  /// R. G. Keys, Cubic convolution interpolation for digital image processing (IEEE Trans. ASSP 29, 1981), a = -1/2.
  template <qxReal T>
  [[nodiscard]] static T GridBicubic(std::int32_t rows, std::int32_t columns, const T* data, Time<T> x,
                                     Time<T> y) noexcept;

  // ---- Vectors, element by element

  /// a + (b - a) t.
  template <typename T, template <typename> class V>
  requires qxFixedVector<V<T>>
  [[nodiscard]] static constexpr V<T> VectorsLinear(const V<T>& a, const V<T>& b, Time<T> t) noexcept {
    return a + (b - a) * t;
  }
  template <std::floating_point T>
  [[nodiscard]] static CQXBaseVector<T> VectorsLinear(const CQXBaseVector<T>& a, const CQXBaseVector<T>& b, Time<T> t);
  /// The same for both parts of complex numbers. They are stored exactly, small ones too; the results have no
  /// trigonometric form.
  template <std::floating_point T>
  [[nodiscard]] static CQXBaseVector<CQXComplex<T>> VectorsLinear(const CQXBaseVector<CQXComplex<T>>& a,
                                                                  const CQXBaseVector<CQXComplex<T>>& b, Time<T> t);
  template <std::floating_point T>
  [[nodiscard]] static CQXVectorN<T> VectorsLinear(const CQXVectorN<T>& a, const CQXVectorN<T>& b, Time<T> t) {
    return VectorsLinear(AsBase(a), AsBase(b), t);
  }

  /// The quadratic polynomial through three keys.
  template <typename T, template <typename> class V>
  requires qxFixedVector<V<T>>
  [[nodiscard]] static constexpr V<T> VectorsQuadratic(const V<T>& a, const V<T>& b, const V<T>& c, Time<T> t0,
                                                       Time<T> t1, Time<T> t2, Time<T> t) noexcept {
    return qxQuadraticAt(InverseVandermondeMatrix(t0, t1, t2).Data(), t, a, b, c);
  }
  template <std::floating_point T>
  [[nodiscard]] static CQXBaseVector<T> VectorsQuadratic(const CQXBaseVector<T>& a, const CQXBaseVector<T>& b,
                                                         const CQXBaseVector<T>& c, Time<T> t0, Time<T> t1, Time<T> t2,
                                                         Time<T> t);
  template <std::floating_point T>
  [[nodiscard]] static CQXVectorN<T> VectorsQuadratic(const CQXVectorN<T>& a, const CQXVectorN<T>& b,
                                                      const CQXVectorN<T>& c, Time<T> t0, Time<T> t1, Time<T> t2,
                                                      Time<T> t) {
    return VectorsQuadratic(AsBase(a), AsBase(b), AsBase(c), t0, t1, t2, t);
  }

  /// The cubic polynomial through four keys.
  template <typename T, template <typename> class V>
  requires qxFixedVector<V<T>>
  [[nodiscard]] static constexpr V<T> VectorsCubic(const V<T>& a, const V<T>& b, const V<T>& c, const V<T>& d,
                                                   Time<T> t0, Time<T> t1, Time<T> t2, Time<T> t3, Time<T> t) noexcept {
    return qxCubicAt(InverseVandermondeMatrix(t0, t1, t2, t3).Data(), t, a, b, c, d);
  }
  template <std::floating_point T>
  [[nodiscard]] static CQXBaseVector<T> VectorsCubic(const CQXBaseVector<T>& a, const CQXBaseVector<T>& b,
                                                     const CQXBaseVector<T>& c, const CQXBaseVector<T>& d, Time<T> t0,
                                                     Time<T> t1, Time<T> t2, Time<T> t3, Time<T> t);
  template <std::floating_point T>
  [[nodiscard]] static CQXVectorN<T> VectorsCubic(const CQXVectorN<T>& a, const CQXVectorN<T>& b,
                                                  const CQXVectorN<T>& c, const CQXVectorN<T>& d, Time<T> t0,
                                                  Time<T> t1, Time<T> t2, Time<T> t3, Time<T> t) {
    return VectorsCubic(AsBase(a), AsBase(b), AsBase(c), AsBase(d), t0, t1, t2, t3, t);
  }

  // ---- Matrices, element by element. The rank of a result is unknown and its singular numbers are not calculated.

  /// a + (b - a) t.
  template <typename T, template <typename> class M>
  requires qxFixedMatrix<M<T>>
  [[nodiscard]] static constexpr M<T> MatricesLinear(const M<T>& a, const M<T>& b, Time<T> t) noexcept {
    return a + (b - a) * t;
  }
  template <std::floating_point T>
  [[nodiscard]] static CQXBaseMatrix<T> MatricesLinear(const CQXBaseMatrix<T>& a, const CQXBaseMatrix<T>& b, Time<T> t);
  /// The same for both parts of complex numbers. They are stored exactly, small ones too; the results have no
  /// trigonometric form.
  template <std::floating_point T>
  [[nodiscard]] static CQXBaseMatrix<CQXComplex<T>> MatricesLinear(const CQXBaseMatrix<CQXComplex<T>>& a,
                                                                   const CQXBaseMatrix<CQXComplex<T>>& b, Time<T> t);
  template <std::floating_point T, template <typename> class M>
  requires std::derived_from<M<T>, CQXMatrixMN<T>>
  [[nodiscard]] static M<T> MatricesLinear(const M<T>& a, const M<T>& b, Time<T> t) {
    return MatricesLinear(AsBase(a), AsBase(b), t);
  }

  /// The quadratic polynomial through three keys.
  template <typename T, template <typename> class M>
  requires qxFixedMatrix<M<T>>
  [[nodiscard]] static constexpr M<T> MatricesQuadratic(const M<T>& a, const M<T>& b, const M<T>& c, Time<T> t0,
                                                        Time<T> t1, Time<T> t2, Time<T> t) noexcept {
    return qxQuadraticAt(InverseVandermondeMatrix(t0, t1, t2).Data(), t, a, b, c);
  }
  template <std::floating_point T>
  [[nodiscard]] static CQXBaseMatrix<T> MatricesQuadratic(const CQXBaseMatrix<T>& a, const CQXBaseMatrix<T>& b,
                                                          const CQXBaseMatrix<T>& c, Time<T> t0, Time<T> t1, Time<T> t2,
                                                          Time<T> t);
  template <std::floating_point T, template <typename> class M>
  requires std::derived_from<M<T>, CQXMatrixMN<T>>
  [[nodiscard]] static M<T> MatricesQuadratic(const M<T>& a, const M<T>& b, const M<T>& c, Time<T> t0, Time<T> t1,
                                              Time<T> t2, Time<T> t) {
    return MatricesQuadratic(AsBase(a), AsBase(b), AsBase(c), t0, t1, t2, t);
  }

  /// The cubic polynomial through four keys.
  template <typename T, template <typename> class M>
  requires qxFixedMatrix<M<T>>
  [[nodiscard]] static constexpr M<T> MatricesCubic(const M<T>& a, const M<T>& b, const M<T>& c, const M<T>& d,
                                                    Time<T> t0, Time<T> t1, Time<T> t2, Time<T> t3,
                                                    Time<T> t) noexcept {
    return qxCubicAt(InverseVandermondeMatrix(t0, t1, t2, t3).Data(), t, a, b, c, d);
  }
  template <std::floating_point T>
  [[nodiscard]] static CQXBaseMatrix<T> MatricesCubic(const CQXBaseMatrix<T>& a, const CQXBaseMatrix<T>& b,
                                                      const CQXBaseMatrix<T>& c, const CQXBaseMatrix<T>& d, Time<T> t0,
                                                      Time<T> t1, Time<T> t2, Time<T> t3, Time<T> t);
  template <std::floating_point T, template <typename> class M>
  requires std::derived_from<M<T>, CQXMatrixMN<T>>
  [[nodiscard]] static M<T> MatricesCubic(const M<T>& a, const M<T>& b, const M<T>& c, const M<T>& d, Time<T> t0,
                                          Time<T> t1, Time<T> t2, Time<T> t3, Time<T> t) {
    return MatricesCubic(AsBase(a), AsBase(b), AsBase(c), AsBase(d), t0, t1, t2, t3, t);
  }

  // ---- The polynomial behind the quadratic and cubic forms

  /// Inverse of the Vandermonde matrix of three nodes: it takes the values at the nodes to the coefficients of the
  /// polynomial, the highest power first. Column j holds the coefficients of the Lagrange polynomial of node j.
  template <std::floating_point T>
  [[nodiscard]] static constexpr CQXMatrix3<T> InverseVandermondeMatrix(T t0, Time<T> t1, Time<T> t2) noexcept {
    const T d0 = (t1 - t0) * (t2 - t0);
    const T d1 = (t1 - t0) * (t2 - t1);
    const T d2 = (t2 - t1) * (t2 - t0);
    return {1 / d0,          -1 / d1,        1 / d2,           //
            -(t1 + t2) / d0, (t0 + t2) / d1, -(t0 + t1) / d2,  //
            t1 * t2 / d0,    -t2 * t0 / d1,  t0 * t1 / d2};
  }
  /// The same for four nodes.
  template <std::floating_point T>
  [[nodiscard]] static constexpr CQXMatrix4<T> InverseVandermondeMatrix(T t0, Time<T> t1, Time<T> t2,
                                                                        Time<T> t3) noexcept {
    const T d0 = (t1 - t0) * (t2 - t0) * (t3 - t0);
    const T d1 = (t1 - t0) * (t2 - t1) * (t3 - t1);
    const T d2 = (t2 - t0) * (t2 - t1) * (t3 - t2);
    const T d3 = (t3 - t2) * (t3 - t1) * (t3 - t0);
    return {-1 / d0,
            1 / d1,
            -1 / d2,
            1 / d3,
            (t1 + t2 + t3) / d0,
            -(t0 + t2 + t3) / d1,
            (t0 + t1 + t3) / d2,
            -(t0 + t1 + t2) / d3,
            -(t1 * t2 + t1 * t3 + t2 * t3) / d0,
            (t0 * t2 + t0 * t3 + t2 * t3) / d1,
            -(t0 * t1 + t0 * t3 + t1 * t3) / d2,
            (t0 * t1 + t0 * t2 + t1 * t2) / d3,
            t1 * t2 * t3 / d0,
            -t0 * t2 * t3 / d1,
            t0 * t1 * t3 / d2,
            -t0 * t1 * t2 / d3};
  }

  // ---- Quaternions. The keys are used as they are, and no result is normalised.

  /// Spherical linear blend along the shorter arc: w1 q1 + w2 q2 with w1 = sin((1 - t) h) / sin(h) and
  /// w2 = sin(t h) / sin(h), where h is the arc cosine of the absolute dot product.
  ///
  /// When the absolute dot product is not below 0.999999 (for not a number too) the weights are 1 - t and t. When the
  /// dot product is negative w2 is negated. So Slerp(q, -q, t) is q up to rounding; the results of other keys that are
  /// almost parallel or antiparallel are shorter than 1 by less than 1e-6.
  ///
  /// K. Shoemake, Animating rotation with quaternion curves, SIGGRAPH 1985.
  template <qxReal T>
  [[nodiscard]] static CQXQuaternion<T> Slerp(const CQXQuaternion<T>& q1, const CQXQuaternion<T>& q2,
                                              Time<T> t) noexcept {
    const T c = q1.w * q2.w + q1.x * q2.x + q1.y * q2.y + q1.z * q2.z;
    const T m = std::abs(c);
    T w1 = 1 - t;
    T w2 = t;
    if (m < T(0.999999)) {
      const T h = std::acos(m);
      const T s = std::sin(h);
      w1 = std::sin((1 - t) * h) / s;
      w2 = std::sin(t * h) / s;
    }
    if (c < 0) w2 = -w2;
    return q1 * w1 + q2 * w2;
  }

  /// Spherical quadrangle: Slerp(Slerp(q1, q4, t), Slerp(q2, q3, t), 2 t (1 - t)). The first and the last quaternion
  /// are the keys, @p q2 and @p q3 the control points between them.
  template <qxReal T>
  [[nodiscard]] static CQXQuaternion<T> Squad(const CQXQuaternion<T>& q1, const CQXQuaternion<T>& q2,
                                              const CQXQuaternion<T>& q3, const CQXQuaternion<T>& q4,
                                              Time<T> t) noexcept {
    return Slerp(Slerp(q1, q4, t), Slerp(q2, q3, t), 2 * t * (1 - t));
  }

  /// Squad() from @p q1 at the time @p t1 to @p q2 at @p t2, with control points made from the four keys, for paths
  /// through many keys.
  ///
  /// It serves the middle interval: up to 1e-6 after @p t1 the result is q1, from 1e-6 before @p t2 on it is q2, and q1
  /// for all times when the two nodes are closer than 1e-6. @p t0 and @p t3 play no part. The control points are
  /// q Exp(-(Log(q^-1 next) + Log(q^-1 previous)) / 4) with CQXQuaternion's own Log() and Exp(), which are not those of
  /// the textbook: the path runs through its keys, and its velocity may jump there. Where the dot product of the two
  /// inner quaternions of Squad() passes through zero inside the interval, the shorter arc changes sides and the result
  /// jumps, by up to a half turn. For a path whose velocity is continuous take
  /// RotationAt().
  template <qxReal T>
  [[nodiscard]] static CQXQuaternion<T> SlerpCubic(const CQXQuaternion<T>& q0, const CQXQuaternion<T>& q1,
                                                   const CQXQuaternion<T>& q2, const CQXQuaternion<T>& q3, Time<T> t0,
                                                   Time<T> t1, Time<T> t2, Time<T> t3, Time<T> t) noexcept;

  // ---- Rotations, through quaternions

  /// The rotation by Slerp() of the quaternions of two rotation matrices.
  template <qxReal T>
  [[nodiscard]] static CQXMatrix3<T> RotationsLinear(const CQXMatrix3<T>& a, const CQXMatrix3<T>& b,
                                                     Time<T> t) noexcept {
    return Slerp(qxMatrixToQuaternion(a), qxMatrixToQuaternion(b), t).GetMatrix();
  }
  /// The same for the upper left blocks; the rest of the result is that of the unit matrix, so translations are
  /// dropped.
  template <qxReal T>
  [[nodiscard]] static CQXMatrix4<T> RotationsLinear(const CQXMatrix4<T>& a, const CQXMatrix4<T>& b,
                                                     Time<T> t) noexcept {
    return qxMatrix3To4(RotationsLinear(a.GetMatrix(), b.GetMatrix(), t));
  }
  /// The same for two rotations by angles in degrees, about X, Y and Z in this order of arguments; the order tells in
  /// which sequence they act.
  ///
  /// The angles of the result are those of CQXMatrix3::ExtractEulerAngles(), in [-180, 180). An order outside the
  /// enumeration leaves them untouched.
  template <qxReal T>
  static void RotationsLinear(qxNonDeduced<T> ax1InDegrees, qxNonDeduced<T> ay1InDegrees, qxNonDeduced<T> az1InDegrees,
                              qxNonDeduced<T> ax2InDegrees, qxNonDeduced<T> ay2InDegrees, qxNonDeduced<T> az2InDegrees,
                              qxRotationsOrder order, Time<T> t, T& axInDegrees, T& ayInDegrees,
                              T& azInDegrees) noexcept;

  /// The rotation by SlerpCubic() of the quaternions of four rotation matrices.
  template <qxReal T>
  [[nodiscard]] static CQXMatrix3<T> RotationsCubic(const CQXMatrix3<T>& a, const CQXMatrix3<T>& b,
                                                    const CQXMatrix3<T>& c, const CQXMatrix3<T>& d, Time<T> t0,
                                                    Time<T> t1, Time<T> t2, Time<T> t3, Time<T> t) noexcept {
    return SlerpCubic(qxMatrixToQuaternion(a), qxMatrixToQuaternion(b), qxMatrixToQuaternion(c),
                      qxMatrixToQuaternion(d), t0, t1, t2, t3, t)
        .GetMatrix();
  }
  /// The same for the upper left blocks; the rest of the result is that of the unit matrix, so translations are
  /// dropped.
  template <qxReal T>
  [[nodiscard]] static CQXMatrix4<T> RotationsCubic(const CQXMatrix4<T>& a, const CQXMatrix4<T>& b,
                                                    const CQXMatrix4<T>& c, const CQXMatrix4<T>& d, Time<T> t0,
                                                    Time<T> t1, Time<T> t2, Time<T> t3, Time<T> t) noexcept {
    return qxMatrix3To4(RotationsCubic(a.GetMatrix(), b.GetMatrix(), c.GetMatrix(), d.GetMatrix(), t0, t1, t2, t3, t));
  }
  /// The same for four triples of angles in degrees, each about X, Y and Z; the order tells in which sequence they act.
  /// @return angles in degrees, as CQXMatrix3::ExtractEulerAngles() gives them; zeros for an order outside the
  /// enumeration.
  template <qxReal T>
  [[nodiscard]] static CQXVector3<T> RotationsCubic(const CQXVector3<T>& aInDegrees, const CQXVector3<T>& bInDegrees,
                                                    const CQXVector3<T>& cInDegrees, const CQXVector3<T>& dInDegrees,
                                                    qxRotationsOrder order, Time<T> t0, Time<T> t1, Time<T> t2,
                                                    Time<T> t3, Time<T> t) noexcept;

  // ---- Paths of rotations through any number of keys, and whole motions

  /// Angular velocities for RotationAt(): at each key those of the parabola through its neighbours, in the coordinates
  /// that turn along, in radians in the unit of time; the length of a vector is the speed, its direction the axis.
  ///
  /// For nodes at equal distances they are those of K. Shoemake, Quaternion calculus and fast animation (SIGGRAPH
  /// 1987).
  /// @param ends QX_ENDS_CLAMPED: the first and the last velocity are read and kept
  /// @param rotations keys of length 1; q and -q are the same
  /// @return 1; 0 when n < 1 or the nodes do not ascend strictly: nothing is written.
  template <qxReal T>
  static std::int32_t FindAngularVelocities(qxEnds ends, std::int32_t n, const T* nodes,
                                            const CQXQuaternion<T>* rotations, CQXVector3<T>* velocities) noexcept;

  /// The rotation at the time @p t of a path through unit quaternions with the given angular velocities at the keys;
  /// O(log n). The velocity is continuous, whatever the distances of the nodes.
  ///
  /// Between neighbouring keys it is a spherical quadrangle (Shoemake 1987) whose two control points are made from the
  /// velocities with the logarithm of the textbook, along arcs that keep their side. Each key is turned to by less than
  /// a half turn; velocities of more than about a turn in an interval leave the path continuous, but not near the keys.
  /// Outside the keys it is the first or the last of them. The result has the length 1 up to rounding; its sign is that
  /// of the key before.
  /// @param n at least 1
  template <qxReal T>
  [[nodiscard]] static CQXQuaternion<T> RotationAt(std::int32_t n, const T* nodes, const CQXQuaternion<T>* rotations,
                                                   const CQXVector3<T>* velocities, Time<T> t) noexcept;

  /// The matrix T R S of a motion at the time @p t: scaled along the axes, then rotated, then translated.
  template <qxReal T>
  [[nodiscard]] static CQXMatrix4<T> MotionAt(const qxMotion<T>& motion, Time<T> t) noexcept;

  // ---- Coordinate matrices

  /// The translation by the linear blend of the last columns; nothing else of the keys is read.
  template <qxReal T>
  [[nodiscard]] static constexpr CQXMatrix4<T> TranslationsLinear(const CQXMatrix4<T>& a, const CQXMatrix4<T>& b,
                                                                  Time<T> t) noexcept {
    return WithTranslation(UnitMatrix<T>(), VectorsLinear(a.ExtractTranslation(), b.ExtractTranslation(), t));
  }
  /// The translation by the cubic blend of the last columns; nothing else of the keys is read.
  template <qxReal T>
  [[nodiscard]] static constexpr CQXMatrix4<T> TranslationsCubic(const CQXMatrix4<T>& a, const CQXMatrix4<T>& b,
                                                                 const CQXMatrix4<T>& c, const CQXMatrix4<T>& d,
                                                                 Time<T> t0, Time<T> t1, Time<T> t2, Time<T> t3,
                                                                 Time<T> t) noexcept {
    return WithTranslation(UnitMatrix<T>(),
                           VectorsCubic(a.ExtractTranslation(), b.ExtractTranslation(), c.ExtractTranslation(),
                                        d.ExtractTranslation(), t0, t1, t2, t3, t));
  }

  /// The scaling about a centre whose factors and centre are the linear blends of those of the keys.
  ///
  /// A key is read through its diagonal s and its last column d: the centre is d / (1 - s), 0 on an axis where
  /// abs(s - 1) <= 1e-6, and the origin when d is almost zero at 1e-6. A translation along an axis with the factor 1 is
  /// therefore lost. Elements off the diagonal are ignored.
  template <qxReal T>
  [[nodiscard]] static CQXMatrix4<T> ScalingsLinear(const CQXMatrix4<T>& a, const CQXMatrix4<T>& b, Time<T> t) noexcept;
  /// The same with cubic blends over four keys.
  template <qxReal T>
  [[nodiscard]] static CQXMatrix4<T> ScalingsCubic(const CQXMatrix4<T>& a, const CQXMatrix4<T>& b,
                                                   const CQXMatrix4<T>& c, const CQXMatrix4<T>& d, Time<T> t0,
                                                   Time<T> t1, Time<T> t2, Time<T> t3, Time<T> t) noexcept;

  /// Blend of affine transforms, which depends on the polar decomposition of the upper left blocks at 1e-6.
  ///
  /// When a block has one, that is when its determinant is not below 1e-6, the result is the linear blend of all
  /// elements of the keys. When it is refused for both, the rotation (the unit matrix), the symmetric factor (the block
  /// itself) and the translation are blended apart, and the last row is 0, 0, 0, 1. Both blend the elements: rotations
  /// shrink on the way. Callers who want them turned rigidly take the keys apart and use RotationsLinear().
  template <qxReal T>
  [[nodiscard]] static CQXMatrix4<T> AffineTransfLinear(const CQXMatrix4<T>& a, const CQXMatrix4<T>& b, Time<T> t);
  /// The same with cubic blends over four keys; they are blended apart only when all four decompositions are refused.
  template <qxReal T>
  [[nodiscard]] static CQXMatrix4<T> AffineTransfCubic(const CQXMatrix4<T>& a, const CQXMatrix4<T>& b,
                                                       const CQXMatrix4<T>& c, const CQXMatrix4<T>& d, Time<T> t0,
                                                       Time<T> t1, Time<T> t2, Time<T> t3, Time<T> t);

 private:
  template <qxReal T>
  [[nodiscard]] static const CQXBaseVector<T>& AsBase(const CQXBaseVector<T>& v) noexcept {
    return v;
  }
  template <qxReal T>
  [[nodiscard]] static const CQXBaseMatrix<T>& AsBase(const CQXBaseMatrix<T>& m) noexcept {
    return m;
  }

  template <qxReal T>
  [[nodiscard]] static constexpr CQXMatrix4<T> UnitMatrix() noexcept {
    return {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
  }
  /// @p m with the first three elements of its last column replaced.
  template <qxReal T>
  [[nodiscard]] static constexpr CQXMatrix4<T> WithTranslation(CQXMatrix4<T> m, const CQXVector3<T>& d) noexcept {
    m(0, 3) = d.X();
    m(1, 3) = d.Y();
    m(2, 3) = d.Z();
    return m;
  }
};

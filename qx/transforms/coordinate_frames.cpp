#include <qx/foundation/internal/instantiate.h>
#include <qx/transforms/coordinate_frames.h>

#include <cmath>

namespace {

template <typename Frame>
using Vector = typename qxFrame<Frame>::Vector;
template <typename Frame>
using Axes = typename qxFrame<Frame>::Axes;

template <typename V>
V Centroid(std::int32_t n, const V* points) noexcept {
  V sum;
  for (std::int32_t i = 0; i < n; ++i) sum += points[i];
  return sum / static_cast<typename V::Element>(n);
}

/// sum += a b^T.
template <typename M, typename V>
void AddOuterProduct(const V& a, const V& b, M& sum) noexcept {
  for (std::int32_t r = 0; r < V::Dim(); ++r) {
    for (std::int32_t c = 0; c < V::Dim(); ++c) sum(r, c) += a[r] * b[c];
  }
}

/// What the transforms are found from: sums over the centred points.
template <typename Frame>
struct PairSums {
  PairSums(std::int32_t n, const Vector<Frame>* source, const Vector<Frame>* target) noexcept
      : sourceCentre(Centroid(n, source)), targetCentre(Centroid(n, target)) {
    for (std::int32_t i = 0; i < n; ++i) {
      const Vector<Frame> p = source[i] - sourceCentre, q = target[i] - targetCentre;
      AddOuterProduct(p, p, sourceProducts);
      AddOuterProduct(q, p, crossProducts);
      sourceSquares += p.SquareLength();
      targetSquares += q.SquareLength();
    }
  }
  /// The transform with the block @p a that carries one centre to the other.
  [[nodiscard]] Frame Transform(const Axes<Frame>& a) const noexcept {
    return qxFrame<Frame>::Make(a, targetCentre - a * sourceCentre);
  }

  Vector<Frame> sourceCentre, targetCentre;
  Axes<Frame> sourceProducts;  ///< sum of p p^T
  Axes<Frame> crossProducts;   ///< sum of q p^T
  typename qxFrame<Frame>::Element sourceSquares = 0, targetSquares = 0;
};

/// The rotation closest to the sum of q p^T, given divided by a scale, and the trace of their product: the sum of the
/// turned p times q.
template <qxReal T>
bool FindRotation(const CQXMatrix2<T>& products, T tolerance, CQXMatrix2<T>& r, T& trace) {
  const T dot = products[0] + products[3], cross = products[2] - products[1];
  trace = std::sqrt(dot * dot + cross * cross);
  if (!(trace > tolerance)) return false;
  r = {dot / trace, -cross / trace, cross / trace, dot / trace};
  return true;
}
template <qxReal T>
bool FindRotation(const CQXMatrix3<T>& products, T tolerance, CQXMatrix3<T>& r, T& trace) {
  CQXMatrix3<T> u, v;
  CQXVector3<T> d;
  if (products.SV_Decomposition(u, v, d, 0) != 0) return false;
  if (!(d.Y() > tolerance * d.X())) return false;
  const T sign = u.Det() * v.Det() < 0 ? T(-1) : T(1);
  u.SetColVector(2, u.ColVector(2) * sign);
  r = u * v.Transpose();
  trace = d.X() + d.Y() + sign * d.Z();
  return true;
}

template <typename Frame>
std::int32_t FindRotationTransform(std::int32_t n, const Vector<Frame>* source, const Vector<Frame>* target,
                                   bool isScaled, typename qxFrame<Frame>::Element tolerance, Frame& transform) {
  using T = typename qxFrame<Frame>::Element;
  if (n < 2) return 0;
  const PairSums<Frame> sums(n, source, target);
  const T sourceSize = std::sqrt(sums.sourceSquares), targetSize = std::sqrt(sums.targetSquares);
  const T scale = sourceSize * targetSize;
  if (!(scale > 0) || !std::isfinite(scale)) return 0;
  Axes<Frame> rotation;
  T trace;
  if (!FindRotation(sums.crossProducts / scale, tolerance, rotation, trace)) return 0;
  if (isScaled) rotation *= trace * (targetSize / sourceSize);
  transform = sums.Transform(rotation);
  return 1;
}

/// The block that carries the differences from the first point exactly, which are of the order of @p size.
template <typename Frame>
bool FindExactBlock(const Vector<Frame>* source, const Vector<Frame>* target, typename qxFrame<Frame>::Element size,
                    Axes<Frame>& block) noexcept {
  Axes<Frame> p, q, inverse;
  for (std::int32_t i = 0; i < Vector<Frame>::Dim(); ++i) {
    p.SetColVector(i, (source[i + 1] - source[0]) / size);
    q.SetColVector(i, (target[i + 1] - target[0]) / size);
  }
  if (p.Inverse(inverse, 0) != 0) return false;
  block = q * inverse;
  return true;
}

}  // namespace

template <typename Frame>
std::int32_t qxFindAffineTransform(std::int32_t n, const typename qxFrame<Frame>::Vector* source,
                                   const typename qxFrame<Frame>::Vector* target, Frame& transform,
                                   typename qxFrame<Frame>::Element tolerance) noexcept {
  using T = typename qxFrame<Frame>::Element;
  constexpr std::int32_t dimension = Vector<Frame>::Dim();
  if (n <= dimension) return 0;
  const PairSums<Frame> sums(n, source, target);
  const T mean = sums.sourceSquares / dimension;
  if (!(mean > 0) || !std::isfinite(mean) || !std::isfinite(sums.targetSquares)) return 0;
  const Axes<Frame> shape = sums.sourceProducts / mean;
  Axes<Frame> block, inverse;
  if (!(shape.Det() > tolerance) || shape.Inverse(inverse, 0) != 0) return 0;
  if (n > dimension + 1) {
    block = (sums.crossProducts / mean) * inverse;
  } else if (!FindExactBlock<Frame>(source, target, std::sqrt(mean), block)) {
    return 0;
  }
  transform = sums.Transform(block);
  return 1;
}

template <typename Frame>
std::int32_t qxFindRigidTransform(std::int32_t n, const typename qxFrame<Frame>::Vector* source,
                                  const typename qxFrame<Frame>::Vector* target, Frame& transform,
                                  typename qxFrame<Frame>::Element tolerance) {
  return FindRotationTransform(n, source, target, false, tolerance, transform);
}

template <typename Frame>
std::int32_t qxFindSimilarityTransform(std::int32_t n, const typename qxFrame<Frame>::Vector* source,
                                       const typename qxFrame<Frame>::Vector* target, Frame& transform,
                                       typename qxFrame<Frame>::Element tolerance) {
  return FindRotationTransform(n, source, target, true, tolerance, transform);
}

#define QX_INSTANTIATE_FRAME(Frame, Vector, T)                                                                        \
  template QX_API std::int32_t qxFindAffineTransform(std::int32_t, const Vector*, const Vector*, Frame&, T) noexcept; \
  template QX_API std::int32_t qxFindRigidTransform(std::int32_t, const Vector*, const Vector*, Frame&, T);           \
  template QX_API std::int32_t qxFindSimilarityTransform(std::int32_t, const Vector*, const Vector*, Frame&, T);
#define QX_INSTANTIATE(T)                               \
  QX_INSTANTIATE_FRAME(CQXMatrix3<T>, CQXVector2<T>, T) \
  QX_INSTANTIATE_FRAME(CQXMatrix4<T>, CQXVector3<T>, T)
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE
#undef QX_INSTANTIATE_FRAME

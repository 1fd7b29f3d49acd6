#include <algorithm>

#include "tests/operations/operations.h"

namespace {

constexpr qxMatrixNorm norms[] = {QX_MATRIX_NORM_COLUMN_SUM, QX_MATRIX_NORM_ROW_SUM, QX_MATRIX_NORM_EUCLIDEAN,
                                  QX_MATRIX_NORM_SPECTRAL};
constexpr qxRotationsOrder orders[] = {QX_ROTATIONS_XYZ, QX_ROTATIONS_XZY, QX_ROTATIONS_YXZ,
                                       QX_ROTATIONS_YZX, QX_ROTATIONS_ZYX, QX_ROTATIONS_ZXY};

/// Random, scaled, symmetric, singular, triangular, diagonal and sparse matrices, and some with numbers at the edges.
template <typename M>
std::vector<M> Matrices(bool withEdges) {
  using T = typename M::Element;
  constexpr std::size_t n = M::dimension, count = n * n;
  Numbers<T> next(11);
  std::vector<M> all(1);
  for (int i = 0; i < 24; ++i) {
    const M a = next.template Make<M>();
    all.push_back(a * T(i % 3 == 0 ? 1 : i % 3 == 1 ? 100 : 0.001));
    all.push_back(a + a.Transpose());
    all.push_back(a.Transpose() * a);
    M upper = a, lower = a, diagonal, sparse = a, singular = a;
    for (std::size_t k = 0; k < count; ++k) {
      if (k / n > k % n) upper.Data()[k] = 0;
      if (k / n < k % n) lower.Data()[k] = 0;
      if (k / n == k % n) diagonal.Data()[k] = a.Data()[k];
      if (k % 3 == std::size_t(i) % 3) sparse.Data()[k] = 0;
      if (k / n == n - 1) singular.Data()[k] = 2 * singular.Data()[k - n];
    }
    for (const M& m : {upper, lower, diagonal, sparse, singular}) all.push_back(m);
    M unit;
    unit.Unit();
    all.push_back(unit * T(i));
    all.push_back(unit + a * T(1e-7));
  }
  for (std::size_t i = 0; withEdges && i < edges<T>.size(); ++i) {
    M m = next.template Make<M>();
    m.Data()[i % count] = edges<T>[i];
    all.push_back(m);
    for (std::size_t k = 0; k < count; ++k) m.Data()[k] = edges<T>[(i * (k + 1)) % edges<T>.size()];
    all.push_back(m);
  }
  return all;
}

template <typename M>
struct Outputs {
  M a, b, c;
  typename M::Vector v;
  typename M::Element x = 0, y = 0, z = 0;
};

template <typename M>
void Over(const std::string& operation, void (*f)(Hash&, const M&, const M&, Outputs<M>&), bool withEdges = true,
          bool isPlatform = false) {
  using T = typename M::Element;
  Row<T>(
      "Matrix" + std::to_string(M::dimension) + ' ' + operation,
      [&](Hash& h) {
        const std::vector<M> all = Matrices<M>(withEdges);
        for (std::size_t i = 0; i < all.size(); ++i) {
          Outputs<M> o;
          f(h, all[i], all[(i * 7 + 1) % all.size()], o);
          h(o.a, o.b, o.c, o.v, o.x, o.y, o.z);
        }
      },
      isPlatform);
}

template <typename M>
void CommonRows() {
  using T = typename M::Element;
  using O = Outputs<M>;
  Over<M>("arithmetic", [](Hash& h, const M& a, const M& b, O& o) {
    h(a + b, a - b, a * T(3), a / b[0], -a, a == b, a != b, a == a);
    o.a = a;
    o.a += b;
    o.a *= b[1];
    o.a -= a;
    o.a /= T(7);
  });
  Over<M>("*", [](Hash& h, const M& a, const M& b, O& o) {
    o.a = a * b;
    o.v = a * b.RowVector(0);
    o.b = a;
    o.b *= b;
    h(a.Transpose()), h(a.InnerProduct(b)), h(a.Mean()), h(a.Trace()), h(a.Diagonal());
  });
  Over<M>("predicates", [](Hash& h, const M& a, const M&, O& o) {
    h(a.IsAlmostZero()), h(a.IsUnit()), h(a.IsDiagonal()), h(a.IsSymmetric()), h(a.IsOrthogonal(T(0.5))),
        h(a.IsSingular()), h(a.IsScaling()), h(a.IsRotation(T(0.5)));
    o.a = a;
    o.a.AnnulateSmallElements(T(0.01));
  });
  Over<M>("Det", [](Hash& h, const M& a, const M& b, O&) { h(a.Det()), h(b.Det()), h((a * b).Det()); });
  Over<M>("Inverse", [](Hash& h, const M& a, const M& b, O& o) {
    h(a.Inverse(o.a)), h(a.Inverse(o.b, T(1e-12))), h(a.DiagInverse(o.c)), h(a.SolveSystem(b.RowVector(0), o.v));
  });
  Over<M>("LU_Decomposition", [](Hash& h, const M& a, const M&, O& o) { h(a.LU_Decomposition(o.a, o.b)); });
  Over<M>(
      "QR_Decomposition", [](Hash& h, const M& a, const M&, O& o) { h(a.QR_Decomposition(o.a, o.b)); }, false);
  Over<M>(
      "SV_Decomposition", [](Hash& h, const M& a, const M&, O& o) { h(a.SV_Decomposition(o.a, o.b, o.v)); }, false);
  Over<M>(
      "singular numbers",
      [](Hash& h, const M& a, const M&, O& o) { h(a.CalculateSingularNumbers(o.v)), h(a.CalculateRank()); }, false);
  Over<M>(
      "Norm",
      [](Hash& h, const M& a, const M& b, O& o) {
        for (const qxMatrixNorm norm : norms) {
          h(a.Norm(norm)), h(a.ConditionNumber(norm)), h(a.Inverse(o.a, norm, T(1e-6), o.x)), h(o.a), h(o.x);
          h(a.SolveSystem(b.RowVector(0), o.v, norm, T(1e-6), o.y), o.v, o.y);
        }
      },
      false);
  Over<M>(
      "SymmetricEigensolve",
      [](Hash& h, const M& a, const M&, O& o) {
        h(a.SymmetricEigensolve(o.v, o.a));
        h(a.SpectralDecomposition(o.b, o.c, 0)), h(o.b), h(o.c), h(a.SpectralDecomposition(o.b, o.c, 1));
      },
      false);
  Over<M>(
      "PolarDecomposition",
      [](Hash& h, const M& a, const M&, O& o) {
        for (const std::int32_t side : {0, 1}) h(a.PolarDecomposition(o.a, o.b, side), o.a, o.b);
        h(a.ExtractOrthogonal(o.c));
      },
      false);
  Over<M>("CorrelationCoefficient", [](Hash& h, const M& a, const M& b, O& o) {
    h(a.CorrelationCoefficient(b));
    o.a = a;
    o.a.CopyPartRow(0, 0, 2, 1, 0, b);
    o.a.CopyPartColumn(1, 0, 2, 0, 0, b);
    o.b = a.GetCharacteristicsMatrix(b[0]);
  });
  Over<M>(
      "AnnulateRelativelyDiagonal",
      [](Hash&, const M& a, const M&, O& o) {
        o.a = a;
        o.a.AnnulateRelativelyDiagonal(2);
      },
      true, true);
}

template <typename T>
void Matrix2Rows() {
  using M = CQXMatrix2<T>;
  using O = Outputs<M>;
  Over<M>(
      "FindEigenvalues",
      [](Hash& h, const M& a, const M&, O& o) {
        const std::int32_t found = a.FindEigenvalues(o.x, o.y);
        T vectors[4] = {};
        h(found, a.FindEigenvectorsReal(o.x, vectors), vectors);
      },
      false);
  Over<M>(
      "FindEigenvectorComplex",
      [](Hash& h, const M& a, const M&, O& o) {
        if (a.FindEigenvalues(o.x, o.y) != 0) return;
        CQXBaseVector<CQXComplex<T>> v(2);
        h(a.FindEigenvectorComplex({o.x, o.y}, v), v);
      },
      false);
}

template <typename T>
void Matrix3Rows() {
  using M = CQXMatrix3<T>;
  using O = Outputs<M>;
  Over<M>(
      "FindEigenvalues",
      [](Hash& h, const M& a, const M&, O& o) {
        const std::int32_t found = a.FindEigenvalues(o.x, o.y, o.z);
        T vectors[9] = {};
        h(found, a.FindEigenvectorsReal(o.x, vectors), vectors);
        CQXBaseVector<CQXComplex<T>> v(3);
        h(a.FindEigenvectorComplex({o.y, o.z}, v), v);
      },
      false, true);
  Over<M>("helpers of eigenvectors", [](Hash& h, const M& a, const M& b, O& o) {
    std::int32_t i = 0, j = 0, rows[3] = {};
    T vectors[9] = {};
    h(a.CalculateMinor(0, 2, 1, 2)), h(a.CalculateMinorSubtrIm(0, 1, 0, 1, b[0])), h(a.TestRowsForDependence(0, 2)),
        h(a.TestComplexRowsForDependence(0, 1, b[0])), h(a.FindZeroRows(rows)), h(rows);
    a.GetMainMinorColumns(0, 2, i, j);
    a.FindEigenvectorsFromRow(1, vectors);
    h(i, j, vectors);
    a.FindEigenvectorsReal(1, vectors);
    CQXBaseVector<CQXComplex<T>> v(3);
    h(vectors), h(a.FindEigenvectorComplex({b[0], b[1]}, v)), h(v), h(a.FindAnySolution(b.RowVector(1), o.v));
  });
  Over<M>("coordinate matrix", [](Hash& h, const M& a, const M& b, O& o) {
    h(a.InverseCoordinateMatrix(o.a)), h(a.IsTranslation()), h(a.IsCoordinateMatrix()), h(qxMatrix3To2(a)),
        h(qxMatrix2To3(qxMatrix3To2(b)));
    o.b = o.c = a;
    for (const std::int32_t flag : {0, 1}) {
      o.b.Scale(b[0], b[1], flag);
      o.c.Translate(b[2], b[3], flag);
    }
  });
  Over<M>(
      "rotations",
      [](Hash& h, const M& a, const M& b, O& o) {
        for (const qxRotationsOrder order : orders) {
          o.a.SetRotationByEulerAngles(a[0] * 100, a[1] * 100, a[2] * 100, order);
          o.a.ExtractEulerAngles(order, o.x, o.y, o.z);
          h(o.a, o.x, o.y, o.z);
          a.ExtractEulerAngles(order, o.x, o.y, o.z);
          h(o.x, o.y, o.z);
        }
        o.b.SetRotationByAngleAxis(a[3] * 100, b.RowVector(0));
        o.b.ExtractRotationAngleAxis(o.x, o.v);
        h(o.x, o.v);
        a.ExtractRotationAngleAxis(o.x, o.v);
        o.c = a;
        o.c.Rotate(b[0], 0);
        o.c.Rotate(b[1], 1);
      },
      false, true);
  Over<M>(
      "ExtractScaleRotation",
      [](Hash& h, const M& a, const M&, O& o) {
        for (const std::int32_t side : {0, 1}) {
          std::int32_t stretch = 0, reflection = 0;
          h(a.ExtractScaleRotation(o.a, o.b, o.c, side, T(1e-6), stretch, reflection), o.a, o.b, o.c, stretch,
            reflection);
        }
      },
      false);
}

template <typename T>
void Matrix4Rows() {
  using M = CQXMatrix4<T>;
  using O = Outputs<M>;
  Over<M>("coordinate matrix", [](Hash& h, const M& a, const M& b, O& o) {
    CQXVector3<T> local;
    h(a.InverseCoordinateMatrix(o.a)), h(a.IsTranslation()), h(a.IsCoordinateMatrix()), h(a.GetMatrix()),
        h(a.Reflect()), h(a.Combine(b, 0)), h(a.Combine(b, 1)), h(a.GetObjectCoordinates(b.Diagonal3())),
        h(a.GetLocalCoordinates(b.Diagonal3(), local)), h(local), h(qxMatrix3To4(b.GetMatrix()));
    o.b = o.c = a;
    for (const std::int32_t flag : {0, 1}) {
      o.b.Scale(b[0], b[1], b[2], flag);
      o.c.Translate(b[2], b[3], b[4], flag);
    }
  });
  Over<M>(
      "rotations",
      [](Hash&, const M& a, const M& b, O& o) {
        o.a = a;
        for (const std::int32_t flag : {0, 1}) {
          o.a.RotateXAxis(b[0], flag);
          o.a.RotateYAxis(b[1], flag);
          o.a.RotateZAxis(b[2], flag);
        }
      },
      false, true);
}

}  // namespace

template <typename T>
void FixedMatrixRows() {
  CommonRows<CQXMatrix2<T>>();
  CommonRows<CQXMatrix3<T>>();
  CommonRows<CQXMatrix4<T>>();
  Matrix2Rows<T>();
  Matrix3Rows<T>();
  Matrix4Rows<T>();
}

template void FixedMatrixRows<float>();
template void FixedMatrixRows<double>();

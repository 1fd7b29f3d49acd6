#include <algorithm>

#include "tests/operations/operations.h"

namespace {

/// Vectors of random numbers, of numbers at the edges, and of few different numbers.
template <typename V>
std::vector<V> FixedVectors() {
  using T = typename V::Element;
  Numbers<T> next(3);
  std::vector<V> vectors;
  for (int i = 0; i < 60; ++i) vectors.push_back(next.template Make<V>() * T(4));
  for (std::size_t i = 0; i < edges<T>.size(); ++i) {
    V v;
    for (std::size_t k = 0; k < V::dimension; ++k) v.Data()[k] = edges<T>[(i * (k + 1)) % edges<T>.size()];
    vectors.push_back(v);
    vectors.push_back(V(edges<T>[i]));
  }
  return vectors;
}

template <typename V>
void FixedVectorRows(const std::string& name) {
  using T = typename V::Element;
  const std::vector<V> all = FixedVectors<V>();
  const auto overAll = [&](const std::string& operation, auto f, bool isPlatform = false) {
    Row<T>(
        name + ' ' + operation,
        [&](Hash& h) {
          for (std::size_t i = 0; i < all.size(); ++i) {
            f(h, V(all[i]), all[(i * 5 + 1) % all.size()], all[(i * 3 + 2) % all.size()]);
          }
        },
        isPlatform);
  };
  overAll("arithmetic", [](Hash& h, V a, const V& b, const V& c) {
    h(a + b, a - b, a * b[0], b[1] * a, a / b[0], -a);
    a += b;
    h(a);
    a -= c;
    h(a);
    a *= c[0];
    h(a);
    a /= b[0];
    h(a, a == b, a != b, V(b) == b);
  });
  overAll("Normalize", [](Hash& h, V a, const V&, const V&) {
    h(a.Normalize(), a);
    a.AnnulateSmallComponents(T(0.3));
    h(a);
  });
  overAll("measures", [](Hash& h, const V& a, const V& b, const V&) {
    h(a.Dot(b)), h(a.Length()), h(a.SquareLength()), h(a.Norm1()), h(a.NormInf()), h(a.IsAlmostZero()),
        h(a.IsAlmostUnit(T(0.2))), h(qxDist(a, b)), h(qxSquareDist(a, b)), h(qxAreAlmostEqual(a, b));
    for (const std::int32_t flag : {0, 1}) {
      h(a.GetMinComponent(flag)), h(a.GetMaxComponent(flag)), h(a.GetIndexOfMinComponent(flag)),
          h(a.GetIndexOfMaxComponent(flag));
    }
  });
  overAll("relations", [](Hash& h, const V& a, const V& b, const V& c) {
    h(qxAreOrthogonal(a, b)), h(qxAreOrthonormalized(a, b)), h(qxAreOrthonormalized(a, b, c)), h(qxCos(a, b)),
        h(qxSin(a, b)), h(qxTan(a, b)), h(qxCot(a, b));
  });
  overAll(
      "angles",
      [](Hash& h, const V& a, const V& b, const V&) { h(qxFindAngleInRadians(a, b)), h(qxFindAngleInDegrees(a, b)); },
      true);
  overAll("combinations", [](Hash& h, const V& a, const V& b, const V& c) {
    const V three[] = {a, b, c};
    h(qxCombine(2, three, c.Data())), h(qxCombine2(a, b, T(2), T(-3))), h(qxCombine3(a, b, c, T(2), T(3), T(4))),
        h(qxCombine4(a, b, c, a, T(2), T(3), T(4), T(5))), h(qxFindMean(three, 3)), h(qxFindMidpoint(a, b));
  });
}

template <typename T>
void SpecialVectorRows() {
  using V2 = CQXVector2<T>;
  using V3 = CQXVector3<T>;
  using V4 = CQXVector4<T>;
  const std::vector<V2> twos = FixedVectors<V2>();
  const std::vector<V3> threes = FixedVectors<V3>();
  const std::vector<V4> fours = FixedVectors<V4>();
  PlatformRow<T>("Vector2 Angle_0_360", [&](Hash& h) {
    for (const V2& v : twos) h(v.Angle_0_360()), h(v.Angle_MINUS_180_180()), h(v.Rotate90DegsCCW());
  });
  Row<T>("DecomposeInBasis", [&](Hash& h) {
    for (std::size_t i = 0; i + 4 < twos.size(); ++i) {
      T a = 9, b = 9, c = 9;
      h(twos[i].DecomposeInBasis(twos[i + 1], twos[i + 2], a, b), a, b);
      h(threes[i].DecomposeInBasis(threes[i + 1], threes[i + 2], threes[i + 3], a, b, c), a, b, c);
    }
  });
  Row<T>("Cross", [&](Hash& h) {
    for (std::size_t i = 0; i + 4 < twos.size(); ++i) {
      h(qxCross2D(twos[i], twos[i + 1])), h(qxCross(threes[i], threes[i + 1])),
          h(qxMixedProduct(threes[i], threes[i + 1], threes[i + 2])),
          h(qxGetTriangleArea(twos[i], twos[i + 1], twos[i + 2])),
          h(qxGetTriangleArea(threes[i], threes[i + 1], threes[i + 2]));
    }
  });
  Row<T>("qxAreColinear", [&](Hash& h) {
    for (std::size_t i = 0; i + 4 < twos.size(); ++i) {
      h(qxAreColinear(twos[i], twos[i + 1], T(0.1))), h(qxAreColinear(threes[i], threes[i] * T(1.00001))),
          h(qxAreVectorsCoplanar(threes[i], threes[i + 1], threes[i + 2], T(0.1))),
          h(qxArePointsCoplanar(threes[i], threes[i + 1], threes[i + 2], threes[i + 3], T(0.1))),
          h(qxArePointsCollinear(twos[i], twos[i + 1], twos[i + 2], T(0.1))),
          h(qxArePointsCollinear(threes[i], threes[i + 1], threes[i + 2], T(0.1)));
    }
  });
  Row<T>("qxOrthonormalize", [&](Hash& h) {
    for (std::size_t i = 0; i + 4 < twos.size(); ++i) {
      V2 a = twos[i], b = twos[i + 1];
      h(qxOrthonormalize(a, b), a, b);
      V3 p = threes[i], q = threes[i + 1], r = threes[i + 2];
      h(qxOrthonormalize(p, q), p, q);
      h(qxOrthonormalize(p, q, r), p, q, r);
    }
  });
  Row<T>("dimension conversions", [&](Hash& h) {
    for (std::size_t i = 0; i < threes.size(); ++i) {
      T w = 0;
      V2 two;
      V3 three;
      h(qxVector2To3(twos[i])), h(qxVector3To4(threes[i])), h(qxVector3To2(threes[i], T(1e-6), two, w)), h(two), h(w);
      h(qxVector4To3(fours[i], T(1e-6), three, w)), h(three), h(w), h(qxVector3To2(threes[i], w)),
          h(qxVector4To3(fours[i], w));
    }
  });
}

/// Run-time-sized vectors of every length around the widths of the kernels.
constexpr std::int32_t lengths[] = {0,  1,  2,  3,  4,  5,  6,  7,  8,  9,  11, 12, 13, 15, 16,  17,
                                    18, 19, 23, 24, 25, 31, 32, 33, 40, 47, 48, 63, 64, 65, 100, 1001};

template <typename T, typename Element, typename Make>
void BaseVectorRows(const std::string& name, Make make) {
  using V = CQXBaseVector<Element>;
  const auto overLengths = [&](const std::string& operation, auto f) {
    Row<T>(name + ' ' + operation, [&](Hash& h) {
      for (const std::int32_t n : lengths) f(h, Made(make(n, 5)), Made(make(n, 6)), n);
    });
  };
  overLengths("arithmetic", [&](Hash& h, V a, V b, std::int32_t n) {
    const Element factor = Made(make(1, 7))[0];
    h(a + b, a - b, a * factor, b / factor, a.Negate(), a == b, a != b, a == a);
    a += b;
    a *= factor;
    h(a);
    b /= factor;
    b -= a;
    h(b);
    a.Add(b);
    a.Mul(factor);
    a.Sub(b);
    a.Div(factor);
    h(a, n);
  });
  overLengths("Dot", [&](Hash& h, const V& a, const V& b, std::int32_t n) {
    h(a.Dot(b)), h(qxPartialDotProduct(n / 3, 0, n / 2, a, b));
    if (n > 2) h(a.DotForPart(1, n - 2, b)), h(a.DotForPart(n / 2, n - 1, b));
    V products;
    qxPartialDotProduct(0, n / 2, n / 2, a, b, products);
    h(products);
  });
  overLengths("parts", [&](Hash& h, V a, const V& b, std::int32_t n) {
    a.ReplacePart(n / 4, n / 3, n / 2, b);
    h(a);
    a.FillPart(b.Data(), n / 2, n / 2);
    h(a);
    a.SetDimension(n / 2 + 3);
    h(a);
    if (a.Dim() <= n) a = b;
    h(a);
  });
}

template <typename T>
void VectorNRows() {
  using V = CQXVectorN<T>;
  Row<T>("VectorN measures", [](Hash& h) {
    for (const std::int32_t n : lengths) {
      for (const T scale : {T(1), T(1e-12), T(1e18), std::numeric_limits<T>::max()}) {
        V v = Made(V(n, Numbers<T>(8).Array(static_cast<std::size_t>(n)).data()));
        v *= scale;
        h(v.Length()), h(v.SquareLength()), h(v.Norm1()), h(v.NormInf()), h(v.IsAlmostZero()),
            h(v.IsAlmostUnit(T(0.5)));
        for (const std::int32_t flag : {0, 1}) {
          h(v.GetMinComponent(flag)), h(v.GetMaxComponent(flag)), h(v.GetIndexOfMinComponent(flag)),
              h(v.GetIndexOfMaxComponent(flag));
        }
        const V w = Made(v * T(0.5));
        if (n > 0) h(qxDist(v, w)), h(qxCos(v, w)), h(qxAreOrthogonal(v, w)), h(qxAreAlmostEqual(v, w));
        h(v.Normalize(), v);
        v.AnnulateSmallComponents(T(0.1));
        h(v);
      }
    }
  });
  Row<T>("VectorN edges", [](Hash& h) {
    for (std::size_t n = 0; n <= edges<T>.size(); ++n) {
      V v(static_cast<std::int32_t>(n), edges<T>.data() + (edges<T>.size() - n));
      const V w(static_cast<std::int32_t>(n), edges<T>.data());
      h(v.Length()), h(v.Norm1()), h(v.NormInf()), h(v.GetMinComponent(0)), h(v.GetIndexOfMaxComponent(1)), h(v + w),
          h(v - w), h(v * T(2)), h(v / T(3)), h(v.Dot(w)), h(v == w);
      h(v.Normalize(), v);
    }
  });
  PlatformRow<T>("VectorN angles", [](Hash& h) {
    for (const std::int32_t n : lengths) {
      const auto size = static_cast<std::size_t>(n);
      const V v = Made(V(n, Numbers<T>(8).Array(size).data())), w = Made(V(n, Numbers<T>(9).Array(size).data()));
      h(qxFindAngleInDegrees(v, w)), h(qxFindAngleInRadians(w, v));
    }
  });
}

}  // namespace

template <typename T>
void VectorRows() {
  FixedVectorRows<CQXVector2<T>>("Vector2");
  FixedVectorRows<CQXVector3<T>>("Vector3");
  FixedVectorRows<CQXVector4<T>>("Vector4");
  SpecialVectorRows<T>();
  BaseVectorRows<T, T>("BaseVector", [](std::int32_t n, std::uint32_t seed) {
    return CQXBaseVector<T>(n, Numbers<T>(seed).Array(static_cast<std::size_t>(n)).data());
  });
  BaseVectorRows<T, CQXComplex<T>>("BaseVector of complex", [](std::int32_t n, std::uint32_t seed) {
    Numbers<T> next(seed);
    auto v = Made(CQXBaseVector<CQXComplex<T>>(n));
    for (std::int32_t i = 0; i < n; ++i) {
      const T real = next();
      v[i].Set(real, next());
    }
    return v;
  });
  BaseVectorRows<T, std::int32_t>("BaseVector of int", [](std::int32_t n, std::uint32_t seed) {
    Numbers<double> next(seed);
    auto v = Made(CQXBaseVector<std::int32_t>(n));
    for (std::int32_t i = 0; i < n; ++i) v[i] = static_cast<std::int32_t>(next() * 1e9);
    return v;
  });
  VectorNRows<T>();
}

template void VectorRows<float>();
template void VectorRows<double>();

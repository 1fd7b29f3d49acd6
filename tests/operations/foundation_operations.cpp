#include "tests/operations/operations.h"

namespace {

template <typename T>
std::vector<CQXComplex<T>> ComplexNumbers() {
  std::vector<CQXComplex<T>> z;
  for (const T a : edges<T>) {
    for (const T b : edges<T>) z.emplace_back(a, b);
  }
  Numbers<T> next(1);
  for (int i = 0; i < 200; ++i) {
    const T real = next() * 8;
    z.emplace_back(real, next() * 8);
  }
  return z;
}

/// Every pair of neighbours and of opposite ends.
template <typename T, typename Function>
auto OverPairs(Function f) {
  return [f](Hash& h) {
    const std::vector<CQXComplex<T>> z = ComplexNumbers<T>();
    for (std::size_t i = 0; i + 1 < z.size(); ++i) {
      h(f(z[i], z[i + 1])), h(f(z[i], z[z.size() - 1 - i])), h(f(z[i], z[(7 * i) % z.size()]));
    }
  };
}

}  // namespace

template <typename T>
void FoundationRows() {
  using C = CQXComplex<T>;
  Row<T>("qxGuardedSqrt", [](Hash& h) {
    for (const T a : edges<T>) {
      for (const T b : edges<T>) h(qxGuardedSqrt(a)), h(qxGuardedSqrt(a, b));
    }
  });
  Row<T>("qxWrapAngle", [](Hash& h) {
    Numbers<T> next(2);
    for (const T a : edges<T>) h(qxWrapAngle(a, T(360), T(1e-9)));
    for (int i = 0; i < 200; ++i) h(qxWrapAngle(next() * 1000, T(360), T(1e-9))), h(qxWrappedRadians(next() * 1000));
  });
  Row<T>("qxToInt", [](Hash& h) {
    for (const T a : edges<T>) h(qxToInt32(static_cast<double>(a))), h(qxToInt64(static_cast<double>(a)));
  });
  Row<T>("Complex +", OverPairs<T>([](C a, C b) { return C(a + b) += b; }));
  Row<T>("Complex -", OverPairs<T>([](C a, C b) { return C(a - b) -= b; }));
  Row<T>("Complex *", OverPairs<T>([](C a, C b) { return C(a * b) *= b; }));
  Row<T>("Complex /", OverPairs<T>([](C a, C b) { return C(a / b) /= b; }));
  Row<T>("Complex real arithmetic", OverPairs<T>([](C a, C b) {
           C c = ((a + b.Real()) - b.Imag()) * b.Real() / b.Imag();
           c += b.Real();
           c -= b.Imag();
           c *= b.Imag();
           return c /= b.Real();
         }));
  Row<T>("Complex =", OverPairs<T>([](C a, C b) {
           C c(a);
           c = b;
           C d(b);
           d = a.Imag();
           return c - d;
         }));
  Row<T>("Complex ==", OverPairs<T>([](C a, C b) {
           return (a == b) + 2 * (a != b) + 4 * qxAreAlmostEqual(a, b) + 8 * qxIsGreater(a, b) + 16 * a.IsReal() +
                  32 * a.IsImag() + 64 * qxIsAlmostZero(a);
         }));
  Row<T>("Complex magnitudes", OverPairs<T>([](C a, C b) {
           return a.Magn() + qxAbs(b) + a.SquareMagn() + qxAbsMin(a, b) + qxAbsMax(a, b) + qxAbsMin(a, b, a + b) +
                  qxAbsMax(a, b, a + b);
         }));
  Row<T>("Complex Invert", OverPairs<T>([](C a, C b) { return a.Invert() - b.Conjugate(); }));
  Row<T>("Complex rounding", OverPairs<T>([](C a, C b) { return a.Floor() + b.Ceil() + (-a).Round(); }));
  Row<T>("qxAbsMinInArray", [](Hash& h) {
    const std::vector<C> z = ComplexNumbers<T>();
    for (std::int32_t n = 1; n < 600; n += 7) {
      T least = 0, largest = 0;
      std::int32_t i = 0, j = 0;
      qxAbsMinInArray(n, z.data() + (600 - n), least, i);
      qxAbsMaxInArray(n, z.data() + (600 - n), largest, j);
      h(least, i, largest, j);
    }
  });
  PlatformRow<T>("Complex angles", OverPairs<T>([](C a, C b) {
                   a.CalculateTrigonForm();
                   return a.AngleInDegrees() + b.AngleInDegrees() + b.AngleInRadians() + a.AngleInRadians();
                 }));
  PlatformRow<T>("Complex Power", OverPairs<T>([](C a, C b) {
                   return std::vector<C>{a.Power(0), a.Power(1),  a.Power(2), a.Power(-3),
                                         b.Power(7), b.Power(-1), b.Power(30)};
                 }));
  PlatformRow<T>("Complex Roots", OverPairs<T>([](C a, C b) {
                   std::vector<C> roots(9);
                   const std::int32_t found = a.Roots(3, roots.data()) + b.Roots(5, roots.data() + 3);
                   roots[8] = C(static_cast<T>(found));
                   return roots;
                 }));
  PlatformRow<T>("Complex SetInTrigForm", OverPairs<T>([](C a, C b) {
                   a.SetInTrigForm(b.Real(), b.Imag());
                   return a;
                 }));
  Row<T>("Complex printed", [](Hash& h) {
    std::ostringstream stream;
    for (const C& z : ComplexNumbers<T>()) stream << z << '\n';
    h(stream.str());
  });
}

template void FoundationRows<float>();
template void FoundationRows<double>();

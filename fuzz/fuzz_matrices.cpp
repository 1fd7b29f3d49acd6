#include <qx/matrices/matrix2.h>
#include <qx/matrices/matrix3.h>
#include <qx/matrices/matrix4.h>
#include <qx/matrices/matrix_n.h>
#include <qx/solvers/algebra.h>

#include "fuzz/input.h"

namespace {

template <typename M>
void Fixed(Input& input) {
  using T = typename M::Element;
  const auto a = input.Make<M>();
  M x, y;
  typename M::Vector v;
  T condition = 0;
  const auto norm = input.Choice<qxMatrixNorm>(4);
  a.Inverse(x);
  a.LU_Decomposition(x, y);
  a.QR_Decomposition(x, y);
  a.SV_Decomposition(x, y, v);
  a.SymmetricEigensolve(v, x);
  a.PolarDecomposition(x, y, input.Integer(0, 1));
  a.Inverse(x, norm, T(1e-6), condition);
  a.SpectralDecomposition(x, y, input.Integer(0, 2));
  T values[3] = {}, vectors[9] = {};
  if constexpr (M::dimension == 2) a.FindEigenvalues(values[0], values[1]);
  if constexpr (M::dimension == 3) {
    a.FindEigenvalues(values[0], values[1], values[2]);
    a.FindEigenvectorsReal(values[0], vectors);
    std::int32_t stretch = 0, reflection = 0;
    M z;
    a.ExtractScaleRotation(x, y, z, input.Integer(0, 1), T(1e-6), stretch, reflection);
  }
}

template <typename T>
void Rectangular(Input& input) {
  const std::int32_t m = input.Integer(0, 9), n = input.Integer(0, 9);
  const CQXMatrixMN<T> a(m, n, input.Numbers<T>(qxElementCount(m, n)).data());
  CQXMatrixMN<T> u(m, m), v(n, n), r(m, n), inverse(n, m);
  CQXVectorN<T> singular(std::min(m, n)), x(n), b(m);
  T condition = 0;
  const auto norm = input.Choice<qxMatrixNorm>(4);
  a.QR_Decomposition(u, r);
  a.SV_Decomposition(u, v, singular, input.Number<T>());
  a.Inverse(inverse);
  a.PseudoInverse(inverse, norm, condition);
  a.PseudoSolveSystem(b, x, norm, condition);
  (void)(a * a.Transpose() + u);
}

template <typename T>
void Square(Input& input) {
  const std::int32_t n = input.Integer(0, 9);
  const CQXMatrixN<T> a(n, input.Numbers<T>(qxElementCount(n, n)).data());
  const CQXMatrixN<T> s = a + a.Transpose();
  CQXMatrixN<T> x(n), y(n);
  CQXVectorN<T> v(n), b(n);
  a.LU_Decomposition(x, y);
  a.Inverse(x);
  a.SolveSystem(b, v);
  (void)(a ^ input.Integer(-4, 9));
  (void)a.Det();
  (void)s.SymmetricEigensolve(v, x, input.Number<T>());
  s.SpectralDecomposition(x, y, input.Integer(0, 2));
  a.PolarDecomposition(x, y, input.Integer(0, 1));
  a.InvPreconditioner(x, input.Number<T>());
  CQXAlgebra::SolveByCongugateGradient(s, b, v, input.Number<T>(), input.Number<T>());
}

template <typename T>
void Run(Input& input) {
  switch (input.Integer(0, 4)) {
    case 0:
      return Fixed<CQXMatrix2<T>>(input);
    case 1:
      return Fixed<CQXMatrix3<T>>(input);
    case 2:
      return Fixed<CQXMatrix4<T>>(input);
    case 3:
      return Rectangular<T>(input);
    default:
      return Square<T>(input);
  }
}

}  // namespace

QX_FUZZ(Run)

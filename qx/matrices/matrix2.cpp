#include <qx/foundation/complex.h>
#include <qx/kernels/closed_form_kernels.h>
#include <qx/matrices/matrix2.h>
#include <qx/vectors/base_vector.h>
#include <qx/vectors/vector4.h>

#include <cmath>
#include <cstdint>

template <qxReal T>
std::int32_t CQXMatrix2<T>::FindEigenvalues(T& a, T& b, T tolerance) const noexcept {
  const auto roots = qxKernels::SolveReducedQuadratic(-Base::Trace(), Det(), tolerance);
  roots.Write(a, b);
  if (std::abs(a) <= tolerance) a = 0;
  if (std::abs(b) <= tolerance) b = 0;
  return roots.code;
}

template <qxReal T>
std::int32_t CQXMatrix2<T>::FindEigenvectorsReal(T lambda, T* target, T tolerance) const noexcept {
  CQXMatrix2 a = Base::GetCharacteristicsMatrix(lambda);
  a.AnnulateSmallElements(tolerance);
  const CQXVector4<T> elements(a.m_c);
  const std::int32_t largest = elements.GetIndexOfMaxComponent(1);
  const T size = elements.GetMaxComponent(1);
  if (size < tolerance || size == 0) {
    CQXMatrix2(1, 0, 0, 1).Dump(target);
    return 2;
  }
  const std::int32_t row = largest / 2;
  if (largest % 2 == 0) {
    CQXVector2<T>(-a(row, 1) / a(row, 0), 1).Dump(target);
  } else {
    CQXVector2<T>(1, -a(row, 0) / a(row, 1)).Dump(target);
  }
  return 1;
}

template <qxReal T>
std::int32_t CQXMatrix2<T>::FindEigenvectorComplex(const CQXComplex<T>& lambda, CQXBaseVector<CQXComplex<T>>& v,
                                                   T tolerance) const {
  const T re = lambda.Real();
  const T im = lambda.Imag();
  const T a01 = std::abs(m_c[1]);
  const T a10 = std::abs(m_c[2]);
  const T largest = a01 >= a10 ? a01 : a10;
  if (v.Dim() != 2) v.SetDimension(2);
  if (v.Data() == nullptr) return 0;
  v[0].Set(1, 0);
  v[1].Set(0, 0);
  if (largest < tolerance || largest == 0) return 0;
  if (a01 >= a10) {
    v[1].Set((re - m_c[0]) / m_c[1], im / m_c[1]);
  } else {
    v[0].Set((re - m_c[3]) / m_c[2], im / m_c[2]);
    v[1].Set(1, 0);
  }
  return 1;
}

template <qxReal T>
std::int32_t CQXMatrix2<T>::PolarDecomposition(CQXMatrix2& U, CQXMatrix2& P, std::int32_t side,
                                               T tolerance) const noexcept {
  const T det = Det();
  if (std::abs(det) < tolerance) return 0;
  const CQXMatrix2 a = *this;
  const T s = det > 0 ? T(1) : T(-1);
  const CQXMatrix2 r(a[0] + s * a[3], a[1] - s * a[2], a[2] - s * a[1], a[3] + s * a[0]);
  U = r / r.ColVector(0).Length();
  P = side == 0 ? U.Transpose() * a : a * U.Transpose();
  return 1;
}

template class CQXMatrix2<float>;
template class CQXMatrix2<double>;

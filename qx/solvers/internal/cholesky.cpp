#include <qx/foundation/internal/instantiate.h>
#include <qx/solvers/internal/cholesky.h>

#include <cmath>

namespace qxSolvers {

template <qxReal T>
bool FactorByCholesky(std::int32_t first, std::int32_t size, CQXMatrixMN<T>& a) {
  for (std::int32_t j = first; j < first + size; ++j) {
    for (std::int32_t i = first; i <= j; ++i) {
      T sum = a(i, j);
      for (std::int32_t k = first; k < i; ++k) sum -= a(k, i) * a(k, j);
      if (i < j) {
        a(i, j) = sum / a(i, i);
      } else {
        if (!(sum > 0)) return false;
        a(j, j) = std::sqrt(sum);
      }
    }
  }
  return true;
}

template <qxReal T>
void SolveTransposed(std::int32_t size, const CQXMatrixMN<T>& r, T* v) {
  for (std::int32_t i = 0; i < size; ++i) {
    T sum = v[i];
    for (std::int32_t k = 0; k < i; ++k) sum -= r(k, i) * v[k];
    v[i] = sum / r(i, i);
  }
}

template <qxReal T>
void SolveUpper(std::int32_t size, const CQXMatrixMN<T>& r, T* v) {
  for (std::int32_t i = size; i-- > 0;) {
    T sum = v[i];
    for (std::int32_t k = i + 1; k < size; ++k) sum -= r(i, k) * v[k];
    v[i] = sum / r(i, i);
  }
}

#define QX_INSTANTIATE(T)                                                      \
  template bool FactorByCholesky(std::int32_t, std::int32_t, CQXMatrixMN<T>&); \
  template void SolveTransposed(std::int32_t, const CQXMatrixMN<T>&, T*);      \
  template void SolveUpper(std::int32_t, const CQXMatrixMN<T>&, T*);
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE

}  // namespace qxSolvers

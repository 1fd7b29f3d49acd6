#include "tests/operations/operations.h"

namespace {

template <typename T>
void AllRows() {
  FoundationRows<T>();
  VectorRows<T>();
  FixedMatrixRows<T>();
  MatrixRows<T>();
  TransformRows<T>();
  SolverRows<T>();
  ArrayRows<T>();
  GeometryRows<T>();
  WaveletRows<T>();
}

}  // namespace

void VisitOperations(const std::function<void(const Operation&)>& visitor) {
  visitOperation = &visitor;
  AllRows<float>();
  AllRows<double>();
}

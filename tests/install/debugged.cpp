#include <qx/qx.h>

// Looked at by a debugger in Stop(): see debugger.gdb.
[[gnu::noinline]] void Stop() { asm volatile(""); }

int main() {
  const double elements[6] = {1, 2, 3, 4, 5, 6};
  CQXVector3<double> fixed(1, 2, 3);
  CQXMatrix2<float> square(1, 2, 3, 4);
  CQXVectorN<double> vector(3, elements);
  CQXMatrixMN<double> matrix(2, 3, elements);
  CQXComplex<double> complex(1, -2);
  CQXQuaternion<float> quaternion;
  Stop();
  return vector.Dim() + matrix.RowsNb() + (fixed.X() + square[0] + complex.Real() + quaternion.w > 0) - 6;
}

#include <qx/matrices/matrix3.h>
#include <qx/matrices/matrix4.h>
#include <qx/transforms/quaternion.h>
#include <qx/vectors/vector3.h>

#include <cstdio>

// The value classes without exceptions: a quarter turn about z by three roads.
int main() {
  const CQXVector3<double> x(1, 0, 0);
  const CQXVector3<double> z(0, 0, 1);
  const CQXMatrix3<double> rows(0, -1, 0, 1, 0, 0, 0, 0, 1);
  CQXQuaternion<double> quaternion;
  quaternion.SetRotation(1.5707963267948966, z);
  const CQXVector3<double> turned = rows * x;
  const CQXVector3<double> error = turned - quaternion.GetMatrix() * x;
  CQXMatrix3<double> inverse;
  const bool inverted = rows.Inverse(inverse) == 0;
  std::printf("turned (%g, %g, %g), roads differ by %g\n", turned.X(), turned.Y(), turned.Z(), error.Length());
  return inverted && turned == z.Cross(x) && inverse * turned == x && error.Length() < 1e-15 ? 0 : 1;
}

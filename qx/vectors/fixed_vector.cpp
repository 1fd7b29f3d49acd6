#include <qx/vectors/vector2.h>
#include <qx/vectors/vector3.h>
#include <qx/vectors/vector4.h>

template class CQXVector2<float>;
template class CQXVector2<double>;
template class CQXVector3<float>;
template class CQXVector3<double>;
template class CQXVector4<float>;
template class CQXVector4<double>;

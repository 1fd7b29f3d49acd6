#include <qx/matrices/matrix4.h>

template class CQXMatrix4<float>;
template class CQXMatrix4<double>;

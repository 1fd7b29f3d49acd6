#pragma once

/// @file
/// Internal. Explicit instantiation for the element types: a source defines QX_INSTANTIATE(T), hands it over at its end
/// and undefines it.

#define QX_FOR_FLOAT_AND_DOUBLE(INSTANTIATE) \
  INSTANTIATE(float)                         \
  INSTANTIATE(double)

#pragma once

#include <gtest/gtest.h>

/// The two element types of the library, for typed tests.
using FloatTypes = ::testing::Types<float, double>;

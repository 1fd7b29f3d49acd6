#pragma once

/// @file
/// The version of the headers, for the preprocessor. Until 1.0 a minor version may change the interface and the layout
/// of objects, a patch version neither; the name of the shared library carries both numbers of the minor version.

/// First number of the version.
#define QX_VERSION_MAJOR 0
/// Second number of the version.
#define QX_VERSION_MINOR 1
/// Third number of the version.
#define QX_VERSION_PATCH 0
/// The version as a text.
#define QX_VERSION "0.1.0"
/// The version as one number that grows: 10000 major + 100 minor + patch.
#define QX_VERSION_NUMBER (QX_VERSION_MAJOR * 10000 + QX_VERSION_MINOR * 100 + QX_VERSION_PATCH)

#pragma once

/// Marks a name that libZendraUtil exports; everything else in it is hidden.
///
/// Written by hand and not generated: the headers then need nothing but the include root, and the
/// attribute is the same inside and outside of the library on every system the project supports.
#define ZENDRA_UTIL_EXPORT __attribute__((visibility("default")))

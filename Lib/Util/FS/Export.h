#pragma once

/// Marks a name that libLWUtilFS exports.
#define LWUTILFS_EXPORT __attribute__((visibility("default")))

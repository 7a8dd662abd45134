#pragma once

/// Marks a name that libZendraUtil exports.
#define ZENDRA_UTIL_EXPORT __attribute__((visibility("default")))

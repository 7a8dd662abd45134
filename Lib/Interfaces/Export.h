#pragma once

/// Marks a name that libLWRegistry exports.
#define LW_REGISTRY_EXPORT __attribute__((visibility("default")))

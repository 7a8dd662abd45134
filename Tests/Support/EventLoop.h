#pragma once

#include <functional>

namespace Tests {

/// Runs the event loop until the condition holds; returns as soon as it does.
///
/// The limit is a safety net for a condition that never comes true, not a time to wait.
/// @return whether the condition holds now
bool WaitUntil(const std::function<bool()>& condition, int limitMilliseconds = 20000);

/// Lets everything that was put off with deleteLater() go.
void ProcessDeferredDeletes();

} // namespace Tests

#pragma once

#include <functional>

namespace Tests {

/// Runs the event loop until the condition holds; returns as soon as it does.
///
/// @param limitMilliseconds  ends the wait for a condition that never comes true
/// @return whether the condition holds now
bool WaitUntil(const std::function<bool()>& condition, int limitMilliseconds = 20000);

/// Deletes the objects for which deleteLater() was called.
void ProcessDeferredDeletes();

/// Handles every event that the system has queued so far. On Linux all notices of an operation are queued
/// when the operation returns, so there is nothing to wait for.
void HandleQueuedNotices();

} // namespace Tests

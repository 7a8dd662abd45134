#pragma once

#include <string>

namespace Tests {

// Each function returns why a kind of test cannot run on this system or in the temporary folder's file
// system, as a text for GTEST_SKIP(), or an empty text.

/// Tests with names that differ only in case.
std::string WhyCaseIsIgnored();
/// Tests with names that are not UTF-8.
std::string WhyOnlyUtf8IsAccepted();

/// Tests of the time and order of notices. On Linux notices are queued when the call that causes them
/// returns.
std::string WhyNoticesAreLate();

/// Tests that need a trash of their own.
std::string WhyNothingIsTrashed();

/// Moves the temporary folder from a file system in memory, which has no trash, to a disk, if there is one.
/// Initializes a constant of a test file, so that it runs before main().
bool PreferATemporaryFolderWithATrash();

} // namespace Tests

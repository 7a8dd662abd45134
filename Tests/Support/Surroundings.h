#pragma once

#include <string>

namespace Tests {

// What the system and the file system of the temporary folder do not let a test see. Each function says why,
// for GTEST_SKIP(); what it says is empty where nothing stands in the way.

/// Names that differ in upper and lower case alone.
std::string WhyCaseIsLost();
/// Names with accents, letter by letter as they were given.
std::string WhySpellingIsLost();
/// Names that are no UTF-8.
std::string WhyBytesAreRefused();

/// Notices in an order, and at a time: on Linux they are queued by the time that the call which caused them
/// returns.
std::string WhyNoticesAreLate();

/// A trash of the test's own.
std::string WhyNothingIsTrashed();

/// Moves the temporary folder from memory, where nothing can be trashed, to a disk, if that helps. For a
/// constant of a test file, so that it is done before main().
bool PreferATemporaryFolderWithATrash();

} // namespace Tests

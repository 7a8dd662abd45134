#pragma once

#include "Core/ioPath.h"
#include "Lib/Util/FS/Export.h"

#include <QString>

#include <regex>
#include <string>

class QWidget;

namespace Zendra::LW {

/// Returns the next free number for a numbered file: one more than the largest number in the names of a
/// folder's entries.
///
///     const std::string number = GetNextAvaliableIndex(folder, std::regex("Recording (\\d+)\\.mp4"));
///
/// Every entry counts: files, folders, links and hidden entries; subfolders are not searched. The pattern has
/// to match the whole name, and its first group is the number; a name without one is skipped. Gaps are not
/// filled (1, 2, 7 give 8), and numbers may have any number of digits.
///
/// Mind leading zeros: numbers are read as in C++. `007` is seven, `010` is eight, `08` is an error and
/// `0x1f` is thirty-one, so number files without padding. A leading `-` makes a number negative; negative
/// numbers and zero do not count.
///
/// Nothing is reserved: two calls return the same number until an entry with that number exists, so create
/// the file in a way that fails if it exists already. Blocks while it lists the folder once. Keeps no state:
/// any number of threads may call it at the same time.
///
/// @param folder   the folder to look into
/// @param pattern  matched against the bytes of each name, UTF-8 as a rule
/// @return decimal digits and nothing else, at least "1"
/// @throws boost::filesystem::filesystem_error when the folder is missing or cannot be listed
/// @throws std::runtime_error when a number cannot be read; it is also a boost::exception. One such name
///         makes the call fail, whatever else the folder contains. "Unexpected character encountered in
///         input." for a decimal number, "Unexpected content found while parsing character string." for an
///         octal or hexadecimal one
/// @throws std::regex_error when a name is too complex for std::regex to match
LWUTILFS_EXPORT std::string GetNextAvaliableIndex(const ioPath& folder, const std::regex& pattern);

/// Checks whether files can be written into a folder, and shows the user why not.
///
/// The rules are those of Zendra::Util::IsThisPathValid(). For an unusable path, a modal alert shows the
/// reason and the path; the call returns when the user has closed it, and events are processed meanwhile.
/// Nothing is logged. GUI thread only.
///
/// The alert's text is the translation of "%1: %2" (reason, path) in the context
/// "DirectoryUtilsValidPath"; the catalogue belongs to the application.
///
/// @param path    the folder
/// @param parent  the widget that the alert belongs to; may be null
/// @return whether the path is usable. Throws nothing of its own.
LWUTILFS_EXPORT bool CheckPathAndAnnoyUserIfInvalid(const QString& path, QWidget* parent);

/// Creates the folder, with every missing folder above it, unless it exists; then does the same as
/// CheckPathAndAnnoyUserIfInvalid() and returns its result.
///
/// The folder is created before it is checked: it may exist afterwards although the result is false. If it
/// cannot be created, the check reports that. When it comes to creating it, an empty path means the current
/// folder, which exists; the check then refuses it. GUI thread only.
///
/// @param path    the folder, absolute or relative to the process's current folder
/// @param parent  the widget that an alert belongs to; may be null
LWUTILFS_EXPORT bool PrepareFolder(const QString& path, QWidget* parent);

} // namespace Zendra::LW

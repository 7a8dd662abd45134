#pragma once

#include "Core/ioPath.h"
#include "Lib/Util/FS/Export.h"

#include <QString>

#include <regex>
#include <string>

class QWidget;

namespace Zendra::LW {

/// Chooses the next free number for a numbered file: one more than the largest that the names of a
/// folder's entries carry.
///
///     const std::string number = GetNextAvaliableIndex(folder, std::regex("Recording (\\d+)\\.mp4"));
///
/// Every entry counts: files, folders, links and hidden ones alike; subfolders are not entered. The
/// pattern has to match the whole name, and its first group is the number; a name without one is skipped.
/// Gaps are not filled (1, 2, 7 give 8), and numbers may have any number of digits.
///
/// Mind the leading zero: a number is read as C++ reads one. `007` is seven, `010` is eight, `08` is an
/// error and `0x1f` is thirty-one, so number files without padding. A leading `-` makes a number negative;
/// negative numbers and zero do not count.
///
/// Nothing is reserved: two calls give the same number until something with that number exists, so
/// create the file in a way that fails when it is there already. Blocks for one listing of the folder.
/// Keeps no state: any thread may call it, also several at once.
///
/// @param folder   the folder to look into
/// @param pattern  matched against the bytes of each name, UTF-8 as a rule
/// @return decimal digits and nothing else, at least "1"
/// @throws boost::filesystem::filesystem_error when the folder is missing or cannot be listed
/// @throws std::runtime_error when a number cannot be read, a boost::exception at the same time; one such
///         name fails the call, whatever else the folder holds. "Unexpected character encountered in
///         input." for a decimal number, "Unexpected content found while parsing character string." for
///         an octal or hexadecimal one
/// @throws std::regex_error when matching exceeds what std::regex can do
LWUTILFS_EXPORT std::string GetNextAvaliableIndex(const ioPath& folder, const std::regex& pattern);

/// Tells whether a folder can take recordings, and tells the user why when it cannot.
///
/// The rules are those of Zendra::Util::IsThisPathValid(). An unusable path brings up a modal alert with
/// the reason and the path; the call returns once the user has closed it, events are handled meanwhile.
/// Nothing is logged. GUI thread only.
///
/// The alert's text is the translation of "%1: %2" (reason, path) in the context
/// "DirectoryUtilsValidPath"; the catalogue belongs to the application.
///
/// @param path    the folder
/// @param parent  the widget that the alert belongs to; may be null
/// @return whether the path is usable. Throws nothing of its own.
LWUTILFS_EXPORT bool CheckPathAndAnnoyUserIfInvalid(const QString& path, QWidget* parent);

/// Makes the folder, with every missing folder above it, unless it exists; then does what
/// CheckPathAndAnnoyUserIfInvalid() does, and returns its result.
///
/// The folder is made before it is checked: it may exist afterwards although the result is false. Where it
/// cannot be made, the check says so. An empty path stands for the current folder as far as making it goes.
/// GUI thread only.
///
/// @param path    the folder, absolute or relative to the process's current folder
/// @param parent  the widget that an alert belongs to; may be null
LWUTILFS_EXPORT bool PrepareFolder(const QString& path, QWidget* parent);

} // namespace Zendra::LW

#pragma once

#include <QFileInfo>
#include <QString>

#include <limits>

namespace Zendra::LW {

/// A modification time that is not known. No file has this value.
constexpr qint64 unreadableTime = std::numeric_limits<qint64>::min();

/// The modification time of a file, or of what a link points to, in milliseconds since 1970 UTC, as
/// QFileInfo has it; unreadableTime when it does not exist.
///
/// One system call. QFileInfo::lastModified() returns the same time as local time, and the conversion takes
/// several times as long as the call.
qint64 ReadModificationTime(const QString& path);

/// The same for an entry of an open folder, so that the system need not resolve the folder's path.
qint64 ReadModificationTime(int folder, const char* name);

/// Makes a QFileInfo read the size and times of its file now. Otherwise it reads them when it is first asked
/// for one of them. One system call.
inline void ReadMetadata(const QFileInfo& info)
{
    info.size();
}

} // namespace Zendra::LW

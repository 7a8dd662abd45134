#pragma once

#include <QFileInfo>
#include <QString>

#include <limits>

namespace Zendra::LW {

/// Stands for a modification time that is not known. No file has it.
constexpr qint64 unreadableTime = std::numeric_limits<qint64>::min();

/// The modification time of a file, or of what a link points to, in milliseconds since 1970 UTC, as
/// QFileInfo has it; unreadableTime when it does not exist.
///
/// One system call. QFileInfo::lastModified() gives the same instant in local time, and its conversions cost
/// several times as much as the call.
qint64 ReadModificationTime(const QString& path);

/// The same for an entry of an open folder, which spares the system the way to that folder.
qint64 ReadModificationTime(int folder, const char* name);

/// Reads the size and the times of a file into its QFileInfo, which would otherwise have those of the moment
/// when it is first asked for one of them. One system call.
inline void ReadMetadata(const QFileInfo& info)
{
    info.size();
}

} // namespace Zendra::LW

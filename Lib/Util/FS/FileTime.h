#pragma once

#include <QString>

#include <optional>

namespace Zendra::LW {

/// The modification time of a file, or of what a link points to, in milliseconds since 1970 UTC, as QFileInfo
/// has it; nothing when it does not exist.
///
/// One system call. QFileInfo::lastModified() gives the same instant in local time, and its conversions cost
/// several times as much as the call.
std::optional<qint64> ReadModificationTime(const QString& path);

} // namespace Zendra::LW

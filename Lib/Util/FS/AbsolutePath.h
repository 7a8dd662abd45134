#pragma once

#include <QFileInfo>
#include <QString>

namespace Zendra::LW {

/// Whether a path is absolute and clean, so that QFileInfo::absoluteFilePath() returns it unchanged.
bool IsAbsoluteAndClean(const QString& path);

/// QFileInfo::absoluteFilePath(), which caches two more strings in the QFileInfo: that is avoided for a path
/// that is absolute and clean, since a snapshot keeps the QFileInfo of every file.
QString AbsolutePathOf(const QFileInfo& info);

} // namespace Zendra::LW

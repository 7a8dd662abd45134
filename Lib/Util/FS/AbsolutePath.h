#pragma once

#include <QFileInfo>
#include <QString>

namespace Zendra::LW {

/// Whether the path of a file is its own QFileInfo::absoluteFilePath().
bool IsAbsoluteAndClean(const QString& path);

/// QFileInfo::absoluteFilePath(), without the strings that a QFileInfo that was asked for it keeps: a
/// snapshot of many files would hold two for each. Only a path that is relative or not clean has them made.
QString AbsolutePathOf(const QFileInfo& info);

} // namespace Zendra::LW

#pragma once

#include <QFileInfo>
#include <QString>

namespace Zendra::LW {

/// Whether the path of a file is its own QFileInfo::absoluteFilePath().
bool IsAbsoluteAndClean(const QString& path);

/// QFileInfo::absoluteFilePath(), without making the QFileInfo cache two more strings: a snapshot of many
/// files would hold them all. Only a path that is relative or not clean has them made.
QString AbsolutePathOf(const QFileInfo& info);

} // namespace Zendra::LW

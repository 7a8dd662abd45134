#pragma once

#include <QStringList>

namespace RecordingsFolder {

/// The links in the temporary folder whose target is just this path.
QStringList LinksTo(const QString& path);

/// Links a file under a fresh name in the temporary folder, by Zendra::LW::TemporaryHardLink.
///
/// The class keeps no path of a link that it made, so the link is found by looking: it is the one that was
/// not there before. It stays after the call; whoever asked for it removes it.
/// @return the link's path; empty when none was made
QString MakeTemporaryLink(const QString& path);

} // namespace RecordingsFolder

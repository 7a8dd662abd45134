#pragma once

#include <QString>
#include <QStringList>

namespace RecordingsTour {

/// What the tour's second process does: it changes a file in the folder, as another program would.
///
/// @param command  "add", "change" or "delete", and the file's path. "add" creates a complete picture with a
///                 modification time an hour ago; "change" writes another picture into the same file.
/// @return the exit code: 0 if it succeeded
int RunAsOtherProgram(const QStringList& command);

} // namespace RecordingsTour

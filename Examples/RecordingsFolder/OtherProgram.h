#pragma once

#include <QString>
#include <QStringList>

namespace RecordingsFolder {

/// What a second process does to the folder, so that the window has something to notice that is not its
/// own doing. Run with an order, "add", "change" or "delete", and a file.
///
/// add: a picture that appears complete under its name, an hour old. change: another picture written into
/// the same file, whose time is that of now. delete: the file is gone.
/// @return the exit code: 0 when it was done
int RunAsOtherProgram(const QStringList& order);

} // namespace RecordingsFolder

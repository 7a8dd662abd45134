#pragma once

#include <QString>
#include <QStringList>

namespace RecordingsTour {

/// The command line of the tour.
struct Options
{
    QString folder;              ///< absolute; empty if none is given
    QString screenshot;          ///< absolute; empty for none
    int stepLimit = 10000;       ///< milliseconds that a step may take
    QString otherProgram;        ///< the second process of the tour; empty for this program itself
    bool isOtherProgram = false; ///< this process is the second one
    QStringList otherCommand;    ///< for RunAsOtherProgram()
};

/// Reads the command line. Ends the process after --help, and when the command line is wrong. Needs a
/// QCoreApplication.
Options ReadOptions(const QStringList& arguments);

} // namespace RecordingsTour

#pragma once

#include <QCommandLineParser>
#include <QString>
#include <QStringList>

namespace RecordingsFolder {

/// What the command line asks for.
struct Options
{
    /// What the process is to be. The last is for the tour alone: a second process that changes files.
    enum class Role
    {
        Window,
        Tour,
        OtherProgram
    };

    Role role = Role::Window;
    QString folder;     ///< absolute; empty when none was named
    QString screenshot; ///< absolute; empty for none
    bool dark = false;
    int stepLimit = 10000;          ///< milliseconds that a step of the tour may take
    QString otherProgram;           ///< what the tour starts as the second process; empty for this program
    QStringList otherProgramsOrder; ///< an operation of OtherProgram and its file
};

/// Reads the command line.
class CommandLine
{
    Q_DECLARE_TR_FUNCTIONS(RecordingsFolder::CommandLine)

public:
    /// Needs no QApplication, since some settings have to be made before there is one.
    explicit CommandLine(const QStringList& arguments);

    const Options& Result() const { return options; }
    /// Shows help or version, or complains, and ends the process, if that is what the command line comes to.
    void HandleHelpAndErrors();

private:
    QCommandLineParser parser;
    Options options;
    QString error;
};

} // namespace RecordingsFolder

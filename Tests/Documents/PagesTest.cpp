#include "Tests/Support/EventLoop.h"
#include "Tests/Support/Surroundings.h"
#include "Tests/Support/TempFolder.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QProcessEnvironment>

#include <gtest/gtest.h>

#include <string>

using Tests::TempFolder;
using Tests::WaitUntil;

// Types the commands of the pages' terminals into a shell, and compares its output with what the pages show.

namespace {

[[maybe_unused]] const bool isMoved = Tests::PreferATemporaryFolderWithATrash();

/// The block of a page that shows a terminal: commands behind "$ ", and what they print.
QList<QByteArray> Terminal(const std::string& page)
{
    QFile file(QStringLiteral(PAGES "/") + QString::fromStdString(page));
    if (!file.open(QIODevice::ReadOnly)) {
        ADD_FAILURE() << "cannot read " << page;
        return {};
    }
    const QByteArray text = file.readAll();
    const QByteArray opening = "\n```console\n";
    const auto start = text.indexOf(opening) + opening.size();
    return text.mid(start, text.indexOf("\n```", start) - start).split('\n');
}

/// A shell in a folder of its own, with links to the programs.
class Shell
{
public:
    Shell()
    {
        const QStringList programs = QStringLiteral(EXAMPLE_PROGRAMS).split(QLatin1Char('|'));
        for (const QString& program : programs)
            folder.Link(program, QFileInfo(program).fileName());
        // A home and a trash for this test alone, on the same disk as the folder.
        QDir(outside.Path()).mkdir(QStringLiteral("home"));
        QDir(outside.Path()).mkdir(QStringLiteral("tmp"));
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("HOME"), outside.Path(QStringLiteral("home")));
        environment.insert(QStringLiteral("XDG_DATA_HOME"), outside.Path(QStringLiteral("home/data")));
        environment.insert(QStringLiteral("TMPDIR"), outside.Path(QStringLiteral("tmp")));
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        process.setProcessEnvironment(environment);
        process.setWorkingDirectory(folder.Path());
        process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process.start(QStringLiteral("/bin/sh"), {QStringLiteral("-s")});
    }

    ~Shell()
    {
        process.kill();
        process.waitForFinished();
    }

    Shell(const Shell&) = delete;
    Shell& operator=(const Shell&) = delete;

    void Type(const QByteArray& command) { process.write(command + '\n'); }

    /// Reads until that many bytes have been printed, or the time is up.
    QByteArray ReadAtLeast(QByteArray::size_type length)
    {
        WaitUntil([&] {
            printed += process.readAllStandardOutput();
            return printed.size() >= length;
        });
        return printed;
    }

    /// Ends the program in the background and the shell; returns the whole output.
    QByteArray Finish()
    {
        Type("[ -z \"$!\" ] || kill $!; exit");
        EXPECT_TRUE(process.waitForFinished());
        return printed += process.readAllStandardOutput();
    }

private:
    TempFolder folder;
    TempFolder outside;
    QProcess process;
    QByteArray printed;
};

/// A page's name as that of a test.
std::string NameOf(const testing::TestParamInfo<const char*>& page)
{
    QString name = QString::fromLatin1(page.param);
    name.chop(int(qstrlen(".md")));
    return name.replace(QLatin1Char('-'), QLatin1Char('_')).toStdString();
}

class PagesTest : public testing::TestWithParam<const char*>
{
};

} // namespace

TEST_P(PagesTest, ShowsWhatATerminalShows)
{
    if (GetParam() == std::string("file-operations.md")) {
        if (const std::string why = Tests::WhyNothingIsTrashed(); !why.empty())
            GTEST_SKIP() << why;
    }
    const QList<QByteArray> lines = Terminal(GetParam());
    Shell shell;

    QByteArray shown;
    int commands = 0;
    for (const QByteArray& line : lines) {
        if (!line.startsWith("$ ")) {
            shown += line + '\n';
            continue;
        }
        // One command at a time: the next one needs the files that the last one left.
        shell.ReadAtLeast(shown.size());
        shell.Type(line.mid(2));
        ++commands;
    }
    shell.ReadAtLeast(shown.size());

    EXPECT_GT(commands, 0);
    EXPECT_EQ(shell.Finish().toStdString(), shown.toStdString());
}

INSTANTIATE_TEST_SUITE_P(Pages, PagesTest,
                         testing::Values("watching.md", "watch-and-poll.md", "numbering.md", "preparing.md",
                                         "file-operations.md", "temporary-links.md"),
                         NameOf);

TEST(NumberExampleTest, RefusesAFolderThatIsMissing)
{
    Shell shell;

    shell.Type("./number missing 2>/dev/null || echo refused");
    shell.ReadAtLeast(1);

    EXPECT_EQ(shell.Finish().toStdString(), "refused\n");
}

TEST(DiscardExampleTest, PutsTheFileIntoTheTrashOfTheUser)
{
    if (const std::string why = Tests::WhyNothingIsTrashed(); !why.empty())
        GTEST_SKIP() << why;
    Shell shell;

    shell.Type("touch gone && ./discard gone >/dev/null && ls \"$XDG_DATA_HOME/Trash/files\"");
    shell.ReadAtLeast(1);

    EXPECT_EQ(shell.Finish().toStdString(), "gone\n");
}

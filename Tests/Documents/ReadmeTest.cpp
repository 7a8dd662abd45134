#include "Tests/Support/EventLoop.h"
#include "Tests/Support/TempFolder.h"

#include <QFile>
#include <QProcess>

#include <gtest/gtest.h>

#include <string>

using Tests::TempFolder;
using Tests::WaitUntil;

// The README shows the program as it is compiled, and its output as it is printed.

namespace {

QByteArray Read(const char* path)
{
    QFile file(QString::fromLocal8Bit(path));
    if (!file.open(QIODevice::ReadOnly))
        ADD_FAILURE() << "cannot read " << path;
    return file.readAll();
}

/// The program without the comment at its head.
std::string Program()
{
    const QByteArray source = Read(WATCH_SOURCE);
    return source.mid(source.indexOf("#include")).toStdString();
}

/// The first block of the README in a language.
std::string Block(const QByteArray& language)
{
    const QByteArray text = Read(README);
    const QByteArray opening = "\n```" + language + "\n";
    const auto start = text.indexOf(opening) + opening.size();
    const auto end = text.indexOf("```\n", start);
    return text.mid(start, end - start).toStdString();
}

} // namespace

TEST(ReadmeTest, ShowsTheProgramThatIsCompiled)
{
    EXPECT_EQ(Block("cpp"), Program());
}

TEST(ReadmeTest, ShowsWhatTheProgramPrints)
{
    const TempFolder folder;
    folder.Write(QStringLiteral("Recordings/Recording 1.mp4"));
    folder.Write(QStringLiteral("new.mp4"));
    QProcess watch;
    QByteArray printed;
    watch.start(QStringLiteral(WATCH_PROGRAM), {folder.Path(QStringLiteral("Recordings"))});
    const auto shows = [&](const QByteArray& line) {
        return WaitUntil([&] {
            printed += watch.readAllStandardOutput();
            return printed.contains(line);
        });
    };

    EXPECT_TRUE(shows("watching"));
    folder.Rename(QStringLiteral("new.mp4"), QStringLiteral("Recordings/Recording 2.mp4"));
    EXPECT_TRUE(shows("added"));
    folder.Touch(QStringLiteral("Recordings/Recording 2.mp4"));
    EXPECT_TRUE(shows("changed"));
    folder.Remove(QStringLiteral("Recordings/Recording 1.mp4"));
    EXPECT_TRUE(shows("removed"));
    watch.kill();
    watch.waitForFinished();

    std::string commandsLeftOut;
    const QList<QByteArray> lines = QByteArray::fromStdString(Block("console")).split('\n');
    for (const QByteArray& line : lines) {
        if (!line.isEmpty() && !line.startsWith('$'))
            commandsLeftOut += line.toStdString() + '\n';
    }
    EXPECT_EQ(printed.toStdString(), commandsLeftOut);
}

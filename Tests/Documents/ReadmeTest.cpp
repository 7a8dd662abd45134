#include "Tests/Support/EventLoop.h"
#include "Tests/Support/TempFolder.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>

#include <gtest/gtest.h>

#include <string>

using Tests::TempFolder;
using Tests::WaitUntil;

// The README shows the program as it is compiled, and its output as it is printed.

namespace {

QByteArray Read(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        ADD_FAILURE() << "cannot read " << path.toStdString();
    return file.readAll();
}

/// The program without the comment at its head.
std::string Program()
{
    const QByteArray source = Read(QStringLiteral(WATCH_SOURCE));
    return source.mid(source.indexOf("#include")).toStdString();
}

/// The first block of the README in a language.
std::string Block(const QByteArray& language)
{
    const QByteArray text = Read(QStringLiteral(PROJECT "/README.md"));
    const QByteArray opening = "\n```" + language + "\n";
    const auto start = text.indexOf(opening) + opening.size();
    const auto end = text.indexOf("```\n", start);
    return text.mid(start, end - start).toStdString();
}

/// The documents in a folder of the project.
QFileInfoList Documents(const char* folder)
{
    return QDir(QStringLiteral(PROJECT) + QLatin1String(folder)).entryInfoList({QStringLiteral("*.md")});
}

/// The links of a document to other files that do not exist.
std::string DeadLinks(const QFileInfo& document)
{
    const QRegularExpression code(QStringLiteral("```.*?```"),
                                  QRegularExpression::DotMatchesEverythingOption);
    const QRegularExpression link(QStringLiteral(R"(\]\(([^)#\s]+)[^)]*\))"));
    const QString text = QString::fromUtf8(Read(document.filePath())).remove(code);
    std::string dead;
    auto match = link.globalMatch(text);
    while (match.hasNext()) {
        const QString target = match.next().captured(1);
        if (!target.startsWith(QLatin1String("https:"))
            && !QFileInfo::exists(document.dir().filePath(target)))
            dead += ' ' + target.toStdString();
    }
    return dead;
}

} // namespace

TEST(DocumentsTest, LinkToExistingFiles)
{
    const QFileInfoList documents = Documents("") + Documents("/docs") + Documents("/docs/pages");

    EXPECT_GE(documents.size(), 10);
    for (const QFileInfo& document : documents)
        EXPECT_EQ(DeadLinks(document), "") << document.filePath().toStdString();
}

TEST(ReadmeTest, NamesThePathOfTheProgramInABuildFolder)
{
    const QString path = QDir(QStringLiteral(BUILD)).relativeFilePath(QStringLiteral(WATCH_PROGRAM));

    EXPECT_NE(Block("console").find("$ build/release/" + path.toStdString() + ' '), std::string::npos);
}

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

#include <QByteArray>
#include <QFile>
#include <QRegularExpression>
#include <QString>
#include <QStringList>

#include <gtest/gtest.h>

#include <utility>

// The examples in the comments of the public headers are compiled: HeaderExamples.cpp has each of them.

namespace {

QString Read(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        ADD_FAILURE() << "cannot read " << path.toStdString();
    return QString::fromUtf8(file.readAll());
}

/// The code without comments and white space.
QString Squeezed(QString code)
{
    code.remove(QRegularExpression(QStringLiteral("//[^\n]*")));
    return code.remove(QRegularExpression(QStringLiteral("\\s")));
}

/// The code blocks in a header's comments, squeezed. They are indented by four and follow an empty line.
QStringList Examples(const QString& path)
{
    const QString empty = QStringLiteral("///");
    const QString opening = QStringLiteral("///     ");
    QStringList examples;
    QString example;
    QString before;
    const QStringList lines = Read(path).split(QLatin1Char('\n'));
    for (const QString& indented : lines) {
        const QString line = indented.trimmed();
        if (line.startsWith(opening) && (before == empty || !example.isEmpty()))
            example += line.mid(opening.size()) + QLatin1Char('\n');
        else if (line != empty && !example.isEmpty())
            examples += Squeezed(std::exchange(example, QString()));
        before = line;
    }
    return examples;
}

class HeaderExamplesTest : public testing::Test
{
protected:
    const QStringList headers = QStringLiteral(PUBLIC_HEADERS).split(QLatin1Char('|'));
};

} // namespace

TEST_F(HeaderExamplesTest, AreAllCompiled)
{
    const QString compiled = Squeezed(Read(QStringLiteral(COMPILED_EXAMPLES)));

    for (const QString& header : headers) {
        const QStringList examples = Examples(header);
        for (const QString& example : examples) {
            // Three dots stand for code that is left out.
            const QStringList parts = example.split(QStringLiteral("..."));
            for (const QString& part : parts)
                EXPECT_TRUE(compiled.contains(part)) << header.toStdString() << ": " << part.toStdString();
        }
    }
}

TEST_F(HeaderExamplesTest, AreFoundInTheHeaders)
{
    QStringList::size_type count = 0;

    for (const QString& header : headers)
        count += Examples(header).size();

    EXPECT_GE(count, 12);
}

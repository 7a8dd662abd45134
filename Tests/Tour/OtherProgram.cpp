#include "Tests/Tour/OtherProgram.h"

#include <QBuffer>
#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QPainter>

namespace RecordingsTour {

namespace {

QByteArray Picture(const QColor& from, const QColor& to)
{
    QImage image(640, 360, QImage::Format_RGB32);
    QPainter painter(&image);
    QLinearGradient colours(0, 0, image.width(), image.height());
    colours.setColorAt(0, from);
    colours.setColorAt(1, to);
    painter.fillRect(image.rect(), colours);
    painter.end();

    QBuffer png;
    png.open(QIODevice::WriteOnly);
    image.save(&png, "PNG");
    return png.data();
}

bool Write(QFile& file, const QByteArray& content)
{
    return file.open(QIODevice::ReadWrite) && file.write(content) == content.size()
           && file.resize(content.size()) && file.flush();
}

/// Writes the file under a hidden name, which no watcher lists, and renames it, so that it appears complete.
bool Add(const QString& path)
{
    const QFileInfo info(path);
    QFile hidden(info.path() + QStringLiteral("/.") + info.fileName() + QStringLiteral(".part"));
    // An hour ago, so that a later change has another time, however coarse the file system's clock is.
    const QDateTime anHourAgo = QDateTime::currentDateTime().addSecs(-3600);
    return Write(hidden, Picture(Qt::darkBlue, Qt::cyan))
           && hidden.setFileTime(anHourAgo, QFileDevice::FileModificationTime) && hidden.rename(path);
}

/// Writes into the file itself: a file that replaces it would end the notices about it.
bool Change(const QString& path)
{
    QFile file(path);
    return file.exists() && Write(file, Picture(Qt::darkRed, Qt::yellow));
}

} // namespace

int RunAsOtherProgram(const QStringList& command)
{
    const QString operation = command.value(0);
    const QString path = command.value(1);
    bool done = false;
    if (operation == QLatin1String("add"))
        done = Add(path);
    else if (operation == QLatin1String("change"))
        done = Change(path);
    else if (operation == QLatin1String("delete"))
        done = QFile::remove(path);
    return done ? 0 : 1;
}

} // namespace RecordingsTour

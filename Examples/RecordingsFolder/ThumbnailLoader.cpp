#include "Examples/RecordingsFolder/ThumbnailLoader.h"

#include <QImageReader>
#include <QPainter>
#include <QThread>

namespace RecordingsFolder {

namespace {

/// A larger picture would take more than a gigabyte of memory.
constexpr qint64 mostPixels = 250'000'000;

QImage ReadScaled(const QString& path, const QSize& size)
{
    QImageReader reader(path);
    reader.setAutoTransform(true);
    // The file name may have any extension.
    reader.setDecideFormatFromContent(true);
    const QSize original = reader.size();
    if (!original.isValid() || qint64(original.width()) * original.height() > mostPixels)
        return {};
    if (original.width() > size.width() || original.height() > size.height())
        reader.setScaledSize(original.scaled(size, Qt::KeepAspectRatio).expandedTo(QSize(1, 1)));
    return reader.read();
}

/// All thumbnails have the same size and a small margin, so that the names beside them line up. The frame is
/// grey, which is visible on light and on dark backgrounds.
QImage MakeThumbnail(const QString& path, const QSize& size, double pixelRatio)
{
    const QRect place(QPoint(), size);
    const QRect room = place.adjusted(3, 3, -3, -3);
    const QImage picture = ReadScaled(path, room.size() * pixelRatio);

    QImage canvas(size * pixelRatio, QImage::Format_ARGB32_Premultiplied);
    canvas.setDevicePixelRatio(pixelRatio);
    canvas.fill(Qt::transparent);
    QPainter painter(&canvas);
    if (picture.isNull()) {
        painter.setPen(QPen(Qt::gray, 1, Qt::DashLine));
        painter.drawRect(room.adjusted(0, 0, -1, -1));
    } else {
        QRectF frame(QPointF(), QSizeF(picture.size()) / pixelRatio);
        frame.moveCenter(QRectF(place).center());
        painter.drawImage(frame, picture);
        painter.setPen(QPen(Qt::gray, 1));
        painter.drawRect(frame.adjusted(-0.5, -0.5, 0.5, 0.5));
    }
    return canvas;
}

} // namespace

ThumbnailLoader::ThumbnailLoader(const QSize& thumbnailSize, double devicePixelRatio, QObject* parent)
    : QObject(parent), size(thumbnailSize), pixelRatio(devicePixelRatio)
{
    // Leaves one processor to the window.
    threads.setMaxThreadCount(qMax(1, QThread::idealThreadCount() - 1));
}

ThumbnailLoader::~ThumbnailLoader()
{
    ++currentRound;
    threads.clear();
    threads.waitForDone();
}

void ThumbnailLoader::Load(const QString& path)
{
    ++wanted;
    Q_EMIT Progressed(done, wanted);
    threads.start([this, path, round = currentRound.load()] {
        if (round != currentRound)
            return;
        const QImage thumbnail = MakeThumbnail(path, size, pixelRatio);
        QMetaObject::invokeMethod(
            this, [this, round, path, thumbnail] { OnMade(round, path, thumbnail); }, Qt::QueuedConnection);
    });
}

void ThumbnailLoader::DropAll()
{
    ++currentRound;
    threads.clear();
    done = 0;
    wanted = 0;
    Q_EMIT Progressed(done, wanted);
}

void ThumbnailLoader::OnMade(int round, const QString& path, const QImage& thumbnail)
{
    if (round != currentRound)
        return;
    ++done;
    if (done == wanted) {
        done = 0;
        wanted = 0;
    }
    Q_EMIT Loaded(path, thumbnail);
    Q_EMIT Progressed(done, wanted);
}

} // namespace RecordingsFolder

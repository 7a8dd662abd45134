#pragma once

#include <QImage>
#include <QObject>
#include <QSize>
#include <QThreadPool>

#include <atomic>

namespace RecordingsFolder {

/// Creates thumbnails of picture files on threads of its own.
///
/// Use it on the thread it lives in, which also receives its signals.
class ThumbnailLoader : public QObject
{
    Q_OBJECT

public:
    /// @param devicePixelRatio  of the screen that shows the thumbnails
    ThumbnailLoader(const QSize& thumbnailSize, double devicePixelRatio, QObject* parent = nullptr);
    /// Waits for the thumbnails that are being created, and drops the others.
    ~ThumbnailLoader() override;

    /// Requests a thumbnail, which comes with Loaded(): an empty frame if the file is not a picture.
    void Load(const QString& path);
    /// Cancels all requests: Loaded() is not emitted for them.
    void DropAll();
    bool IsIdle() const { return done == wanted; }

Q_SIGNALS:
    void Loaded(const QString& path, const QImage& thumbnail);
    /// The number of thumbnails that are done, of those requested; both return to 0 when all are done.
    void Progressed(int done, int wanted);

private:
    void OnMade(int round, const QString& path, const QImage& thumbnail);

    const QSize size;
    const double pixelRatio;
    /// Counts the calls of DropAll(). Thumbnails of earlier rounds are discarded.
    std::atomic<int> currentRound{0};
    int done = 0;
    int wanted = 0;
    QThreadPool threads;
};

} // namespace RecordingsFolder
